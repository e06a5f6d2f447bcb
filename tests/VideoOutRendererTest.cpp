// VideoOutRenderer: where the decoder's picture is placed, the grey backdrop, overlays
// recorded with three alpha levels and repainted only when they change, the idle release of
// a hidden tile's video output, and the life of the idle binding.
#include <climits>
#include <cstring>

#include <wx/app.h>
#include <wx/dcmemory.h>

#include <renderer/VideoOutRenderer.h>

#include "NativeRenderTest.h"
#include "RecordingVideoOutput.h"

namespace {

const wxColour kBackdrop(118, 118, 118);

class VideoOutProbe : public VideoOutRenderer {
 public:
  using VideoOutRenderer::m_drawOps;
  using VideoOutRenderer::m_height;
  using VideoOutRenderer::m_width;
  using VideoOutRenderer::VideoOutRenderer;
};

// Lends a second plane beside the RGB one, as a back-end for planar formats would.
class TwoPlaneVideoOut : public VideoOutRenderer {
 public:
  using VideoOutRenderer::GetFrameBuffer;
  using VideoOutRenderer::VideoOutRenderer;
  bool GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                      int* pitches) override {
    if (!VideoOutRenderer::GetFrameBuffer(width, height, format, planes, pitches)) return false;
    pitches[1] = width / 2;
    return true;
  }
};

// A back-end handed to the toolkit's deferred destruction, as the facade hands a replaced one.
struct DeferredBackEnd : public wxObject {
  explicit DeferredBackEnd(std::unique_ptr<RendererBase> which) : backEnd(std::move(which)) {}
  std::unique_ptr<RendererBase> backEnd;
};

class VideoOut : public NativeRenderTest {
 protected:
  void SetUp() override {
    NativeRenderTest::SetUp();
    renderer = std::make_unique<VideoOutProbe>(tile);
    renderer->SetDrawOverlaysHandler(&overlays);
    font = wxFont(wxFontInfo(12).Family(wxFONTFAMILY_SWISS));
  }
  void TearDown() override {
    renderer.reset();
    NativeRenderTest::TearDown();
  }
  RecordingVideoOutput* GiveOutput() {
    auto* output = new RecordingVideoOutput(&deletions);
    renderer->SetVideoOutput(output);
    return output;
  }
  // A frame arrives the way the facade sizes the back-end for a decoder-presented picture.
  void PresentFrame(const wxSize& frameSize, const wxSize& videoSize) {
    HardwareImageInfo info{};
    ASSERT_TRUE(renderer->BeginHardwareImage(frameSize.x, frameSize.y, PIXEL_FORMAT_RGB24, info));
    renderer->EndHardwareImage(info);
    renderer->SetVideoSize(videoSize);
  }
  // An output and a square 100 x 100 picture, pillarboxed to (50, 0, 100, 100) of the tile.
  RecordingVideoOutput* StartPresenting() {
    RecordingVideoOutput* output = GiveOutput();
    PresentFrame(wxSize(100, 100), wxSize(100, 100));
    return output;
  }
  wxImage PaintFill(const wxRect& rect, const wxColour& colour) {
    overlays.SetScript([rect, colour](IRenderer* r, wxDC* dc) { r->DrawRect(dc, rect, colour); });
    return Paint(*renderer, wxSize(200, 100));
  }
  void DrawLabelEachPass(const wxString& text, const wxColour& colour,
                         const wxColour& background = wxNullColour) {
    overlays.SetScript([this, text, colour, background](IRenderer* r, wxDC* dc) {
      r->DrawLabel(dc, text, font, colour, wxRect(10, 10, 150, 40), 0, false, background);
    });
  }
  bool IdleBound(VideoOutRenderer* which) {
    return tile->Unbind(wxEVT_IDLE, &VideoOutRenderer::OnIdle, which);
  }

  std::unique_ptr<VideoOutProbe> renderer;
  OverlayScript overlays;
  wxFont font;
  int deletions = 0;
};

}  // namespace

TEST(RoundAlpha, ReducesAlphaToThreeLevels) {
  for (int alpha = 0; alpha <= 255; ++alpha) {
    wxColour colour(10, 20, 30, alpha);
    RoundAlpha(colour);
    const int expected = alpha <= 85 ? 0 : alpha <= 171 ? 128 : 255;
    EXPECT_EQ(wxColour(10, 20, 30, expected), colour) << "alpha " << alpha;
  }
}

