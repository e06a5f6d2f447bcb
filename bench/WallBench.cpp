// A wall of tiles in one 1920x1080 top-level window, each tile a Renderer facade in OpenGL mode
// on a window of its own, fed 1280x720 I420 pictures at 25 pictures per second and painted
// after each: 4x4 tiles of 480x270 and 8x8 tiles of 240x135. Beside it, SDL2 drawing the same
// N streaming textures into one window of the same size with one present per wall frame.
//
// Per layout, three runs one after the other (the machine has few cores; they must not meet):
// - decoding excluded: every wall frame each tile's decoder takes a raw picture (PutFrame) and
//   the tile goes through NegotiateFormat, CopyFrame and Render (client DC);
// - decoding included: each tile's worker thread decodes the synthetic camera's H.264 stream
//   at 25 pictures per second (the video wall's TileFeed), and every wall frame each tile with
//   a new picture goes through NegotiateFormat, CopyFrame and Render;
// - SDL2 ("opengl" render driver): per wall frame SDL_RenderClear, per tile
//   SDL_UpdateYUVTexture of a 1280x720 IYUV texture and SDL_RenderCopy into the tile's
//   rectangle, then one SDL_RenderPresent.
// Every wall frame ends with glFinish and XSync, so it counts only once drawn. A wall frame
// is due every 40 ms; one not started before the next is due is dropped for every tile.
//
// Reported per run: painted pictures per second per tile (the slowest tile and the mean),
// pictures dropped, the wall frame's time (p50 and p99), and processor use of the whole
// process and of its drawing side (the GUI thread and the GL rasteriser's threads, less the
// time the decoders spent taking raw pictures): in cores used, and per wall frame drawn with
// the cores that makes at 25 wall frames per second (on a machine busy with other work the
// cores used only tell the share the run was given; the time per frame tells what a frame
// costs). For our wall also the resident memory per tile beside the bytes of a tile's
// textures, pixel buffers and colour buffer; and our processor time per wall frame against
// SDL2's.
//
//   wall_bench [--layout 4x4|8x8] [--seconds S] [--scale-threshold T]
// Both layouts by default, S seconds measured per run (default 10) after 2 s of warm-up. T sets
// our facades' software-scaling threshold (a host's choice through a subclass; by default the
// facade's own 0.2, under which the decoder scales each 1280x720 picture down to the tile);
// 0 hands every tile the whole picture for the GL back-end to scale.
// Needs a display with GLX of at least 1920x1080 (scripts/bench.sh starts Xvfb).
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <thread>
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
#include "SyntheticPacketSource.h"
#include "SyntheticStream.h"
#include "TileFeed.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWallWidth = 1920;
constexpr int kWallHeight = 1080;
constexpr int kPictureWidth = 1280;
constexpr int kPictureHeight = 720;
constexpr int kPictures = 8;
constexpr std::chrono::milliseconds kPeriod(40);  // 25 wall frames per second
constexpr double kWarmUpSeconds = 2.0;

struct Options {
  std::vector<int> layouts{4, 8};
  double seconds = 10.0;
  float scaleThreshold = -1.0f;  // below 0: the facade's own
};

Options ParseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--layout") == 0)
      options.layouts = {std::max(1, std::atoi(argv[i + 1]))};
    if (std::strcmp(argv[i], "--seconds") == 0)
      options.seconds = std::max(1.0, std::atof(argv[i + 1]));
    if (std::strcmp(argv[i], "--scale-threshold") == 0)
      options.scaleThreshold = std::max(0.0f, static_cast<float>(std::atof(argv[i + 1])));
  }
  return options;
}

// The rectangle of tile `index` in a `side` x `side` wall.
wxRect TileRect(int index, int side) {
  const int width = kWallWidth / side;
  const int height = kWallHeight / side;
  return wxRect(index % side * width, index / side * height, width, height);
}

