// Owning handles for the FFmpeg objects the decoder keeps: each is a std::unique_ptr whose
// deleter calls the matching FFmpeg release function, so every codec context, packet, frame,
// scaler and demuxer is freed on every path. Internal to the library (not installed); it
// allocates nothing itself.
#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

struct AvCodecContextDeleter {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct AvPacketDeleter {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct AvFrameDeleter {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct SwsContextDeleter {
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};
struct AvFormatInputDeleter {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

using AvCodecContextPtr = std::unique_ptr<AVCodecContext, AvCodecContextDeleter>;
using AvPacketPtr = std::unique_ptr<AVPacket, AvPacketDeleter>;
using AvFramePtr = std::unique_ptr<AVFrame, AvFrameDeleter>;
using SwsContextPtr = std::unique_ptr<SwsContext, SwsContextDeleter>;
using AvFormatInputPtr = std::unique_ptr<AVFormatContext, AvFormatInputDeleter>;
