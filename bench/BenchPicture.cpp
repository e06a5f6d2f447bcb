// BenchPicture: pictures in the table's packed layout, from a pattern or the synthetic camera.
#include "BenchPicture.h"

#include <cstring>

#include <decompressor/CDecompressor.h>
#include <decompressor/CSyntheticCamera.h>
#include <decompressor/PixelFormat.h>

BenchPicture::BenchPicture(int format, int width, int height)
    : m_layout(format, width, height),
      m_bytes(static_cast<size_t>(m_layout.GetTotalBytes())),
      m_planes(),
      m_pitches() {
  for (size_t i = 0; i < m_bytes.size(); ++i) m_bytes[i] = static_cast<unsigned char>(i * 7);
  m_layout.SplitBuffer(m_bytes.data(), m_planes, m_pitches);
}

// The camera draws I420; the decoder converts each picture to the format asked for.
std::vector<BenchPicture> BenchPicture::FromCamera(int format, int width, int height, int count) {
  CSyntheticCamera camera(width, height, 25);
  CDecompressor decoder;
  std::vector<BenchPicture> pictures;
  for (int i = 0; i < count; ++i) {
    const long long index = camera.NextFrame();
    decoder.PutFrame(camera.GetPlanes(), camera.GetPitches(), camera.GetFormat(), width, height,
                     index);
    BenchPicture picture(format, width, height);
    unsigned char* planes[CPixelLayout::kMaxPlanes] = {picture.m_planes[0], picture.m_planes[1],
                                                       picture.m_planes[2]};
    decoder.GetImage(planes, picture.m_pitches, format, width, height, 0, 0, width, height,
                     nullptr);
    pictures.push_back(std::move(picture));
  }
  return pictures;
}

int64_t BenchPicture::PictureBytes() const {
  int64_t total = 0;
  for (int plane = 0; plane < m_layout.GetPlaneCount(); ++plane) {
    total += static_cast<int64_t>(m_layout.GetRowBytes(plane)) * m_layout.GetRows(plane);
  }
  return total;
}

void BenchPicture::WriteTo(unsigned char* const* destination, const int* destinationPitches) const {
  for (int plane = 0; plane < m_layout.GetPlaneCount(); ++plane) {
    for (int row = 0; row < m_layout.GetRows(plane); ++row) {
      std::memcpy(destination[plane] + static_cast<ptrdiff_t>(row) * destinationPitches[plane],
                  m_planes[plane] + static_cast<ptrdiff_t>(row) * m_pitches[plane],
                  static_cast<size_t>(m_layout.GetRowBytes(plane)));
    }
  }
}
