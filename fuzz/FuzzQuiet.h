// SilenceCodecLog: keeps libavcodec's complaints about broken data off the fuzzers' output
// (millions of inputs would print millions of lines and slow the run down).
#pragma once

void SilenceCodecLog();