// The facade of a tile, with a look at its back-end for the memory account, and optionally
// another software-scaling threshold (what a host subclassing the facade can choose).
class WallRenderer : public Renderer {
 public:
  WallRenderer(wxWindow* tile, float scaleThreshold) : Renderer(tile, RENDER_MODE_OPENGL) {
    if (scaleThreshold >= 0.0f) m_softwareScaleThreshold = scaleThreshold;
  }

  // Bytes of the GL back-end's textures, their pixel buffers (or its client-memory frame
  // buffer) and its canvas's colour buffer, for I420 frames of `frame` size; 0 when the
  // back-end is not OpenGL.
  long long FrameBytes(const wxSize& frame) {
    auto* gl = dynamic_cast<OpenGLRenderer*>(m_renderer);
    if (!gl || frame.x < 1 || frame.y < 1) return 0;
    const wxSize texture = gl->DetermineTextureSize(frame.x, frame.y);
    const long long planes =
        static_cast<long long>(texture.x) * texture.y + 2LL * (texture.x / 2) * (texture.y / 2);
    const wxSize canvas = GetRenderClientSize();
    // Pixel buffers or the client-memory frame buffer: the planes' bytes again either way.
    return 2 * planes + 4LL * canvas.x * canvas.y;
  }
};

// One tile of our wall: its window, facade, worker (when decoding) and what it painted.
struct Tile {
  wxWindow* window = nullptr;
  std::unique_ptr<WallRenderer> renderer;
  std::unique_ptr<TileFeed> feed;
  long long painted = 0;
  wxSize frame;  // the size of the last frame the facade negotiated
};

// What one run measured.
struct RunFigures {
  double seconds = 0;
  std::vector<double> frameMs;
  std::vector<long long> painted;  // per tile
  long long dropped = 0;
  double processCpu = 0;
  double drawingCpu = 0;

  // Processor time per wall frame drawn, milliseconds: what a frame costs whatever share of the
  // processors the run was given (on a busy machine the cores used say more about the others).
  double ProcessMsPerFrame() const { return PerFrame(processCpu); }
  double DrawingMsPerFrame() const { return PerFrame(drawingCpu); }

 private:
  double PerFrame(double cpuSeconds) const {
    return frameMs.empty() ? 0.0 : cpuSeconds * 1000.0 / static_cast<double>(frameMs.size());
  }
};

double Percentile(std::vector<double> values, double fraction) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const size_t index = std::min(values.size() - 1, static_cast<size_t>(fraction * values.size()));
  return values[index];
}

// A wall frame: the slot it is due in, and whether it is measured (after the warm-up).
using WallFrame = std::function<void(long long slot, bool measured)>;

// Runs `frame` once per 40 ms slot for `seconds` after the warm-up, dropping the slots that
// were missed (for `tiles` tiles each), and fills in the times, drops and processor use.
// `feedCpu` is processor time of the drawing thread to leave out of the drawing side (raw
// pictures taken by the decoders), as it grows.
void RunPaced(double seconds, int tiles, const WallFrame& frame, const double& feedCpu,
              RunFigures& figures) {
  const Clock::time_point start = Clock::now();
  const auto warmUp =
      std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(kWarmUpSeconds));
  const auto measured =
      std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  bool measuring = false;
  Clock::time_point measureStart;
  double processStart = 0;
  double drawingStart = 0;
  double feedStart = 0;
  for (long long slot = 0;; ++slot) {
    const Clock::time_point due = start + slot * kPeriod;
    if (!measuring && due >= start + warmUp) {
      measuring = true;
      measureStart = due;
      processStart = ProcessCpuSeconds();
      drawingStart = DrawingCpuSeconds();
      feedStart = feedCpu;
    }
    if (measuring && due >= measureStart + measured) break;
    PumpPending();
    std::this_thread::sleep_until(due);
    const long long late = (Clock::now() - start) / kPeriod - slot;
    if (late > 0) {
      if (measuring) figures.dropped += late * tiles;
      slot += late;
      continue;
    }
    const Clock::time_point begin = Clock::now();
    frame(slot, measuring);
    if (measuring) {
      figures.frameMs.push_back(
          std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    }
  }
  figures.seconds = std::chrono::duration<double>(Clock::now() - measureStart).count();
  figures.processCpu = ProcessCpuSeconds() - processStart;
  figures.drawingCpu = DrawingCpuSeconds() - drawingStart - (feedCpu - feedStart);
}

