// Frames, paints and picture models for the back-end suites.
#include "NativeRenderTest.h"

#include <cstring>

#include <wx/dcmemory.h>

const wxColour NativeRenderTest::kBackground(0, 0, 96);

void NativeRenderTest::SetUp() {
  WxTest::SetUp();
  tile = MakeTile(wxPoint(40, 30), wxSize(200, 100));
  tile->SetBackgroundColour(kBackground);
}

wxImage NativeRenderTest::BlockPicture(int columns, int rows, int block) {
  wxImage picture(columns * block, rows * block);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      picture.SetRGB(wxRect(column * block, row * block, block, block), (30 + 50 * column) % 256,
                     (30 + 50 * row) % 256, (200 + 20 * (row + column)) % 256);
    }
  }
  return picture;
}

void NativeRenderTest::LoadFrame(IRenderer& renderer, const wxImage& picture) {
  const int width = picture.GetWidth();
  const int height = picture.GetHeight();
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer.GetFrameBuffer(width, height, PIXEL_FORMAT_RGB24, planes, pitches));
  for (int row = 0; row < height; ++row) {
    std::memcpy(planes[0] + row * pitches[0], picture.GetData() + row * width * 3, width * 3);
  }
  ASSERT_TRUE(renderer.FlushFrameBuffer(planes, pitches));
}

wxImage NativeRenderTest::Paint(IRenderer& renderer, const wxSize& size) {
  wxBitmap bitmap(size, 24);
  {
    wxMemoryDC dc(bitmap);
    dc.SetBackground(*wxWHITE_BRUSH);
    dc.Clear();
    renderer.Render(&dc);
  }
  return bitmap.ConvertToImage();
}

wxImage NativeRenderTest::Placed(const wxSize& size, const wxImage& picture, const wxRect& source,
                                 const wxRect& destination) {
  wxImage expected = SolidImage(size, kBackground);
  for (int y = 0; y < destination.height; ++y) {
    for (int x = 0; x < destination.width; ++x) {
      const int sourceX = source.x + x * source.width / destination.width;
      const int sourceY = source.y + y * source.height / destination.height;
      const int targetX = destination.x + x;
      const int targetY = destination.y + y;
      if (targetX < 0 || targetY < 0 || targetX >= size.x || targetY >= size.y) continue;
      expected.SetRGB(targetX, targetY, picture.GetRed(sourceX, sourceY),
                      picture.GetGreen(sourceX, sourceY), picture.GetBlue(sourceX, sourceY));
    }
  }
  return expected;
}

wxRect NativeRenderTest::InkBounds(const wxImage& image) {
  wxRect bounds;
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) {
      if (PixelNear(image, x, y, kBackground, kExactPixels)) continue;
      bounds = bounds.IsEmpty() ? wxRect(x, y, 1, 1) : bounds.Union(wxRect(x, y, 1, 1));
    }
  }
  return bounds;
}

wxColour NativeRenderTest::Blend(const wxColour& colour, const wxColour& under, int alpha) {
  auto channel = [alpha](int top, int bottom) {
    return static_cast<unsigned char>((top * alpha + bottom * (255 - alpha) + 127) / 255);
  };
  return wxColour(channel(colour.Red(), under.Red()), channel(colour.Green(), under.Green()),
                  channel(colour.Blue(), under.Blue()));
}
