// WallMovie: synthetic camera, x264, libavformat.
#include "WallMovie.h"

#include <decompressor/CSyntheticCamera.h>
#include <gtest/gtest.h>

#include "TestEncoder.h"
#include "TestMovieWriter.h"

bool WallMovie::Write(const std::string& path, int width, int height, int pictures) {
  CSyntheticCamera camera(width, height, 25);
  const bool transportStream = path.size() > 3 && path.compare(path.size() - 3, 3, ".ts") == 0;
  TestEncoder encoder("libx264", width, height, 25, !transportStream);
  TestMovieWriter writer(path, encoder);
  if (!writer.IsOpen()) return false;
  for (int index = 0; index < pictures; ++index) {
    camera.Render(index);
    if (!encoder.Encode(camera.GetPlanes(), camera.GetPitches(), index)) return false;
  }
  if (!encoder.Finish()) return false;
  for (const EncodedPacket& packet : encoder.Packets()) {
    if (!writer.Write(packet)) return false;
  }
  return writer.Finish();
}

std::string WallMovie::TempPath(const std::string& name) { return testing::TempDir() + name; }
