// The facade's frame path per frame, as a host's decoding loop drives it: NegotiateFormat,
// CopyFrame (the real decoder's GetImage from a 1920x1080 I420 picture) and a Render into the
// tile, in OpenGL and in software mode, into a 960x540 tile and into a 384x216 one (where the
// facade has the decoder scale the picture down first). Beside each, the same work done on the
// back-end directly (GetFrameBuffer, GetImage at the size and format the facade settles on,
// FlushFrameBuffer, Render), so the facade's own share shows; after the run one line per case
// gives both times and the facade's overhead in percent.
//
// Times are wall-clock per frame. Needs a display with GLX (scripts/bench.sh starts Xvfb when
// there is none).
#include <cstdio>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <wx/dcclient.h>
#include <wx/window.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/CSyntheticCamera.h>
#include <renderer/NativeRenderer.h>
#include <renderer/OpenGLRenderer.h>
#include <renderer/Renderer.h>

#include "BenchDisplay.h"
#include "PairReporter.h"

namespace {

constexpr int kSourceWidth = 1920;
constexpr int kSourceHeight = 1080;
constexpr int kWarmUpFrames = 3;

wxWindow* g_tile = nullptr;
CDecompressor* g_decoder = nullptr;

void FitTile(const wxSize& size) {
  g_tile->SetSize(size);
  PumpFor(100);
}

// One frame through the facade, as a host moves it.
bool FacadeFrame(Renderer& facade) {
  int width = kSourceWidth;
  int height = kSourceHeight;
  int format = PIXEL_FORMAT_I420;
  wxRect source(0, 0, width, height);
  facade.NegotiateFormat(width, height, format, source, g_decoder, nullptr);
  const bool copied = facade.CopyFrame(*g_decoder, width, height, format, source, nullptr);
  wxClientDC dc(g_tile);
  facade.Render(&dc);
  return copied;
}

// The same frame on a back-end directly, at the size and format the facade would ask for.
bool BackendFrame(IRenderer& backend, const wxSize& size, int format) {
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  if (!backend.GetFrameBuffer(size.x, size.y, format, planes, pitches)) return false;
  g_decoder->GetImage(planes, pitches, format, size.x, size.y, 0, 0, kSourceWidth, kSourceHeight,
                      nullptr);
  backend.FlushFrameBuffer(planes, pitches);
  wxClientDC dc(g_tile);
  backend.Render(&dc);
  return true;
}

template <typename Frame>
void RunFrames(benchmark::State& state, const Frame& frame) {
  for (int i = 0; i < kWarmUpFrames; ++i) frame();
  for (auto _ : state) {
    if (!frame()) {
      state.SkipWithError("the frame was not delivered");
      break;
    }
  }
}

void ThroughTheFacade(benchmark::State& state, RenderMode mode, wxSize tile) {
  FitTile(tile);
  Renderer facade(g_tile, mode);
  PumpFor(100);
  RunFrames(state, [&facade] { return FacadeFrame(facade); });
}

struct Negotiated {
  wxSize size;
  int format;
};

// The frame size and format a facade of `mode` settles on in the tile once frames flow.
Negotiated NegotiatedFrame(RenderMode mode) {
  Renderer facade(g_tile, mode);
  PumpFor(100);
  FacadeFrame(facade);
  int width = kSourceWidth;
  int height = kSourceHeight;
  int format = PIXEL_FORMAT_I420;
  wxRect source(0, 0, width, height);
  facade.NegotiateFormat(width, height, format, source, g_decoder, nullptr);
  return Negotiated{wxSize(width, height), format};
}

// The back-end the facade would use, fed the frames the facade would give it.
void OnTheBackend(benchmark::State& state, RenderMode mode, wxSize tile) {
  FitTile(tile);
  const Negotiated frame = NegotiatedFrame(mode);
  PumpFor(100);  // the facade's back-end goes at idle time
  std::unique_ptr<IRenderer> backend;
  if (mode == RENDER_MODE_OPENGL) {
    backend = std::make_unique<OpenGLRenderer>(g_tile);
  } else {
    backend = std::make_unique<NativeRenderer>(g_tile);
  }
  PumpFor(100);
  RunFrames(state, [&backend, frame] { return BackendFrame(*backend, frame.size, frame.format); });
}

void RegisterAll() {
  const std::pair<const char*, RenderMode> modes[] = {{"OpenGL", RENDER_MODE_OPENGL},
                                                      {"Software", RENDER_MODE_SOFTWARE}};
  const wxSize tiles[] = {wxSize(960, 540), wxSize(384, 216)};
  for (const wxSize& tile : tiles) {
    for (const auto& [name, mode] : modes) {
      const std::string suffix =
          std::string(name) + "/" + std::to_string(tile.x) + "x" + std::to_string(tile.y);
      benchmark::RegisterBenchmark(("Facade/" + suffix).c_str(), ThroughTheFacade, mode, tile)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime();
      benchmark::RegisterBenchmark(("Backend/" + suffix).c_str(), OnTheBackend, mode, tile)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime();
    }
  }
}

// The back-end case beside a facade case: "Facade/..." against "Backend/...".
std::string BackendOf(const std::string& name) {
  const std::string facade = "Facade/";
  return name.rfind(facade, 0) == 0 ? "Backend/" + name.substr(facade.size()) : std::string();
}

void PrintOverhead(const std::string& name, const PairReporter::Times& facade,
                   const PairReporter::Times& backend) {
  if (backend.real <= 0) return;
  printf("overhead %s: facade %.3f ms, back-end %.3f ms, %+.1f %%\n", name.substr(7).c_str(),
         facade.real, backend.real, (facade.real / backend.real - 1.0) * 100.0);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  CDecompressor decoder;
  CSyntheticCamera camera(kSourceWidth, kSourceHeight, 25);
  camera.NextFrame();
  decoder.PutFrame(camera.GetPlanes(), camera.GetPitches(), camera.GetFormat(), kSourceWidth,
                   kSourceHeight, 0);
  g_decoder = &decoder;
  const int result = RunWithTile(argc, argv, wxSize(960, 540), [](wxWindow* tile) {
    g_tile = tile;
    RegisterAll();
    PairReporter reporter(BackendOf, PrintOverhead);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    g_tile = nullptr;
    return 0;
  });
  benchmark::Shutdown();
  return result;
}