void PrintRun(const char* what, int side, const RunFigures& figures) {
  const double seconds = std::max(figures.seconds, 1e-9);
  std::printf("wall %dx%d %s: ", side, side, what);
  if (!figures.painted.empty()) {
    const long long slowest = *std::min_element(figures.painted.begin(), figures.painted.end());
    long long total = 0;
    for (const long long painted : figures.painted) total += painted;
    std::printf("%.1f fps per tile (slowest %.1f), ",
                static_cast<double>(total) / static_cast<double>(figures.painted.size()) / seconds,
                static_cast<double>(slowest) / seconds);
  }
  std::printf(
      "dropped %lld, frame time p50 %.1f ms p99 %.1f ms, CPU %.2f cores used (drawing "
      "%.2f), %.1f ms per wall frame (drawing %.1f ms, %.2f cores at 25 fps)\n",
      figures.dropped, Percentile(figures.frameMs, 0.5), Percentile(figures.frameMs, 0.99),
      figures.processCpu / seconds, figures.drawingCpu / seconds, figures.ProcessMsPerFrame(),
      figures.DrawingMsPerFrame(), figures.DrawingMsPerFrame() * 25.0 / 1000.0);
  std::fflush(stdout);
}

// Our wall: N tile windows on the wall window, each with its facade.
class OurWall {
 public:
  OurWall(wxWindow* wall, int side, float scaleThreshold) : m_side(side) {
    for (int i = 0; i < side * side; ++i) {
      Tile tile;
      const wxRect rect = TileRect(i, side);
      tile.window = new wxWindow(wall, wxID_ANY, rect.GetPosition(), rect.GetSize());
      tile.renderer = std::make_unique<WallRenderer>(tile.window, scaleThreshold);
      m_tiles.push_back(std::move(tile));
    }
    PumpFor(300);
  }
  ~OurWall() {
    for (Tile& tile : m_tiles) {
      tile.feed.reset();
      tile.renderer.reset();
      tile.window->Destroy();
    }
    PumpFor(200);
  }
  OurWall(const OurWall&) = delete;
  OurWall& operator=(const OurWall&) = delete;

  std::vector<Tile>& Tiles() { return m_tiles; }

  // Negotiation, copy and paint of the decoder's latest picture into tile `tile`.
  static bool Show(Tile& tile, CDecompressor& decoder) {
    int width = decoder.GetWidth();
    int height = decoder.GetHeight();
    int format = PIXEL_FORMAT_I420;
    wxRect source(0, 0, width, height);
    tile.renderer->NegotiateFormat(width, height, format, source, &decoder, nullptr);
    tile.frame = wxSize(width, height);
    if (!tile.renderer->CopyFrame(decoder, width, height, format, source, nullptr)) return false;
    wxClientDC dc(tile.window);
    tile.renderer->Render(&dc);
    return true;
  }

  long long FrameBytesPerTile() {
    long long total = 0;
    for (Tile& tile : m_tiles) total += tile.renderer->FrameBytes(tile.frame);
    return m_tiles.empty() ? 0 : total / static_cast<long long>(m_tiles.size());
  }

 private:
  int m_side;
  std::vector<Tile> m_tiles;
};

void CollectPainted(const std::vector<Tile>& tiles, RunFigures& figures) {
  for (const Tile& tile : tiles) figures.painted.push_back(tile.painted);
}

