// FuzzPlanes: a caller's frame buffer for the fuzz harnesses, in any pixel format and at any
// pitches.
//
// Each plane is a heap block of its own, exactly as long as the rows the library may touch
// (rows `pitch` apart, the last row only its picture bytes), so AddressSanitizer stops at the
// first byte written past a plane. A pitch shorter than a row (which the library must refuse)
// still gets a block of whole rows, so a wrongly accepted call shows as a broken contract in
// the harness, not as a write into a buffer that was too small. It checks no pixels.
#pragma once

#include <vector>

#include <decompressor/CPixelLayout.h>

class FuzzPlanes {
 public:
  // The most bytes the harnesses allocate for one frame; larger frames get no planes.
  static constexpr long long kMaxBytes = 16LL << 20;

  // Planes for `layout` at `pitches` (three); planes the layout does not use stay null.
  FuzzPlanes(const CPixelLayout& layout, const int* pitches);

  // Bytes the planes need; above kMaxBytes for layouts too large to allocate.
  static long long BytesNeeded(const CPixelLayout& layout, const int* pitches);

  unsigned char** Planes() { return m_planes; }
  int* Pitches() { return m_pitches; }

  // Takes plane `plane` away (null), as a host that forgot one would.
  void Drop(int plane) { m_planes[plane] = nullptr; }

 private:
  static long long PlaneBytes(const CPixelLayout& layout, int plane, int pitch);

  std::vector<unsigned char> m_storage[CPixelLayout::kMaxPlanes];
  unsigned char* m_planes[CPixelLayout::kMaxPlanes] = {};
  int m_pitches[CPixelLayout::kMaxPlanes] = {};
};
