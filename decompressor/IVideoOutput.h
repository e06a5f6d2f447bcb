// IVideoOutput: a surface on which the decoder presents pictures itself, placed over a tile.
//
// A host that has such a surface (an overlay plane, a compositor layer) implements this and
// registers a factory with CDecompressor::SetVideoOutputFactory; renderers then only tell it
// where on screen to show the picture. The order of the operations is fixed: SetOutputRect is
// the fourth entry of the table (after the two destructor entries and Present).
#pragma once

class IVideoOutput {
 public:
  virtual ~IVideoOutput() = default;

  // Shows one picture; the decoder calls it from CDecompressor::RenderToVideoOutput. Planes and
  // pitches follow the frame-buffer layout of `format` (PixelFormat.h). Returns false when the
  // picture could not be shown.
  virtual bool Present(unsigned char** planes, int* pitches, int format, int width, int height) = 0;

  // The screen rectangle in which the picture is to appear.
  virtual void SetOutputRect(int x, int y, int width, int height) = 0;
};
