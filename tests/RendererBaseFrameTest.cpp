// RendererBase: construction state, frame-buffer request and flush, buffer sizing, pixel
// copies, the paint sequence and the image list.
#include <climits>

#include <wx/dcmemory.h>

#include "TestBackend.h"
#include "WxTest.h"

namespace {

class RendererBaseFrame : public WxTest {
 protected:
  void SetUp() override {
    WxTest::SetUp();
    backend = std::make_unique<TestBackend>(frame);
    backend->supportedFormats = {PIXEL_FORMAT_RGB24};
  }
  void TearDown() override {
    backend.reset();
    WxTest::TearDown();
  }
  bool Request(int width, int height, int format) {
    return backend->GetFrameBuffer(width, height, format, planes, pitches);
  }

  std::unique_ptr<TestBackend> backend;
  unsigned char* planes[3] = {};
  int pitches[3] = {};
};

// A back-end whose plane form lends a second plane, so the single-plane form must refuse.
class TwoPlaneBackend : public TestBackend {
 public:
  using TestBackend::TestBackend;
  bool GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                      int* pitches) override {
    if (!RendererBase::GetFrameBuffer(width, height, format, planes, pitches)) return false;
    planes[0] = storage;
    pitches[0] = width;
    planes[1] = storage + 1;
    pitches[1] = width / 2;
    return true;
  }
  using RendererBase::GetFrameBuffer;
  unsigned char storage[8] = {};
};

// Records the triples the plane form of FlushFrameBuffer receives.
class FlushRecorder : public TestBackend {
 public:
  using TestBackend::TestBackend;
  bool FlushFrameBuffer(unsigned char** planes, int* pitches) override {
    seenPlanes.assign(planes, planes + 3);
    seenPitches.assign(pitches, pitches + 3);
    return RendererBase::FlushFrameBuffer(planes, pitches);
  }
  using RendererBase::FlushFrameBuffer;
  std::vector<unsigned char*> seenPlanes;
  std::vector<int> seenPitches;
};

// Remembers the render client size while the frame is drawn.
class SizeDuringDraw : public TestBackend {
 public:
  using TestBackend::TestBackend;
  void DrawFrame(wxDC* dc) override {
    TestBackend::DrawFrame(dc);
    seen = GetRenderClientSize();
  }
  wxSize seen;
};

class OverlayRecorder : public IRendererDrawOverlays {
 public:
  void RendererDrawOverlays(IRenderer* renderer, wxDC* dc) override {
    calls.push_back({renderer, dc});
  }
  std::vector<std::pair<IRenderer*, wxDC*>> calls;
};

}  // namespace

TEST_F(RendererBaseFrame, ConstructionState) {
  EXPECT_EQ(frame, backend->GetParent());
  EXPECT_EQ(PIXEL_FORMAT_NONE, backend->GetPixelFormat());
  EXPECT_EQ(PIXEL_FORMAT_NONE, backend->m_renderedPixelFormat);
  EXPECT_EQ(0, backend->m_width);
  EXPECT_EQ(0, backend->m_height);
  EXPECT_TRUE(backend->m_frameBuffer.empty());
  EXPECT_FALSE(backend->HasFrame());
  EXPECT_EQ(255, backend->GetOpacity());
  EXPECT_EQ(wxRect(0, 0, 0, 0), backend->GetDestinationRect());
  EXPECT_EQ(wxSize(0, 0), backend->GetVideoSize());
  EXPECT_FALSE(backend->m_initialised);
  EXPECT_TRUE(backend->m_images.empty());
  EXPECT_NE(nullptr, backend->GetPtzType().Get());
  EXPECT_NE(static_cast<CDigitalPTZ*>(backend->GetNormalPtz()), backend->GetPtzType().Get());
}

