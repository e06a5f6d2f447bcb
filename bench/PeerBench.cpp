// Our library and SDL2 doing the same per-frame work side by side: one run, the same pictures,
// the same window size (960x540, vertical sync off), the two sides interleaved in blocks of
// frames so that both meet the same load of a shared machine. Per case, one line
//   peer <case>: ours <X> ms, SDL2 <Y> ms, ratio <X/Y>
// and a second, "cpu <case>: ...", with the processor time per frame of each side (every
// thread of the process: ours or SDL's and the GL rasteriser's), which a machine busy with
// other work disturbs far less than the wall clock, and the wall-clock means.
//
// What is timed, per frame (wall clock; the median over every timed frame of a side, so that
// the moments another process takes the processor weigh little):
// - gl-<format>-<size>. Ours: OpenGLRenderer::GetFrameBuffer, the picture written into the lent
//   planes row by row (as the decoder writes them), FlushFrameBuffer, and Render into the tile
//   (clear, the frame as one quad through the YUV program, swap). SDL2 with its "opengl" render
//   driver: SDL_RenderClear, SDL_UpdateYUVTexture / SDL_UpdateNVTexture / SDL_UpdateTexture of
//   a streaming texture from the same picture, SDL_RenderCopy onto the whole window and
//   SDL_RenderPresent.
// - software-i420-1280x720. Ours: the Renderer facade in software mode, NegotiateFormat and
//   CopyFrame of a 1280x720 I420 picture held by the real decoder (which converts it to RGB and
//   scales it to 960x540 into the lent buffer), and Render through a client DC (clear, the
//   bitmap). SDL2 with its "software" render driver: SDL_RenderClear, SDL_UpdateYUVTexture of
//   an IYUV texture, SDL_RenderCopy scaled to 960x540 (SDL converts to RGB and scales) and
//   SDL_RenderPresent.
// Every frame of both sides ends with glFinish (GL cases) and XSync, so a frame counts only
// once the rasteriser has drawn it and the X server has taken it. The pictures are eight
// successive pictures of the synthetic camera, cycled; the decoder is given them before the
// timing starts.
//
//   peer_bench [--frames N] [--case SUBSTRING]
// N frames per side and case (default 300). Needs a display with GLX of at least 1920x540:
// our tile is at the top left, the SDL window beside it (scripts/bench.sh starts Xvfb).
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <wx/dcclient.h>
#include <wx/display.h>
#include <wx/window.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/PixelFormat.h>
#include <renderer/OpenGLRenderer.h>
#include <renderer/Renderer.h>

#include "BenchDisplay.h"
#include "BenchPicture.h"
#include "ProcessUsage.h"
#include "SdlPeer.h"

namespace {

constexpr int kTileWidth = 960;
constexpr int kTileHeight = 540;
constexpr int kPictures = 8;
constexpr int kWarmUpFrames = 10;
constexpr int kBlockFrames = 10;

struct PeerCase {
  const char* name;
  bool gl;  // false: the software paths
  int format;
  int width;
  int height;
};

const PeerCase kCases[] = {
    {"gl-i420-1920x1080", true, PIXEL_FORMAT_I420, 1920, 1080},
    {"gl-i420-1280x720", true, PIXEL_FORMAT_I420, 1280, 720},
    {"gl-nv12-1280x720", true, PIXEL_FORMAT_NV12, 1280, 720},
    {"gl-rgb24-1280x720", true, PIXEL_FORMAT_RGB24, 1280, 720},
    {"software-i420-1280x720", false, PIXEL_FORMAT_I420, 1280, 720},
};

struct Options {
  int frames = 300;
  std::string only;
};

Options ParseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--frames") == 0) options.frames = std::max(1, std::atoi(argv[i + 1]));
    if (std::strcmp(argv[i], "--case") == 0) options.only = argv[i + 1];
  }
  return options;
}

// One side of a case: draws picture `index` (of kPictures) per call; keeps the wall-clock time
// of every timed frame and the process's processor time over them.
struct Side {
  std::function<bool(int index)> frame;
  std::vector<double> milliseconds;
  double cpuSeconds = 0;
  bool failed = false;

