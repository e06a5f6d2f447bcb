// SourceFactory: the source of each tile: the operator's list cycled over the tiles, or, with
// no list, synthetic cameras of a few sizes (H.264 encoded in memory, so decoding is real):
// the wall's own, or small ones for the soak run, which paints as fast as it can.
//
// It creates sources but opens none (the tiles' workers do).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "IPacketSource.h"

enum class SyntheticCameras { Wall, Small };

class SourceFactory {
 public:
  explicit SourceFactory(std::vector<std::string> locations,
                         SyntheticCameras cameras = SyntheticCameras::Wall);

  // The source of tile `index` (0 first).
  std::unique_ptr<IPacketSource> Make(int index) const;
  // The camera size tile `index` gets when no list was given.
  void SyntheticSize(int index, int& width, int& height) const;

 private:
  std::vector<std::string> m_locations;
  SyntheticCameras m_cameras;
};
