// IPacketSource: where a tile's compressed video comes from (a synthetic camera, a file, a
// network stream), as the tile's worker thread reads it.
//
// Implementations may block in Open and ReadPacket (never longer than their own timeout) and
// are used from one thread only. They do not decode and do not reconnect: the worker does.
#pragma once

#include <string>

#include <decompressor/DecompressorTypes.h>

class IPacketSource {
 public:
  virtual ~IPacketSource() = default;

  // Opens (or reopens) the source: DECOMP_OK or a DECOMP_ERROR_* code.
  virtual int Open() = 0;
  virtual void Close() = 0;
  // The video stream of the open source.
  virtual const VideoStreamInfo_t& StreamInfo() const = 0;
  // The next packet: DECOMP_OK, DECOMP_END_OF_STREAM (the source is gone) or an error code.
  virtual int ReadPacket(MediaPacket_t& packet) = 0;
  // Whether packets are to be shown at their own rate (files and synthetic cameras) rather
  // than as fast as they arrive (live streams).
  virtual bool IsPaced() const = 0;
  // What the operator sees as the camera's origin: a URL, a path, "synthetic 640x360".
  virtual std::string Location() const = 0;
};