  void Run(int count, int& next, bool timed) {
    const double cpuStart = ProcessCpuSeconds();
    for (int i = 0; i < count && !failed; ++i) {
      const auto start = std::chrono::steady_clock::now();
      failed = !frame(next++ % kPictures);
      const auto end = std::chrono::steady_clock::now();
      if (timed)
        milliseconds.push_back(std::chrono::duration<double, std::milli>(end - start).count());
    }
    if (timed) cpuSeconds += ProcessCpuSeconds() - cpuStart;
  }
  int Frames() const { return static_cast<int>(milliseconds.size()); }
  double Median() const {
    std::vector<double> sorted = milliseconds;
    std::sort(sorted.begin(), sorted.end());
    return sorted.empty() ? 0.0 : sorted[sorted.size() / 2];
  }
  double Mean() const {
    double sum = 0;
    for (const double time : milliseconds) sum += time;
    return milliseconds.empty() ? 0.0 : sum / static_cast<double>(milliseconds.size());
  }
  double CpuMillisecondsPerFrame() const {
    return milliseconds.empty() ? 0.0 : cpuSeconds * 1000.0 / static_cast<double>(Frames());
  }
};

// Warm-up, then blocks of frames alternating between the sides until each has `frames`; the
// toolkit's and SDL's events are handled between blocks, outside the timing.
void RunInterleaved(Side& ours, Side& peer, int frames) {
  int oursNext = 0;
  int peerNext = 0;
  ours.Run(kWarmUpFrames, oursNext, false);
  peer.Run(kWarmUpFrames, peerNext, false);
  while (ours.Frames() < frames && !ours.failed && !peer.failed) {
    const int block = std::min(kBlockFrames, frames - ours.Frames());
    ours.Run(block, oursNext, true);
    PumpPending();
    peer.Run(block, peerNext, true);
    SdlPeer::PumpEvents();
  }
}

void Report(const PeerCase& peerCase, const Side& ours, const Side& peer) {
  if (ours.failed || peer.failed) {
    std::printf("peer %s: failed (%s side)\n", peerCase.name, ours.failed ? "our" : "SDL2");
    return;
  }
  const double oursMs = ours.Median();
  const double peerMs = peer.Median();
  std::printf("peer %s: ours %.2f ms, SDL2 %.2f ms, ratio %.2f\n", peerCase.name, oursMs, peerMs,
              peerMs > 0 ? oursMs / peerMs : 0.0);
  const double oursCpu = ours.CpuMillisecondsPerFrame();
  const double peerCpu = peer.CpuMillisecondsPerFrame();
  std::printf(
      "cpu %s: ours %.2f ms, SDL2 %.2f ms, ratio %.2f (processor time per frame, every "
      "thread; wall-clock means ours %.2f ms, SDL2 %.2f ms)\n",
      peerCase.name, oursCpu, peerCpu, peerCpu > 0 ? oursCpu / peerCpu : 0.0, ours.Mean(),
      peer.Mean());
  std::fflush(stdout);
}

// The SDL side of a case: the window beside our tile, one streaming texture, the whole window.
std::unique_ptr<SdlPeer> MakePeer(const PeerCase& peerCase, Side& side,
                                  const std::vector<BenchPicture>& pictures) {
  auto peer = std::make_unique<SdlPeer>(peerCase.gl ? "opengl" : "software", kTileWidth, 0,
                                        kTileWidth, kTileHeight);
  const int texture =
      peer->IsOk() ? peer->AddTexture(peerCase.format, peerCase.width, peerCase.height) : -1;
  if (texture < 0) {
    std::fprintf(stderr, "SDL2: %s\n", peer->Problem().c_str());
    return nullptr;
  }
  SdlPeer* sdl = peer.get();
  side.frame = [sdl, texture, &pictures](int index) {
    sdl->BeginFrame();
    const bool updated = sdl->Update(texture, pictures[static_cast<size_t>(index)]);
    sdl->Copy(texture, 0, 0, kTileWidth, kTileHeight);
    sdl->Present();
    return updated;
  };
  PumpFor(200);
  return peer;
}

