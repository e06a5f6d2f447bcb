// BenchPicture: a decoded picture as the benchmarks hand it out, in the frame-buffer table's
// packed layout (CPixelLayout), to be written into lent planes or given to a peer library.
//
// A picture is made either as a byte pattern or from the synthetic camera (converted to the
// format by the real decoder). It times nothing and draws nothing.
#pragma once

#include <cstdint>
#include <vector>

#include <decompressor/CPixelLayout.h>

class BenchPicture {
 public:
  // A picture of `format` filled with a byte pattern.
  BenchPicture(int format, int width, int height);
  // Moving keeps the bytes where they are, so the plane pointers stay valid; a copy would not.
  BenchPicture(BenchPicture&&) = default;
  BenchPicture& operator=(BenchPicture&&) = default;
  BenchPicture(const BenchPicture&) = delete;
  BenchPicture& operator=(const BenchPicture&) = delete;

  // `count` successive pictures of the synthetic camera (the box moving) in `format`.
  static std::vector<BenchPicture> FromCamera(int format, int width, int height, int count);

  const CPixelLayout& Layout() const { return m_layout; }
  unsigned char* const* Planes() const { return m_planes; }
  const int* Pitches() const { return m_pitches; }
  const std::vector<unsigned char>& Bytes() const { return m_bytes; }

  // Picture bytes (the rows of every plane, no padding).
  int64_t PictureBytes() const;

  // Copies every row of every plane to `destination` at `destinationPitches`, as a decoder
  // writes into the planes a back-end lends.
  void WriteTo(unsigned char* const* destination, const int* destinationPitches) const;

 private:
  CPixelLayout m_layout;
  std::vector<unsigned char> m_bytes;
  unsigned char* m_planes[CPixelLayout::kMaxPlanes];
  int m_pitches[CPixelLayout::kMaxPlanes];
};
