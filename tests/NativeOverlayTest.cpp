// NativeRenderer overlays on real pixels: filled and outlined rectangles, lines, labels with
// and without their box, the nine on-screen-display positions, multi-line and fitted labels,
// and the opacity on each.
#include <climits>

#include <wx/dcmemory.h>

#include "NativeRenderTest.h"

namespace {

const wxColour kFill(250, 200, 0);
const wxColour kBoxColour(255, 0, 0);

class NativeOverlay : public NativeRenderTest {
 protected:
  void SetUp() override {
    NativeRenderTest::SetUp();
    renderer = std::make_unique<NativeProbe>(tile);
    renderer->SetDrawOverlaysHandler(&overlays);
    font = wxFont(wxFontInfo(12).Family(wxFONTFAMILY_SWISS));
  }
  void TearDown() override {
    renderer.reset();
    NativeRenderTest::TearDown();
  }
  wxImage PaintWith(const OverlayScript::Script& script, const wxSize& size = wxSize(160, 120)) {
    overlays.SetScript(script);
    return Paint(*renderer, size);
  }
  wxImage PaintLabel(const wxString& text, const wxRect& rect, int alignment,
                     const wxColour& background, const wxSize& size = wxSize(160, 120)) {
    return PaintWith(
        [&](IRenderer* r, wxDC* dc) {
          r->DrawLabel(dc, text, font, *wxWHITE, rect, alignment, false, background);
        },
        size);
  }
  // The background with `rect` filled.
  static wxImage WithRect(const wxSize& size, const wxRect& rect, const wxColour& colour) {
    wxImage expected = SolidImage(size, kBackground);
    expected.SetRGB(rect, colour.Red(), colour.Green(), colour.Blue());
    return expected;
  }
  // Every pixel of `rect` is covered by the red box (text over it keeps red at full).
  static ::testing::AssertionResult BoxCovers(const wxImage& image, const wxRect& rect) {
    for (int y = rect.y; y < rect.GetBottom() + 1; ++y) {
      for (int x = rect.x; x < rect.GetRight() + 1; ++x) {
        if (image.GetRed(x, y) < 255 - kBlendTolerance) {
          return ::testing::AssertionFailure() << "box pixel (" << x << ", " << y << ") is not red";
        }
      }
    }
    return ::testing::AssertionSuccess();
  }
  static int CountNear(const wxImage& image, const wxColour& colour, int tolerance) {
    int count = 0;
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        count += PixelNear(image, x, y, colour, tolerance) ? 1 : 0;
      }
    }
    return count;
  }
  // The ink of one band of rows.
  static wxRect InkInRows(const wxImage& image, int top, int height) {
    const wxRect band = InkBounds(image.GetSubImage(wxRect(0, top, image.GetWidth(), height)));
    return band.IsEmpty() ? band : wxRect(band.x, band.y + top, band.width, band.height);
  }

  std::unique_ptr<NativeProbe> renderer;
  OverlayScript overlays;
  wxFont font;
};

}  // namespace

TEST_F(NativeOverlay, FilledRectangleCoversExactlyItsPixels) {
  const wxRect rect(20, 30, 40, 10);
  const wxImage painted = PaintWith([&](IRenderer* r, wxDC* dc) { r->DrawRect(dc, rect, kFill); });
  EXPECT_TRUE(
      ImagesNear(painted, WithRect(painted.GetSize(), rect, kFill), kExactPixels, "native-fill"));
}

TEST_F(NativeOverlay, TranslucentFillBlendsWithTheBackground) {
  const wxRect rect(20, 30, 40, 10);
  const wxImage painted = PaintWith(
      [&](IRenderer* r, wxDC* dc) { r->DrawRect(dc, rect, wxColour(255, 255, 255, 128)); });
  const wxImage expected = WithRect(painted.GetSize(), rect, Blend(*wxWHITE, kBackground, 128));
  EXPECT_TRUE(ImagesNear(painted, expected, kBlendTolerance, "native-fill-translucent"));
}

