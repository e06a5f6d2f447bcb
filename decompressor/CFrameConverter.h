// CFrameConverter: crops, converts and scales one picture into a caller's frame buffer.
//
// This is the engine behind CDecompressor::GetImage. libswscale converts into a picture of our
// own, and only the rows and bytes that the frame-buffer table gives each plane are then
// copied into the caller's planes, rows `pitch` apart. The detour exists because libswscale's
// optimised writers round rows up to their vector width and would write past the end of a
// buffer laid out exactly as the table says; it also lets odd sizes and YV12's exchanged planes
// be handled in one place. A crop that needs no conversion at all is copied straight from the
// source picture.
//
// Scaling a YUV picture into RGB runs in two steps, scaling in YUV and then converting at the
// target size, which libswscale does about three times faster than in one step. The steps
// and their pictures are kept and reused while the source format, the crop size, the target
// format and the target size stay the same, so steady streams allocate nothing per frame. It
// does not check arguments (the decoder does) and keeps no picture of the stream.
//
// Colour: the caller says how the source's YUV samples are to be read (matrix and range). YUV
// targets get BT.601 limited range, the matrix the renderer's GL programs invert; RGB targets
// get the source's own matrix and range inverted. A source already in BT.601 limited range
// copied to its own format at its own size stays a plain copy; any other source is converted.
// Planar 8-bit YUV of another matrix or range bound for a YUV target is first rewritten into
// BT.601 limited range (YuvMatrix), far cheaper than libswscale's road through RGB; other
// formats take that road.
#pragma once

#include "AvHandles.h"
#include "CDigitalPTZ.h"
#include "CScaler.h"

class CPixelLayout;

class CFrameConverter {
 public:
  CFrameConverter();
  ~CFrameConverter();
  CFrameConverter(const CFrameConverter&) = delete;
  CFrameConverter& operator=(const CFrameConverter&) = delete;

  // Writes `crop` (inside the picture) of `source`, whose YUV samples are in `colour` (a
  // resolved colour, no kFromStream), into `planes` as `target` lays them out. DECOMP_OK, or
  // an error code with nothing written.
  int Convert(const AVFrame& source, const ColourSpace_t& colour, const PtzRect& crop,
              const CPixelLayout& target, unsigned char* const* planes, const int* pitches);

  // How often a conversion step had to be built anew: on changes of conversion parameters.
  int GetSetupCount() const;

 private:
  int ToRgb(const CScaler::Key& key, PlaneView view, uint8_t* rgb, int pitch);
  bool Rewrite(CScaler::Key& key, PlaneView& view);
  bool Stage(CScaler::Key& key, PlaneView& view);
  const AVFrame* Scale(const CScaler::Key& key, const PlaneView& view);

  CScaler m_first;
  CScaler m_second;
  AvFramePtr m_staging;
  AvFramePtr m_rewritten;
};
