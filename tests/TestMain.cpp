// Entry point of every GUI test binary: one live wxApp for the whole run.
//
// Listing the tests (as CTest does to discover them) needs no display, so the toolkit is
// started only when tests actually run. Toolkit assertions become test failures instead of
// dialogs that would wait for a click that never comes.
#include <cstdlib>

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/image.h>
#include <wx/init.h>
#include <wx/log.h>

namespace {

void FailOnAssert(const wxString& file, int line, const wxString& func, const wxString& cond,
                  const wxString& msg) {
  ADD_FAILURE_AT(file.utf8_str(), line)
      << "toolkit assertion in " << func << ": " << cond << " " << msg;
}

class TestApp : public wxApp {
 public:
  bool OnInit() override { return true; }
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();

  setenv("NO_AT_BRIDGE", "1", 1);  // no accessibility bus: nothing to talk to under Xvfb
  wxApp::SetInstance(new TestApp);
  if (!wxEntryStart(argc, argv)) {
    fprintf(stderr, "cannot start the toolkit (is DISPLAY set?)\n");
    return 2;
  }
  wxTheApp->CallOnInit();
  wxInitAllImageHandlers();
  wxSetAssertHandler(FailOnAssert);
  wxLog::SetLogLevel(wxLOG_Max);
  delete wxLog::SetActiveTarget(new wxLogStderr);

  // Tests pump events themselves; an active loop lets them dispatch the toolkit's.
  int result = 0;
  {
    wxGUIEventLoop loop;
    wxEventLoopActivator activate(&loop);
    result = RUN_ALL_TESTS();
  }

  wxTheApp->OnExit();
  wxEntryCleanup();
  return result;
}
