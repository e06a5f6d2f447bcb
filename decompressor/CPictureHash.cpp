// CPictureHash: NAL units and SEI messages read far enough to find the picture hashes, and the
// MD5 and checksum digests of the H.265 standard computed over a decoded picture's planes.
#include "CPictureHash.h"

#include <algorithm>
#include <cstring>

extern "C" {
#include <libavutil/md5.h>
#include <libavutil/mem.h>
#include <libavutil/pixdesc.h>
}

namespace {

constexpr int kPrefixSei = 39;
constexpr int kSuffixSei = 40;
constexpr int kPictureHashPayload = 132;
// The hash types checked: MD5 (0) and checksum (2). CRCs (1) are not: the chroma CRCs of the
// encoder at hand (x265 3.5) do not follow the formula its luma CRCs follow, and a check that
// accuses good pictures is worse than none; a stream hashed with CRCs counts as a stream
// without hashes.
constexpr int kMd5 = 0;
constexpr int kChecksum = 2;
// A picture waits for its hash at most this many packets (the deepest reordering H.265 allows
// is 16 pictures).
constexpr size_t kMaxPending = 32;

// The NAL unit payload without its emulation prevention bytes (00 00 03 -> 00 00).
std::vector<uint8_t> Unescape(const uint8_t* data, size_t size) {
  std::vector<uint8_t> rbsp;
  rbsp.reserve(size);
  int zeros = 0;
  for (size_t i = 0; i < size; ++i) {
    if (zeros >= 2 && data[i] == 3) {
      zeros = 0;
      continue;
    }
    zeros = data[i] == 0 ? zeros + 1 : 0;
    rbsp.push_back(data[i]);
  }
  return rbsp;
}

// An SEI header number: a run of 0xFF bytes, each adding 255, and a last byte.
bool ReadSeiNumber(const std::vector<uint8_t>& rbsp, size_t end, size_t& at, size_t& value) {
  value = 0;
  while (at < end && rbsp[at] == 0xFF) {
    value += 255;
    ++at;
  }
  if (at >= end) return false;
  value += rbsp[at++];
  return true;
}

// One plane of a picture as the hash sees it: rows of samples of one or two bytes (low byte
// first, as FFmpeg stores deeper samples on this machine and as the standard orders them).
struct Plane {
  const uint8_t* data;
  int linesize;
  int width;  // samples
  int height;
  int sampleBytes;
};

bool Md5Of(const Plane& plane, uint8_t digest[16]) {
  struct AVMD5* md5 = av_md5_alloc();
  if (!md5) return false;
  av_md5_init(md5);
  for (int y = 0; y < plane.height; ++y) {
    av_md5_update(md5, plane.data + static_cast<ptrdiff_t>(y) * plane.linesize,
                  static_cast<size_t>(plane.width) * plane.sampleBytes);
  }
  av_md5_final(md5, digest);
  av_free(md5);
  return true;
}

bool ChecksumOf(const Plane& plane, uint8_t digest[16]) {
  uint32_t sum = 0;
  for (int y = 0; y < plane.height; ++y) {
    const uint8_t* row = plane.data + static_cast<ptrdiff_t>(y) * plane.linesize;
    for (int x = 0; x < plane.width; ++x) {
      const uint32_t mask = (x & 0xFF) ^ (y & 0xFF) ^ (x >> 8) ^ (y >> 8);
      for (int b = 0; b < plane.sampleBytes; ++b) sum += row[x * plane.sampleBytes + b] ^ mask;
    }
  }
  for (int i = 0; i < 4; ++i) digest[i] = static_cast<uint8_t>(sum >> (24 - 8 * i));
  return true;
}

// Bytes of one plane's digest of a checked hash type.
size_t DigestBytes(int type) { return type == kMd5 ? 16 : 4; }

// False where the digest could not be computed (no memory for MD5's state).
bool DigestOf(int type, const Plane& plane, uint8_t digest[16]) {
  return type == kMd5 ? Md5Of(plane, digest) : ChecksumOf(plane, digest);
}

// The planes of a planar YUV picture as decoded; none for other pictures.
int PlanesOf(const AVFrame& picture, Plane planes[3]) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
  if (!desc || !(desc->flags & AV_PIX_FMT_FLAG_PLANAR) || (desc->flags & AV_PIX_FMT_FLAG_RGB)) {
    return 0;
  }
  const int count = std::min(3, static_cast<int>(desc->nb_components));
  for (int p = 0; p < count; ++p) {
    if (!picture.data[p] || desc->comp[p].plane != p) return 0;
    const int shiftX = p == 0 ? 0 : desc->log2_chroma_w;
    const int shiftY = p == 0 ? 0 : desc->log2_chroma_h;
    planes[p] = Plane{picture.data[p], picture.linesize[p], AV_CEIL_RSHIFT(picture.width, shiftX),
                      AV_CEIL_RSHIFT(picture.height, shiftY), desc->comp[p].depth > 8 ? 2 : 1};
  }
  return count;
}

}  // namespace