TEST(RoundAlpha, LeavesAnInvalidColourAlone) {
  wxColour colour;
  RoundAlpha(colour);
  EXPECT_FALSE(colour.IsOk());
}

TEST_F(VideoOut, StartsWithoutOutputFrameOrOperations) {
  EXPECT_EQ(nullptr, renderer->GetVideoOutput());
  EXPECT_TRUE(renderer->RequiresDC());
  EXPECT_TRUE(renderer->m_drawOps.empty());
  EXPECT_TRUE(renderer->IsMultiLineDrawLabelSupported());
  EXPECT_TRUE(renderer->IsPixelFormatSupported(PIXEL_FORMAT_RGB24));
}

TEST_F(VideoOut, OwnsTheVideoOutputHandedToIt) {
  RecordingVideoOutput* output = GiveOutput();
  EXPECT_EQ(output, renderer->GetVideoOutput());
  renderer.reset();
  EXPECT_EQ(1, deletions);
}

TEST_F(VideoOut, PlacesTheOutputInScreenCoordinates) {
  RecordingVideoOutput* output = StartPresenting();
  renderer->Render(nullptr);
  // A square picture in the 200 x 100 tile at (40, 30) of the frame is pillarboxed to
  // (50, 0, 100, 100) of the tile.
  const wxPoint screen = frame->ClientToScreen(wxPoint(40 + 50, 30));
  ASSERT_EQ(1u, output->rects.size());
  EXPECT_EQ(wxRect(screen, wxSize(100, 100)), output->rects[0]);
}

TEST_F(VideoOut, PlacementUsesTheVideoSizeAsTheFrameSize) {
  RecordingVideoOutput* output = GiveOutput();
  PresentFrame(wxSize(50, 50), wxSize(200, 100));
  renderer->Render(nullptr);
  EXPECT_EQ(200, renderer->m_width);
  EXPECT_EQ(100, renderer->m_height);
  ASSERT_EQ(1u, output->rects.size());
  EXPECT_EQ(wxRect(frame->ClientToScreen(wxPoint(40, 30)), wxSize(200, 100)), output->rects[0]);
}

TEST_F(VideoOut, PaintsTheGreyBackdropUnderThePicture) {
  RecordingVideoOutput* output = StartPresenting();
  const wxSize size(200, 100);
  wxImage expected = SolidImage(size, kBackground);
  expected.SetRGB(wxRect(50, 0, 100, 100), kBackdrop.Red(), kBackdrop.Green(), kBackdrop.Blue());
  EXPECT_TRUE(ImagesNear(Paint(*renderer, size), expected, kExactPixels, "videoout-backdrop"));
  EXPECT_EQ(1u, output->rects.size());
}

TEST_F(VideoOut, WithoutAnOutputDrawsTheFrameItself) {
  const wxImage picture = BlockPicture(2, 2, 25);  // 50 x 50
  LoadFrame(*renderer, picture);
  const wxSize size(200, 100);
  EXPECT_TRUE(ImagesNear(Paint(*renderer, size),
                         Placed(size, picture, wxRect(0, 0, 50, 50), wxRect(50, 0, 100, 100)),
                         kExactPixels, "videoout-native-frame"));
}

TEST_F(VideoOut, RenderWithoutDeviceContextOrFrameDrawsNothing) {
  renderer->Render(nullptr);
  EXPECT_EQ(0, overlays.calls);
}

TEST_F(VideoOut, FrameWithoutOutputAndWithoutDeviceContextOnlyRecords) {
  LoadFrame(*renderer, BlockPicture(2, 2, 25));
  DrawLabelEachPass("Cam 1", *wxWHITE);
  renderer->Render(nullptr);
  renderer->Render(nullptr);
  EXPECT_EQ(2, overlays.calls);
  EXPECT_EQ(0, overlays.callsWithDC);
  EXPECT_EQ(1u, renderer->m_drawOps.size());
}

