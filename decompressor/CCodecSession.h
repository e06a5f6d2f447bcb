// CCodecSession: one open libavcodec decoder for one compressed video stream.
//
// It feeds packets in, collects every picture they complete and hands them to a
// CPictureStore, after its damage policy. A picture is damaged when the codec flags it
// (concealed errors, missing references), when an H.265 stream's picture hash says so (the
// H.265 decoder flags next to nothing: CPictureHash), and, until the next key frame, when it is
// predicted from a damaged one (counted in output order: with B-frames, pictures shown before a
// damaged reference are not caught). A packet the codec rejects counts as one damaged picture lost
// and makes what follows predicted from damage. Under kConceal damaged pictures are shown as
// libavcodec's error concealment repaired them; under kDrop they are not shown (the codec
// rejects damaged data outright, AV_EF_EXPLODE) and the store keeps the last good picture.
// Pictures larger than CPixelLayout::kMaxDimension a side are never shown, under either
// policy: they count as damaged and dropped, as a rejected packet does.
// It decodes on the calling thread (no codec threads: many tiles decode side by side, and
// threads would only add latency) and knows nothing of conversion or output.
#pragma once

#include "AvHandles.h"
#include "CPictureHash.h"
#include "DecompressorTypes.h"

class CPictureStore;

class CCodecSession {
 public:
  // Pictures since construction.
  struct Counts {
    long long decoded = 0;  // completed by the codec, good or damaged
    long long damaged = 0;  // flagged, predicted from a damaged one, or lost in a rejected packet
    long long dropped = 0;  // damaged and not shown, or lost in a rejected packet
  };

  CCodecSession();
  ~CCodecSession();
  CCodecSession(const CCodecSession&) = delete;
  CCodecSession& operator=(const CCodecSession&) = delete;

  // Opens the decoder named by `stream.codec` ("h265" is accepted for "hevc") under
  // `policy`. DECOMP_OK, DECOMP_ERROR_UNKNOWN_CODEC, or DECOMP_ERROR_INTERNAL.
  int Open(const VideoStreamInfo_t& stream, DamagePolicy policy);
  bool IsOpen() const { return m_context != nullptr; }
  void Close() { m_context.reset(); }

  // The codec's name ("h264", ...), empty while closed.
  const char* GetCodecName() const;

  // Feeds one packet. Returns the number of pictures it handed to `store`, or
  // DECOMP_ERROR_CORRUPT_DATA when the codec rejected the data or a damaged picture was
  // dropped (pictures of the same call are still stored).
  int Decode(const unsigned char* data, int size, long long pts, CPictureStore& store);

  // Ends the stream: collects the pictures the codec still holds back (reordering delay) and
  // makes the decoder ready for more packets. Same results as Decode.
  int Drain(CPictureStore& store);

  const Counts& GetCounts() const { return m_counts; }

 private:
  int Send(const AVPacket* packet, CPictureStore& store);
  int Receive(CPictureStore& store, bool& dropped);
  bool IsShown(const AVFrame& picture, bool flagged);
  bool IsFlagged(const AVFrame& picture);
  void CountLost();
  void MarkJpegColour(AVFrame& picture) const;

  AvCodecContextPtr m_context;
  AvPacketPtr m_packet;
  AvFramePtr m_received;
  DamagePolicy m_policy = DamagePolicy::kConceal;
  bool m_predictedFromDamage = false;
  bool m_checksHashes = false;
  CPictureHash m_hashes;
  Counts m_counts;
};
