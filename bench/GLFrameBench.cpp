// The GL back-end's frame path per frame, as the facade drives it: GetFrameBuffer, the planes
// written as the decoder writes them (row by row at the lent pitches), FlushFrameBuffer and a
// Render into a 960x540 tile (with its swap). Frames of 1280x720 and 1920x1080 in I420, NV12,
// YUYV and RGB24, through pixel buffers and through client memory; beside each, a plain
// memcpy of the same bytes, the physical floor of moving a frame at all.
//
// Times are wall-clock per frame (the rasteriser works on threads of its own, and the swap
// goes through the X server); "MB/s" counts the frame's picture bytes (10^6 bytes per MB).
// Needs a display with GLX (scripts/bench.sh starts Xvfb when there is none).
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <decompressor/CPixelLayout.h>
#include <decompressor/PixelFormat.h>
#include <renderer/OpenGLRenderer.h>

#include "BenchDisplay.h"
#include "BenchPicture.h"

namespace {

constexpr int kTileWidth = 960;
constexpr int kTileHeight = 540;
constexpr int kWarmUpFrames = 3;

// The one renderer every benchmark draws with, on a shown tile.
OpenGLRenderer* g_renderer = nullptr;

void ReportBytes(benchmark::State& state, int64_t frameBytes) {
  const double megabytes = static_cast<double>(frameBytes) * state.iterations() / 1e6;
  state.counters["MB/s"] = benchmark::Counter(megabytes, benchmark::Counter::kIsRate);
}

// Turns the renderer's pixel-buffer use on or off for one benchmark. The texture set is made
// afresh (ClearFrame) so that the next frame creates it under the new setting.
class PixelBufferUse {
 public:
  explicit PixelBufferUse(bool on) : m_previous(OpenGLRenderer::m_isPixelBufferSupported) {
    OpenGLRenderer::m_isPixelBufferSupported = m_previous && on;
    g_renderer->ClearFrame();
  }
  ~PixelBufferUse() {
    OpenGLRenderer::m_isPixelBufferSupported = m_previous;
    g_renderer->ClearFrame();
  }
  PixelBufferUse(const PixelBufferUse&) = delete;
  PixelBufferUse& operator=(const PixelBufferUse&) = delete;

 private:
  bool m_previous;
};

bool DrawFrame(const BenchPicture& source) {
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  const CPixelLayout& layout = source.Layout();
  if (!g_renderer->GetFrameBuffer(layout.GetWidth(), layout.GetHeight(), layout.GetFormat(), planes,
                                  pitches)) {
    return false;
  }
  source.WriteTo(planes, pitches);
  g_renderer->FlushFrameBuffer(planes, pitches);
  g_renderer->Render(nullptr);
  return true;
}

void FramePath(benchmark::State& state, int format, int width, int height, bool pixelBuffers) {
  const PixelBufferUse buffers(pixelBuffers);
  const BenchPicture source(format, width, height);
  for (int frame = 0; frame < kWarmUpFrames; ++frame) DrawFrame(source);
  for (auto _ : state) {
    if (!DrawFrame(source)) {
      state.SkipWithError("GetFrameBuffer failed");
      break;
    }
  }
  ReportBytes(state, source.PictureBytes());
}

void MemcpyOfTheFrame(benchmark::State& state, int format, int width, int height) {
  const BenchPicture source(format, width, height);
  std::vector<unsigned char> target(source.Bytes().size());
  for (auto _ : state) {
    std::memcpy(target.data(), source.Bytes().data(), target.size());
    benchmark::ClobberMemory();
  }
  ReportBytes(state, static_cast<int64_t>(source.Bytes().size()));
}

void RegisterAll() {
  const std::pair<const char*, int> formats[] = {{"I420", PIXEL_FORMAT_I420},
                                                 {"NV12", PIXEL_FORMAT_NV12},
                                                 {"YUYV", PIXEL_FORMAT_YUYV},
                                                 {"RGB24", PIXEL_FORMAT_RGB24}};
  const std::pair<int, int> sizes[] = {{1280, 720}, {1920, 1080}};
  for (const auto& [width, height] : sizes) {
    for (const auto& [name, format] : formats) {
      const std::string frame =
          std::string(name) + "/" + std::to_string(width) + "x" + std::to_string(height);
      for (const bool pixelBuffers : {true, false}) {
        benchmark::RegisterBenchmark(
            ("FramePath/" + frame + (pixelBuffers ? "/PixelBuffers" : "/ClientMemory")).c_str(),
            FramePath, format, width, height, pixelBuffers)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
      }
      benchmark::RegisterBenchmark(("MemcpyOfTheFrame/" + frame).c_str(), MemcpyOfTheFrame, format,
                                   width, height)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime();
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  const int result = RunWithTile(argc, argv, wxSize(kTileWidth, kTileHeight), [](wxWindow* tile) {
    const auto renderer = std::make_unique<OpenGLRenderer>(tile);
    g_renderer = renderer.get();
    PumpFor(300);
    int status = 0;
    if (!OpenGLRenderer::m_isShaderSupported) {
      fprintf(stderr, "no fragment programs on this GL implementation\n");
      status = 1;
    } else {
      RegisterAll();
      benchmark::RunSpecifiedBenchmarks();
    }
    g_renderer = nullptr;
    return status;
  });
  benchmark::Shutdown();
  return result;
}