TEST_F(VideoOut, LabelAlphaIsRoundedAndInvisibleLabelsAreDroppedOverAnOutput) {
  StartPresenting();
  overlays.SetScript([this](IRenderer* r, wxDC* dc) {
    const wxRect rect(10, 10, 150, 40);
    r->DrawLabel(dc, "alpha 40", font, wxColour(255, 255, 255, 40), rect, 0, false, wxNullColour);
    r->DrawLabel(dc, "alpha 100", font, wxColour(255, 255, 255, 100), rect, 0, false,
                 wxColour(0, 0, 0, 100));
    r->DrawLabel(dc, "alpha 200", font, wxColour(255, 255, 255, 200), rect, 0, false,
                 wxColour(0, 0, 0, 200));
  });
  renderer->Render(nullptr);
  ASSERT_EQ(2u, renderer->m_drawOps.size());
  EXPECT_EQ("alpha 100", renderer->m_drawOps[0].text);
  EXPECT_EQ(wxColour(255, 255, 255, 128), renderer->m_drawOps[0].colour);
  EXPECT_EQ(wxColour(0, 0, 0, 128), renderer->m_drawOps[0].backgroundColour);
  EXPECT_EQ("alpha 200", renderer->m_drawOps[1].text);
  EXPECT_EQ(wxColour(255, 255, 255, 255), renderer->m_drawOps[1].colour);
  EXPECT_EQ(wxColour(0, 0, 0, 255), renderer->m_drawOps[1].backgroundColour);
}

TEST_F(VideoOut, WithoutAnOutputAnInvisibleRectangleIsRecordedAndDrawn) {
  const wxRect rect(10, 10, 20, 20);
  overlays.SetScript(
      [rect](IRenderer* r, wxDC* dc) { r->DrawRect(dc, rect, wxColour(255, 0, 0, 40)); });
  wxBitmap bitmap(200, 100, 24);
  wxMemoryDC dc(bitmap);
  renderer->Render(&dc);
  // An alpha-0 fill changes no pixel; the device context's bounding box shows it was drawn.
  EXPECT_TRUE(ImagesNear(bitmap.ConvertToImage(), SolidImage(wxSize(200, 100), kBackground),
                         kExactPixels, "videoout-invisible-rect"));
  EXPECT_EQ(rect, wxRect(dc.MinX(), dc.MinY(), dc.MaxX() - dc.MinX(), dc.MaxY() - dc.MinY()));
  ASSERT_EQ(1u, renderer->m_drawOps.size());
  EXPECT_EQ(VideoOutRenderer::DRAW_OP_RECT, renderer->m_drawOps[0].type);
  EXPECT_EQ(wxColour(255, 0, 0, 0), renderer->m_drawOps[0].colour);
}

TEST_F(VideoOut, OverAnOutputInvisibleOperationsAreDroppedButImagesKept) {
  StartPresenting();
  IRendererImage* image = renderer->CreateImage(BlockPicture(1, 1, 4));
  overlays.SetScript([image](IRenderer* r, wxDC* dc) {
    const wxColour faint(255, 0, 0, 40);
    r->DrawRect(dc, wxRect(10, 10, 20, 20), faint);
    r->DrawRectOutline(dc, wxRect(10, 10, 20, 20), faint, 2);
    r->DrawLine(dc, wxPoint(0, 0), wxPoint(5, 5), faint, 1);
    r->DrawImage(dc, image, 1, 2);
  });
  Paint(*renderer, wxSize(200, 100));
  ASSERT_EQ(1u, renderer->m_drawOps.size());
  EXPECT_EQ(VideoOutRenderer::DRAW_OP_IMAGE, renderer->m_drawOps[0].type);
}