TEST_F(NativeOverlay, OpacityFadesAnOpaqueFill) {
  renderer->SetOpacity(128);
  const wxRect rect(20, 30, 40, 10);
  const wxImage painted = PaintWith([&](IRenderer* r, wxDC* dc) { r->DrawRect(dc, rect, kFill); });
  const wxImage expected = WithRect(painted.GetSize(), rect, Blend(kFill, kBackground, 128));
  EXPECT_TRUE(ImagesNear(painted, expected, kBlendTolerance, "native-fill-opacity"));
}

TEST_F(NativeOverlay, OutlineOfWidthFourLiesInsideItsRectangle) {
  const wxRect rect(10, 10, 100, 50);
  const wxImage painted =
      PaintWith([&](IRenderer* r, wxDC* dc) { r->DrawRectOutline(dc, rect, kFill, 4); });
  // The pen's centre line runs on (12, 12, 97, 47): the 4-pixel stroke covers the outermost
  // four pixels of the rectangle and nothing outside it.
  wxImage expected = WithRect(painted.GetSize(), rect, kFill);
  expected.SetRGB(wxRect(14, 14, 92, 42), kBackground.Red(), kBackground.Green(),
                  kBackground.Blue());
  EXPECT_TRUE(ImagesNear(painted, expected, kExactPixels, "native-outline-4"));
}

TEST_F(NativeOverlay, OutlinesOfEveryWidthStayInsideTheirRectangle) {
  const wxRect rect(10, 10, 100, 50);
  for (int width = 1; width <= 5; ++width) {
    const wxImage painted =
        PaintWith([&](IRenderer* r, wxDC* dc) { r->DrawRectOutline(dc, rect, kFill, width); });
    wxImage expected = WithRect(painted.GetSize(), rect, kFill);
    expected.SetRGB(wxRect(rect).Deflate(width), kBackground.Red(), kBackground.Green(),
                    kBackground.Blue());
    EXPECT_TRUE(
        ImagesNear(painted, expected, kExactPixels, "native-outline-" + std::to_string(width)))
        << "width " << width;
  }
}

// Rectangles and widths near the int limits are inset in a wider type and clamped, never
// overflowed.
TEST_F(NativeOverlay, OutlinePathNearTheIntLimitsIsClamped) {
  EXPECT_EQ(wxRect(12, 12, 97, 47), NativeProbe::OutlinePath(wxRect(10, 10, 100, 50), 4));
  EXPECT_EQ(wxRect(INT_MAX, INT_MAX, 17, 17),
            NativeProbe::OutlinePath(wxRect(INT_MAX - 1, INT_MAX - 1, 20, 20), 4));
  EXPECT_EQ(wxRect(-48, -48, INT_MIN, INT_MIN),
            NativeProbe::OutlinePath(wxRect(-50, -50, INT_MIN + 1, INT_MIN + 1), 4));
  EXPECT_EQ(wxRect(INT_MIN / 2, INT_MIN / 2, INT_MAX, INT_MAX),
            NativeProbe::OutlinePath(wxRect(0, 0, 20, 20), INT_MIN));
}

TEST_F(NativeOverlay, LineHasButtEndsAndItsWidth) {
  const wxImage painted = PaintWith([&](IRenderer* r, wxDC* dc) {
    r->DrawLine(dc, wxPoint(10, 50), wxPoint(110, 50), kFill, 2);
  });
  // Rows 49 and 50 from x 10 up to, not including, 110: butt ends add nothing past the end
  // points.
  EXPECT_TRUE(ImagesNear(painted, WithRect(painted.GetSize(), wxRect(10, 49, 100, 2), kFill),
                         kExactPixels, "native-line"));
}

TEST_F(NativeOverlay, OpacityFadesALine) {
  renderer->SetOpacity(128);
  const wxImage painted = PaintWith([&](IRenderer* r, wxDC* dc) {
    r->DrawLine(dc, wxPoint(10, 50), wxPoint(110, 50), kFill, 2);
  });
  EXPECT_TRUE(ImagesNear(
      painted, WithRect(painted.GetSize(), wxRect(10, 49, 100, 2), Blend(kFill, kBackground, 128)),
      kBlendTolerance, "native-line-opacity"));
}

