// SilenceCodecLog: FFmpeg's log level set to quiet.
#include "FuzzQuiet.h"

extern "C" {
#include <libavutil/log.h>
}

void SilenceCodecLog() { av_log_set_level(AV_LOG_QUIET); }
