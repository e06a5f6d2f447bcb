// CPictureHash: the decoded-picture hashes an H.265 stream may carry, read from its packets and
// checked against the pictures the codec hands out.
//
// An H.265 encoder can add to every picture a hash of its decoded samples (an SEI message:
// MD5, CRC or checksum per plane), so that a decoder can prove its pictures exact; MD5s and
// checksums are checked here (CRCs are not, see the source).
// libavcodec's H.265 decoder has no error concealment and sees little of what a lossy link
// does to slice data: damaged bits decode into a wrong picture without any flag. Where the
// camera sends hashes, a picture that differs from its hash is damaged (CCodecSession counts
// it), and so is a picture without a hash right after one with a hash: encoders hash every
// picture or none, so its hash went down with the damaged packet. (A stream that stops
// hashing thus shows damage up to its second key frame after that.) Pictures are matched to the
// hashes of their packet by presentation time, since reordering moves them; a time that two pending
// packets share is left unchecked, so that the check never accuses a good picture. Streams without
// hashes pass unchecked. Internal (not installed); it reads nothing else of the stream and decodes
// nothing.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
}

class CPictureHash {
 public:
  // Forgets pending hashes and learns how packets frame their NAL units: with length prefixes
  // when `extradata` is an hvcC record, with start codes otherwise.
  void Reset(const std::vector<unsigned char>& extradata);

  // Reads the hashes in the packet shown at `pts`.
  void Read(const unsigned char* data, int size, long long pts);

  // Whether `picture`, as decoded (before cropping: the hash covers the coded picture), is
  // damaged by the hashes' account: its samples do not match its pending hash, or it has
  // none after a picture that had one. Its hash is used up either way.
  bool IsDamaged(const AVFrame& picture);

 private:
  // The hash of one picture: one digest per plane, big-endian as the stream carries it.
  struct Hash {
    long long pts = 0;
    bool ambiguous = false;  // another pending packet had the same time
    int type = 0;            // 0 MD5, 2 checksum
    int planes = 0;
    std::array<std::array<uint8_t, 16>, 3> digests{};
  };

  void ReadNalUnit(const uint8_t* data, size_t size, long long pts);
  void ReadSei(const std::vector<uint8_t>& rbsp, long long pts);
  void Add(Hash hash);
  bool Differs(const AVFrame& picture, const Hash& hash) const;

  int m_lengthSize = 0;  // bytes of a NAL unit's length prefix; 0 for start codes
  std::deque<Hash> m_pending;
  bool m_previousHashed = false;  // the picture before had a hash
};