// A case: its pictures, the SDL side, and our side as `makeOurs(pictures, run)` sets it up; it
// calls `run` with our side, which then runs interleaved with SDL's and is reported.
template <typename MakeOurs>
void RunCase(const PeerCase& peerCase, int frames, const MakeOurs& makeOurs) {
  const std::vector<BenchPicture> pictures =
      BenchPicture::FromCamera(peerCase.format, peerCase.width, peerCase.height, kPictures);
  Side peer;
  const std::unique_ptr<SdlPeer> sdl = MakePeer(peerCase, peer, pictures);
  if (!sdl) return;
  makeOurs(pictures, [&peerCase, &peer, frames](Side& ours) {
    RunInterleaved(ours, peer, frames);
    Report(peerCase, ours, peer);
  });
}

void RunGLCase(const PeerCase& peerCase, wxWindow* tile, int frames) {
  RunCase(peerCase, frames, [tile](const std::vector<BenchPicture>& pictures, const auto& run) {
    OpenGLRenderer renderer(tile);
    PumpFor(200);
    Side ours;
    ours.frame = [&renderer, &pictures](int index) {
      const BenchPicture& picture = pictures[static_cast<size_t>(index)];
      const CPixelLayout& layout = picture.Layout();
      unsigned char* planes[3] = {};
      int pitches[3] = {};
      if (!renderer.GetFrameBuffer(layout.GetWidth(), layout.GetHeight(), layout.GetFormat(),
                                   planes, pitches)) {
        return false;
      }
      picture.WriteTo(planes, pitches);
      renderer.FlushFrameBuffer(planes, pitches);
      renderer.Render(nullptr);
      FinishDrawing();
      return true;
    };
    run(ours);
  });
}

// The decoders hold the pictures before the timing starts, one picture each.
void RunSoftwareCase(const PeerCase& peerCase, wxWindow* tile, int frames) {
  RunCase(peerCase, frames,
          [tile, &peerCase](const std::vector<BenchPicture>& pictures, const auto& run) {
            std::vector<std::unique_ptr<CDecompressor>> decoders;
            for (const BenchPicture& picture : pictures) {
              decoders.push_back(std::make_unique<CDecompressor>());
              decoders.back()->PutFrame(picture.Planes(), picture.Pitches(), peerCase.format,
                                        peerCase.width, peerCase.height, 0);
            }
            Renderer facade(tile, RENDER_MODE_SOFTWARE);
            PumpFor(200);
            Side ours;
            ours.frame = [&facade, &decoders, &peerCase, tile](int index) {
              CDecompressor& decoder = *decoders[static_cast<size_t>(index)];
              int width = peerCase.width;
              int height = peerCase.height;
              int format = peerCase.format;
              wxRect source(0, 0, width, height);
              facade.NegotiateFormat(width, height, format, source, &decoder, nullptr);
              const bool copied = facade.CopyFrame(decoder, width, height, format, source, nullptr);
              {
                wxClientDC dc(tile);
                facade.Render(&dc);
              }
              FinishDrawing();
              return copied;
            };
            run(ours);
          });
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  // The toolkit sees no arguments: they are this program's.
  return RunWithTile(1, argv, wxSize(kTileWidth, kTileHeight), [&options](wxWindow* tile) {
    const wxRect screen = wxDisplay(0u).GetGeometry();
    if (screen.width < 2 * kTileWidth || screen.height < kTileHeight) {
      std::fprintf(stderr, "the screen (%dx%d) must be at least %dx%d\n", screen.width,
                   screen.height, 2 * kTileWidth, kTileHeight);
      return 1;
    }
    std::printf("machine before: %s\n", MachineLoad().c_str());
    for (const PeerCase& peerCase : kCases) {
      if (!options.only.empty() && std::strstr(peerCase.name, options.only.c_str()) == nullptr) {
        continue;
      }
      if (peerCase.gl) {
        RunGLCase(peerCase, tile, options.frames);
      } else {
        RunSoftwareCase(peerCase, tile, options.frames);
      }
    }
    std::printf("machine after: %s\n", MachineLoad().c_str());
    return 0;
  });
}