TEST_F(NativeOverlay, LabelBoxHasExactlyTheMeasuredTextSize) {
  const wxRect rect(20, 20, 120, 50);
  const wxImage painted = PaintLabel("Cam 1", rect, 0, kBoxColour);
  const wxRect box(rect.GetTopLeft(), renderer->MeasureText("Cam 1", font));
  EXPECT_EQ(box, InkBounds(painted));
  EXPECT_TRUE(BoxCovers(painted, box));
  EXPECT_GT(CountNear(painted, *wxWHITE, kBlendTolerance), 0) << "no text drawn";
}

TEST_F(NativeOverlay, LabelWithoutBackgroundDrawsNoBox) {
  const wxRect rect(20, 20, 120, 50);
  const wxImage painted = PaintLabel("Cam 1", rect, 0, wxNullColour);
  const wxRect text(rect.GetTopLeft(), renderer->MeasureText("Cam 1", font));
  const wxRect ink = InkBounds(painted);
  EXPECT_FALSE(ink.IsEmpty()) << "no text drawn";
  EXPECT_TRUE(text.Contains(ink));
  EXPECT_LT(ink.width * ink.height, text.width * text.height) << "something filled the box";
  EXPECT_EQ(0, CountNear(painted, kBoxColour, 60));
}

// The toolkit asserts on text drawn or sized in no font; such a label is written in the font
// MeasureText measures it with, the window's.
TEST_F(NativeOverlay, LabelWithoutAFontIsWrittenInTheWindowsFont) {
  const wxRect rect(20, 20, 120, 50);
  const wxSize text = renderer->MeasureText("Cam 1", wxNullFont);
  for (bool scale : {false, true}) {
    const wxImage painted = PaintWith([&](IRenderer* r, wxDC* dc) {
      r->DrawLabel(dc, "Cam 1", wxNullFont, *wxWHITE, rect, 0, scale, kBoxColour);
    });
    EXPECT_EQ(wxRect(rect.GetTopLeft(), text), InkBounds(painted)) << "scale " << scale;
    EXPECT_GT(CountNear(painted, *wxWHITE, kBlendTolerance), 0) << "no text, scale " << scale;
  }
}

TEST_F(NativeOverlay, LabelWithoutAFontOrAWindowIsWrittenInTheNormalFont) {
  NativeProbe orphan(nullptr);
  wxBitmap bitmap(160, 120, 24);
  {
    wxMemoryDC dc(bitmap);
    dc.SetBackground(wxBrush(kBackground));
    dc.Clear();
    orphan.DrawLabel(&dc, "Cam 1", wxNullFont, *wxWHITE, wxRect(20, 20, 120, 50), 0, false,
                     wxNullColour);
  }
  const wxRect text(wxPoint(20, 20), renderer->MeasureText("Cam 1", *wxNORMAL_FONT));
  EXPECT_TRUE(text.Contains(InkBounds(bitmap.ConvertToImage())));
  EXPECT_GT(CountNear(bitmap.ConvertToImage(), *wxWHITE, kBlendTolerance), 0) << "no text drawn";
}

TEST_F(NativeOverlay, LabelBoxFadesWithTheOpacity) {
  renderer->SetOpacity(128);
  const wxRect rect(20, 20, 120, 50);
  const wxImage painted = PaintLabel("Cam 1", rect, 0, kBoxColour);
  // The box goes through the faded rectangle path; its top-left pixel carries no text.
  EXPECT_TRUE(PixelNear(painted, 20, 20, Blend(kBoxColour, kBackground, 128), kBlendTolerance));
}

TEST_F(NativeOverlay, LabelsLandInEachOfTheNineScreenPositions) {
  const wxSize size(160, 120);
  const wxSize text = renderer->MeasureText("Ab", font);
  const int columns[] = {0, (size.x - text.x) / 2, size.x - text.x};
  const int rows[] = {0, (size.y - text.y) / 2, size.y - text.y};
  for (int position = 1; position <= 9; ++position) {
    const int alignment = RendererBase::OsdPosToAlignment(position);
    const wxImage painted = PaintLabel("Ab", wxRect(size), alignment, kBoxColour, size);
    const wxRect box(columns[(position - 1) % 3], rows[(position - 1) / 3], text.x, text.y);
    EXPECT_EQ(box, InkBounds(painted)) << "position " << position;
    EXPECT_TRUE(BoxCovers(painted, box)) << "position " << position;
    EXPECT_GT(CountNear(painted, *wxWHITE, kBlendTolerance), 0) << "position " << position;
  }
}

