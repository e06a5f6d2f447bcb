// CPixelLayout: where the planes of one frame buffer lie, for a pixel format and a picture size.
//
// Every frame crosses the library boundary as three plane pointers and three pitches; this
// class is the one place that knows, per format, how many planes there are, how many bytes of
// picture each row of a plane holds, how many rows it has, and the packed pitch of the
// frame-buffer table. It allocates nothing and touches no pixels.
//
// Odd sizes follow the table literally: the chroma of the 4:2:x formats is width / 2 samples
// wide (and height / 2 rows high for 4:2:0), so the last column (row) of an odd-sized picture
// has no chroma sample of its own; a packed 4:2:2 row of odd width ends in half a pair (Y U, or
// U Y); the interleaved NV12 chroma row carries width / 2 pairs in a row pitch of width bytes.
#pragma once

class CPixelLayout {
 public:
  static constexpr int kMaxPlanes = 3;
  // The largest width and height accepted, enough for 8K video.
  static constexpr int kMaxDimension = 8192;

  CPixelLayout(int format, int width, int height);

  // A known format and a size of 1 to kMaxDimension in both directions.
  bool IsValid() const { return m_planeCount > 0; }

  int GetFormat() const { return m_format; }
  int GetWidth() const { return m_width; }
  int GetHeight() const { return m_height; }

  // 0 when the layout is not valid.
  int GetPlaneCount() const { return m_planeCount; }

  // Bytes of picture in one row of `plane` (0 for a plane the format does not use).
  int GetRowBytes(int plane) const { return m_planes[plane].rowBytes; }
  int GetRows(int plane) const { return m_planes[plane].rows; }
  // The pitch the frame-buffer table gives the plane when rows are packed.
  int GetPitch(int plane) const { return m_planes[plane].pitch; }

  // Bytes of the whole buffer with every plane at its table pitch.
  long long GetTotalBytes() const;

  // Points `planes` and `pitches` (three each) at the planes of one buffer of GetTotalBytes()
  // bytes, the planes one after the other at their table pitches; unused planes get null, 0.
  void SplitBuffer(unsigned char* buffer, unsigned char** planes, int* pitches) const;

 private:
  struct Plane {
    int rowBytes = 0;
    int rows = 0;
    int pitch = 0;
  };

  void SetPlane(int plane, int rowBytes, int rows, int pitch);
  void SetPackedPlane(int bytesPerPixel);
  void SetPlanar(int chromaRows);

  int m_format;
  int m_width;
  int m_height;
  int m_planeCount = 0;
  Plane m_planes[kMaxPlanes];
};
