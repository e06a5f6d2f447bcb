// RendererInfoWindow: the "Renderer information" window of the wall: for each render mode
// whether this machine supports it and the renderer's own description of it (GL version,
// extensions, limits), in a text box the operator can copy from.
//
// It is a plain non-modal window; it changes no setting.
#pragma once

#include <wx/frame.h>

class RendererInfoWindow : public wxFrame {
 public:
  explicit RendererInfoWindow(wxWindow* parent);

  // The text shown: one section per mode.
  static wxString Describe();
};
