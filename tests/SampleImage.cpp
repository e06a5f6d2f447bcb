// Sample pictures, their comparison and PNG output through libavcodec's PNG encoder.
#include "SampleImage.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>

#include "ColourReference.h"

#include <decompressor/AvHandles.h>

namespace {

std::string ArtifactPath(const std::string& name) {
  const char* configured = std::getenv("RENDERER_TEST_ARTIFACTS");
  const std::string directory = configured && *configured ? configured : "test-artifacts";
  std::filesystem::create_directories(directory);
  return directory + "/" + name;
}

std::string Describe(const unsigned char* samples) {
  std::ostringstream text;
  text << "(" << int(samples[0]) << ", " << int(samples[1]) << ", " << int(samples[2]) << ")";
  return text.str();
}

bool WithinTolerance(const unsigned char* a, const unsigned char* b, int tolerance) {
  for (int channel = 0; channel < 3; ++channel) {
    if (std::abs(a[channel] - b[channel]) > tolerance) return false;
  }
  return true;
}

// One RGB24 picture encoded as a PNG packet.
bool EncodePng(int width, int height, const std::vector<unsigned char>& rgb, AVPacket& packet) {
  const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PNG);
  AvCodecContextPtr context(codec ? avcodec_alloc_context3(codec) : nullptr);
  AvFramePtr frame(av_frame_alloc());
  if (!context || !frame) return false;
  context->width = width;
  context->height = height;
  context->pix_fmt = AV_PIX_FMT_RGB24;
  context->time_base = AVRational{1, 1};
  frame->format = AV_PIX_FMT_RGB24;
  frame->width = width;
  frame->height = height;
  frame->data[0] = const_cast<unsigned char*>(rgb.data());
  frame->linesize[0] = width * 3;
  return avcodec_open2(context.get(), codec, nullptr) >= 0 &&
         avcodec_send_frame(context.get(), frame.get()) >= 0 &&
         avcodec_receive_packet(context.get(), &packet) >= 0;
}

}  // namespace

SampleImage::SampleImage(int width, int height, Kind kind)
    : m_width(width),
      m_height(height),
      m_kind(kind),
      m_samples(static_cast<size_t>(width) * height * 3),
      m_checked(static_cast<size_t>(width) * height, true) {}

void SampleImage::Set(int x, int y, int first, int second, int third) {
  unsigned char* samples = &m_samples[(static_cast<size_t>(y) * m_width + x) * 3];
  samples[0] = static_cast<unsigned char>(first);
  samples[1] = static_cast<unsigned char>(second);
  samples[2] = static_cast<unsigned char>(third);
}

const unsigned char* SampleImage::At(int x, int y) const {
  return &m_samples[(static_cast<size_t>(y) * m_width + x) * 3];
}

void SampleImage::Ignore(int x, int y) { m_checked[static_cast<size_t>(y) * m_width + x] = false; }

bool SampleImage::IsChecked(int x, int y) const {
  return m_checked[static_cast<size_t>(y) * m_width + x];
}

int SampleImage::CheckedCount() const {
  int count = 0;
  for (bool checked : m_checked) count += checked ? 1 : 0;
  return count;
}

std::vector<unsigned char> SampleImage::ToRgb() const {
  if (m_kind == Kind::kRgb) return m_samples;
  std::vector<unsigned char> rgb(m_samples.size());
  for (size_t i = 0; i < m_samples.size(); i += 3) {
    const Rgb shown = ReferenceYuvToRgb(Yuv{m_samples[i], m_samples[i + 1], m_samples[i + 2]});
    rgb[i] = static_cast<unsigned char>(shown.r);
    rgb[i + 1] = static_cast<unsigned char>(shown.g);
    rgb[i + 2] = static_cast<unsigned char>(shown.b);
  }
  return rgb;
}

::testing::AssertionResult SamplesNear(const SampleImage& actual, const SampleImage& expected,
                                       int tolerance, const std::string& name) {
  if (actual.Width() != expected.Width() || actual.Height() != expected.Height()) {
    return ::testing::AssertionFailure()
           << "size " << actual.Width() << "x" << actual.Height() << " instead of "
           << expected.Width() << "x" << expected.Height();
  }
  int mismatches = 0;
  std::ostringstream first;
  for (int y = 0; y < expected.Height(); ++y) {
    for (int x = 0; x < expected.Width(); ++x) {
      if (!expected.IsChecked(x, y) ||
          WithinTolerance(actual.At(x, y), expected.At(x, y), tolerance)) {
        continue;
      }
      if (mismatches++ == 0) {
        first << "first at (" << x << ", " << y << "): " << Describe(actual.At(x, y))
              << " instead of " << Describe(expected.At(x, y));
      }
    }
  }
  if (mismatches == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << mismatches << " of " << expected.CheckedCount() << " pixels differ by more than "
         << tolerance << ", " << first.str() << "; saved "
         << SaveComparison(actual, expected, name);
}

::testing::AssertionResult MeanErrorBelow(const SampleImage& actual, const SampleImage& expected,
                                          double limit, const std::string& name) {
  if (actual.Width() != expected.Width() || actual.Height() != expected.Height()) {
    return ::testing::AssertionFailure() << "sizes differ";
  }
  double total = 0;
  int samples = 0;
  for (int y = 0; y < expected.Height(); ++y) {
    for (int x = 0; x < expected.Width(); ++x) {
      if (!expected.IsChecked(x, y)) continue;
      for (int channel = 0; channel < 3; ++channel) {
        total += std::abs(actual.At(x, y)[channel] - expected.At(x, y)[channel]);
        ++samples;
      }
    }
  }
  const double mean = samples > 0 ? total / samples : 0.0;
  if (mean < limit) return ::testing::AssertionSuccess() << "mean error " << mean;
  return ::testing::AssertionFailure() << "mean error " << mean << " not below " << limit
                                       << "; saved " << SaveComparison(actual, expected, name);
}

std::string SaveComparison(const SampleImage& actual, const SampleImage& expected,
                           const std::string& name) {
  const std::string base = ArtifactPath(name);
  SaveRgbPng(base + "-actual.png", actual.Width(), actual.Height(), actual.ToRgb());
  SaveRgbPng(base + "-expected.png", expected.Width(), expected.Height(), expected.ToRgb());
  return base + "-{actual,expected}.png";
}

bool SaveRgbPng(const std::string& path, int width, int height,
                const std::vector<unsigned char>& rgb) {
  AvPacketPtr packet(av_packet_alloc());
  if (!packet || !EncodePng(width, height, rgb, *packet)) return false;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
  return file && std::fwrite(packet->data, 1, packet->size, file.get()) == size_t(packet->size);
}
