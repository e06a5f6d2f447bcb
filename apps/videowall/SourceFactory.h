// SourceFactory: the source of each tile: the operator's list cycled over the tiles, or, with
// no list, synthetic cameras of a few sizes (H.264 encoded in memory, so decoding is real).
//
// It creates sources but opens none (the tiles' workers do).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "IPacketSource.h"

class SourceFactory {
 public:
  explicit SourceFactory(std::vector<std::string> locations);

  // The source of tile `index` (0 first).
  std::unique_ptr<IPacketSource> Make(int index) const;
  // The camera size tile `index` gets when no list was given.
  static void SyntheticSize(int index, int& width, int& height);

 private:
  std::vector<std::string> m_locations;
};
