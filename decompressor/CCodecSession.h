// CCodecSession: one open libavcodec decoder for one compressed video stream.
//
// It feeds packets in, collects every picture they complete and hands the good ones to a
// CPictureStore. Pictures that the codec flags as damaged (concealed errors, missing
// references) are dropped, so the store keeps showing the last good picture until the stream
// recovers, typically at the next key frame. It decodes on the calling thread (no codec
// threads: many tiles decode side by side, and threads would only add latency) and knows
// nothing of conversion or output.
#pragma once

#include "AvHandles.h"

struct VideoStreamInfo_t;
class CPictureStore;

class CCodecSession {
 public:
  CCodecSession();
  ~CCodecSession();
  CCodecSession(const CCodecSession&) = delete;
  CCodecSession& operator=(const CCodecSession&) = delete;

  // Opens the decoder named by `stream.codec` ("h265" is accepted for "hevc"). DECOMP_OK,
  // DECOMP_ERROR_UNKNOWN_CODEC, or DECOMP_ERROR_INTERNAL.
  int Open(const VideoStreamInfo_t& stream);
  bool IsOpen() const { return m_context != nullptr; }
  void Close() { m_context.reset(); }

  // Feeds one packet. Returns the number of good pictures it completed (each handed to
  // `store`), or DECOMP_ERROR_CORRUPT_DATA when the codec rejected the data or a damaged
  // picture was dropped (good pictures of the same call are still stored).
  int Decode(const unsigned char* data, int size, long long pts, CPictureStore& store);

  // Ends the stream: collects the pictures the codec still holds back (reordering delay) and
  // makes the decoder ready for more packets. Same results as Decode.
  int Drain(CPictureStore& store);

 private:
  int Send(const AVPacket* packet, CPictureStore& store);
  int Receive(CPictureStore& store, bool& damaged);
  void MarkJpegRange(AVFrame& picture) const;

  AvCodecContextPtr m_context;
  AvPacketPtr m_packet;
  AvFramePtr m_received;
};
