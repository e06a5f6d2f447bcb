// SoakDriver: random choices from the seed, carried out through the wall.
#include "SoakDriver.h"

#include <algorithm>

#include <renderer/Renderer.h>

#include "WallFrame.h"

namespace {

constexpr int kFramesPerAction = 4;
constexpr int kSoloFrames = 8;
constexpr RenderMode kModes[] = {RENDER_MODE_AUTO, RENDER_MODE_OPENGL, RENDER_MODE_SOFTWARE};
constexpr const char* kNames[kSoakActionCount] = {
    "resize",       "hide", "show", "solo",      "render-mode", "force-fallback",
    "end-fallback", "zoom", "pan",  "reset-ptz", "kill-source", "restore-source"};

// An index from 0 to count - 1 for an amount from 0 to 1.
int Pick(double amount, int count) { return std::min(count - 1, static_cast<int>(amount * count)); }

}  // namespace

bool SoakStep::operator==(const SoakStep& other) const {
  return action == other.action && tile == other.tile && x == other.x && y == other.y &&
         amount == other.amount;
}

SoakDriver::SoakDriver(unsigned long seed, int tiles, wxSize window)
    : m_random(static_cast<std::mt19937::result_type>(seed)),
      m_tiles(std::max(1, tiles)),
      m_window(window) {}

// Every number is drawn whether it is used or not, so that a step always takes as many draws.
std::optional<SoakStep> SoakDriver::Choose() {
  std::uniform_int_distribution<int> frame(0, kFramesPerAction - 1);
  std::uniform_int_distribution<int> action(0, kSoakActionCount - 1);
  std::uniform_int_distribution<int> tile(0, m_tiles - 1);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const bool acts = frame(m_random) == 0;
  SoakStep step{static_cast<SoakAction>(action(m_random)), tile(m_random), unit(m_random),
                unit(m_random), unit(m_random)};
  if (m_soloFramesLeft > 0 && --m_soloFramesLeft == 0) {
    return SoakStep{SoakAction::Solo, 0, 0, 0, 0};  // back to the grid
  }
  if (!acts) return std::nullopt;
  return step;
}

long long SoakDriver::Total() const {
  long long total = 0;
  for (const long long taken : m_taken) total += taken;
  return total;
}

const char* SoakDriver::Name(SoakAction action) {
  const auto index = static_cast<size_t>(action);
  return index < kSoakActionCount ? kNames[index] : "unknown";
}

// The window is resized between half and five quarters of its first size.
void SoakDriver::Apply(const SoakStep& step, WallFrame& wall) {
  const auto index = static_cast<size_t>(step.action);
  if (index >= kSoakActionCount) return;
  ++m_taken[index];
  if (step.action == SoakAction::Resize) {
    wall.SetSize(wxSize(static_cast<int>(m_window.x * (0.5 + 0.75 * step.x)),
                        static_cast<int>(m_window.y * (0.5 + 0.75 * step.y))));
    return;
  }
  ApplyToTile(step, wall);
}

void SoakDriver::Restore(WallFrame& wall) {
  wall.SetSize(m_window);
  wall.SetLayout(wall.GetWallLayout());
  m_soloFramesLeft = 0;
  m_killed.clear();
}

void SoakDriver::ApplyToTile(const SoakStep& step, WallFrame& wall) {
  const std::vector<VideoTile*>& tiles = wall.Tiles();
  if (tiles.empty()) return;
  const size_t index = static_cast<size_t>(step.tile) % tiles.size();
  VideoTile* tile = tiles[index];
  const auto u = static_cast<float>(step.x);
  const auto v = static_cast<float>(step.y);
  switch (step.action) {
    case SoakAction::HideTile: wall.SetTileShown(tile, false); break;
    case SoakAction::ShowTile: wall.SetTileShown(tiles[HiddenTileFrom(wall, index)], true); break;
    case SoakAction::Solo:
      wall.ToggleSolo(wall.SoloTile() ? wall.SoloTile() : tile);
      m_soloFramesLeft = wall.SoloTile() ? kSoloFrames : 0;
      break;
    case SoakAction::RenderMode: tile->SetRenderMode(kModes[Pick(step.amount, 3)]); break;
    case SoakAction::ForceFallback: tile->GetRenderer()->ForceSoftwareMode(true); break;
    case SoakAction::EndFallback: tile->GetRenderer()->ForceSoftwareMode(false); break;
    case SoakAction::Zoom: tile->ZoomAt(u, v, static_cast<float>(0.5 + 1.5 * step.amount)); break;
    case SoakAction::Pan: tile->PanBy(u - 0.5f, v - 0.5f); break;
    case SoakAction::ResetPtz: tile->ResetPtz(); break;
    case SoakAction::KillSource:
      wall.KillSource(index);
      m_killed.insert(index);
      break;
    case SoakAction::RestoreSource: {
      const size_t killed = KilledTileFrom(index);
      wall.RestoreSource(killed);
      m_killed.erase(killed);
      break;
    }
    case SoakAction::Resize: break;
  }
}

size_t SoakDriver::HiddenTileFrom(const WallFrame& wall, size_t index) {
  const std::vector<VideoTile*>& tiles = wall.Tiles();
  for (size_t i = 0; i < tiles.size(); ++i) {
    const size_t candidate = (index + i) % tiles.size();
    if (!tiles[candidate]->IsShown()) return candidate;
  }
  return index;
}

size_t SoakDriver::KilledTileFrom(size_t index) const {
  const auto next = m_killed.lower_bound(index);
  if (next != m_killed.end()) return *next;
  return m_killed.empty() ? index : *m_killed.begin();
}
