// ScreenCapture: what the X server shows in a rectangle of the screen, read from the root
// window, so GL tiles appear exactly as a person sees them (a memory DC would miss them).
//
// Only what is on screen and not covered by other windows comes back right. It reads
// true-colour screens of 32 bits a pixel, least significant byte first (24-bit-deep Xvfb and
// desktops), and returns an invalid image for any other.
#pragma once

#include <wx/image.h>

class ScreenCapture {
 public:
  // `rect` of the screen (root-window coordinates) as shown now, after the X server has done
  // all requests made so far.
  static wxImage GrabScreen(const wxRect& rect);
};
