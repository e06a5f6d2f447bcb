// RendererPanel: the ready-made window of one video tile.
//
// It owns a Renderer drawing into itself, paints it on every paint event through a plain paint
// DC, repaints the whole window on resize, never erases its background (the video covers it,
// and an erase would flicker), and lets mouse and key events that it does not handle travel on
// to its parent once, so the host's tile container sees clicks and keys made over the video.
// It feeds no frames and draws no overlays of its own: the host does both through
// GetRenderer().
#pragma once

#include <renderer/Renderer.h>
#include <wx/window.h>

class RendererPanel;

// An optional hook run at the start of each paint, before the renderer draws (a host that
// negotiates or copies its latest frame just in time).
class IRendererPanelPaintHandler {
 public:
  virtual ~IRendererPanelPaintHandler() = default;
  virtual void OnRendererPanelPaint(RendererPanel* panel) = 0;
};

class RendererPanel : public wxWindow {
 public:
  RendererPanel(wxString name, wxWindow* parent, RenderMode mode, int id = wxID_ANY,
                wxPoint pos = wxDefaultPosition, wxSize size = wxDefaultSize, long style = 0);
  ~RendererPanel() override;
  RendererPanel(const RendererPanel&) = delete;
  RendererPanel& operator=(const RendererPanel&) = delete;

  Renderer* GetRenderer() const;
  // Not owned; null (the default) renders directly.
  void SetPaintHandler(IRendererPanelPaintHandler* handler);

  void OnPaint(wxPaintEvent& event);
  // Asks for one full repaint; the event is not skipped.
  void OnSize(wxSizeEvent& event);
  // Does nothing, deliberately.
  void OnEraseBackground(wxEraseEvent& event);

  // Mouse and key events go on to the parent once when nothing here handles them.
  bool ProcessEvent(wxEvent& event) override;

 protected:
  Renderer* m_renderer;
  IRendererPanelPaintHandler* m_paintHandler;

 private:
  wxDECLARE_EVENT_TABLE();
};
