// Fuzz harness of the decoder: arbitrary bytes as an H.264, H.265, MJPEG or MPEG-4 stream
// (DecoderFuzzInput picks the codec and the output), decoded packet by packet, every new
// picture delivered through GetImage into exact-size planes, the statistics read and, for
// pictures of a sane size, the picture shown on a video output.
//
// It checks no pixels: what it is after is crashes, memory errors, undefined behaviour, leaks
// and hangs in our decoder on top of libavcodec.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <decompressor/CDecompressor.h>
#include <decompressor/CDigitalPTZ.h>
#include <decompressor/CPixelLayout.h>

#include "DecoderFuzzInput.h"
#include "FuzzPlanes.h"
#include "FuzzQuiet.h"
#include "NullVideoOutput.h"

namespace {

// The most packets read from one input, so an input of many tiny packets stays quick.
constexpr int kMaxPackets = 256;
// Pictures up to this area are also shown on a video output (a whole-picture conversion).
constexpr long long kMaxShownArea = 1920LL * 1088;
// The largest crop asked for, so that one conversion of a picture of the largest size the
// decoder takes stays well inside the time-out under the sanitizers.
constexpr int kMaxCropSide = 2048;

// A sixteenth-step position inside `size`, and a size that fits from there (0: the rest).
int Origin(int nibble, int size) { return nibble * size / 16; }
int Extent(int nibble, int size, int origin) {
  const int rest = size - origin;
  return std::min(kMaxCropSide, nibble == 0 ? rest : (nibble * rest + 15) / 16);
}

void Deliver(CDecompressor& decoder, const DecoderFuzzInput::Header& header, int format) {
  const int width = decoder.GetWidth();
  const int height = decoder.GetHeight();
  const int x = Origin(header.cropAt & 15, width);
  const int y = Origin(header.cropAt >> 4, height);
  const int cropWidth = Extent(header.cropSize & 15, width, x);
  const int cropHeight = Extent(header.cropSize >> 4, height, y);
  const CPixelLayout layout(format, header.width + 1, header.height + 1);
  int pitches[CPixelLayout::kMaxPlanes] = {};
  for (int plane = 0; plane < layout.GetPlaneCount(); ++plane) {
    pitches[plane] = layout.GetRowBytes(plane) + header.padding;
  }
  FuzzPlanes target(layout, pitches);
  CDigitalPTZ ptz;
  ptz.enabled = header.zoom != 0;
  ptz.SetPanTiltZoom((header.cropAt & 15) / 7.5f - 1.0f, (header.cropAt >> 4) / 7.5f - 1.0f,
                     1.0f + header.zoom / 16.0f);
  decoder.GetImage(target.Planes(), target.Pitches(), format, layout.GetWidth(), layout.GetHeight(),
                   x, y, cropWidth, cropHeight, header.zoom != 0 ? &ptz : nullptr);
  if (static_cast<long long>(width) * height <= kMaxShownArea) {
    NullVideoOutput output;
    decoder.RenderToVideoOutput(&output);
  }
  decoder.GetStatistics();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  SilenceCodecLog();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  DecoderFuzzInput input(data, size);
  if (!input.HasHeader()) return 0;
  const DecoderFuzzInput::Header& header = input.GetHeader();
  CDecompressor decoder;
  decoder.SetDamagePolicy((header.flags & DecoderFuzzInput::kDropDamage) ? DamagePolicy::kDrop
                                                                         : DamagePolicy::kConceal);
  VideoStreamInfo_t stream;
  stream.codec = input.Codec();
  DecoderFuzzInput::Packet packet;
  if ((header.flags & DecoderFuzzInput::kExtradata) && input.Next(packet)) {
    stream.extradata.assign(packet.data, packet.data + packet.size);
  }
  if (decoder.Open(stream) != DECOMP_OK) return 0;
  for (int index = 0; index < kMaxPackets && input.Next(packet); ++index) {
    if (decoder.Decode(packet.data, packet.size, index) > 0) {
      Deliver(decoder, header, input.TargetFormat());
    }
  }
  if ((header.flags & DecoderFuzzInput::kDrain) && decoder.Drain() > 0) {
    Deliver(decoder, header, input.TargetFormat());
  }
  return 0;
}
