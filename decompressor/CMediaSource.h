// CMediaSource: compressed video packets from a file or a network stream, through libavformat.
//
// Open takes a file path or a URL (rtsp://, http://, and whatever else the installed
// libavformat reads), picks the best video stream and describes it (VideoStreamInfo_t) so a
// CDecompressor can be opened for it; ReadPacket then yields that stream's packets one by one,
// skipping all other streams. Every blocking step (opening, probing, each read) gives up after
// the timeout, so a dead camera cannot hang its caller. RTSP is asked for over TCP, which
// passes firewalls and loses no packets.
//
// It does not decode, does not pace packets to their timestamps (a host shows them when it
// likes), does not reconnect by itself and holds no thread.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "DecompressorTypes.h"

struct AVFormatContext;
struct AVPacket;

class CMediaSource {
 public:
  static constexpr int kDefaultTimeoutMs = 5000;

  CMediaSource();
  ~CMediaSource();
  CMediaSource(const CMediaSource&) = delete;
  CMediaSource& operator=(const CMediaSource&) = delete;

  // Opens `location` (closing an earlier one). DECOMP_OK, DECOMP_ERROR_OPEN_FAILED (no such
  // file, refused connection, no video stream) or DECOMP_ERROR_TIMEOUT.
  int Open(const std::string& location, int timeoutMs = kDefaultTimeoutMs);
  void Close();
  bool IsOpen() const { return m_format != nullptr; }

  // The video stream of the open source (empty codec while none is open).
  const VideoStreamInfo_t& GetStreamInfo() const { return m_info; }

  // Refills `packet` with the next packet of the video stream; its storage is reused.
  // DECOMP_OK, DECOMP_END_OF_STREAM, DECOMP_ERROR_NOT_OPEN, DECOMP_ERROR_IO or
  // DECOMP_ERROR_TIMEOUT.
  int ReadPacket(MediaPacket_t& packet);

 private:
  struct FormatCloser {
    void operator()(AVFormatContext* context) const;
  };
  struct PacketFreer {
    void operator()(AVPacket* packet) const;
  };

  static int Interrupt(void* self);
  void StartWaiting();
  bool HasTimedOut(int error) const;
  int OpenFailure(int error) const;
  int OpenInput(const std::string& location);
  int DescribeVideoStream();
  void CopyPacket(MediaPacket_t& packet) const;

  std::unique_ptr<AVFormatContext, FormatCloser> m_format;
  std::unique_ptr<AVPacket, PacketFreer> m_packet;
  VideoStreamInfo_t m_info;
  int m_stream = -1;
  std::chrono::milliseconds m_timeout{kDefaultTimeoutMs};
  std::chrono::steady_clock::time_point m_deadline;
};
