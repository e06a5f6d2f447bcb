// NormalDigitalPTZ: aspect ratio, letterbox/pillarbox placement and the renderer's own zoom.
#include "NormalDigitalPTZ.h"

#include <algorithm>
#include <cmath>

NormalDigitalPTZ::NormalDigitalPTZ()
    : m_width(0),
      m_height(0),
      m_clientWidth(0),
      m_clientHeight(0),
      m_aspectRatio(0.0f),
      m_ignoreAspectRatio(false),
      slowPath(false) {}

NormalDigitalPTZ::~NormalDigitalPTZ() = default;

void NormalDigitalPTZ::SetSize(int width, int height) {
  m_width = width;
  m_height = height;
}

void NormalDigitalPTZ::GetSize(int& width, int& height) const {
  width = m_width;
  height = m_height;
}

void NormalDigitalPTZ::SetClientSize(int width, int height) {
  m_clientWidth = width;
  m_clientHeight = height;
}

void NormalDigitalPTZ::GetClientSize(int& width, int& height) const {
  width = m_clientWidth;
  height = m_clientHeight;
}

void NormalDigitalPTZ::SetSourceRect(int x, int y, int width, int height) {
  m_sourceRect = PtzRect{x, y, width, height};
}

void NormalDigitalPTZ::GetSourceRect(int& x, int& y, int& width, int& height) const {
  x = m_sourceRect.x;
  y = m_sourceRect.y;
  width = m_sourceRect.width;
  height = m_sourceRect.height;
}

void NormalDigitalPTZ::SetAspectRatio(float ratio) { m_aspectRatio = ratio; }

float NormalDigitalPTZ::GetAspectRatio() const { return m_aspectRatio; }

void NormalDigitalPTZ::SetIgnoreAspectRatio(bool ignore) { m_ignoreAspectRatio = ignore; }

bool NormalDigitalPTZ::GetIgnoreAspectRatio() const { return m_ignoreAspectRatio; }

float NormalDigitalPTZ::GetCurrentAspectRatio() const {
  if (m_aspectRatio != 0.0f) return m_aspectRatio;
  if (m_height == 0) return 0.0f;
  return static_cast<float>(m_width) / static_cast<float>(m_height);
}

void NormalDigitalPTZ::GetDestinationRect(float aspect, int& x, int& y, int& width,
                                          int& height) const {
  x = 0;
  y = 0;
  width = m_clientWidth;
  height = m_clientHeight;
  if (m_ignoreAspectRatio || !(aspect > 0.0f) || !std::isfinite(aspect) || m_clientWidth <= 0 ||
      m_clientHeight <= 0) {
    return;
  }
  // In double and bounded by the client before rounding: a float product near INT_MAX rounds
  // past it, and the bars beside a negative size would overflow.
  const double clientAspect = static_cast<double>(m_clientWidth) / m_clientHeight;
  if (clientAspect > aspect) {  // wider than the picture: bars left and right
    width = static_cast<int>(
        std::lround(std::min<double>(m_clientWidth, static_cast<double>(m_clientHeight) * aspect)));
    x = (m_clientWidth - width) / 2;
  } else {  // taller than the picture: bars above and below
    height = static_cast<int>(
        std::lround(std::min<double>(m_clientHeight, m_clientWidth / static_cast<double>(aspect))));
    y = (m_clientHeight - height) / 2;
  }
}

PtzRect NormalDigitalPTZ::Region() const {
  const PtzRect video{0, 0, m_width, m_height};
  if (m_sourceRect.IsEmpty()) return video;
  const int left = std::max(0, m_sourceRect.x);
  const int top = std::max(0, m_sourceRect.y);
  // Summed wide: a region near the int limits must not overflow.
  const int right = static_cast<int>(
      std::min<long long>(m_width, static_cast<long long>(m_sourceRect.x) + m_sourceRect.width));
  const int bottom = static_cast<int>(
      std::min<long long>(m_height, static_cast<long long>(m_sourceRect.y) + m_sourceRect.height));
  if (right <= left || bottom <= top) return video;
  return PtzRect{left, top, right - left, bottom - top};
}

void NormalDigitalPTZ::GetAdjustedRects(int& srcX, int& srcY, int& srcWidth, int& srcHeight,
                                        int& dstX, int& dstY, int& dstWidth, int& dstHeight) const {
  const PtzRect window = GetZoomWindow(Region());
  srcX = window.x;
  srcY = window.y;
  srcWidth = window.width;
  srcHeight = window.height;
  // The window keeps the video's display shape scaled by its own proportions, so a forced
  // ratio (anamorphic video) still applies to the zoomed picture.
  float aspect = GetCurrentAspectRatio();
  if (m_width > 0 && m_height > 0 && window.height > 0) {
    const double videoShape = static_cast<double>(m_width) / m_height;
    const double windowShape = static_cast<double>(window.width) / window.height;
    aspect = static_cast<float>(aspect * windowShape / videoShape);
  }
  GetDestinationRect(aspect, dstX, dstY, dstWidth, dstHeight);
}
