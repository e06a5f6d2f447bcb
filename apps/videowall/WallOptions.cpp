// WallOptions: the wall's command line.
#include "WallOptions.h"

#include <algorithm>
#include <cstdio>

#include <wx/log.h>
#include <wx/textfile.h>

void WallOptions::Describe(wxCmdLineParser& parser) {
  parser.AddOption("", "layout", "tiles: 1, 2x2, 3x3 (default), 4x4, 6x6 or 8x8");
  parser.AddOption("", "source", "a camera: file path, rtsp:// or http:// URL (repeatable)");
  parser.AddOption("", "sources", "a file of cameras, one path or URL a line");
  parser.AddOption("", "render-mode", "auto (default), opengl or software");
  parser.AddOption("", "name-position", "where the camera name goes: 1 (top left, default) to 9",
                   wxCMD_LINE_VAL_NUMBER);
  parser.AddOption("", "geometry", "window size and place: WIDTHxHEIGHT[+X+Y]");
  parser.AddOption("", "screenshot",
                   "play, write what the screen shows of the wall to this PNG, exit");
  parser.AddOption("", "frames", "frames every tile paints before the screenshot (default 30)",
                   wxCMD_LINE_VAL_NUMBER);
  parser.AddSwitch("", "self-check", "with --screenshot: check every tile shows its camera");
  parser.AddOption("", "soak",
                   "run this many wall frames of 4x4 small cameras as fast as they paint, under a "
                   "random operator, then exit with the verdict",
                   wxCMD_LINE_VAL_NUMBER);
  parser.AddOption("", "seed", "the soak's random operator starts from this number (default 1)",
                   wxCMD_LINE_VAL_NUMBER);
}

bool WallOptions::Read(const wxCmdLineParser& parser, WallOptions& options, wxString& error) {
  wxString value;
  if (parser.Found("layout", &value) && !WallLayout::FromName(value, options.layout)) {
    error = "unknown layout " + value;
    return false;
  }
  for (const wxCmdLineArg& argument : parser.GetArguments()) {
    if (argument.GetLongName() == "source")
      options.sources.push_back(argument.GetStrVal().ToStdString());
  }
  if (parser.Found("render-mode", &value) && !ParseRenderMode(value, options.renderMode)) {
    error = "unknown render mode " + value;
    return false;
  }
  if (parser.Found("geometry", &value) && !ParseGeometry(value, options.geometry)) {
    error = "bad geometry " + value;
    return false;
  }
  long position = options.namePosition;
  if (parser.Found("name-position", &position) && (position < 1 || position > 9)) {
    error = "the name position runs from 1 to 9";
    return false;
  }
  options.namePosition = static_cast<int>(position);
  parser.Found("screenshot", &options.screenshot);
  parser.Found("frames", &options.frames);
  options.frames = std::max(1L, options.frames);
  options.selfCheck = parser.Found("self-check");
  if (!ReadSoak(parser, options, error)) return false;
  if (parser.Found("sources", &value) && !ReadSourcesFile(value, options.sources)) {
    error = "cannot read " + value;
    return false;
  }
  return true;
}

// A soak run is always the 4x4 wall; without a geometry of its own it is a small window, so the
// sixteen tiles paint quickly.
bool WallOptions::ReadSoak(const wxCmdLineParser& parser, WallOptions& options, wxString& error) {
  long seed = static_cast<long>(options.seed);
  if (parser.Found("seed", &seed) && seed < 0) {
    error = "the seed is a number from 0 up";
    return false;
  }
  options.seed = static_cast<unsigned long>(seed);
  if (!parser.Found("soak", &options.soakFrames)) return true;
  if (options.soakFrames < 1) {
    error = "a soak runs at least one frame";
    return false;
  }
  WallLayout::FromName("4x4", options.layout);
  if (!parser.Found("geometry")) options.geometry.SetSize(wxSize(kSoakWidth, kSoakHeight));
  return true;
}

bool WallOptions::ReadSourcesFile(const wxString& path, std::vector<std::string>& sources) {
  wxTextFile file;
  const wxLogNull quiet;  // the caller reports a file it cannot read
  if (!file.Open(path)) return false;
  for (size_t i = 0; i < file.GetLineCount(); ++i) {
    wxString line = file.GetLine(i);
    line.Trim(true).Trim(false);
    if (!line.empty() && !line.StartsWith("#")) sources.push_back(line.ToStdString());
  }
  return true;
}

bool WallOptions::ParseRenderMode(const wxString& name, RenderMode& mode) {
  const wxString lower = name.Lower();
  if (lower == "auto")
    mode = RENDER_MODE_AUTO;
  else if (lower == "opengl")
    mode = RENDER_MODE_OPENGL;
  else if (lower == "software")
    mode = RENDER_MODE_SOFTWARE;
  else
    return false;
  return true;
}

bool WallOptions::ParseGeometry(const wxString& text, wxRect& geometry) {
  int width = 0;
  int height = 0;
  int x = 0;
  int y = 0;
  char end = 0;
  const std::string value = text.ToStdString();
  const int fields = std::sscanf(value.c_str(), "%dx%d+%d+%d%c", &width, &height, &x, &y, &end);
  if ((fields != 2 && fields != 4) || width < 64 || height < 64) return false;
  geometry = wxRect(fields == 4 ? wxPoint(x, y) : wxDefaultPosition, wxSize(width, height));
  return true;
}
