// VideoWallApp: command line, window, exit code.
#include "VideoWallApp.h"

#include <cstdio>

#include <wx/image.h>

extern "C" {
#include <libavutil/log.h>
}

#include "WallFrame.h"

void VideoWallApp::OnInitCmdLine(wxCmdLineParser& parser) {
  wxApp::OnInitCmdLine(parser);
  WallOptions::Describe(parser);
}

bool VideoWallApp::OnCmdLineParsed(wxCmdLineParser& parser) {
  wxString error;
  if (!WallOptions::Read(parser, m_options, error)) {
    std::fprintf(stderr, "videowall: %s\n", error.utf8_str().data());
    return false;
  }
  return wxApp::OnCmdLineParsed(parser);
}

bool VideoWallApp::OnInit() {
  if (!wxApp::OnInit()) return false;
  wxInitAllImageHandlers();
  av_log_set_level(AV_LOG_ERROR);  // the encoder of the synthetic cameras reports at length
  auto* frame = new WallFrame(m_options, &m_exitCode);
  frame->Show();
  return true;
}

int VideoWallApp::OnRun() {
  const int result = wxApp::OnRun();
  return result != 0 ? result : m_exitCode;
}
