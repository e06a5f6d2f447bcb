// WallOptions: what the command line asks of the wall: layout, sources, render mode, window
// geometry, the headless screenshot run (file, frames, self-check) and the soak run (frames,
// seed).
//
// It declares the options to the toolkit's parser and reads them back, reading a --sources
// file as it goes; it opens no source and creates no window.
#pragma once

#include <string>
#include <vector>

#include <renderer/IRenderer.h>
#include <wx/cmdline.h>
#include <wx/gdicmn.h>

#include "WallLayout.h"

struct WallOptions {
  WallLayout layout;
  std::vector<std::string> sources;  // empty: synthetic cameras
  RenderMode renderMode = RENDER_MODE_AUTO;
  wxRect geometry{wxDefaultPosition, wxSize(1280, 800)};
  wxString screenshot;   // empty: play until closed
  int namePosition = 1;  // OSD position of the camera name, 1 (top left) to 9
  long frames = 30;
  bool selfCheck = false;
  long soakFrames = 0;  // 0: no soak run
  unsigned long seed = 1;

  // Declares every option to `parser`.
  static void Describe(wxCmdLineParser& parser);
  // Reads the parsed options; false with `error` set on a bad value or an unreadable file.
  static bool Read(const wxCmdLineParser& parser, WallOptions& options, wxString& error);
  // The soak options; false with `error` set on a bad value.
  static bool ReadSoak(const wxCmdLineParser& parser, WallOptions& options, wxString& error);

  // The window of a soak run given no geometry.
  static constexpr int kSoakWidth = 400;
  static constexpr int kSoakHeight = 300;

  // Lines of a sources file: one URL or path a line; blank lines and lines starting with '#'
  // are skipped. False when the file cannot be read.
  static bool ReadSourcesFile(const wxString& path, std::vector<std::string>& sources);
  // "auto", "opengl" or "software"; false for anything else.
  static bool ParseRenderMode(const wxString& name, RenderMode& mode);
  // "WIDTHxHEIGHT" or "WIDTHxHEIGHT+X+Y"; false for anything else.
  static bool ParseGeometry(const wxString& text, wxRect& geometry);
};