TEST_F(VideoOut, RecordsEveryOperationWithItsFields) {
  IRendererImage* image = renderer->CreateImage(BlockPicture(1, 1, 4));
  overlays.SetScript([this, image](IRenderer* r, wxDC* dc) {
    r->DrawImage(dc, image, 5, 6);
    r->DrawLabel(dc, "Cam 1", font, *wxWHITE, wxRect(1, 2, 90, 30), wxALIGN_RIGHT, true, *wxRED);
    r->DrawRect(dc, wxRect(3, 4, 5, 6), *wxGREEN);
    r->DrawRectOutline(dc, wxRect(7, 8, 9, 10), *wxBLUE, 3);
    r->DrawLine(dc, wxPoint(11, 12), wxPoint(13, 14), *wxCYAN, 2);
  });
  Paint(*renderer, wxSize(200, 100));
  const std::vector<VideoOutRenderer::VideoOutDrawOp>& ops = renderer->m_drawOps;
  ASSERT_EQ(5u, ops.size());  // the label's box is not an operation of its own

  EXPECT_EQ(VideoOutRenderer::DRAW_OP_IMAGE, ops[0].type);
  EXPECT_EQ(wxRect(5, 6, 0, 0), ops[0].rect);
  EXPECT_EQ(image, ops[0].image);
  EXPECT_FALSE(ops[0].colour.IsOk());

  EXPECT_EQ(VideoOutRenderer::DRAW_OP_LABEL, ops[1].type);
  EXPECT_EQ("Cam 1", ops[1].text);
  EXPECT_EQ(font, ops[1].font);
  EXPECT_EQ(*wxWHITE, ops[1].colour);
  EXPECT_EQ(*wxRED, ops[1].backgroundColour);
  EXPECT_EQ(wxRect(1, 2, 90, 30), ops[1].rect);
  EXPECT_EQ(wxALIGN_RIGHT, ops[1].param);
  EXPECT_TRUE(ops[1].scaleFont);
  EXPECT_EQ(nullptr, ops[1].image);

  EXPECT_EQ(VideoOutRenderer::DRAW_OP_RECT, ops[2].type);
  EXPECT_EQ(wxRect(3, 4, 5, 6), ops[2].rect);
  EXPECT_EQ(*wxGREEN, ops[2].colour);
  EXPECT_EQ(0, ops[2].param);
  EXPECT_TRUE(ops[2].text.empty());
  EXPECT_FALSE(ops[2].font.IsOk());
  EXPECT_FALSE(ops[2].backgroundColour.IsOk());

  EXPECT_EQ(VideoOutRenderer::DRAW_OP_RECT_OUTLINE, ops[3].type);
  EXPECT_EQ(wxRect(7, 8, 9, 10), ops[3].rect);
  EXPECT_EQ(3, ops[3].param);

  EXPECT_EQ(VideoOutRenderer::DRAW_OP_LINE, ops[4].type);
  EXPECT_EQ(wxRect(11, 12, 13, 14), ops[4].rect);  // the end points, not a width and height
  EXPECT_EQ(*wxCYAN, ops[4].colour);
  EXPECT_EQ(2, ops[4].param);
  EXPECT_FALSE(ops[4].scaleFont);
}

TEST_F(VideoOut, OperationsAreEqualOnlyWhenEveryDrawnFieldIs) {
  VideoOutRenderer::VideoOutDrawOp base(VideoOutRenderer::DRAW_OP_LABEL);
  base.text = "a";
  base.font = font;
  base.colour = *wxWHITE;
  base.backgroundColour = *wxBLACK;
  base.rect = wxRect(1, 2, 3, 4);
  base.param = 5;
  const VideoOutRenderer::VideoOutDrawOp copy = base;
  EXPECT_TRUE(copy == base);
  using Op = VideoOutRenderer::VideoOutDrawOp;
  const std::vector<std::function<void(Op&)>> changes = {
      [](Op& op) { op.type = VideoOutRenderer::DRAW_OP_RECT; },
      [](Op& op) { op.text = "b"; },
      [](Op& op) { op.font = wxFont(wxFontInfo(20).Family(wxFONTFAMILY_SWISS)); },
      [](Op& op) { op.colour = *wxRED; },
      [](Op& op) { op.backgroundColour = *wxRED; },
      [](Op& op) { op.rect = wxRect(1, 2, 3, 5); },
      [](Op& op) { op.param = 6; },
      [](Op& op) { op.scaleFont = true; },
      [](Op& op) { op.picture = SolidImage(wxSize(2, 2), *wxRED); },
  };
  for (size_t i = 0; i < changes.size(); ++i) {
    Op changed = base;
    changes[i](changed);
    EXPECT_FALSE(changed == base) << "field " << i;
  }
}

