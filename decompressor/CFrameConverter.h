// CFrameConverter: crops, converts and scales one picture into a caller's frame buffer.
//
// This is the engine behind CDecompressor::GetImage. libswscale does the conversion into a
// scratch picture of our own, and only the rows and bytes that the frame-buffer table gives
// each plane are then copied into the caller's planes, rows `pitch` apart. The detour exists
// because libswscale's optimised writers round rows up to their vector width and would write
// past the end of a buffer laid out exactly as the table says; it also lets odd sizes and
// YV12's exchanged planes be handled in one place. A crop that needs no conversion at all is
// copied straight from the source picture.
//
// The scaler and the scratch picture are kept and reused while the source format, the crop
// size, the target format and the target size stay the same, so steady streams allocate
// nothing per frame. It does not check arguments (the decoder does) and keeps no picture.
//
// Colour: BT.601 limited range on the YUV side, the matrix the renderer's GL programs use;
// full-range (JPEG) sources are mapped into the limited range of the YUV targets.
#pragma once

#include "AvHandles.h"
#include "CDigitalPTZ.h"

class CPixelLayout;

class CFrameConverter {
 public:
  CFrameConverter();
  ~CFrameConverter();
  CFrameConverter(const CFrameConverter&) = delete;
  CFrameConverter& operator=(const CFrameConverter&) = delete;

  // Writes `crop` (inside the picture) of `source` into `planes` as `target` lays them out.
  // DECOMP_OK, or an error code with nothing written.
  int Convert(const AVFrame& source, const PtzRect& crop, const CPixelLayout& target,
              unsigned char* const* planes, const int* pitches);

  // How often the scaler had to be built anew: once per change of conversion parameters.
  int GetSetupCount() const { return m_setupCount; }

 public:
  // Plane pointers and pitches of a picture, possibly moved to the corner of a crop.
  struct PlaneView {
    const uint8_t* data[4] = {};
    int linesize[4] = {};
  };

 private:
  struct ScalerKey {
    AVPixelFormat sourceFormat = AV_PIX_FMT_NONE;
    bool fullRange = false;
    int sourceWidth = 0;
    int sourceHeight = 0;
    AVPixelFormat targetFormat = AV_PIX_FMT_NONE;
    int targetWidth = 0;
    int targetHeight = 0;
    bool operator==(const ScalerKey& other) const;
  };

  static bool IsPlainCopy(const ScalerKey& key);
  static bool IsUnscaledOddSize(const ScalerKey& key);
  bool Stage(ScalerKey& key, PlaneView& view);
  bool EnsureScaler(const ScalerKey& key);
  static SwsContextPtr BuildScaler(const ScalerKey& key);
  bool EnsureScratch(const ScalerKey& key);
  int Scale(const ScalerKey& key, const uint8_t* const* data, const int* linesizes);

  SwsContextPtr m_scaler;
  ScalerKey m_key;
  AvFramePtr m_scratch;
  AvFramePtr m_staging;
  int m_setupCount = 0;
};
