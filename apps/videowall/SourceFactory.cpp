// SourceFactory: listed locations in turn, or synthetic cameras.
#include "SourceFactory.h"

#include "MediaPacketSource.h"
#include "SyntheticPacketSource.h"

namespace {

struct CameraSize {
  int width;
  int height;
};
constexpr int kSyntheticSizeCount = 4;
constexpr CameraSize kWallSizes[kSyntheticSizeCount] = {
    {640, 360}, {704, 576}, {480, 360}, {320, 240}};
// Small enough that sixteen of them decode in a few milliseconds, and of three shapes, so the
// renderers still meet several texture sizes.
constexpr CameraSize kSmallSizes[kSyntheticSizeCount] = {
    {160, 90}, {176, 144}, {128, 96}, {192, 108}};

}  // namespace

SourceFactory::SourceFactory(std::vector<std::string> locations, SyntheticCameras cameras)
    : m_locations(std::move(locations)), m_cameras(cameras) {}

std::unique_ptr<IPacketSource> SourceFactory::Make(int index) const {
  if (!m_locations.empty()) {
    return std::make_unique<MediaPacketSource>(m_locations[index % m_locations.size()]);
  }
  int width = 0;
  int height = 0;
  SyntheticSize(index, width, height);
  return std::make_unique<SyntheticPacketSource>(width, height, index * 7);
}

void SourceFactory::SyntheticSize(int index, int& width, int& height) const {
  const CameraSize* sizes = m_cameras == SyntheticCameras::Small ? kSmallSizes : kWallSizes;
  const CameraSize& size = sizes[index % kSyntheticSizeCount];
  width = size.width;
  height = size.height;
}