// The raw pictures' decoders, one per tile, each having taken and scaled (to the size the tile
// will ask for) every picture once, so that the decoders' own memory is in place before the
// tiles' is counted.
std::vector<std::unique_ptr<CDecompressor>> MakeDecoders(
    int side, const std::vector<BenchPicture>& pictures) {
  const wxRect rect = TileRect(0, side);
  const int width = rect.width & ~1;
  const int height = rect.height & ~1;
  BenchPicture scratch(PIXEL_FORMAT_I420, width, height);
  unsigned char* planes[3] = {scratch.Planes()[0], scratch.Planes()[1], scratch.Planes()[2]};
  int pitches[3] = {scratch.Pitches()[0], scratch.Pitches()[1], scratch.Pitches()[2]};
  std::vector<std::unique_ptr<CDecompressor>> decoders;
  for (int i = 0; i < side * side; ++i) {
    decoders.push_back(std::make_unique<CDecompressor>());
    for (const BenchPicture& picture : pictures) {
      decoders.back()->PutFrame(picture.Planes(), picture.Pitches(), PIXEL_FORMAT_I420,
                                kPictureWidth, kPictureHeight, 0);
      decoders.back()->GetImage(planes, pitches, PIXEL_FORMAT_I420, width, height, 0, 0,
                                kPictureWidth, kPictureHeight, nullptr);
    }
  }
  return decoders;
}

// Decoding excluded: each wall frame, every tile's decoder takes a raw picture, which is shown.
RunFigures RunRaw(OurWall& wall, const std::vector<std::unique_ptr<CDecompressor>>& decoders,
                  const std::vector<BenchPicture>& pictures, double seconds) {
  std::vector<Tile>& tiles = wall.Tiles();
  RunFigures figures;
  double feedCpu = 0;
  const auto frame = [&](long long slot, bool measured) {
    for (size_t i = 0; i < tiles.size(); ++i) {
      const BenchPicture& picture =
          pictures[static_cast<size_t>(slot + static_cast<long long>(i)) % pictures.size()];
      CDecompressor& decoder = *decoders[i];
      const double before = ThreadCpuSeconds();
      decoder.PutFrame(picture.Planes(), picture.Pitches(), PIXEL_FORMAT_I420, kPictureWidth,
                       kPictureHeight, slot);
      feedCpu += ThreadCpuSeconds() - before;
      if (OurWall::Show(tiles[i], decoder) && measured) ++tiles[i].painted;
    }
    FinishDrawing();
  };
  RunPaced(seconds, static_cast<int>(tiles.size()), frame, feedCpu, figures);
  CollectPainted(tiles, figures);
  return figures;
}

// Decoding included: the tiles' workers decode the synthetic camera; each wall frame shows
// every tile whose worker has a new picture.
RunFigures RunDecoded(OurWall& wall, double seconds) {
  std::vector<Tile>& tiles = wall.Tiles();
  for (size_t i = 0; i < tiles.size(); ++i) {
    tiles[i].painted = 0;
    tiles[i].feed = std::make_unique<TileFeed>(std::make_unique<SyntheticPacketSource>(
        kPictureWidth, kPictureHeight, static_cast<int>(i * 7)));
  }
  RunFigures figures;
  const double noFeed = 0;
  long long droppedBefore = -1;
  const auto frame = [&](long long, bool measured) {
    if (measured && droppedBefore < 0) {
      droppedBefore = 0;
      for (Tile& tile : tiles) droppedBefore += tile.feed->Dropped();
    }
    for (Tile& tile : tiles) {
      bool shown = false;
      tile.feed->TakePicture([&tile, &shown](CDecompressor& decoder, double) {
        shown = OurWall::Show(tile, decoder);
      });
      if (shown && measured) ++tile.painted;
    }
    FinishDrawing();
  };
  RunPaced(seconds, 0, frame, noFeed, figures);
  for (Tile& tile : tiles) figures.dropped += tile.feed->Dropped();
  figures.dropped -= std::max(0LL, droppedBefore);
  CollectPainted(tiles, figures);
  for (Tile& tile : tiles) tile.feed.reset();
  return figures;
}

