// NativeRenderer frames: the RGB24 frame buffer it lends, where and how a frame lands in the
// tile (letterbox, stretch, PTZ crop, the one-pixel tolerance), painting without a device
// context, the raw bitmap copy and the hand-over to another back-end.
#include <climits>

#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/rawbmp.h>

#include "NativeRenderTest.h"

namespace {

class NativeFrame : public NativeRenderTest {
 protected:
  void SetUp() override {
    NativeRenderTest::SetUp();
    renderer = std::make_unique<NativeProbe>(tile);
  }
  void TearDown() override {
    renderer.reset();
    NativeRenderTest::TearDown();
  }
  bool Request(int width, int height, int format) {
    return renderer->GetFrameBuffer(width, height, format, planes, pitches);
  }
  // Loads `picture` as the frame, paints the tile at `size` and compares the result with
  // `source` of the picture placed into `destination` over the background.
  void ExpectPlaced(const wxImage& picture, const wxSize& size, const wxRect& source,
                    const wxRect& destination, const std::string& name) {
    LoadFrame(*renderer, picture);
    EXPECT_TRUE(ImagesNear(Paint(*renderer, size), Placed(size, picture, source, destination),
                           kExactPixels, name));
  }

  std::unique_ptr<NativeProbe> renderer;
  unsigned char* planes[3] = {};
  int pitches[3] = {};
};

}  // namespace

TEST_F(NativeFrame, AcceptsOnlyRgb24) {
  for (int format = -1; format <= 30; ++format) {
    EXPECT_EQ(format == PIXEL_FORMAT_RGB24, renderer->IsPixelFormatSupported(format)) << format;
  }
  EXPECT_EQ(PIXEL_FORMAT_RGB24, renderer->GetPreferredPixelFormat(PIXEL_FORMAT_I420));
  EXPECT_TRUE(renderer->RequiresDC());
  EXPECT_TRUE(renderer->IsMultiLineDrawLabelSupported());
}

TEST_F(NativeFrame, LendsOnePackedRgbPlaneOfTheFrameSize) {
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(64u * 48 * 3, renderer->m_frameBuffer.size());
  EXPECT_EQ(renderer->m_frameBuffer.data(), planes[0]);
  EXPECT_EQ(64 * 3, pitches[0]);
  EXPECT_EQ(nullptr, planes[1]);
  EXPECT_EQ(nullptr, planes[2]);
  EXPECT_EQ(0, pitches[1]);
  EXPECT_EQ(0, pitches[2]);
  EXPECT_FALSE(renderer->HasFrame());
  EXPECT_TRUE(renderer->FlushFrameBuffer(planes, pitches));
  EXPECT_TRUE(renderer->HasFrame());
}

