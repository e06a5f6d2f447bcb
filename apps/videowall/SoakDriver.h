// SoakDriver: the soak run's random operator. From a seed it chooses, frame after frame, what a
// restless operator and an unreliable network would do to the wall: resize the window, hide and
// show tiles, show one tile alone, switch a tile's render mode, force a tile's facade into
// software fallback and out of it, zoom, pan and reset the digital PTZ, kill a tile's source
// and bring it back.
//
// The choices depend on the seed alone, so a run can be repeated exactly; they are carried out
// through the wall's and the tiles' own operations. A tile shown alone goes back to the grid a
// few frames later, and showing or restoring picks a hidden tile or a killed source where there
// is one, so that most tiles play most of the time. It checks and measures nothing (SoakRun
// does).
#pragma once

#include <array>
#include <optional>
#include <random>
#include <set>

#include <wx/gdicmn.h>

class WallFrame;

enum class SoakAction {
  Resize,
  HideTile,
  ShowTile,
  Solo,
  RenderMode,
  ForceFallback,
  EndFallback,
  Zoom,
  Pan,
  ResetPtz,
  KillSource,
  RestoreSource,
};
constexpr int kSoakActionCount = 12;

// One choice: the action, the tile it concerns, and two places and an amount, each from 0 to 1,
// which the action reads as it needs.
struct SoakStep {
  SoakAction action;
  int tile;
  double x;
  double y;
  double amount;

  bool operator==(const SoakStep& other) const;
};

class SoakDriver {
 public:
  // An operator for a wall of `tiles` tiles whose window starts at `window`.
  SoakDriver(unsigned long seed, int tiles, wxSize window);

  // The choice for the next frame: an action about one frame in four, otherwise none; the end
  // of a tile's time alone when it is due.
  std::optional<SoakStep> Choose();
  // Carries `step` out on `wall` and counts it.
  void Apply(const SoakStep& step, WallFrame& wall);
  // Undoes what the actions left: the window back at its first size, and the wall's tiles made
  // anew (every tile shown in the grid, in the wall's render mode, zoomed out, with its first
  // source), as the wall was first built. Not counted as an action.
  void Restore(WallFrame& wall);

  long long Taken(SoakAction action) const { return m_taken[static_cast<size_t>(action)]; }
  long long Total() const;
  static const char* Name(SoakAction action);

 private:
  void ApplyToTile(const SoakStep& step, WallFrame& wall);
  // The first tile from `index` on (round the wall) that is hidden; `index` when none is.
  static size_t HiddenTileFrom(const WallFrame& wall, size_t index);
  // The first tile from `index` on whose source was killed; `index` when none was.
  size_t KilledTileFrom(size_t index) const;

  std::mt19937 m_random;
  int m_tiles;
  wxSize m_window;
  std::array<long long, kSoakActionCount> m_taken{};
  int m_soloFramesLeft = 0;  // frames until the tile shown alone goes back to the grid
  std::set<size_t> m_killed;
};