void CPictureHash::Reset(const std::vector<unsigned char>& extradata) {
  m_pending.clear();
  m_previousHashed = false;
  // An hvcC record starts with its version, 1; its 22nd byte ends in the length size - 1.
  const bool hvcc = extradata.size() >= 23 && extradata[0] == 1;
  m_lengthSize = hvcc ? (extradata[21] & 3) + 1 : 0;
}

void CPictureHash::Read(const unsigned char* data, int size, long long pts) {
  if (!data || size < 1) return;
  const size_t length = static_cast<size_t>(size);
  if (m_lengthSize > 0) {
    size_t at = 0;
    while (at + m_lengthSize <= length) {
      size_t unit = 0;
      for (int i = 0; i < m_lengthSize; ++i) unit = unit << 8 | data[at + i];
      at += m_lengthSize;
      if (unit > length - at) return;
      ReadNalUnit(data + at, unit, pts);
      at += unit;
    }
    return;
  }
  // Start codes: 00 00 01, each NAL unit running to the next one.
  size_t begin = 0;
  bool inUnit = false;
  for (size_t i = 0; i + 2 < length; ++i) {
    if (data[i] != 0 || data[i + 1] != 0 || data[i + 2] != 1) continue;
    if (inUnit) ReadNalUnit(data + begin, i - begin, pts);
    begin = i + 3;
    inUnit = true;
    i += 2;
  }
  if (inUnit && begin < length) ReadNalUnit(data + begin, length - begin, pts);
}

void CPictureHash::ReadNalUnit(const uint8_t* data, size_t size, long long pts) {
  if (size < 3) return;
  const int type = (data[0] >> 1) & 0x3F;
  if (type != kPrefixSei && type != kSuffixSei) return;
  ReadSei(Unescape(data + 2, size - 2), pts);
}

void CPictureHash::ReadSei(const std::vector<uint8_t>& rbsp, long long pts) {
  // The messages end before the stop bit's byte; zero bytes after it belong to no message.
  size_t end = rbsp.size();
  while (end > 0 && rbsp[end - 1] == 0) --end;
  if (end == 0) return;
  --end;
  size_t at = 0;
  while (at < end) {
    size_t type = 0;
    size_t size = 0;
    if (!ReadSeiNumber(rbsp, end, at, type) || !ReadSeiNumber(rbsp, end, at, size)) return;
    if (size > end - at) return;
    const uint8_t* payload = rbsp.data() + at;
    at += size;
    if (type != kPictureHashPayload || size < 1) continue;
    if (payload[0] != kMd5 && payload[0] != kChecksum) continue;
    const size_t digestBytes = DigestBytes(payload[0]);
    const size_t planes = (size - 1) / digestBytes;
    if ((size - 1) % digestBytes != 0 || (planes != 1 && planes != 3)) continue;
    Hash hash;
    hash.pts = pts;
    hash.type = payload[0];
    hash.planes = static_cast<int>(planes);
    for (size_t p = 0; p < planes; ++p) {
      std::memcpy(hash.digests[p].data(), payload + 1 + p * digestBytes, digestBytes);
    }
    Add(hash);
  }
}

void CPictureHash::Add(Hash hash) {
  for (Hash& pending : m_pending) {
    if (pending.pts != hash.pts) continue;
    pending.ambiguous = true;
    return;
  }
  m_pending.push_back(hash);
  if (m_pending.size() > kMaxPending) m_pending.pop_front();
}

bool CPictureHash::IsDamaged(const AVFrame& picture) {
  const auto found = std::find_if(m_pending.begin(), m_pending.end(),
                                  [&picture](const Hash& hash) { return hash.pts == picture.pts; });
  const bool hashed = found != m_pending.end();
  const bool lost = !hashed && m_previousHashed;
  m_previousHashed = hashed;
  if (!hashed) return lost;
  const Hash hash = *found;
  m_pending.erase(found);
  return !hash.ambiguous && Differs(picture, hash);
}

bool CPictureHash::Differs(const AVFrame& picture, const Hash& hash) const {
  Plane planes[3];
  if (PlanesOf(picture, planes) < hash.planes) return false;
  for (int p = 0; p < hash.planes; ++p) {
    uint8_t digest[16] = {};
    if (!DigestOf(hash.type, planes[p], digest)) return false;
    if (std::memcmp(digest, hash.digests[p].data(), DigestBytes(hash.type)) != 0) return true;
  }
  return false;
}
