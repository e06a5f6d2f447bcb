// ITileListener: what a tile tells the wall about the operator's clicks on it (selection and
// the double-click that shows a tile alone).
//
// Only these two: zoom and pan gestures stay inside the tile.
#pragma once

class VideoTile;

class ITileListener {
 public:
  virtual ~ITileListener() = default;
  virtual void OnTileSelected(VideoTile* tile) = 0;
  virtual void OnTileDoubleClicked(VideoTile* tile) = 0;
};
