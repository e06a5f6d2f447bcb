// VideoWallApp: the video wall program: reads the command line, opens the wall window, and
// ends with the result of a headless screenshot run (0, or 1 when the capture or its
// self-check failed).
//
// It holds no state of the wall itself; WallFrame does.
#pragma once

#include <wx/app.h>

#include "WallOptions.h"

class VideoWallApp : public wxApp {
 public:
  void OnInitCmdLine(wxCmdLineParser& parser) override;
  bool OnCmdLineParsed(wxCmdLineParser& parser) override;
  bool OnInit() override;
  int OnRun() override;

 private:
  WallOptions m_options;
  int m_exitCode = 0;
};
