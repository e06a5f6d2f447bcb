// TestMovieWriter: writes a TestEncoder's packets into a movie file with libavformat, the
// container chosen by the file name (.mkv, .mp4, .avi, .ts). For the media-source tests,
// which read such files back; it does not encode.
#pragma once

#include <memory>
#include <string>

#include <decompressor/AvHandles.h>

#include "TestEncoder.h"

class TestMovieWriter {
 public:
  TestMovieWriter(const std::string& path, const TestEncoder& encoder);

  bool IsOpen() const { return m_output != nullptr; }

  bool Write(const EncodedPacket& packet);
  // Writes the trailer and closes the file.
  bool Finish();

 private:
  struct OutputCloser {
    void operator()(AVFormatContext* context) const;
  };

  bool Open(const std::string& path);

  const TestEncoder& m_encoder;
  std::unique_ptr<AVFormatContext, OutputCloser> m_output;
  AvPacketPtr m_packet;
};
