// videowall: the host program. For now it starts the toolkit and prints what the renderer
// library reports about each render mode.
#include <cstdio>

#include <renderer/RendererBase.h>
#include <wx/app.h>
#include <wx/init.h>

namespace {

const char* ModeName(RenderMode mode) {
  switch (mode) {
    case RENDER_MODE_AUTO: return "automatic";
    case RENDER_MODE_SOFTWARE: return "software";
    case RENDER_MODE_OPENGL: return "OpenGL";
    case RENDER_MODE_RESERVED: return "reserved";
  }
  return "unknown";
}

}  // namespace

int main(int argc, char** argv) {
  wxInitializer toolkit(argc, argv);
  if (!toolkit.IsOk()) {
    std::fprintf(stderr, "videowall: cannot start the toolkit\n");
    return 1;
  }
  for (RenderMode mode :
       {RENDER_MODE_AUTO, RENDER_MODE_SOFTWARE, RENDER_MODE_OPENGL, RENDER_MODE_RESERVED}) {
    const wxString& desc = RendererBase::GetRendererDesc(mode);
    std::printf("%s: %s\n", ModeName(mode),
                desc.empty() ? "(no description yet)" : static_cast<const char*>(desc.utf8_str()));
  }
  return 0;
}