// An image's address can be reused once it is deleted; what it shows decides.
TEST_F(VideoOut, ImagesAreEqualByTheirPicturesNotTheirAddresses) {
  int otherImage = 0;
  VideoOutRenderer::VideoOutDrawOp base(VideoOutRenderer::DRAW_OP_IMAGE);
  base.picture = SolidImage(wxSize(2, 2), *wxRED);
  VideoOutRenderer::VideoOutDrawOp copy = base;
  copy.image = reinterpret_cast<IRendererImage*>(&otherImage);
  copy.picture = SolidImage(wxSize(2, 2), *wxRED);
  EXPECT_TRUE(copy == base) << "the same pixels";
  for (const wxImage& other :
       {SolidImage(wxSize(2, 2), *wxBLUE), SolidImage(wxSize(2, 3), *wxRED), wxImage()}) {
    copy.picture = other;
    EXPECT_FALSE(copy == base);
  }
  copy.picture = base.picture.Copy();
  copy.picture.SetAlpha();
  EXPECT_FALSE(copy == base) << "an alpha channel";
  copy.picture = base.picture.Copy();
  copy.picture.SetMaskColour(255, 0, 0);
  EXPECT_FALSE(copy == base) << "a mask";
}

TEST_F(VideoOut, AnImageDeletedAndAnotherMadeRepaints) {
  StartPresenting();
  IRendererImage* image = renderer->CreateImage(SolidImage(wxSize(8, 8), *wxRED));
  overlays.SetScript([&image](IRenderer* r, wxDC* dc) { r->DrawImage(dc, image, 5, 5); });
  renderer->Render(nullptr);
  renderer->DeleteImage(image);
  image = renderer->CreateImage(SolidImage(wxSize(8, 8), *wxBLUE));
  renderer->Render(nullptr);
  EXPECT_EQ(2, overlays.callsWithDC);
}

// At opacity 0 a bitmap is drawn through a temporary image made and deleted in the same call.
TEST_F(VideoOut, TranslucentBitmapsRepaintWhenTheirPictureChangesOnly) {
  StartPresenting();
  renderer->SetOpacity(0);
  wxColour colour = *wxRED;
  overlays.SetScript([&colour](IRenderer* r, wxDC* dc) {
    r->DrawBitmap(dc, wxBitmap(SolidImage(wxSize(8, 8), colour)), 5, 5);
  });
  renderer->Render(nullptr);
  renderer->Render(nullptr);
  EXPECT_EQ(1, overlays.callsWithDC);
  colour = *wxBLUE;
  renderer->Render(nullptr);
  EXPECT_EQ(2, overlays.callsWithDC);
}

TEST_F(VideoOut, IdenticalPassesRepaintNothingAndAChangedLabelRepaintsOnce) {
  StartPresenting();
  DrawLabelEachPass("Cam 1", *wxWHITE);
  renderer->Render(nullptr);  // the first pass differs from the empty one before it
  EXPECT_EQ(1, overlays.callsWithDC);
  renderer->Render(nullptr);
  EXPECT_EQ(1, overlays.callsWithDC);
  DrawLabelEachPass("Cam 2", *wxWHITE);
  renderer->Render(nullptr);
  EXPECT_EQ(2, overlays.callsWithDC);
  renderer->Render(nullptr);
  EXPECT_EQ(2, overlays.callsWithDC);
  EXPECT_EQ(6, overlays.calls);
  ASSERT_EQ(1u, renderer->m_drawOps.size());
  EXPECT_EQ("Cam 2", renderer->m_drawOps[0].text);
}

TEST_F(VideoOut, PassesWithADeviceContextDrawAsTheyRecord) {
  StartPresenting();
  DrawLabelEachPass("Cam 1", *wxWHITE);
  Paint(*renderer, wxSize(200, 100));
  Paint(*renderer, wxSize(200, 100));
  EXPECT_EQ(2, overlays.calls);
  EXPECT_EQ(2, overlays.callsWithDC);  // only the memory contexts, no buffered repaint
}

TEST_F(VideoOut, HalfTransparentFillOverAnOutputBecomesAHatch) {
  StartPresenting();
  const wxRect rect(60, 10, 40, 40);
  const wxImage painted = PaintFill(rect, wxColour(255, 255, 0, 150));
  int untouched = 0;
  for (int y = rect.y; y < rect.GetBottom() + 1; ++y) {
    for (int x = rect.x; x < rect.GetRight() + 1; ++x) {
      untouched += PixelNear(painted, x, y, kBackdrop, kExactPixels) ? 1 : 0;
    }
  }
  // Gaps between the hatch lines show the backdrop; the lines cover the rest.
  EXPECT_GT(untouched, 0);
  EXPECT_LT(untouched, rect.width * rect.height);
}

