// CPixelLayout: the frame-buffer table of the pixel formats, as plane geometry.
#include "CPixelLayout.h"

#include "PixelFormat.h"

CPixelLayout::CPixelLayout(int format, int width, int height)
    : m_format(format), m_width(width), m_height(height) {
  if (width < 1 || height < 1 || width > kMaxDimension || height > kMaxDimension) return;
  switch (format) {
    case PIXEL_FORMAT_I420:
    case PIXEL_FORMAT_YV12: SetPlanar(height / 2); break;
    case PIXEL_FORMAT_YUV422P: SetPlanar(height); break;
    case PIXEL_FORMAT_NV12:
      SetPlane(0, width, height, width);
      SetPlane(1, width / 2 * 2, height / 2, width);
      break;
    case PIXEL_FORMAT_YUYV:
    case PIXEL_FORMAT_UYVY: SetPackedPlane(2); break;
    case PIXEL_FORMAT_RGB24:
    case PIXEL_FORMAT_BGR24: SetPackedPlane(3); break;
    case PIXEL_FORMAT_RGBA32: SetPackedPlane(4); break;
    default: break;
  }
}

long long CPixelLayout::GetTotalBytes() const {
  long long total = 0;
  for (int plane = 0; plane < m_planeCount; ++plane) {
    total += static_cast<long long>(m_planes[plane].pitch) * m_planes[plane].rows;
  }
  return total;
}

void CPixelLayout::SplitBuffer(unsigned char* buffer, unsigned char** planes, int* pitches) const {
  for (int plane = 0; plane < kMaxPlanes; ++plane) {
    const bool used = plane < m_planeCount;
    planes[plane] = used ? buffer : nullptr;
    pitches[plane] = used ? m_planes[plane].pitch : 0;
    if (used) buffer += static_cast<long long>(m_planes[plane].pitch) * m_planes[plane].rows;
  }
}

void CPixelLayout::SetPlane(int plane, int rowBytes, int rows, int pitch) {
  m_planes[plane] = Plane{rowBytes, rows, pitch};
  if (plane >= m_planeCount) m_planeCount = plane + 1;
}

void CPixelLayout::SetPackedPlane(int bytesPerPixel) {
  SetPlane(0, m_width * bytesPerPixel, m_height, m_width * bytesPerPixel);
}

// A full-size luma plane and two chroma planes of half the width and `chromaRows` rows.
void CPixelLayout::SetPlanar(int chromaRows) {
  SetPlane(0, m_width, m_height, m_width);
  for (int plane = 1; plane < 3; ++plane) SetPlane(plane, m_width / 2, chromaRows, m_width / 2);
}
