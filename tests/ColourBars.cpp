// Colour bars: reference samples in any matrix and range, tagged streams of them, decoding.
#include "ColourBars.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

bool IsHdSize(int width, int height) { return width >= 1280 || height >= 720; }

}  // namespace

std::string BarStreamName(const BarStream& stream) {
  return std::string(stream.encoder) + "_" + std::to_string(stream.height) + "p_" +
         av_color_space_name(stream.matrixTag) + "_" + av_color_range_name(stream.rangeTag);
}

ColourSpace_t TaggedColour(const BarStream& stream) {
  const bool hd = IsHdSize(stream.width, stream.height) && std::string(stream.encoder) != "mjpeg";
  ColourSpace_t colour{
      hd ? ColourMatrix::kBt709 : ColourMatrix::kBt601,
      stream.rangeTag == AVCOL_RANGE_JPEG ? ColourRange::kFull : ColourRange::kLimited};
  if (stream.matrixTag == AVCOL_SPC_SMPTE170M) colour.matrix = ColourMatrix::kBt601;
  if (stream.matrixTag == AVCOL_SPC_BT709) colour.matrix = ColourMatrix::kBt709;
  if (stream.matrixTag == AVCOL_SPC_BT2020_NCL) colour.matrix = ColourMatrix::kBt2020;
  return colour;
}

LumaWeights WeightsOf(ColourMatrix matrix) {
  switch (matrix) {
    case ColourMatrix::kBt709: return kBt709Weights;
    case ColourMatrix::kBt2020: return kBt2020Weights;
    default: return kBt601Weights;
  }
}

TestFrame BarsIn(const ColourSpace_t& colour, int width, int height, int format) {
  TestFrame bars(format, width, height);
  const LumaWeights weights = WeightsOf(colour.matrix);
  const bool full = colour.range == ColourRange::kFull;
  bars.PaintYuv([&](int x, int y) {
    return ReferenceRgbToYuv(BlockColour(x, y, width, height), weights, full);
  });
  return bars;
}

EncodedStream EncodeBars(const BarStream& stream, const ColourSpace_t& samples, int pictures) {
  EncoderSettings settings;
  settings.lossless = true;
  settings.matrix = stream.matrixTag;
  settings.range = stream.rangeTag;
  TestEncoder encoder(stream.encoder, stream.width, stream.height, kStreamRate, settings);
  TestFrame bars = BarsIn(samples, stream.width, stream.height);
  for (int index = 0; index < pictures; ++index) {
    encoder.Encode(bars.Planes(), bars.Pitches(), index);
  }
  encoder.Finish();
  if (!encoder.IsOpen()) return EncodedStream{};
  return EncodedStream{encoder.StreamInfo(), encoder.Packets()};
}

::testing::AssertionResult DecodeAll(CDecompressor& decoder, const EncodedStream& stream,
                                     int pictures) {
  if (stream.packets.empty()) return ::testing::AssertionFailure() << "nothing encoded";
  if (decoder.Open(stream.info) != DECOMP_OK) return ::testing::AssertionFailure() << "open";
  for (const EncodedPacket& packet : stream.packets) {
    decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts);
  }
  decoder.Drain();
  if (decoder.GetFrameCount() != pictures) {
    return ::testing::AssertionFailure() << decoder.GetFrameCount() << " pictures decoded";
  }
  return ::testing::AssertionSuccess();
}
