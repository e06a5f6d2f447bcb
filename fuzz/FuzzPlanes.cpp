// FuzzPlanes: exact-size plane blocks for the harnesses.
#include "FuzzPlanes.h"

#include <algorithm>

FuzzPlanes::FuzzPlanes(const CPixelLayout& layout, const int* pitches) {
  const bool fits = BytesNeeded(layout, pitches) <= kMaxBytes;
  for (int plane = 0; plane < CPixelLayout::kMaxPlanes; ++plane) {
    m_pitches[plane] = pitches[plane];
    if (!fits || plane >= layout.GetPlaneCount()) continue;
    // At least one byte, so a plane without picture bytes still has an address.
    const long long bytes = std::max(1LL, PlaneBytes(layout, plane, pitches[plane]));
    m_storage[plane].assign(static_cast<size_t>(bytes), 0);
    m_planes[plane] = m_storage[plane].data();
  }
}

long long FuzzPlanes::BytesNeeded(const CPixelLayout& layout, const int* pitches) {
  long long total = 0;
  for (int plane = 0; plane < layout.GetPlaneCount(); ++plane) {
    total += PlaneBytes(layout, plane, pitches[plane]);
  }
  return total;
}

long long FuzzPlanes::PlaneBytes(const CPixelLayout& layout, int plane, int pitch) {
  const long long rowBytes = layout.GetRowBytes(plane);
  const long long rows = layout.GetRows(plane);
  if (rows == 0) return 0;
  return std::max<long long>(pitch, rowBytes) * (rows - 1) + rowBytes;
}
