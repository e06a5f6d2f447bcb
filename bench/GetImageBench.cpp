// GetImage per frame: a 1920x1080 I420 camera picture converted and scaled to 960x540 in
// I420 (read as BT.601 and as BT.709), RGB24, RGBA32 and NV12; into I420 at its own size, read as
// BT.601 (a plain copy) and as BT.709 (the conversion to BT.601 that an HD camera's stream costs;
// the picture is read as BT.709 through the decoder's colour override, which takes the same road as
// a stream tagged BT.709); and into RGB24 at its own size. Each case has a peer: a plain memcpy of
// the same number of output bytes (the floor any conversion into the caller's buffer has to pay),
// and after the table one line per case gives both CPU times and their ratio. Bytes per second
// count the output bytes. It measures no decoding.
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/CPixelLayout.h>
#include <decompressor/CSyntheticCamera.h>
#include <decompressor/DecompressorTypes.h>
#include <decompressor/PixelFormat.h>

#include "PairReporter.h"

namespace {

constexpr int kSourceWidth = 1920;
constexpr int kSourceHeight = 1080;
constexpr int kTargetWidth = 960;
constexpr int kTargetHeight = 540;

// A caller's frame buffer laid out as the frame-buffer table says.
struct FrameBuffer {
  explicit FrameBuffer(int format, int width = kTargetWidth, int height = kTargetHeight)
      : layout(format, width, height), bytes(static_cast<size_t>(layout.GetTotalBytes())) {
    layout.SplitBuffer(bytes.data(), planes, pitches);
  }
  CPixelLayout layout;
  std::vector<unsigned char> bytes;
  unsigned char* planes[CPixelLayout::kMaxPlanes];
  int pitches[CPixelLayout::kMaxPlanes];
};

// GetImage of the whole camera picture into `target`, read with `matrix`.
void RunGetImage(benchmark::State& state, FrameBuffer& target, ColourMatrix matrix) {
  CSyntheticCamera camera(kSourceWidth, kSourceHeight, 25);
  camera.NextFrame();
  CDecompressor decoder;
  decoder.PutFrame(camera.GetPlanes(), camera.GetPitches(), camera.GetFormat(), kSourceWidth,
                   kSourceHeight, 0);
  decoder.SetColourOverride(ColourSpace_t{matrix, ColourRange::kFromStream});
  const CPixelLayout& layout = target.layout;
  for (auto _ : state) {
    const int result =
        decoder.GetImage(target.planes, target.pitches, layout.GetFormat(), layout.GetWidth(),
                         layout.GetHeight(), 0, 0, kSourceWidth, kSourceHeight, nullptr);
    benchmark::DoNotOptimize(result);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(target.bytes.size()));
  state.counters["setups"] = decoder.GetConverterSetupCount();
}

void GetImageDownscaled(benchmark::State& state, int format, ColourMatrix matrix) {
  FrameBuffer target(format);
  RunGetImage(state, target, matrix);
}

void GetImageSameSizeI420(benchmark::State& state, ColourMatrix matrix) {
  FrameBuffer target(PIXEL_FORMAT_I420, kSourceWidth, kSourceHeight);
  RunGetImage(state, target, matrix);
}

void GetImageSameSize(benchmark::State& state, int format) {
  FrameBuffer target(format, kSourceWidth, kSourceHeight);
  RunGetImage(state, target, ColourMatrix::kBt601);
}

void MemcpyOfTheOutput(benchmark::State& state, int format, int width, int height) {
  FrameBuffer source(format, width, height);
  FrameBuffer target(format, width, height);
  for (auto _ : state) {
    std::memcpy(target.bytes.data(), source.bytes.data(), target.bytes.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(target.bytes.size()));
}

// The memcpy beside a GetImage case: the same format at the same size.
std::string MemcpyOf(const std::string& name) {
  const std::pair<const char*, const char*> sameSize[] = {
      {"GetImageSameSizeI420/", "MemcpyOfTheOutput/I420SameSize"},
      {"GetImageSameSize/RGB24", "MemcpyOfTheOutput/RGB24SameSize"}};
  for (const auto& [prefix, memcpy] : sameSize) {
    if (name.rfind(prefix, 0) == 0) return memcpy;
  }
  const std::string downscaled = "GetImageDownscaled/";
  if (name.rfind(downscaled, 0) == 0) return "MemcpyOfTheOutput/" + name.substr(downscaled.size());
  return std::string();
}

void PrintRatio(const std::string& name, const PairReporter::Times& getImage,
                const PairReporter::Times& memcpy) {
  if (memcpy.cpu <= 0) return;
  printf("ratio %s: GetImage %.3f ms, memcpy %.3f ms, %.2fx memcpy\n", name.c_str(), getImage.cpu,
         memcpy.cpu, getImage.cpu / memcpy.cpu);
}

}  // namespace

BENCHMARK_CAPTURE(GetImageDownscaled, I420, PIXEL_FORMAT_I420, ColourMatrix::kBt601);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, I420, PIXEL_FORMAT_I420, kTargetWidth, kTargetHeight);
BENCHMARK_CAPTURE(GetImageDownscaled, I420Bt709, PIXEL_FORMAT_I420, ColourMatrix::kBt709);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, I420Bt709, PIXEL_FORMAT_I420, kTargetWidth, kTargetHeight);
BENCHMARK_CAPTURE(GetImageDownscaled, RGB24, PIXEL_FORMAT_RGB24, ColourMatrix::kBt601);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, RGB24, PIXEL_FORMAT_RGB24, kTargetWidth, kTargetHeight);
BENCHMARK_CAPTURE(GetImageDownscaled, RGBA32, PIXEL_FORMAT_RGBA32, ColourMatrix::kBt601);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, RGBA32, PIXEL_FORMAT_RGBA32, kTargetWidth, kTargetHeight);
BENCHMARK_CAPTURE(GetImageDownscaled, NV12, PIXEL_FORMAT_NV12, ColourMatrix::kBt601);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, NV12, PIXEL_FORMAT_NV12, kTargetWidth, kTargetHeight);
BENCHMARK_CAPTURE(GetImageSameSizeI420, Bt601PlainCopy, ColourMatrix::kBt601);
BENCHMARK_CAPTURE(GetImageSameSizeI420, Bt709ToBt601, ColourMatrix::kBt709);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, I420SameSize, PIXEL_FORMAT_I420, kSourceWidth, kSourceHeight);
BENCHMARK_CAPTURE(GetImageSameSize, RGB24, PIXEL_FORMAT_RGB24);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, RGB24SameSize, PIXEL_FORMAT_RGB24, kSourceWidth,
                  kSourceHeight);

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  PairReporter reporter(MemcpyOf, PrintRatio);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
