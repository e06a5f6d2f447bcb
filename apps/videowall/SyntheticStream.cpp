// SyntheticStream: encode once per size, share afterwards.
#include "SyntheticStream.h"

#include <map>
#include <mutex>
#include <utility>

#include <decompressor/CSyntheticCamera.h>

#include "H264Encoder.h"

std::shared_ptr<const SyntheticStream> SyntheticStream::ForSize(int width, int height) {
  static std::mutex lock;
  static std::map<std::pair<int, int>, std::shared_ptr<const SyntheticStream>> streams;
  const std::lock_guard<std::mutex> guard(lock);
  std::shared_ptr<const SyntheticStream>& stream = streams[{width, height}];
  if (!stream) stream = Encode(width, height);
  return stream;
}

std::shared_ptr<const SyntheticStream> SyntheticStream::Encode(int width, int height) {
  CSyntheticCamera camera(width, height, kFrameRate);
  H264Encoder encoder(camera.GetWidth(), camera.GetHeight(), kFrameRate);
  auto stream = std::make_shared<SyntheticStream>();
  for (int index = 0; index < kFrameRate * kSeconds; ++index) {
    camera.Render(index);
    if (!encoder.Encode(camera.GetPlanes(), camera.GetPitches(), index, stream->m_packets)) {
      return nullptr;
    }
  }
  if (!encoder.Flush(stream->m_packets)) return nullptr;
  stream->m_info = encoder.StreamInfo();
  return stream;
}
