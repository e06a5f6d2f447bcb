// InternalGLCanvas: input forwarding and cursor mirroring for the GL surface of a tile.
#include "InternalGLCanvas.h"

InternalGLCanvas::InternalGLCanvas(wxWindow* parent, wxWindowID id, const int* attributes,
                                   const wxPoint& position, const wxSize& size, long style,
                                   const wxString& name, const wxPalette& palette)
    : wxGLCanvas(parent, id, attributes, position, size, style, name, palette) {}

bool InternalGLCanvas::ProcessEvent(wxEvent& event) {
  const bool isMouse = event.IsKindOf(wxCLASSINFO(wxMouseEvent));
  if (isMouse || event.IsKindOf(wxCLASSINFO(wxKeyEvent))) event.ResumePropagation(1);
  if (isMouse) FollowParentCursor();
  return wxEvtHandler::ProcessEvent(event);
}

void InternalGLCanvas::OnEraseBackground(wxEraseEvent&) {}

void InternalGLCanvas::FollowParentCursor() {
  const wxWindow* parent = GetParent();
  if (!parent) return;
  const wxCursor& wanted = parent->GetCursor();
  if (!GetCursor().IsSameAs(wanted)) SetCursor(wanted);
}

// clang-format off
wxBEGIN_EVENT_TABLE(InternalGLCanvas, wxGLCanvas)
  EVT_ERASE_BACKGROUND(InternalGLCanvas::OnEraseBackground)
wxEND_EVENT_TABLE()
