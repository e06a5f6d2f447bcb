// NativeImage and NativeRenderer's images and bitmaps: the image record, opaque draws from a
// bitmap cached once, translucent draws faded per pixel without touching the cache, bitmaps
// with masks and at reduced opacity.
#include <wx/dcmemory.h>

#include <renderer/NativeImage.h>

#include "NativeRenderTest.h"

namespace {

const wxColour kPaint(200, 40, 0);
const wxSize kSize(100, 80);

class NativeImages : public NativeRenderTest {
 protected:
  void SetUp() override {
    NativeRenderTest::SetUp();
    renderer = std::make_unique<NativeProbe>(tile);
    renderer->SetDrawOverlaysHandler(&overlays);
  }
  void TearDown() override {
    renderer.reset();
    NativeRenderTest::TearDown();
  }
  // Paints with `image` drawn at (30, 40).
  wxImage PaintImage(IRendererImage* image) {
    overlays.SetScript([image](IRenderer* r, wxDC* dc) { r->DrawImage(dc, image, 30, 40); });
    return Paint(*renderer, kSize);
  }
  wxImage PaintBitmap(const wxBitmap& bitmap) {
    overlays.SetScript([bitmap](IRenderer* r, wxDC* dc) { r->DrawBitmap(dc, bitmap, 30, 40); });
    return Paint(*renderer, kSize);
  }
  // The background with a 20 x 10 block of `colour` at (30, 40).
  static wxImage WithBlock(const wxColour& colour) {
    wxImage expected = SolidImage(kSize, kBackground);
    expected.SetRGB(wxRect(30, 40, 20, 10), colour.Red(), colour.Green(), colour.Blue());
    return expected;
  }

  std::unique_ptr<NativeProbe> renderer;
  OverlayScript overlays;
};

}  // namespace

TEST_F(NativeImages, ImageRecordsItsSizeAndSharesThePixels) {
  const wxImage picture = SolidImage(wxSize(20, 10), kPaint);
  IRendererImage* image = renderer->CreateImage(picture);
  ASSERT_NE(nullptr, image);
  EXPECT_TRUE(image->IsOk());
  EXPECT_EQ(wxSize(20, 10), image->GetSize());
  EXPECT_EQ(picture.GetData(), static_cast<NativeImage*>(image)->GetImage().GetData());
  EXPECT_EQ(1u, renderer->m_images.size());
  renderer->DeleteImage(image);
  EXPECT_TRUE(renderer->m_images.empty());
}

TEST_F(NativeImages, InvalidImageIsNotOkAndHasNoSize) {
  IRendererImage* image = renderer->CreateImage(wxImage());
  EXPECT_FALSE(image->IsOk());
  EXPECT_EQ(wxSize(0, 0), image->GetSize());
  EXPECT_TRUE(ImagesNear(PaintImage(image), SolidImage(kSize, kBackground), kExactPixels,
                         "native-image-invalid"));
  EXPECT_TRUE(renderer->blits.empty());
}

TEST_F(NativeImages, NullImageDrawsNothing) {
  EXPECT_TRUE(ImagesNear(PaintImage(nullptr), SolidImage(kSize, kBackground), kExactPixels,
                         "native-image-null"));
}

TEST_F(NativeImages, OpaqueImageLandsAtItsPosition) {
  IRendererImage* image = renderer->CreateImage(SolidImage(wxSize(20, 10), kPaint));
  EXPECT_TRUE(ImagesNear(PaintImage(image), WithBlock(kPaint), kExactPixels, "native-image"));
}

TEST_F(NativeImages, OpaqueDrawsComeFromOneBitmapMadeOnce) {
  IRendererImage* image = renderer->CreateImage(SolidImage(wxSize(20, 10), kPaint));
  PaintImage(image);
  PaintImage(image);
  ASSERT_EQ(2u, renderer->blits.size());
  EXPECT_NE(nullptr, renderer->blits[0]);
  EXPECT_EQ(renderer->blits[0], renderer->blits[1]);
}

