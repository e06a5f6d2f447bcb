// NullVideoOutput: a video output for the harnesses that takes every picture and shows
// nothing, so the decoder's and the renderers' video-output roads run without a screen.
#pragma once

#include <decompressor/IVideoOutput.h>

class NullVideoOutput : public IVideoOutput {
 public:
  bool Present(unsigned char**, int*, int, int, int) override { return true; }
  void SetOutputRect(int, int, int, int) override {}
};