TEST_F(NativeOverlay, MultiLineLabelAlignsEveryLine) {
  const wxRect rect(10, 10, 140, 100);
  const int lineHeight = renderer->GetLineHeight(font);
  const wxImage painted = PaintLabel("L1\nLine 2", rect, wxALIGN_RIGHT, wxNullColour);
  const wxRect first = InkInRows(painted, rect.y, lineHeight);
  const wxRect second = InkInRows(painted, rect.y + lineHeight, lineHeight);
  ASSERT_FALSE(first.IsEmpty());
  ASSERT_FALSE(second.IsEmpty());
  // Both lines end at the right edge; the shorter first line starts further right.
  EXPECT_NEAR(rect.GetRight(), first.GetRight(), 3);
  EXPECT_NEAR(rect.GetRight(), second.GetRight(), 3);
  EXPECT_GT(first.x, second.x);
  EXPECT_TRUE(InkInRows(painted, rect.y + 2 * lineHeight, 120 - rect.y - 2 * lineHeight).IsEmpty());
}

TEST_F(NativeOverlay, MultiLineLabelBoxCoversAllLines) {
  const wxRect rect(10, 10, 140, 100);
  const wxImage painted = PaintLabel("L1\nLine 2", rect, 0, kBoxColour);
  const wxSize text = renderer->MeasureText("L1\nLine 2", font);
  EXPECT_EQ(2 * renderer->GetLineHeight(font), text.y);
  EXPECT_EQ(wxRect(rect.GetTopLeft(), text), InkBounds(painted));
}

TEST_F(NativeOverlay, ScaledLabelShrinksUntilItFitsTheTile) {
  const wxString text = "A rather wide label";
  const wxFont large(wxFontInfo(20).Family(wxFONTFAMILY_SWISS));
  const wxSize size(100, 40);
  // The size the label must come down to: the first, counting down, whose text fits.
  wxFont fitted = large;
  while (renderer->MeasureText(text, fitted).x > size.x && fitted.GetPointSize() > 1) {
    fitted.SetPointSize(fitted.GetPointSize() - 1);
  }
  ASSERT_LT(fitted.GetPointSize(), 20);
  const wxImage painted = PaintWith(
      [&](IRenderer* r, wxDC* dc) {
        r->DrawLabel(dc, text, large, *wxWHITE, wxRect(size), 0, true, kBoxColour);
      },
      size);
  EXPECT_EQ(wxRect(wxPoint(0, 0), renderer->MeasureText(text, fitted)), InkBounds(painted));
}

TEST_F(NativeOverlay, UnscaledLabelRunsPastTheTile) {
  const wxString text = "A rather wide label";
  const wxFont large(wxFontInfo(20).Family(wxFONTFAMILY_SWISS));
  const wxSize size(100, 40);
  const wxImage painted = PaintWith(
      [&](IRenderer* r, wxDC* dc) {
        r->DrawLabel(dc, text, large, *wxWHITE, wxRect(size), 0, false, kBoxColour);
      },
      size);
  EXPECT_EQ(wxRect(0, 0, size.x, renderer->MeasureText(text, large).y), InkBounds(painted));
}

TEST_F(NativeOverlay, OverlaysAreDrawnOverTheFrame) {
  LoadFrame(*renderer, BlockPicture(1, 1, 32));
  renderer->SetIgnoreAspectRatio(true);
  const wxImage painted = PaintWith(
      [&](IRenderer* r, wxDC* dc) { r->DrawRect(dc, wxRect(0, 0, 8, 8), kFill); }, wxSize(32, 32));
  EXPECT_TRUE(PixelNear(painted, 4, 4, kFill, kExactPixels));
  EXPECT_TRUE(PixelNear(painted, 20, 20, wxColour(30, 30, 200), kExactPixels));
}