// SDL2's wall: one window over the screen's top left, N streaming textures, one present.
RunFigures RunSdl(int side, const std::vector<BenchPicture>& pictures, double seconds) {
  RunFigures figures;
  SdlPeer peer("opengl", 0, 0, kWallWidth, kWallHeight);
  std::vector<int> textures;
  for (int i = 0; i < side * side && peer.IsOk(); ++i) {
    textures.push_back(peer.AddTexture(PIXEL_FORMAT_I420, kPictureWidth, kPictureHeight));
  }
  if (!peer.IsOk() || std::find(textures.begin(), textures.end(), -1) != textures.end()) {
    std::fprintf(stderr, "SDL2: %s\n", peer.Problem().c_str());
    return figures;
  }
  PumpFor(200);
  const double noFeed = 0;
  const auto frame = [&](long long slot, bool) {
    peer.BeginFrame();
    for (int i = 0; i < side * side; ++i) {
      const wxRect rect = TileRect(i, side);
      peer.Update(textures[static_cast<size_t>(i)],
                  pictures[static_cast<size_t>(slot + i) % pictures.size()]);
      peer.Copy(textures[static_cast<size_t>(i)], rect.x, rect.y, rect.width, rect.height);
    }
    peer.Present();
    SdlPeer::PumpEvents();
  };
  RunPaced(seconds, side * side, frame, noFeed, figures);
  return figures;
}

void RunLayout(wxWindow* wall, int side, const std::vector<BenchPicture>& pictures,
               const Options& options) {
  const double seconds = options.seconds;
  const std::vector<std::unique_ptr<CDecompressor>> decoders = MakeDecoders(side, pictures);
  const int64_t residentBefore = ResidentBytes();
  RunFigures raw;
  int64_t residentPerTile = 0;
  long long frameBytes = 0;
  {
    OurWall ours(wall, side, options.scaleThreshold);
    raw = RunRaw(ours, decoders, pictures, seconds);
    residentPerTile = (ResidentBytes() - residentBefore) / (side * side);
    frameBytes = ours.FrameBytesPerTile();
    PrintRun("decoding excluded", side, raw);
    PrintRun("decoding included", side, RunDecoded(ours, seconds));
  }
  std::printf(
      "wall %dx%d memory: %.2f MB resident per GL tile, %.2f MB of its textures, pixel "
      "buffers and colour buffer, ratio %.2f\n",
      side, side, static_cast<double>(residentPerTile) / 1e6, static_cast<double>(frameBytes) / 1e6,
      frameBytes > 0 ? static_cast<double>(residentPerTile) / static_cast<double>(frameBytes)
                     : 0.0);
  wall->GetParent()->Hide();
  PumpFor(200);
  const RunFigures sdl = RunSdl(side, pictures, seconds);
  PrintRun("SDL2", side, sdl);
  wall->GetParent()->Show();
  PumpFor(200);
  if (sdl.ProcessMsPerFrame() > 0) {
    std::printf(
        "wall %dx%d CPU per wall frame, decoding excluded: ours %.1f ms, SDL2 %.1f ms, "
        "ratio %.2f\n",
        side, side, raw.ProcessMsPerFrame(), sdl.ProcessMsPerFrame(),
        raw.ProcessMsPerFrame() / sdl.ProcessMsPerFrame());
  }
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  // The synthetic camera's stream is encoded once, before anything is measured.
  SyntheticStream::ForSize(kPictureWidth, kPictureHeight);
  // The toolkit sees no arguments: they are this program's.
  return RunWithTile(1, argv, wxSize(kWallWidth, kWallHeight), [&options](wxWindow* wall) {
    const wxRect screen = wxDisplay(0u).GetGeometry();
    if (screen.width < kWallWidth || screen.height < kWallHeight) {
      std::fprintf(stderr, "the screen (%dx%d) must be at least %dx%d\n", screen.width,
                   screen.height, kWallWidth, kWallHeight);
      return 1;
    }
    const std::vector<BenchPicture> pictures =
        BenchPicture::FromCamera(PIXEL_FORMAT_I420, kPictureWidth, kPictureHeight, kPictures);
    std::printf("machine before: %s\n", MachineLoad().c_str());
    for (const int side : options.layouts) RunLayout(wall, side, pictures, options);
    std::printf("machine after: %s\n", MachineLoad().c_str());
    return 0;
  });
}
