// CScaler: one libswscale step and the picture it writes, both kept while the step's
// parameters (formats, sizes, source range) stay the same.
//
// CFrameConverter chains one or two of these; a step only converts and scales between two
// pictures, its own output picture or planes it is handed. It knows nothing of crops, caller
// buffers or the frame-buffer table. Colour: the source's and the target's matrix and range are
// part of the parameters (libswscale reads them only on the YUV side of a step); a YUV-to-YUV step
// between two matrices runs through RGB inside libswscale.
#pragma once

#include "AvHandles.h"
#include "DecompressorTypes.h"

// Plane pointers and pitches of a picture, possibly moved to the corner of a crop.
struct PlaneView {
  const uint8_t* data[4] = {};
  int linesize[4] = {};
};

// Plane pointers and pitches a step writes: its own picture's, or a caller's.
struct TargetView {
  uint8_t* data[4] = {};
  int linesize[4] = {};
};

PlaneView ViewOf(const AVFrame& picture);
TargetView TargetOf(AVFrame& picture);

class CScaler {
 public:
  struct Key {
    AVPixelFormat sourceFormat = AV_PIX_FMT_NONE;
    ColourSpace_t sourceColour;
    int sourceWidth = 0;
    int sourceHeight = 0;
    AVPixelFormat targetFormat = AV_PIX_FMT_NONE;
    ColourSpace_t targetColour;
    int targetWidth = 0;
    int targetHeight = 0;
    bool operator==(const Key& other) const;
  };

  CScaler();
  ~CScaler();
  CScaler(const CScaler&) = delete;
  CScaler& operator=(const CScaler&) = delete;

  // Converts `source`, a picture as `key` describes it, into Output(). False on failure.
  bool Run(const Key& key, const PlaneView& source);
  // The same into `target` instead, whose planes must take whatever libswscale writes (see
  // CFrameConverter for when a caller's planes do).
  bool RunInto(const Key& key, const PlaneView& source, const TargetView& target);
  const AVFrame& Output() const { return *m_output; }

  // How often the step was built anew: once per change of parameters.
  int GetSetupCount() const { return m_setupCount; }

 private:
  bool Prepare(const Key& key);
  static SwsContextPtr Build(const Key& key);

  SwsContextPtr m_context;
  Key m_key;
  AvFramePtr m_output;
  int m_setupCount = 0;
};
