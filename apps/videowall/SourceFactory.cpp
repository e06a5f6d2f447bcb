// SourceFactory: listed locations in turn, or synthetic cameras.
#include "SourceFactory.h"

#include "MediaPacketSource.h"
#include "SyntheticPacketSource.h"

namespace {

struct CameraSize {
  int width;
  int height;
};
constexpr CameraSize kSyntheticSizes[] = {{640, 360}, {704, 576}, {480, 360}, {320, 240}};
constexpr int kSyntheticSizeCount = sizeof(kSyntheticSizes) / sizeof(kSyntheticSizes[0]);

}  // namespace

SourceFactory::SourceFactory(std::vector<std::string> locations)
    : m_locations(std::move(locations)) {}

std::unique_ptr<IPacketSource> SourceFactory::Make(int index) const {
  if (!m_locations.empty()) {
    return std::make_unique<MediaPacketSource>(m_locations[index % m_locations.size()]);
  }
  int width = 0;
  int height = 0;
  SyntheticSize(index, width, height);
  return std::make_unique<SyntheticPacketSource>(width, height, index * 7);
}

void SourceFactory::SyntheticSize(int index, int& width, int& height) {
  const CameraSize& size = kSyntheticSizes[index % kSyntheticSizeCount];
  width = size.width;
  height = size.height;
}
