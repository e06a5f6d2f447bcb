// A stand-in for the decoder's video output: remembers every placement and presentation and
// counts its own deletion, so tests can see where a picture would appear and when the
// output was given back.
#pragma once

#include <vector>

#include <decompressor/IVideoOutput.h>
#include <wx/gdicmn.h>

class RecordingVideoOutput : public IVideoOutput {
 public:
  // `deletions` is counted up by the destructor and must outlive the output.
  explicit RecordingVideoOutput(int* deletions) : m_deletions(deletions) {}
  ~RecordingVideoOutput() override { ++*m_deletions; }

  bool Present(unsigned char**, int*, int, int, int) override {
    ++presents;
    return true;
  }
  void SetOutputRect(int x, int y, int width, int height) override {
    rects.emplace_back(x, y, width, height);
  }

  std::vector<wxRect> rects;
  int presents = 0;

 private:
  int* m_deletions;
};