TEST_F(VideoOut, OpaqueFillOverAnOutputIsSolid) {
  StartPresenting();
  const wxRect rect(60, 10, 40, 40);
  const wxImage painted = PaintFill(rect, wxColour(255, 255, 0, 200));
  wxImage expected = SolidImage(painted.GetSize(), kBackground);
  expected.SetRGB(wxRect(50, 0, 100, 100), kBackdrop.Red(), kBackdrop.Green(), kBackdrop.Blue());
  expected.SetRGB(rect, 255, 255, 0);
  EXPECT_TRUE(ImagesNear(painted, expected, kExactPixels, "videoout-solid-fill"));
}

TEST_F(VideoOut, HalfTransparentFillWithoutAnOutputBlends) {
  const wxRect rect(60, 10, 40, 40);
  const wxImage painted = PaintFill(rect, wxColour(255, 255, 0, 150));
  wxImage expected = SolidImage(painted.GetSize(), kBackground);
  const wxColour blended = Blend(wxColour(255, 255, 0), kBackground, 128);
  expected.SetRGB(rect, blended.Red(), blended.Green(), blended.Blue());
  EXPECT_TRUE(ImagesNear(painted, expected, kBlendTolerance, "videoout-blended-fill"));
}

TEST_F(VideoOut, OpacityIsAllOrNothing) {
  renderer->SetOpacity(10);
  EXPECT_EQ(255, renderer->GetOpacity());
  renderer->SetOpacity(0);
  EXPECT_EQ(0, renderer->GetOpacity());
  renderer->SetOpacity(255);
  EXPECT_EQ(255, renderer->GetOpacity());
}

TEST_F(VideoOut, HardwareImageNeedsASinglePlaneBuffer) {
  HardwareImageInfo info{};
  info.srcX = 1;
  info.texture = 7;
  HardwareImageInfo before = info;
  EXPECT_FALSE(renderer->BeginHardwareImage(64, 48, PIXEL_FORMAT_I420, info));
  EXPECT_TRUE(renderer->BeginHardwareImage(64, 48, PIXEL_FORMAT_RGB24, info));
  EXPECT_EQ(0, std::memcmp(&before, &info, sizeof info));
  EXPECT_FALSE(renderer->HasFrame());
  renderer->EndHardwareImage(info);
  EXPECT_TRUE(renderer->HasFrame());
  EXPECT_FALSE(renderer->RequiresDC());

  TwoPlaneVideoOut planar(tile);
  EXPECT_FALSE(planar.BeginHardwareImage(64, 48, PIXEL_FORMAT_RGB24, info));
  EXPECT_EQ(PIXEL_FORMAT_RGB24, planar.GetPixelFormat());  // the buffer itself was lent
}

TEST_F(VideoOut, HardwareImageOfAFrameThatCannotBeLaidOutFails) {
  HardwareImageInfo info{};
  EXPECT_FALSE(renderer->BeginHardwareImage(-64, 48, PIXEL_FORMAT_RGB24, info));
  EXPECT_FALSE(renderer->BeginHardwareImage(INT_MAX, 1, PIXEL_FORMAT_RGB24, info));
  EXPECT_FALSE(renderer->BeginHardwareImage(100000, 100000, PIXEL_FORMAT_RGB24, info));
  EXPECT_EQ(PIXEL_FORMAT_NONE, renderer->GetPixelFormat());
}

TEST_F(VideoOut, ClearFrameGivesTheOutputBack) {
  StartPresenting();
  EXPECT_TRUE(renderer->ClearFrame());
  EXPECT_EQ(1, deletions);
  EXPECT_EQ(nullptr, renderer->GetVideoOutput());
  EXPECT_FALSE(renderer->HasFrame());
}

TEST_F(VideoOut, HidingTheTileGivesTheOutputBackAtTheNextIdleTime) {
  Paint(*renderer, wxSize(200, 100));
  GiveOutput();
  PumpEvents();
  EXPECT_EQ(0, deletions) << "a shown tile keeps its output";
  tile->Hide();
  PumpEvents();
  EXPECT_EQ(1, deletions);
  EXPECT_EQ(nullptr, renderer->GetVideoOutput());
}

TEST_F(VideoOut, IdleTimeIsWatchedOnlyAfterTheFirstPaint) {
  GiveOutput();
  tile->Hide();
  PumpEvents();
  EXPECT_EQ(0, deletions);
  EXPECT_FALSE(IdleBound(renderer.get()));
  Paint(*renderer, wxSize(200, 100));
  EXPECT_TRUE(IdleBound(renderer.get()));
}

