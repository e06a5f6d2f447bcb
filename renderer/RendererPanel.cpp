// RendererPanel: painting, resizing and input forwarding of a tile window.
#include "RendererPanel.h"

#include <wx/dcclient.h>

RendererPanel::RendererPanel(wxString name, wxWindow* parent, RenderMode mode, int id, wxPoint pos,
                             wxSize size, long style)
    : wxWindow(parent, id, pos, size, style, name), m_renderer(nullptr), m_paintHandler(nullptr) {
  m_renderer = new Renderer(this, mode);
}

RendererPanel::~RendererPanel() {
  delete m_renderer;
  m_renderer = nullptr;
}

Renderer* RendererPanel::GetRenderer() const { return m_renderer; }

void RendererPanel::SetPaintHandler(IRendererPanelPaintHandler* handler) {
  m_paintHandler = handler;
}

void RendererPanel::OnPaint(wxPaintEvent&) {
  wxPaintDC dc(this);
  if (m_paintHandler) m_paintHandler->OnRendererPanelPaint(this);
  m_renderer->Render(&dc);
}

void RendererPanel::OnSize(wxSizeEvent&) { Refresh(true, nullptr); }

void RendererPanel::OnEraseBackground(wxEraseEvent&) {}

bool RendererPanel::ProcessEvent(wxEvent& event) {
  if (event.IsKindOf(wxCLASSINFO(wxMouseEvent)) || event.IsKindOf(wxCLASSINFO(wxKeyEvent))) {
    event.ResumePropagation(1);
  }
  return wxWindow::ProcessEvent(event);
}

// clang-format off
wxBEGIN_EVENT_TABLE(RendererPanel, wxWindow)
  EVT_PAINT(RendererPanel::OnPaint)
  EVT_SIZE(RendererPanel::OnSize)
  EVT_ERASE_BACKGROUND(RendererPanel::OnEraseBackground)
wxEND_EVENT_TABLE()
