// CSyntheticCamera: a camera without a camera, drawing moving test pictures in I420.
//
// Each picture shows 75 % colour bars over the top two thirds, a white box that sweeps to and
// fro across the band below them (one crossing per second), and at the bottom a running clock
// "HH:MM:SS:FF" (hours, minutes, seconds, frame within the second) in seven-segment digits.
// Picture n is the moment n / rate seconds after the start, so every picture is reproducible
// from its index alone. Hosts feed the pictures to CDecompressor::PutFrame; tests and
// benchmarks use them as a source that needs no file.
//
// It draws into one buffer of its own, laid out as the frame-buffer table gives I420 (so odd
// sizes have width / 2 x height / 2 chroma). It does not pace itself to the rate, encode, or
// draw text other than the clock's digits.
#pragma once

#include <string>
#include <vector>

#include "CDigitalPTZ.h"
#include "CPixelLayout.h"

class CSyntheticCamera {
 public:
  // Sizes are clamped to 1 .. CPixelLayout::kMaxDimension and the rate to at least 1.
  CSyntheticCamera(int width, int height, int framesPerSecond);

  int GetWidth() const { return m_layout.GetWidth(); }
  int GetHeight() const { return m_layout.GetHeight(); }
  int GetFrameRate() const { return m_rate; }
  int GetFormat() const { return m_layout.GetFormat(); }

  // Draws picture `index`. GetPlanes and GetPitches show it until the next drawing.
  void Render(long long index);

  // Draws the picture after the one drawn last (picture 0 first) and returns its index.
  long long NextFrame();

  // Index of the picture drawn last; -1 before the first.
  long long GetFrameIndex() const { return m_index; }

  unsigned char* const* GetPlanes() const { return m_planes; }
  const int* GetPitches() const { return m_pitches; }

  // Where the box and the clock lie in picture `index` (in luma pixels).
  PtzRect GetBoxRect(long long index) const;
  PtzRect GetClockRect() const;

  // The clock text of picture `index` at `framesPerSecond`, e.g. "00:01:02:03".
  static std::string FormatClock(long long index, int framesPerSecond);

 private:
  struct Yuv {
    unsigned char y;
    unsigned char u;
    unsigned char v;
  };

  void DrawBars();
  void DrawDigit(int x, int y, int height, char digit);
  void DrawColon(int x, int y, int height);
  void DrawClock(long long index);
  void Fill(const PtzRect& rect, const Yuv& colour);
  void FillLuma(const PtzRect& rect, unsigned char value);
  // The bars end at BarsBottom(); the box sweeps between it and ClockTop(); the clock below.
  int BarsBottom() const;
  int ClockTop() const;
  int ClockDigitHeight() const;

  CPixelLayout m_layout;
  int m_rate;
  long long m_index = -1;
  std::vector<unsigned char> m_buffer;
  unsigned char* m_planes[CPixelLayout::kMaxPlanes];
  int m_pitches[CPixelLayout::kMaxPlanes];
};