TEST_F(VideoOut, CopySettingsEndsTheIdleWatchAndGivesTheOutputBack) {
  Paint(*renderer, wxSize(200, 100));
  GiveOutput();
  renderer->SetAspectRatio(1.25f);
  NativeRenderer next(tile);
  renderer->CopySettings(&next);
  EXPECT_FLOAT_EQ(1.25f, next.GetAspectRatio());
  EXPECT_EQ(1, deletions);
  EXPECT_EQ(nullptr, renderer->GetVideoOutput());
  EXPECT_FALSE(IdleBound(renderer.get()));

  GiveOutput();
  tile->Hide();
  PumpEvents();
  EXPECT_EQ(1, deletions) << "no idle watch after CopySettings";
}

TEST_F(VideoOut, DestructionLeavesNoIdleBindingBehind) {
  Paint(*renderer, wxSize(200, 100));
  GiveOutput();
  const VideoOutRenderer* gone = renderer.get();
  renderer.reset();
  EXPECT_EQ(1, deletions);
  EXPECT_FALSE(IdleBound(const_cast<VideoOutRenderer*>(gone)));
  tile->Hide();
  PumpEvents();
}

TEST_F(VideoOut, ATileDestroyedFirstTakesTheBindingWithIt) {
  wxWindow* other = MakeTile(wxPoint(0, 0), wxSize(50, 50));
  auto early = std::make_unique<VideoOutRenderer>(other);
  Paint(*early, wxSize(50, 50));
  early->SetVideoOutput(new RecordingVideoOutput(&deletions));
  other->Destroy();
  early.reset();  // must not reach the destroyed window to unbind
  EXPECT_EQ(1, deletions);
  PumpEvents();
}

TEST_F(VideoOut, WithoutAParentNothingIsDrawnPlacedOrBound) {
  VideoOutProbe orphan(nullptr);
  orphan.SetDrawOverlaysHandler(&overlays);
  DrawLabelEachPass("Cam 1", *wxWHITE);
  auto* output = new RecordingVideoOutput(&deletions);
  orphan.SetVideoOutput(output);
  HardwareImageInfo info{};
  ASSERT_TRUE(orphan.BeginHardwareImage(100, 100, PIXEL_FORMAT_RGB24, info));
  orphan.EndHardwareImage(info);
  const wxSize size(50, 50);
  EXPECT_TRUE(ImagesNear(Paint(orphan, size), SolidImage(size, *wxWHITE), kExactPixels,
                         "videoout-no-parent"));
  orphan.Render(nullptr);
  EXPECT_TRUE(output->rects.empty());
  EXPECT_EQ(0, overlays.calls);
  PumpEvents();
  EXPECT_EQ(0, deletions) << "nothing watches idle time for a renderer without a window";
}

// The facade deletes a replaced back-end at idle time; its tile may be destroyed before then.
// The sanitizer build reports any unbinding from the destroyed window.
TEST_F(VideoOut, ABackEndAwaitingDeferredDeletionOutlivesItsTile) {
  wxWindow* other = MakeTile(wxPoint(0, 0), wxSize(50, 50));
  auto* waiting = new DeferredBackEnd(std::make_unique<VideoOutRenderer>(other));
  Paint(*waiting->backEnd, wxSize(50, 50));
  waiting->backEnd->SetVideoOutput(new RecordingVideoOutput(&deletions));
  wxTheApp->ScheduleForDestruction(waiting);
  other->Destroy();
  EXPECT_EQ(0, deletions);
  PumpEvents();
  EXPECT_EQ(1, deletions);
}

TEST_F(VideoOut, AFrameSizedBeyondItsBufferIsNotDrawn) {
  GiveOutput();
  PresentFrame(wxSize(100, 100), wxSize(200, 100));
  Paint(*renderer, wxSize(200, 100));  // the stored frame size is now the video size
  tile->Hide();
  PumpEvents();
  ASSERT_EQ(nullptr, renderer->GetVideoOutput());
  tile->Show();
  const wxSize size(200, 100);
  EXPECT_TRUE(ImagesNear(Paint(*renderer, size), SolidImage(size, kBackground), kExactPixels,
                         "videoout-short-buffer"));
}
