// videowall: the host program. A window of video tiles, each playing a synthetic camera (colour
// bars, a moving box and a running clock, made in memory) through the renderer library, with
// label overlays, until the window is closed.
//
//   videowall [--tiles N] [--screenshot FILE [--frames N]]
//
// With --screenshot it plays N frames (default 30), writes what the tiles show to FILE as PNG,
// says where, and exits: the way to look at it on a machine without a screen.
#include <cstdio>
#include <vector>

#include <wx/app.h>
#include <wx/cmdline.h>
#include <wx/dcmemory.h>
#include <wx/frame.h>
#include <wx/image.h>
#include <wx/sizer.h>
#include <wx/timer.h>

#include "VideoTile.h"

namespace {

constexpr int kFrameRate = 25;

class WallFrame : public wxFrame {
 public:
  WallFrame(int tileCount, const wxString& screenshot, int screenshotFrames)
      : wxFrame(nullptr, wxID_ANY, "Video wall", wxDefaultPosition, wxSize(960, 600)),
        m_screenshot(screenshot),
        m_framesLeft(screenshotFrames) {
    int columns = 1;
    while (columns * columns < tileCount) ++columns;
    auto* grid = new wxGridSizer(columns, 2, 2);
    const wxSize sizes[] = {wxSize(640, 360), wxSize(704, 576), wxSize(480, 360), wxSize(320, 240)};
    for (int i = 0; i < tileCount; ++i) {
      auto* tile =
          new VideoTile(this, wxString::Format("Camera %d", i + 1), sizes[i % 4], kFrameRate);
      m_tiles.push_back(tile);
      grid->Add(tile, 1, wxEXPAND);
    }
    SetBackgroundColour(*wxBLACK);
    SetSizer(grid);
    m_timer.Bind(wxEVT_TIMER, &WallFrame::OnTick, this);
    m_timer.Start(1000 / kFrameRate);
  }

 private:
  void OnTick(wxTimerEvent&) {
    for (VideoTile* tile : m_tiles) tile->NextFrame();
    if (m_screenshot.empty() || --m_framesLeft > 0) return;
    m_timer.Stop();
    SaveScreenshot();
    Close();
  }

  // Paints every tile into one picture at its place in the window.
  void SaveScreenshot() {
    wxBitmap wall(GetClientSize(), 24);
    wxMemoryDC wallDc(wall);
    wallDc.SetBackground(*wxBLACK_BRUSH);
    wallDc.Clear();
    for (VideoTile* tile : m_tiles) {
      wxBitmap picture(tile->GetClientSize(), 24);
      {
        wxMemoryDC tileDc(picture);
        tile->RenderTo(tileDc);
      }
      wallDc.DrawBitmap(picture, tile->GetPosition());
    }
    wallDc.SelectObject(wxNullBitmap);
    if (wall.ConvertToImage().SaveFile(m_screenshot, wxBITMAP_TYPE_PNG)) {
      std::printf("videowall: screenshot written to %s\n",
                  static_cast<const char*>(m_screenshot.utf8_str()));
    } else {
      std::fprintf(stderr, "videowall: cannot write %s\n",
                   static_cast<const char*>(m_screenshot.utf8_str()));
    }
  }

  std::vector<VideoTile*> m_tiles;
  wxTimer m_timer;
  wxString m_screenshot;
  int m_framesLeft;
};

class VideoWallApp : public wxApp {
 public:
  void OnInitCmdLine(wxCmdLineParser& parser) override {
    wxApp::OnInitCmdLine(parser);
    parser.AddOption("", "tiles", "number of tiles (1 to 16, default 4)", wxCMD_LINE_VAL_NUMBER);
    parser.AddOption("", "screenshot", "play a while, write the wall to this PNG file and exit");
    parser.AddOption("", "frames", "frames to play before the screenshot (default 30)",
                     wxCMD_LINE_VAL_NUMBER);
  }

  bool OnCmdLineParsed(wxCmdLineParser& parser) override {
    parser.Found("tiles", &m_tiles);
    parser.Found("screenshot", &m_screenshot);
    parser.Found("frames", &m_frames);
    m_tiles = std::min(16L, std::max(1L, m_tiles));
    m_frames = std::max(1L, m_frames);
    return wxApp::OnCmdLineParsed(parser);
  }

  bool OnInit() override {
    if (!wxApp::OnInit()) return false;
    wxInitAllImageHandlers();
    auto* frame =
        new WallFrame(static_cast<int>(m_tiles), m_screenshot, static_cast<int>(m_frames));
    frame->Show();
    return true;
  }

 private:
  long m_tiles = 4;
  long m_frames = 30;
  wxString m_screenshot;
};

}  // namespace

wxIMPLEMENT_APP(VideoWallApp);
