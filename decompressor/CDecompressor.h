// CDecompressor: the decoder object of one camera stream.
//
// This part holds the video-output factory that the whole process shares: a host that can
// present pictures on a surface of its own registers a factory, and from then on renderers
// hand frames to video outputs instead of drawing them.
#pragma once

#include <functional>

class IVideoOutput;

class CDecompressor {
 public:
  using VideoOutputFactory = std::function<IVideoOutput*()>;

  // Registers the process-wide factory; an empty one unregisters it.
  static void SetVideoOutputFactory(VideoOutputFactory factory);

  // True while a factory is registered.
  static bool HasVideoOutput();

  // A new video output from the factory (owned by the caller), or null without one.
  static IVideoOutput* CreateVideoOutput();

  // Deletes the output (null is fine) and sets the pointer to null.
  static void DeleteVideoOutput(IVideoOutput*& output);
};
