// CPictureStore: the latest picture of a decoder, decoded or handed in raw, and its timestamp.
//
// Decoded pictures are kept by reference (no copy); raw frames are copied into a picture of
// our own, which is reused while the format and size stay the same. The store only ever holds
// one good picture: a new one replaces it, nothing else removes it. It converts nothing.
#pragma once

#include "AvHandles.h"

class CPixelLayout;

class CPictureStore {
 public:
  CPictureStore();
  ~CPictureStore();
  CPictureStore(const CPictureStore&) = delete;
  CPictureStore& operator=(const CPictureStore&) = delete;

  bool IsEmpty() const { return !m_picture || !m_picture->data[0]; }
  const AVFrame& Get() const { return *m_picture; }
  int GetWidth() const { return IsEmpty() ? 0 : m_picture->width; }
  int GetHeight() const { return IsEmpty() ? 0 : m_picture->height; }
  long long GetPts() const { return IsEmpty() ? 0 : m_picture->pts; }
  // Pictures stored since construction, decoded and raw.
  long long GetCount() const { return m_count; }

  // Takes over the reference of a decoded picture, leaving `decoded` empty.
  void Take(AVFrame& decoded);

  // Copies a raw frame laid out as `layout` says. DECOMP_OK, or an error code with the
  // previous picture kept.
  int Import(const unsigned char* const* planes, const int* pitches, const CPixelLayout& layout,
             long long pts);

 private:
  bool PrepareRawPicture(AVPixelFormat format, int width, int height);

  AvFramePtr m_picture;
  long long m_count = 0;
};
