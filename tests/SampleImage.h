// SampleImage: a picture of three 8-bit samples per pixel (R G B, or Y U V) that the decoder
// tests compare against a reference, with named tolerances; pixels can be left out of the
// comparison (edges where filters blend neighbours). On a mismatch both pictures are written
// as PNG files (YUV shown through the reference conversion) and the message says where.
// It needs neither the GUI toolkit nor the decoder: PNGs are written with libavcodec.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

// Channel tolerances of the decoder tests, in 8-bit steps.
constexpr int kExactSamples = 0;
constexpr int kScaledFlatTolerance = 1;  // scaling a flat area: rounding only
constexpr int kYuvToRgbTolerance = 3;    // libswscale's fixed-point YUV to RGB, vs the reference
constexpr int kRgbToYuvTolerance = 2;    // RGB to YUV, vs the reference

// Mean absolute difference, over all channels, between a picture that went through one of
// the test encoders (at their high quality settings) and its original.
constexpr double kCodecMeanError = 3.0;

class SampleImage {
 public:
  enum class Kind { kRgb, kYuv };

  SampleImage(int width, int height, Kind kind);

  int Width() const { return m_width; }
  int Height() const { return m_height; }
  Kind GetKind() const { return m_kind; }

  void Set(int x, int y, int first, int second, int third);
  const unsigned char* At(int x, int y) const;

  // Leaves (x, y) out of comparisons against this picture.
  void Ignore(int x, int y);
  bool IsChecked(int x, int y) const;
  int CheckedCount() const;

  // R G B bytes, row after row, for looking at.
  std::vector<unsigned char> ToRgb() const;

 private:
  int m_width;
  int m_height;
  Kind m_kind;
  std::vector<unsigned char> m_samples;
  std::vector<bool> m_checked;
};

// Every checked pixel of `expected` within `tolerance` of `actual`, channel by channel.
::testing::AssertionResult SamplesNear(const SampleImage& actual, const SampleImage& expected,
                                       int tolerance, const std::string& name);

// The mean absolute difference over all channels of the checked pixels below `limit` (for
// pictures that went through a lossy codec).
::testing::AssertionResult MeanErrorBelow(const SampleImage& actual, const SampleImage& expected,
                                          double limit, const std::string& name);

// Writes both pictures as PNG files named after `name` in the artifact directory
// ($RENDERER_TEST_ARTIFACTS, else "test-artifacts") and says where.
std::string SaveComparison(const SampleImage& actual, const SampleImage& expected,
                           const std::string& name);

// Writes R G B bytes as a PNG file; false when it could not.
bool SaveRgbPng(const std::string& path, int width, int height,
                const std::vector<unsigned char>& rgb);
