// TestFrame: a caller's frame buffer for the decoder tests, in any pixel format.
//
// The planes lie in separate allocations at the frame-buffer table's plane sizes, with
// optional extra pitch, and every byte outside the planes' rows (row padding and a guard block
// after each plane) holds a sentinel, so a test can prove that the decoder wrote only the rows
// and bytes it may write. Samples are read and written by their own addressing, written out
// here from the format table independently of the library's conversion code.
//
// Chroma of an odd-sized 4:2:x picture: writing stores the samples the table carries (the
// colour of each block's top-left pixel); reading takes the nearest carried sample, and
// neutral grey where the table carries none.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ColourReference.h"
#include "SampleImage.h"

class TestFrame {
 public:
  static constexpr unsigned char kSentinel = 0xA5;
  static constexpr int kGuardBytes = 64;

  // `padding` extra bytes of pitch on every used plane.
  TestFrame(int format, int width, int height, int padding = 0);
  // Moving keeps the plane storage (and so the plane pointers); copying would not.
  TestFrame(TestFrame&&) = default;
  TestFrame(const TestFrame&) = delete;
  TestFrame& operator=(const TestFrame&) = delete;

  int Format() const { return m_format; }
  int Width() const { return m_width; }
  int Height() const { return m_height; }
  bool IsRgb() const;

  unsigned char** Planes() { return m_planes; }
  int* Pitches() { return m_pitches; }

  // No byte outside the planes' rows has changed.
  ::testing::AssertionResult GuardsIntact() const;
  // No byte at all has changed.
  ::testing::AssertionResult Untouched() const;

  // Stores a picture: RGB formats take `rgb`, YUV formats its reference conversion.
  void Paint(const std::function<Rgb(int, int)>& rgb);
  // Stores YUV samples (YUV formats only), chroma from each block's top-left pixel.
  void PaintYuv(const std::function<Yuv(int, int)>& yuv);

  Yuv YuvAt(int x, int y) const;
  Rgb RgbAt(int x, int y) const;
  int AlphaAt(int x, int y) const;
  // Every pixel, as RGB or YUV samples by the format's family.
  SampleImage ToImage() const;

  // Every picture byte (each plane's rows, not the padding) equal to `other`'s.
  ::testing::AssertionResult SamePictureBytes(const TestFrame& other,
                                              const std::string& name) const;

 private:
  struct Spot {
    int plane;
    size_t offset;
  };

  bool IsSubsampledVertically() const;
  bool HasChroma(int cx, int cy) const;
  Spot LumaSpot(int x, int y) const;
  Spot USpot(int cx, int cy) const;
  Spot VSpot(int cx, int cy) const;
  Spot RgbSpot(int x, int y) const;
  unsigned char& Byte(const Spot& spot);
  unsigned char Byte(const Spot& spot) const;
  bool IsPictureByte(int plane, size_t offset) const;
  ::testing::AssertionResult SentinelsKept(bool includingPicture) const;

  int m_format;
  int m_width;
  int m_height;
  int m_rowBytes[3] = {};
  int m_rows[3] = {};
  std::vector<unsigned char> m_storage[3];
  unsigned char* m_planes[3] = {};
  int m_pitches[3] = {};
};
