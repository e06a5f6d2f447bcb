// ScreenCapture: what the X server shows of a window's client area, read from the root window,
// so GL tiles appear exactly as a person sees them (a memory DC would miss them).
//
// Only parts of the window that are on screen and not covered by other windows come back
// right. It reads 24- and 32-bit true-colour screens (what Xvfb and desktops use) and returns
// an invalid image on any other.
#pragma once

#include <wx/image.h>

class wxWindow;

class ScreenCapture {
 public:
  // The client area of `window` as shown now (after the X server has drawn all requests).
  static wxImage Grab(wxWindow* window);
  // `rect` of the screen (root-window coordinates).
  static wxImage GrabScreen(const wxRect& rect);
};
