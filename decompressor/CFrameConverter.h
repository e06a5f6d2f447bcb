// CFrameConverter: crops, converts and scales one picture into a caller's frame buffer.
//
// This is the engine behind CDecompressor::GetImage. Every road ends in the caller's planes,
// writing only the rows and bytes that the frame-buffer table gives each plane, rows `pitch`
// apart, and none keeps a picture of its own where it need not:
// - planar 8-bit YUV bound for half its size or less in both directions is first halved, as
//   often as it takes, by a 2 x 2 box mean (PictureHalving), and the roads below start from
//   the halved picture: libswscale's filters grow with the ratio and run over every source row;
// - a crop that needs no conversion is copied straight from the source picture;
// - planar 8-bit YUV of another matrix or range bound for planar YUV is rewritten into BT.601
//   limited range (YuvMatrix) straight into the caller's planes, after libswscale has scaled
//   it in its own colour where the size or format changes;
// - planar 8-bit YUV into RGB is converted by our own step (YuvMatrix) straight into the
//   caller's rows, after libswscale has scaled it to 4:4:4 at the target size where the size
//   changes: libswscale's accurate road into RGB runs in C and costs several times as much;
// - everything else goes through libswscale (CScaler), in one step or two, whose last step
//   writes the caller's planes where they take what libswscale writes (rows of a multiple of
//   32 bytes on 16-byte boundaries, laid out as FFmpeg lays out the format: its vector writers
//   run past the end of other rows) and otherwise a picture of its own, copied by the table's
//   rows. libswscale's unscaled converters drop the last column of some odd widths, so those
//   run one size up on a staged copy.
//
// Scaling a YUV picture into RGB through libswscale (sources our own step does not take) runs
// in two steps, scaling in YUV and then converting at the target size, which libswscale does
// about three times faster than in one step. The steps and their pictures are kept and reused
// while the source format, the crop size, the target format and the target size stay the
// same, so steady streams allocate nothing per frame. It does not check arguments (the decoder
// does) and keeps no picture of the stream.
//
// Colour: the caller says how the source's YUV samples are to be read (matrix and range). YUV
// targets get BT.601 limited range, the matrix the renderer's GL programs invert; RGB targets
// get the source's own matrix and range inverted. A source already in BT.601 limited range
// copied to its own format at its own size stays a plain copy; any other source is converted.
// Planar 8-bit YUV of another matrix or range bound for a YUV target is rewritten into BT.601
// limited range (YuvMatrix), far cheaper than libswscale's road through RGB: after libswscale
// has scaled it in its own colour where the target is planar YUV too (so the rewrite runs over
// the smaller picture of a scaled-down view), before otherwise; other formats take the road
// through RGB.
#pragma once

#include <cstddef>
#include <vector>

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
  int ScaleAndRewrite(const CScaler::Key& key, const PlaneView& view, const CPixelLayout& target,
                      unsigned char* const* planes, const int* pitches);
  bool Halve(size_t step, CScaler::Key& key, PlaneView& view);
  bool Rewrite(CScaler::Key& key, PlaneView& view);
  bool Stage(CScaler::Key& key, PlaneView& view);
  int Scale(CScaler::Key key, PlaneView view, const CPixelLayout& target,
            unsigned char* const* planes, const int* pitches);

  CScaler m_first;
  CScaler m_second;
  AvFramePtr m_staging;
  AvFramePtr m_rewritten;
  std::vector<AvFramePtr> m_halved;
};
