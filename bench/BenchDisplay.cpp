// Toolkit start-up, event pumping and the end of drawing for the benchmarks that draw.
#include "BenchDisplay.h"

#include <cstdio>
#include <cstdlib>

#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/frame.h>
#include <wx/init.h>
#include <wx/utils.h>

#include <GL/gl.h>
#include <GL/glx.h>

void PumpPending() {
  wxTheApp->ProcessPendingEvents();
  while (wxTheApp->Pending()) wxTheApp->Dispatch();
  wxTheApp->ProcessIdle();
}

void PumpFor(int milliseconds) {
  const wxLongLong end = wxGetLocalTimeMillis() + milliseconds;
  while (wxGetLocalTimeMillis() < end) {
    PumpPending();
    wxMilliSleep(5);
  }
}

void FinishDrawing() {
  if (glXGetCurrentContext()) glFinish();
  XSync(static_cast<Display*>(wxGetX11Display()), False);
}

int RunWithTile(int argc, char** argv, const wxSize& tileSize,
                const std::function<int(wxWindow* tile)>& body) {
  setenv("NO_AT_BRIDGE", "1", 1);
  wxApp::SetInstance(new wxApp);
  if (!wxEntryStart(argc, argv)) {
    fprintf(stderr, "cannot start the toolkit (is DISPLAY set?)\n");
    return 2;
  }
  int result = 0;
  {
    wxGUIEventLoop loop;
    wxEventLoopActivator activate(&loop);
    auto* frame = new wxFrame(nullptr, wxID_ANY, "bench", wxPoint(0, 0));
    frame->SetClientSize(tileSize);
    auto* tile = new wxWindow(frame, wxID_ANY, wxPoint(0, 0), tileSize);
    frame->Show();
    PumpFor(300);
    result = body(tile);
    frame->Destroy();
    PumpFor(50);
  }
  wxEntryCleanup();
  return result;
}
