// InternalGLCanvas: the GL surface an OpenGLRenderer draws into, a child window that covers
// the renderer's parent (the tile).
//
// It is deliberately transparent to the host: the toolkit never erases it (the renderer clears
// it with GL), every mouse and key event that lands on it goes on to the tile, and it shows
// the cursor the host chose for the tile. It draws nothing itself and owns no GL context; the
// renderer creates, sizes, shows and destroys it.
#pragma once

#include <wx/glcanvas.h>

class InternalGLCanvas : public wxGLCanvas {
 public:
  InternalGLCanvas(wxWindow* parent, wxWindowID id, const int* attributes, const wxPoint& position,
                   const wxSize& size, long style, const wxString& name, const wxPalette& palette);

  // Lets mouse and key events travel on to the parent once, after the canvas's own handlers.
  bool ProcessEvent(wxEvent& event) override;

  // Does nothing, so that the toolkit never paints over the GL surface.
  void OnEraseBackground(wxEraseEvent& event);

 private:
  // Gives the canvas the parent's cursor when the two differ.
  void FollowParentCursor();

  wxDECLARE_EVENT_TABLE();
};
