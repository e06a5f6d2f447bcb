// WallFrame: the video wall's main window: a grid of VideoTiles, the menus (layout, render
// mode, aspect ratio, overlays, opacity, PTZ reset, full screen, renderer information), the
// status bar, the GUI tick that hands new pictures to the tiles, the headless screenshot run
// with its optional self-check, and the soak run (SoakRun), which ticks as fast as the tiles
// paint and ends the program with its verdict.
//
// Everything here runs on the GUI thread and never waits for a source: tiles take pictures
// only when their worker has one ready. Closing the window asks every worker to stop at once
// and joins them all as the tiles go. It decodes nothing and draws nothing itself.
#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include <wx/frame.h>
#include <wx/timer.h>

#include "ITileListener.h"
#include "ProcessCpuMeter.h"
#include "RateMeter.h"
#include "SoakRun.h"
#include "SourceFactory.h"
#include "VideoTile.h"
#include "WallOptions.h"

class wxPanel;

class WallFrame : public wxFrame, public ITileListener {
 public:
  // With a screenshot file in `options` the wall plays, captures, (checks,) and closes itself,
  // leaving 0 or 1 in `exitCode` (which must outlive the frame; null ignores it); so does a
  // soak run, after its frames.
  WallFrame(const WallOptions& options, int* exitCode = nullptr);
  ~WallFrame() override;

  const std::vector<VideoTile*>& Tiles() const { return m_tiles; }
  VideoTile* SoloTile() const { return m_solo; }
  VideoTile* SelectedTile() const { return m_selected; }
  const WallLayout& GetWallLayout() const { return m_layout; }

  // The operations behind the menus, also for tests.
  void SetLayout(const WallLayout& layout);
  void SetRenderModeForAll(RenderMode mode);
  void SetPictureShapeRule(PictureShapeRule rule);
  void SetOverlaysShown(bool shown);
  void SetOverlayOpacity(unsigned char opacity);
  void SetNamePosition(int position);
  // Shows `tile` alone, or the whole grid again when it already is alone.
  void ToggleSolo(VideoTile* tile);
  // Hides or shows one tile in the grid.
  void SetTileShown(VideoTile* tile, bool shown);
  // The camera of tile `index` goes offline (the tile shows "No signal"), or comes back as the
  // source the wall gave it first.
  void KillSource(size_t index);
  void RestoreSource(size_t index);

  // What the screen shows of the whole window now.
  wxImage CaptureWall();
  // Whether every shown tile of `wall` (a capture) holds its camera's picture; `report` lists
  // the tiles that do not.
  bool CheckPictures(const wxImage& wall, wxString& report) const;
  // The status bar's text, fields separated by " | ".
  wxString StatusText() const;

  void OnTileSelected(VideoTile* tile) override;
  void OnTileDoubleClicked(VideoTile* tile) override;

 private:
  void BuildMenus();
  wxMenu* MakeViewMenu();
  wxMenu* MakeRenderMenu();
  void CreateTiles();
  void DestroyTiles();
  void ArrangeTiles();
  void StopAllFeeds();

  void OnFrameTick(wxTimerEvent& event);
  void OnStatusTick(wxTimerEvent& event);
  void OnCaptureTick(wxTimerEvent& event);
  void OnClose(wxCloseEvent& event);
  void OnMenu(wxCommandEvent& event);
  bool HandleChoiceMenu(int id);
  void ShowRendererInfo();
  void ResetSelectedPtz();

  bool IsReadyForScreenshot() const;
  void TakeScreenshot();
  void FinishSoak();
  // Pictures painted by every tile the wall has had.
  long long PicturesPainted() const;

  WallOptions m_options;
  SourceFactory m_sources;
  int* m_exitCode;
  WallLayout m_layout;
  RenderMode m_renderMode;
  PictureShapeRule m_aspect = PictureShapeRule::Keep;
  bool m_overlaysShown = true;
  unsigned char m_opacity = 255;
  int m_namePosition;

  wxPanel* m_grid;
  std::vector<VideoTile*> m_tiles;
  VideoTile* m_solo = nullptr;
  VideoTile* m_selected = nullptr;

  wxTimer m_frameTimer;
  wxTimer m_statusTimer;
  wxTimer m_captureTimer;
  long long m_paintedByGoneTiles = 0;
  ProcessCpuMeter m_cpu;
  RateMeter m_paintedRate;
  double m_cpuPercent = 0;
  bool m_screenshotPending;
  std::chrono::steady_clock::time_point m_screenshotDeadline;
  std::unique_ptr<SoakRun> m_soak;  // null unless this is a soak run
};
