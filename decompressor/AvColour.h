// How a picture's YUV samples are to be read: the matrix and range a stream signals, the
// conventions for streams that signal none, a host's override, and libswscale's names for
// them. Internal (not installed); pure lookups, no state. It converts nothing (CScaler does).
#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include "DecompressorTypes.h"

// What every YUV target receives: BT.601 limited range, the matrix the renderer's GL programs
// invert.
constexpr ColourSpace_t kDeliveredColour{ColourMatrix::kBt601, ColourRange::kLimited};

// The colour a picture's samples are in. Signalled fields are taken as they are (BT.2020
// constant luminance as BT.2020, the nearest libswscale offers; SMPTE 240M as BT.709, FCC as
// BT.601); an unsignalled matrix follows the convention of other players: BT.709 for HD sizes
// (1280 wide or 720 high and up), BT.601 below; an unsignalled range is limited unless the
// format is one of FFmpeg's full-range "J" formats.
ColourSpace_t ColourOf(const AVFrame& picture);

// Sets every colour field of a decoded picture that holds a code FFmpeg does not define
// (libavcodec stores a stream's 8-bit matrix, range, primaries and transfer codes as they come,
// so a damaged or odd header leaves values like 188 there) to "unspecified", so that the
// picture reads as unsignalled. Such a value is no value of the field's enumeration, and
// reading it as one is undefined behaviour; the raw bytes are read instead.
void ForgetUnknownColourCodes(AVFrame& picture);

// `picture` with the fields of `override` that are not kFromStream put in their place.
ColourSpace_t WithOverride(const ColourSpace_t& picture, const ColourSpace_t& override);

// libswscale's SWS_CS_* constant for a resolved matrix.
int SwsMatrix(ColourMatrix matrix);

// FFmpeg's colour fields for a resolved colour, as a decoded stream would carry them.
AVColorSpace AvMatrix(ColourMatrix matrix);
AVColorRange AvRange(ColourRange range);