TEST_F(NativeFrame, RefusesOtherFormatsAndEmptySizes) {
  EXPECT_FALSE(Request(64, 48, PIXEL_FORMAT_I420));
  EXPECT_FALSE(Request(64, 48, PIXEL_FORMAT_BGR24));
  EXPECT_FALSE(Request(0, 48, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(64, 0, PIXEL_FORMAT_RGB24));
  EXPECT_TRUE(renderer->m_frameBuffer.empty());
}

TEST_F(NativeFrame, SinglePlaneRequestTellsThatOnePlaneIsAvailable) {
  unsigned char buffer[1];
  EXPECT_TRUE(renderer->GetFrameBuffer(64, 48, PIXEL_FORMAT_RGB24, buffer, 192));
  EXPECT_EQ(64u * 48 * 3, renderer->m_frameBuffer.size());
}

TEST_F(NativeFrame, BufferKeepsItsMemoryAcrossFrames) {
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  const unsigned char* first = planes[0];
  ASSERT_TRUE(Request(32, 24, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(32u * 24 * 3, renderer->m_frameBuffer.size());
  EXPECT_GE(renderer->m_frameBuffer.capacity(), 64u * 48 * 3);
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(first, planes[0]);
}

TEST_F(NativeFrame, NegativeSizesAreRefused) {
  EXPECT_FALSE(Request(-64, 48, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(64, -48, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(-64, -48, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(nullptr, planes[0]);
  EXPECT_EQ(0, pitches[0]);
  EXPECT_TRUE(renderer->m_frameBuffer.empty());
  EXPECT_EQ(PIXEL_FORMAT_NONE, renderer->GetPixelFormat());
}

TEST_F(NativeFrame, SidesUpToTheLimitAreLentAndBeyondItRefused) {
  const int limit = RendererBase::kMaxMemoryFrameSide;
  ASSERT_TRUE(Request(limit, 1, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(limit * 3, pitches[0]);
  EXPECT_FALSE(Request(limit + 1, 1, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(1, limit + 1, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(limit, renderer->m_width) << "a refusal keeps the last frame's size";
  EXPECT_EQ(1, renderer->m_height);
}

// Sizes a host's bad stream can bring: a frame far too large to allocate and a width whose row
// alone overflows an int. Each fails as a result, without allocating or throwing.
TEST_F(NativeFrame, HugeSizesFailWithoutAllocating) {
  EXPECT_FALSE(Request(100000, 100000, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(INT_MAX, 1, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(1, INT_MAX, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(INT_MAX, INT_MAX, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(0u, renderer->m_frameBuffer.capacity());
}

TEST_F(NativeFrame, WithoutAFrameOnlyTheBackgroundIsPainted) {
  const wxSize size(128, 96);
  EXPECT_TRUE(ImagesNear(Paint(*renderer, size), SolidImage(size, kBackground), kExactPixels,
                         "native-no-frame"));
  EXPECT_EQ(1, renderer->frameDraws);
}

TEST_F(NativeFrame, LetterboxedFrameLandsCentredWithTheBackgroundAround) {
  ExpectPlaced(BlockPicture(2, 1, 32), wxSize(128, 128), wxRect(0, 0, 64, 32),
               wxRect(0, 32, 128, 64), "native-letterbox");
}

TEST_F(NativeFrame, PillarboxedFrameLandsCentredWithTheBackgroundAround) {
  ExpectPlaced(BlockPicture(1, 2, 32), wxSize(160, 128), wxRect(0, 0, 32, 64),
               wxRect(48, 0, 64, 128), "native-pillarbox");
}

TEST_F(NativeFrame, IgnoringTheAspectRatioStretchesTheFrameOverTheTile) {
  renderer->SetIgnoreAspectRatio(true);
  ExpectPlaced(BlockPicture(2, 1, 32), wxSize(128, 128), wxRect(0, 0, 64, 32),
               wxRect(0, 0, 128, 128), "native-stretch");
}

TEST_F(NativeFrame, DestinationRectanglePlacesTheFrameInPartOfTheTile) {
  renderer->SetDestinationRect(wxRect(10, 20, 64, 64));
  ExpectPlaced(BlockPicture(2, 2, 16), wxSize(128, 128), wxRect(0, 0, 32, 32),
               wxRect(10, 20, 64, 64), "native-destination");
}

TEST_F(NativeFrame, PtzShowsTheZoomedPartOfTheFrame) {
  renderer->SetVideoSize(wxSize(64, 64));
  renderer->GetNormalPtz()->SetPanTiltZoom(0.0f, 0.0f, 2.0f);
  renderer->GetNormalPtz()->SetZoomActive(true);
  // Zoom 2 at the centre shows the middle 32 x 32 of the 64 x 64 frame: four of its blocks.
  ExpectPlaced(BlockPicture(4, 4, 16), wxSize(128, 128), wxRect(16, 16, 32, 32),
               wxRect(0, 0, 128, 128), "native-ptz");
}

TEST_F(NativeFrame, DestinationOnePixelLargerDrawsTheFrameUnscaled) {
  renderer->SetIgnoreAspectRatio(true);
  ExpectPlaced(BlockPicture(8, 4, 8), wxSize(65, 33), wxRect(0, 0, 64, 32), wxRect(0, 0, 64, 32),
               "native-one-larger");
}

TEST_F(NativeFrame, DestinationTwoPixelsLargerScalesTheFrame) {
  const wxImage picture = BlockPicture(8, 4, 8);
  LoadFrame(*renderer, picture);
  renderer->SetIgnoreAspectRatio(true);
  const wxImage painted = Paint(*renderer, wxSize(66, 34));
  // Scaled, the frame reaches the last column and row; unscaled it would stop two short.
  EXPECT_TRUE(
      PixelNear(painted, 65, 33,
                wxColour(picture.GetRed(63, 31), picture.GetGreen(63, 31), picture.GetBlue(63, 31)),
                kExactPixels));
  EXPECT_TRUE(PixelNear(
      painted, 0, 0, wxColour(picture.GetRed(0, 0), picture.GetGreen(0, 0), picture.GetBlue(0, 0)),
      kExactPixels));
}

// Scaling the whole destination would make a bitmap 100000 pixels wide, which the X server
// refuses (and the toolkit then ends the process).
TEST_F(NativeFrame, DestinationFarWiderThanTheTileIsClippedBeforeScaling) {
  const wxImage picture = BlockPicture(20, 12, 32);
  const wxRect destination(0, 0, 100000, 300);
  LoadFrame(*renderer, picture);
  renderer->SetIgnoreAspectRatio(true);
  renderer->SetDestinationRect(destination);
  {
    wxClientDC window(tile);
    renderer->Render(&window);
  }
  const wxSize size(200, 100);
  EXPECT_TRUE(ImagesNear(Paint(*renderer, size),
                         Placed(size, picture, wxRect(picture.GetSize()), destination),
                         kExactPixels, "native-wide-destination"));
}

TEST_F(NativeFrame, DestinationReachingPastEverySideShowsItsVisiblePart) {
  const wxImage picture = BlockPicture(4, 3, 8);
  const wxRect destination(-35, -22, 270, 151);
  LoadFrame(*renderer, picture);
  renderer->SetIgnoreAspectRatio(true);
  renderer->SetDestinationRect(destination);
  const wxSize size(160, 90);
  EXPECT_TRUE(ImagesNear(Paint(*renderer, size),
                         Placed(size, picture, wxRect(picture.GetSize()), destination),
                         kExactPixels, "native-clipped-destination"));
}

TEST_F(NativeFrame, RenderWithoutADeviceContextDrawsNothing) {
  LoadFrame(*renderer, BlockPicture(2, 1, 32));
  OverlayScript overlays;
  renderer->SetDrawOverlaysHandler(&overlays);
  renderer->Render(nullptr);
  EXPECT_EQ(0, renderer->frameDraws);
  EXPECT_EQ(0, overlays.calls);
}

TEST_F(NativeFrame, HostPaintsTheFrameFromItsPaintHandler) {
  LoadFrame(*renderer, BlockPicture(2, 1, 32));
  OverlayScript overlays;
  renderer->SetDrawOverlaysHandler(&overlays);
  wxSize painted;
  auto onPaint = [&](wxPaintEvent&) {
    wxPaintDC dc(tile);
    renderer->Render(&dc);
    painted = dc.GetSize();
  };
  tile->Bind(wxEVT_PAINT, onPaint);
  tile->Refresh();
  EXPECT_TRUE(PumpUntil([&] { return renderer->frameDraws > 0; }));
  tile->Unbind(wxEVT_PAINT, onPaint);
  EXPECT_EQ(tile->GetClientSize(), painted);
  EXPECT_GE(overlays.callsWithDC, 1);
}

TEST_F(NativeFrame, WithoutAParentNothingIsDrawn) {
  NativeProbe orphan(nullptr);
  OverlayScript overlays(
      [](IRenderer* r, wxDC* dc) { r->DrawRect(dc, wxRect(0, 0, 8, 8), *wxRED); });
  orphan.SetDrawOverlaysHandler(&overlays);
  LoadFrame(orphan, BlockPicture(2, 2, 8));
  const wxSize size(32, 32);
  EXPECT_TRUE(ImagesNear(Paint(orphan, size), SolidImage(size, *wxWHITE), kExactPixels,
                         "native-no-parent"));
  EXPECT_EQ(0, orphan.frameDraws);
  EXPECT_EQ(0, overlays.calls);

  orphan.SetAspectRatio(1.5f);
  NativeRenderer next(tile);
  orphan.CopySettings(&next);
  EXPECT_FLOAT_EQ(1.5f, next.GetAspectRatio());
}

TEST_F(NativeFrame, EveryDrawingOperationIgnoresAMissingDeviceContext) {
  LoadFrame(*renderer, BlockPicture(2, 1, 32));
  const wxFont font(wxFontInfo(12).Family(wxFONTFAMILY_SWISS));
  IRendererImage* image = renderer->CreateImage(BlockPicture(1, 1, 8));
  renderer->OnBeforeDraw(nullptr);
  renderer->DrawFrame(nullptr);
  renderer->DrawRect(nullptr, wxRect(0, 0, 10, 10), *wxRED);
  renderer->DrawRectOutline(nullptr, wxRect(0, 0, 10, 10), *wxRED, 2);
  renderer->DrawLine(nullptr, wxPoint(0, 0), wxPoint(9, 9), *wxRED, 2);
  renderer->DrawLabel(nullptr, "label", font, *wxWHITE, wxRect(0, 0, 90, 30), 0, true, *wxRED);
  renderer->DrawImage(nullptr, image, 0, 0);
  renderer->DrawBitmap(nullptr, wxBitmap(BlockPicture(1, 1, 8)), 0, 0);
  EXPECT_EQ(2u, renderer->blits.size());  // reached the blit, which then drew nothing
}

TEST_F(NativeFrame, CopyToBitmapMakesA24BitBitmapOfTheImageSize) {
  wxImage picture = BlockPicture(3, 2, 4);  // 12 x 8
  // The toolkit decides whether a 24-bit bitmap can be opened at 32 bits a pixel; GTK does
  // not allow it, and then the copy reports failure.
  wxBitmap sample(12, 8, 24);
  const bool wideAccess = static_cast<bool>(wxAlphaPixelData(sample));
  EXPECT_EQ(wideAccess, renderer->CopyToBitmap(picture));
  EXPECT_EQ(wxSize(12, 8), renderer->m_bitmap.GetSize());
  EXPECT_EQ(24, renderer->m_bitmap.GetDepth());

  wxImage wider = BlockPicture(4, 2, 4);
  renderer->CopyToBitmap(wider);
  EXPECT_EQ(wxSize(16, 8), renderer->m_bitmap.GetSize());
}

TEST_F(NativeFrame, CopyToBitmapOfAnInvalidImageFails) {
  wxImage invalid;
  EXPECT_FALSE(renderer->CopyToBitmap(invalid));
  EXPECT_FALSE(renderer->m_bitmap.IsOk());
}

TEST_F(NativeFrame, RawRowCopyPutsPackedRgbBytesAtTheRowStarts) {
  const unsigned char source[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19};
  unsigned char destination[2 * 16];
  std::fill(std::begin(destination), std::end(destination), 0xEE);
  NativeProbe::CopyRawRows(source, 3, 2, destination, 16);
  // Each row's nine bytes land as they are (not widened to four bytes a pixel); the rest of
  // each 16-byte row is untouched.
  for (int row = 0; row < 2; ++row) {
    for (int i = 0; i < 16; ++i) {
      const int expected = i < 9 ? source[row * 9 + i] : 0xEE;
      EXPECT_EQ(expected, destination[row * 16 + i]) << "row " << row << " byte " << i;
    }
  }
}

TEST_F(NativeFrame, CopySettingsHandsTheSettingsToTheNextBackEnd) {
  OverlayScript overlays;
  renderer->SetAspectRatio(1.5f);
  renderer->SetIgnoreAspectRatio(true);
  renderer->SetDestinationRect(wxRect(1, 2, 30, 40));
  renderer->SetOpacity(77);
  renderer->SetDrawOverlaysHandler(&overlays);
  NativeProbe next(tile);
  renderer->CopySettings(&next);
  EXPECT_FLOAT_EQ(1.5f, next.GetAspectRatio());
  EXPECT_TRUE(next.GetIgnoreAspectRatio());
  EXPECT_EQ(wxRect(1, 2, 30, 40), next.GetDestinationRect());
  EXPECT_EQ(77, next.GetOpacity());
  next.Render(nullptr);  // requires a device context: the handler is not reached
  EXPECT_EQ(0, overlays.calls);
  Paint(next, wxSize(40, 40));
  EXPECT_EQ(1, overlays.calls);
}

TEST_F(NativeFrame, CopySettingsFromAHiddenTileLeavesItsWindowAlone) {
  tile->Hide();
  NativeProbe next(tile);
  renderer->SetAspectRatio(2.0f);
  renderer->CopySettings(&next);
  EXPECT_FLOAT_EQ(2.0f, next.GetAspectRatio());
}
