// RendererInfoWindow: the descriptions of every mode in one text box.
#include "RendererInfoWindow.h"

#include <renderer/Renderer.h>
#include <wx/textctrl.h>

RendererInfoWindow::RendererInfoWindow(wxWindow* parent)
    : wxFrame(parent, wxID_ANY, "Renderer information", wxDefaultPosition, wxSize(640, 480)) {
  new wxTextCtrl(this, wxID_ANY, Describe(), wxDefaultPosition, wxDefaultSize,
                 wxTE_MULTILINE | wxTE_READONLY | wxHSCROLL);
}

wxString RendererInfoWindow::Describe() {
  const struct {
    RenderMode mode;
    const char* name;
  } modes[] = {{RENDER_MODE_AUTO, "Auto"},
               {RENDER_MODE_OPENGL, "OpenGL"},
               {RENDER_MODE_SOFTWARE, "Software"}};
  wxString text;
  for (const auto& entry : modes) {
    const bool supported = Renderer::IsRenderModeSupported(entry.mode);
    text << entry.name << (supported ? " (supported)" : " (not supported)") << "\n";
    const wxString description = Renderer::GetRendererDesc(entry.mode);
    text << (description.empty() ? wxString("  (no description)\n") : description) << "\n";
  }
  return text;
}