TEST_F(RendererBaseFrame, BaseDefaults) {
  RendererBase& base = *backend;
  HardwareImageInfo info{};
  EXPECT_FALSE(base.RendererBase::RequiresDC());
  EXPECT_FALSE(base.RendererBase::IsPixelFormatSupported(PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(base.IsHardwareDecompSupported());
  EXPECT_TRUE(base.GetIsSupported());
  EXPECT_FALSE(base.RendererBase::IsMultiLineDrawLabelSupported());
  EXPECT_EQ(nullptr, base.GetVideoOutput());
  base.SetVideoOutput(reinterpret_cast<IVideoOutput*>(&info));
  EXPECT_EQ(nullptr, base.GetVideoOutput());
  EXPECT_FALSE(base.BeginHardwareImage(64, 48, PIXEL_FORMAT_RGB24, info));
  base.EndHardwareImage(info);
  EXPECT_FALSE(base.HasFrame());
}

TEST_F(RendererBaseFrame, RequestStoresTheTripleAndZeroesThePlanes) {
  unsigned char dummy = 0;
  planes[0] = planes[1] = planes[2] = &dummy;
  pitches[0] = pitches[1] = pitches[2] = 7;
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(64, backend->m_width);
  EXPECT_EQ(48, backend->m_height);
  EXPECT_EQ(PIXEL_FORMAT_RGB24, backend->GetPixelFormat());
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(nullptr, planes[i]);
    EXPECT_EQ(0, pitches[i]);
  }
}

TEST_F(RendererBaseFrame, ZeroWidthOrHeightFailsWithoutChangingTheTriple) {
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(0, 48, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(64, 0, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(64, backend->m_width);
  EXPECT_EQ(48, backend->m_height);
  EXPECT_EQ(PIXEL_FORMAT_RGB24, backend->GetPixelFormat());
}

TEST_F(RendererBaseFrame, NegativeWidthOrHeightFailsWithoutChangingTheTriple) {
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(-64, 48, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(64, -48, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(INT_MIN, INT_MIN, PIXEL_FORMAT_RGB24));
  EXPECT_EQ(64, backend->m_width);
  EXPECT_EQ(48, backend->m_height);
}

TEST_F(RendererBaseFrame, UnsupportedFormatFails) {
  EXPECT_FALSE(Request(64, 48, PIXEL_FORMAT_I420));
  EXPECT_EQ(PIXEL_FORMAT_NONE, backend->GetPixelFormat());
}

TEST_F(RendererBaseFrame, SameTripleSucceedsEvenWhenTheFormatIsNoLongerSupported) {
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  backend->supportedFormats.clear();
  EXPECT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(Request(64, 50, PIXEL_FORMAT_RGB24));
}

TEST_F(RendererBaseFrame, IsModeSupportedIsTripleEqualityOrFormatSupport) {
  EXPECT_TRUE(backend->IsModeSupported(10, 10, PIXEL_FORMAT_RGB24));
  EXPECT_FALSE(backend->IsModeSupported(10, 10, PIXEL_FORMAT_NV12));
  backend->m_width = 10;
  backend->m_height = 10;
  backend->m_pixelFormat = PIXEL_FORMAT_NV12;
  EXPECT_TRUE(backend->IsModeSupported(10, 10, PIXEL_FORMAT_NV12));
  EXPECT_FALSE(backend->IsModeSupported(10, 11, PIXEL_FORMAT_NV12));
}

TEST_F(RendererBaseFrame, SinglePlaneRequestOnlyTellsWhetherOnePlaneIsAvailable) {
  unsigned char buffer[4];
  EXPECT_TRUE(backend->GetFrameBuffer(64, 48, PIXEL_FORMAT_RGB24, buffer, 192));
  EXPECT_FALSE(backend->GetFrameBuffer(64, 48, PIXEL_FORMAT_I420, buffer, 64));

  TwoPlaneBackend twoPlanes(frame);
  twoPlanes.supportedFormats = {PIXEL_FORMAT_NV12};
  EXPECT_FALSE(twoPlanes.GetFrameBuffer(64, 48, PIXEL_FORMAT_NV12, buffer, 64));
  EXPECT_EQ(PIXEL_FORMAT_NV12, twoPlanes.GetPixelFormat());  // the request itself went through
}

TEST_F(RendererBaseFrame, FlushSetsHasFrameAndCallsOnFrame) {
  EXPECT_TRUE(backend->FlushFrameBuffer(planes, pitches));
  EXPECT_TRUE(backend->HasFrame());
  EXPECT_EQ(std::vector<std::string>{"OnFrame"}, backend->hooks);
}

TEST_F(RendererBaseFrame, SinglePlaneFlushPassesOnePlaneToThePlaneForm) {
  FlushRecorder recorder(frame);
  unsigned char buffer[4];
  EXPECT_TRUE(recorder.FlushFrameBuffer(buffer, 12));
  EXPECT_EQ((std::vector<unsigned char*>{buffer, nullptr, nullptr}), recorder.seenPlanes);
  EXPECT_EQ((std::vector<int>{12, 0, 0}), recorder.seenPitches);
  EXPECT_TRUE(recorder.HasFrame());
}

TEST_F(RendererBaseFrame, ClearFrameAnswersWhetherThereWasOne) {
  EXPECT_FALSE(backend->ClearFrame());
  backend->FlushFrameBuffer(planes, pitches);
  EXPECT_TRUE(backend->ClearFrame());
  EXPECT_FALSE(backend->HasFrame());
  EXPECT_FALSE(backend->ClearFrame());
}

TEST_F(RendererBaseFrame, PreferredFormatIsTheAskedOneWhenSupported) {
  backend->supportedFormats = {PIXEL_FORMAT_NV12, PIXEL_FORMAT_I420};
  EXPECT_EQ(PIXEL_FORMAT_NV12, backend->GetPreferredPixelFormat(PIXEL_FORMAT_NV12));
  EXPECT_EQ(PIXEL_FORMAT_I420, backend->GetPreferredPixelFormat(PIXEL_FORMAT_YUYV));
}

TEST_F(RendererBaseFrame, PreferredFormatOnAnRgb24OnlyBackEnd) {
  EXPECT_EQ(PIXEL_FORMAT_RGB24, backend->GetPreferredPixelFormat(PIXEL_FORMAT_BGR24));
  EXPECT_EQ(PIXEL_FORMAT_RGB24, backend->GetPreferredPixelFormat(PIXEL_FORMAT_I420));
  backend->supportedFormats.clear();
  EXPECT_EQ(PIXEL_FORMAT_NONE, backend->GetPreferredPixelFormat(PIXEL_FORMAT_RGB24));
}

TEST_F(RendererBaseFrame, PreferredFormatTriesTheRgbFamilyFirstForRgbRequests) {
  backend->supportedFormats = {PIXEL_FORMAT_I420, PIXEL_FORMAT_RGBA32};
  EXPECT_EQ(PIXEL_FORMAT_RGBA32, backend->GetPreferredPixelFormat(PIXEL_FORMAT_RGB24));
  EXPECT_EQ(PIXEL_FORMAT_I420, backend->GetPreferredPixelFormat(PIXEL_FORMAT_UYVY));
  backend->supportedFormats = {PIXEL_FORMAT_UYVY, PIXEL_FORMAT_YV12};
  EXPECT_EQ(PIXEL_FORMAT_YV12, backend->GetPreferredPixelFormat(PIXEL_FORMAT_RGB24));
}

TEST_F(RendererBaseFrame, ResizeBufferGrowsWithZerosAndShrinksKeepingCapacity) {
  backend->ResizeBuffer(100);
  EXPECT_EQ(100u, backend->m_frameBuffer.size());
  EXPECT_EQ(std::vector<unsigned char>(100, 0), backend->m_frameBuffer);
  backend->m_frameBuffer[5] = 9;
  backend->ResizeBuffer(10);
  EXPECT_EQ(10u, backend->m_frameBuffer.size());
  EXPECT_GE(backend->m_frameBuffer.capacity(), 100u);
  EXPECT_EQ(9, backend->m_frameBuffer[5]);
  backend->ResizeBuffer(20);
  EXPECT_EQ(0, backend->m_frameBuffer[15]);
}

TEST_F(RendererBaseFrame, ReduceBufferReplacesTheStorageWithZeros) {
  backend->ResizeBuffer(1000);
  backend->m_frameBuffer[0] = 3;
  backend->ReduceBuffer(16);
  EXPECT_EQ(16u, backend->m_frameBuffer.size());
  EXPECT_EQ(16u, backend->m_frameBuffer.capacity());
  EXPECT_EQ(std::vector<unsigned char>(16, 0), backend->m_frameBuffer);
}

TEST_F(RendererBaseFrame, CopyImageWritesRgbAndOpaqueAlpha) {
  wxImage image(2, 2);
  const unsigned char rgb[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  std::copy(std::begin(rgb), std::end(rgb), image.GetData());
  std::vector<unsigned char> out(2 * 12, 0xEE);
  TestBackend::CopyImage(image, out.data(), 12, false);
  const std::vector<unsigned char> expected = {1,    2,    3,    255,  4,    5,    6,    255,
                                               0xEE, 0xEE, 0xEE, 0xEE, 7,    8,    9,    255,
                                               10,   11,   12,   255,  0xEE, 0xEE, 0xEE, 0xEE};
  EXPECT_EQ(expected, out);
}

TEST_F(RendererBaseFrame, CopyImageTakesTheImagesAlpha) {
  wxImage image(2, 1);
  image.SetRGB(0, 0, 10, 20, 30);
  image.SetRGB(1, 0, 40, 50, 60);
  image.SetAlpha();
  image.SetAlpha(0, 0, 7);
  image.SetAlpha(1, 0, 200);
  std::vector<unsigned char> out(8);
  TestBackend::CopyImage(image, out.data(), 8, false);
  EXPECT_EQ((std::vector<unsigned char>{10, 20, 30, 7, 40, 50, 60, 200}), out);
}

TEST_F(RendererBaseFrame, CopyImageWithTheFlagShiftsTheOuterBytes) {
  wxImage image(2, 1);
  const unsigned char rgb[] = {1, 2, 3, 4, 5, 6};
  std::copy(std::begin(rgb), std::end(rgb), image.GetData());
  std::vector<unsigned char> out(8);
  TestBackend::CopyImage(image, out.data(), 8, true);
  // Pixel 0: bytes 1, 1, 3 (the next pixel's first); the last pixel has no next byte.
  EXPECT_EQ((std::vector<unsigned char>{2, 2, 4, 255, 5, 5, 0, 255}), out);
}

TEST_F(RendererBaseFrame, CopyImageOfAnEmptyImageWritesNothing) {
  std::vector<unsigned char> out(8, 0xEE);
  TestBackend::CopyImage(wxImage(), out.data(), 8, false);
  EXPECT_EQ(std::vector<unsigned char>(8, 0xEE), out);
}

TEST_F(RendererBaseFrame, CopyBitmapGoesThroughTheImage) {
  wxImage image(1, 1);
  image.SetRGB(0, 0, 200, 100, 50);
  std::vector<unsigned char> out(4);
  TestBackend::CopyBitmap(wxBitmap(image), out.data(), 4, false);
  EXPECT_EQ((std::vector<unsigned char>{200, 100, 50, 255}), out);
}

TEST_F(RendererBaseFrame, RenderRunsTheHooksInOrderAndInitOnce) {
  wxBitmap bitmap(50, 40);
  wxMemoryDC dc(bitmap);
  backend->Render(&dc);
  backend->Render(&dc);
  const std::vector<std::string> once = {"OnBeforeDraw", "DrawFrame", "DrawOverlays",
                                         "OnAfterDraw"};
  std::vector<std::string> expected = {"OnInit"};
  expected.insert(expected.end(), once.begin(), once.end());
  expected.insert(expected.end(), once.begin(), once.end());
  EXPECT_EQ(expected, backend->hooks);
  EXPECT_TRUE(backend->m_initialised);
}

TEST_F(RendererBaseFrame, RenderUsesTheDcSizeWhileDrawingOnly) {
  SizeDuringDraw sized(frame);
  wxBitmap bitmap(50, 40);
  wxMemoryDC dc(bitmap);
  sized.Render(&dc);
  EXPECT_EQ(wxSize(50, 40), sized.seen);
  EXPECT_EQ(0, sized.m_renderClientWidth);
  EXPECT_EQ(0, sized.m_renderClientHeight);
  EXPECT_EQ(frame->GetClientSize(), sized.GetRenderClientSize());
}

TEST_F(RendererBaseFrame, RenderRecordsThePixelFormatInEffect) {
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  backend->Render(nullptr);
  EXPECT_EQ(PIXEL_FORMAT_RGB24, backend->m_renderedPixelFormat);
}

TEST_F(RendererBaseFrame, RenderWithoutDcOnADcBackEndDrawsNothingButInitialises) {
  backend->requiresDC = true;
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  backend->Render(nullptr);
  EXPECT_EQ(std::vector<std::string>{"OnInit"}, backend->hooks);
  EXPECT_EQ(PIXEL_FORMAT_NONE, backend->m_renderedPixelFormat);
}

TEST_F(RendererBaseFrame, RenderWithoutDcDrawsWhenNoDcIsRequired) {
  OverlayRecorder overlays;
  backend->SetDrawOverlaysHandler(&overlays);
  backend->Render(nullptr);
  EXPECT_EQ(5u, backend->hooks.size());
  ASSERT_EQ(1u, overlays.calls.size());
  EXPECT_EQ(backend.get(), overlays.calls[0].first);
  EXPECT_EQ(nullptr, overlays.calls[0].second);
}

TEST_F(RendererBaseFrame, DrawOverlaysPassesItselfAndTheDcToTheHandler) {
  OverlayRecorder overlays;
  backend->DrawOverlays(nullptr);  // no handler: nothing happens
  backend->SetDrawOverlaysHandler(&overlays);
  wxBitmap bitmap(8, 8);
  wxMemoryDC dc(bitmap);
  backend->DrawOverlays(&dc);
  ASSERT_EQ(1u, overlays.calls.size());
  EXPECT_EQ(backend.get(), overlays.calls[0].first);
  EXPECT_EQ(&dc, overlays.calls[0].second);
}

TEST_F(RendererBaseFrame, CreateImageKeepsEveryResultEvenNull) {
  int live = 0;
  backend->liveImages = &live;
  IRendererImage* image = backend->CreateImage(wxImage(4, 3));
  IRendererImage* failed = backend->CreateImage(wxImage());
  ASSERT_NE(nullptr, image);
  EXPECT_EQ(nullptr, failed);
  EXPECT_EQ(wxSize(4, 3), image->GetSize());
  EXPECT_EQ(2u, backend->m_images.size());
  EXPECT_EQ(1, live);
  backend->DeleteImage(nullptr);
  EXPECT_EQ(1u, backend->m_images.size());
}

TEST_F(RendererBaseFrame, DeleteImageIgnoresImagesItDidNotMake) {
  int live = 0;
  TestImage foreign(wxSize(1, 1), &live);
  backend->DeleteImage(&foreign);
  EXPECT_EQ(1, live);
  backend->liveImages = &live;
  IRendererImage* own = backend->CreateImage(wxImage(2, 2));
  EXPECT_EQ(2, live);
  backend->DeleteImage(own);
  EXPECT_EQ(1, live);
  EXPECT_TRUE(backend->m_images.empty());
}

TEST_F(RendererBaseFrame, DestructionDeletesEveryImage) {
  int live = 0;
  backend->liveImages = &live;
  backend->CreateImage(wxImage(2, 2));
  backend->CreateImage(wxImage(3, 3));
  EXPECT_EQ(2, live);
  backend.reset();
  EXPECT_EQ(0, live);
}

TEST_F(RendererBaseFrame, CancelDropsTheLentPlanesAndKeepsTheFrame) {
  backend->FlushFrameBuffer(planes, pitches);
  ASSERT_TRUE(Request(64, 48, PIXEL_FORMAT_RGB24));
  unsigned char byte = 0;
  planes[0] = &byte;
  pitches[0] = 192;
  backend->CancelFrameBuffer(planes, pitches);
  EXPECT_EQ(nullptr, planes[0]);
  EXPECT_EQ(0, pitches[0]);
  EXPECT_TRUE(backend->HasFrame());
}
