// FramePicture: a frame of known samples for the GL back-end's frame path, in any pixel format
// the back-end takes, and the colour each of its texels must show once drawn.
//
// A YUV picture holds one luma sample per pixel and one chroma pair (U, V) per sample of the
// format's chroma grid (4:2:0: one per 2 x 2 pixels; 4:2:2: one per horizontal pixel pair). A
// texel shows the YUV programs' conversion of its own luma and its block's chroma, computed
// here in the programs' own form (y = 1.1643 Y - 0.0625, not 1.1643 (Y - 16)), in double
// precision and independently of the programs. An RGB picture holds the colour itself. It
// knows nothing about placement: ExpectedPicture maps tile pixels to texels.
#pragma once

#include <functional>
#include <vector>

#include <wx/colour.h>
#include <wx/gdicmn.h>

class FramePicture {
 public:
  struct Yuv {
    int y;
    int u;
    int v;
  };
  using LumaFunction = std::function<int(int x, int y)>;
  // U and V of the chroma sample (cx, cy) of the format's grid.
  using ChromaFunction = std::function<Yuv(int cx, int cy)>;
  using ColourFunction = std::function<wxColour(int x, int y)>;

  // Named colours of the test bars, as YUV samples (limited range) and as RGB.
  static const std::vector<Yuv>& YuvPalette();
  static const std::vector<wxColour>& RgbPalette();

  // The programs' conversion of one sample, rounded to 8 bits and clamped as the colour
  // output clamps.
  static wxColour ProgramColour(const Yuv& sample);
  // The same for samples that are not whole numbers: Y, U (blue difference) and V (red
  // difference) on 0..255.
  static wxColour ProgramColour(double luma, double blue, double red);

  static FramePicture MakeYuv(int format, wxSize size, LumaFunction luma, ChromaFunction chroma);
  static FramePicture MakeRgb(int format, wxSize size, ColourFunction colour);

  // The upper half: vertical bars of the palette, 16 pixels wide; the lower half: samples
  // that change from pixel to pixel (luma) and from chroma sample to chroma sample, so a
  // misplaced sample shows.
  static FramePicture Bars(int format, wxSize size);
  // Square blocks of the palette, `side` pixels (even, so chroma stays inside a block).
  static FramePicture Blocks(int format, wxSize size, int side);
  // One YUV sample everywhere (YUV formats only).
  static FramePicture Solid(int format, wxSize size, const Yuv& sample);

  int Format() const { return m_format; }
  wxSize Size() const { return m_size; }
  bool IsYuv() const;

  // Writes the picture into planes with the given pitches, as the decoder would.
  void Write(unsigned char** planes, const int* pitches) const;

  // The colour texel (x, y) shows; (x, y) must lie inside the picture.
  wxColour TexelColour(int x, int y) const;

 private:
  FramePicture(int format, wxSize size);
  int ChromaRows() const;  // rows of one chroma sample: 2 for 4:2:0, 1 for 4:2:2
  Yuv SampleAt(int x, int y) const;

  void WritePlanar(unsigned char** planes, const int* pitches, bool vFirst) const;
  void WriteSemiPlanar(unsigned char** planes, const int* pitches) const;
  void WritePacked(unsigned char* plane, int pitch, bool chromaFirst) const;
  void WriteRgb(unsigned char* plane, int pitch) const;

  int m_format;
  wxSize m_size;
  LumaFunction m_luma;
  ChromaFunction m_chroma;
  ColourFunction m_colour;
};
