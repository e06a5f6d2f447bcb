// WallMovie: short H.264 movies of the synthetic camera for the wall's tests (file sources and
// the body of a local HTTP stream), written with the decoder tests' encoder and movie writer.
//
// It only writes files; it plays nothing.
#pragma once

#include <string>

class WallMovie {
 public:
  // `pictures` pictures at 25 per second (a key frame every ten) into `path`, the container
  // chosen by its extension (.mkv, .ts, ...). False when anything failed.
  static bool Write(const std::string& path, int width, int height, int pictures);
  // A path in the test's temporary directory.
  static std::string TempPath(const std::string& name);
};