TEST_F(NativeImages, ImageWithoutAlphaAtOpacity128BlendsAt128) {
  renderer->SetOpacity(128);
  IRendererImage* image = renderer->CreateImage(SolidImage(wxSize(20, 10), kPaint));
  EXPECT_TRUE(ImagesNear(PaintImage(image), WithBlock(Blend(kPaint, kBackground, 128)),
                         kBlendTolerance, "native-image-opacity"));
}

TEST_F(NativeImages, PixelAlphaIsScaledByTheOpacity) {
  wxImage picture = SolidImage(wxSize(20, 10), kPaint);
  picture.SetAlpha();
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 20; ++x) picture.SetAlpha(x, y, x < 10 ? 200 : 255);
  }
  renderer->SetOpacity(128);
  const wxImage painted = PaintImage(renderer->CreateImage(picture));
  // 200 x 128 / 255 = 100.4, rounded down; 255 x 128 / 255 = 128.
  wxImage expected = WithBlock(Blend(kPaint, kBackground, 128));
  const wxColour atHundred = Blend(kPaint, kBackground, 100);
  expected.SetRGB(wxRect(30, 40, 10, 10), atHundred.Red(), atHundred.Green(), atHundred.Blue());
  EXPECT_TRUE(ImagesNear(painted, expected, kBlendTolerance, "native-image-own-alpha"));
}

TEST_F(NativeImages, OpaqueDrawKeepsTheImagesOwnAlpha) {
  wxImage picture = SolidImage(wxSize(20, 10), kPaint);
  picture.SetAlpha();
  std::fill(picture.GetAlpha(), picture.GetAlpha() + 200, 200);
  EXPECT_TRUE(ImagesNear(PaintImage(renderer->CreateImage(picture)),
                         WithBlock(Blend(kPaint, kBackground, 200)), kBlendTolerance,
                         "native-image-alpha-opaque"));
}

TEST_F(NativeImages, TranslucentDrawsLeaveTheImageAndItsCacheAlone) {
  IRendererImage* image = renderer->CreateImage(SolidImage(wxSize(20, 10), kPaint));
  PaintImage(image);
  renderer->SetOpacity(128);
  PaintImage(image);
  renderer->SetOpacity(255);
  PaintImage(image);
  ASSERT_EQ(3u, renderer->blits.size());
  EXPECT_NE(renderer->blits[0], renderer->blits[1]);
  EXPECT_EQ(renderer->blits[0], renderer->blits[2]);
  EXPECT_FALSE(static_cast<NativeImage*>(image)->GetImage().HasAlpha());
}

TEST_F(NativeImages, OpaqueBitmapIsBlittedThroughItsMask) {
  wxImage picture = SolidImage(wxSize(20, 10), kPaint);
  picture.SetRGB(wxRect(0, 0, 10, 10), 0, 255, 0);
  wxBitmap bitmap(picture);
  bitmap.SetMask(new wxMask(bitmap, wxColour(0, 255, 0)));
  wxImage expected = WithBlock(kPaint);
  expected.SetRGB(wxRect(30, 40, 10, 10), kBackground.Red(), kBackground.Green(),
                  kBackground.Blue());
  EXPECT_TRUE(ImagesNear(PaintBitmap(bitmap), expected, kExactPixels, "native-bitmap-mask"));
  EXPECT_EQ(1u, renderer->blits.size());
}

TEST_F(NativeImages, TranslucentBitmapIsDrawnThroughATemporaryImage) {
  renderer->SetOpacity(128);
  const wxImage painted = PaintBitmap(wxBitmap(SolidImage(wxSize(20, 10), kPaint)));
  EXPECT_TRUE(ImagesNear(painted, WithBlock(Blend(kPaint, kBackground, 128)), kBlendTolerance,
                         "native-bitmap-opacity"));
  EXPECT_TRUE(renderer->m_images.empty());
}

TEST_F(NativeImages, InvalidBitmapDrawsNothing) {
  EXPECT_TRUE(ImagesNear(PaintBitmap(wxNullBitmap), SolidImage(kSize, kBackground), kExactPixels,
                         "native-bitmap-invalid"));
  EXPECT_TRUE(renderer->blits.empty());
}
