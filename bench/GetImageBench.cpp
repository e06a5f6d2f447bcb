// GetImage per frame: a 1920x1080 I420 camera picture converted and scaled to 960x540 in
// I420, RGB24 and NV12, each beside a plain memcpy of the same number of output bytes (the
// floor any conversion into the caller's buffer has to pay); and into I420 at its own size,
// read as BT.601 (a plain copy) and as BT.709 (the conversion to BT.601 that an HD camera's
// stream costs; the picture is read as BT.709 through the decoder's colour override, which
// takes the same road as a stream tagged BT.709). Bytes per second count the output bytes.
// It measures no decoding.
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/CPixelLayout.h>
#include <decompressor/CSyntheticCamera.h>
#include <decompressor/DecompressorTypes.h>
#include <decompressor/PixelFormat.h>

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

void GetImageDownscaled(benchmark::State& state, int format) {
  FrameBuffer target(format);
  RunGetImage(state, target, ColourMatrix::kBt601);
}

void GetImageSameSizeI420(benchmark::State& state, ColourMatrix matrix) {
  FrameBuffer target(PIXEL_FORMAT_I420, kSourceWidth, kSourceHeight);
  RunGetImage(state, target, matrix);
}

void MemcpyOfTheOutput(benchmark::State& state, int format) {
  FrameBuffer source(format);
  FrameBuffer target(format);
  for (auto _ : state) {
    std::memcpy(target.bytes.data(), source.bytes.data(), target.bytes.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(target.bytes.size()));
}

}  // namespace

BENCHMARK_CAPTURE(GetImageDownscaled, I420, PIXEL_FORMAT_I420);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, I420, PIXEL_FORMAT_I420);
BENCHMARK_CAPTURE(GetImageDownscaled, RGB24, PIXEL_FORMAT_RGB24);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, RGB24, PIXEL_FORMAT_RGB24);
BENCHMARK_CAPTURE(GetImageDownscaled, NV12, PIXEL_FORMAT_NV12);
BENCHMARK_CAPTURE(MemcpyOfTheOutput, NV12, PIXEL_FORMAT_NV12);
BENCHMARK_CAPTURE(GetImageSameSizeI420, Bt601PlainCopy, ColourMatrix::kBt601);
BENCHMARK_CAPTURE(GetImageSameSizeI420, Bt709ToBt601, ColourMatrix::kBt709);

BENCHMARK_MAIN();
