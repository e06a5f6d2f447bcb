// RendererBase overlay front: opacity on primitives, label splitting, text measuring and
// placement, font fitting, OSD positions and the colour helpers.
#include <climits>

#include <wx/dcclient.h>

#include "TestBackend.h"
#include "WxTest.h"

namespace {

class RendererBaseOverlay : public WxTest {
 protected:
  void SetUp() override {
    WxTest::SetUp();
    backend = std::make_unique<TestBackend>(frame);
    font = wxFont(wxFontInfo(12).Family(wxFONTFAMILY_SWISS));
  }
  void TearDown() override {
    backend.reset();
    WxTest::TearDown();
  }
  void DrawAllPrimitives(const wxColour& colour) {
    backend->DrawRect(nullptr, wxRect(1, 2, 3, 4), colour);
    backend->DrawRectOutline(nullptr, wxRect(5, 6, 7, 8), colour, 3);
    backend->DrawLine(nullptr, wxPoint(1, 1), wxPoint(9, 9), colour, 2);
    backend->DrawLabel(nullptr, "text", font, colour, wxRect(0, 0, 50, 20), 0, false,
                       wxColour(1, 2, 3, 200));
  }

  std::unique_ptr<TestBackend> backend;
  wxFont font;
};

}  // namespace

TEST_F(RendererBaseOverlay, FullOpacityAltersNoColour) {
  const wxColour colour(10, 20, 30, 222);
  DrawAllPrimitives(colour);
  ASSERT_EQ(4u, backend->draws.size());
  for (const DrawCall& call : backend->draws) EXPECT_EQ(colour, call.colour) << call.op;
  EXPECT_EQ(wxColour(1, 2, 3, 200), backend->draws[3].background);
}

TEST_F(RendererBaseOverlay, PrimitivesPassTheirArgumentsUnchanged) {
  DrawAllPrimitives(*wxRED);
  EXPECT_EQ("rect", backend->draws[0].op);
  EXPECT_EQ(wxRect(1, 2, 3, 4), backend->draws[0].rect);
  EXPECT_EQ("outline", backend->draws[1].op);
  EXPECT_EQ(wxRect(5, 6, 7, 8), backend->draws[1].rect);
  EXPECT_EQ(3, backend->draws[1].width);
  EXPECT_EQ("line", backend->draws[2].op);
  EXPECT_EQ(wxRect(wxPoint(1, 1), wxPoint(9, 9)), backend->draws[2].rect);
  EXPECT_EQ(2, backend->draws[2].width);
  backend->DrawRect(nullptr, wxRect(10, 10, -4, -6), *wxRED);  // not normalised here
  EXPECT_EQ(wxRect(10, 10, -4, -6), backend->draws.back().rect);
}

TEST_F(RendererBaseOverlay, HalfOpacityHalvesEveryPrimitivesAlpha) {
  backend->SetOpacity(128);
  DrawAllPrimitives(wxColour(10, 20, 30, 255));
  for (const DrawCall& call : backend->draws) {
    EXPECT_EQ(wxColour(10, 20, 30, 128), call.colour) << call.op;
  }
}

TEST_F(RendererBaseOverlay, ZeroOpacityClearsAlphaButNotTheLabelBackground) {
  backend->SetOpacity(0);
  DrawAllPrimitives(wxColour(10, 20, 30, 255));
  for (const DrawCall& call : backend->draws) EXPECT_EQ(0, call.colour.Alpha()) << call.op;
  EXPECT_EQ(wxColour(1, 2, 3, 200), backend->draws[3].background);
}

TEST_F(RendererBaseOverlay, MultiLineBackEndGetsTheWholeLabelOnce) {
  backend->multiLine = true;
  backend->SetOpacity(128);
  backend->DrawLabel(nullptr, "a\n\nb", font, *wxWHITE, wxRect(0, 0, 100, 100), wxALIGN_RIGHT, true,
                     wxNullColour);
  ASSERT_EQ(1u, backend->draws.size());
  EXPECT_EQ("a\n\nb", backend->draws[0].text);
  EXPECT_EQ(128, backend->draws[0].colour.Alpha());
  EXPECT_EQ(wxALIGN_RIGHT, backend->draws[0].alignment);
  EXPECT_FALSE(backend->draws[0].background.IsOk());
}

TEST_F(RendererBaseOverlay, SplitLabelDropsEmptyLinesAndStacksTheRest) {
  backend->DrawLabel(nullptr, "a\n\nb", font, *wxWHITE, wxRect(10, 20, 100, 80),
                     wxALIGN_CENTER_HORIZONTAL, false, wxNullColour);
  ASSERT_EQ(2u, backend->draws.size());
  const int heightOfA = backend->MeasureText("a", font).y;
  ASSERT_GT(heightOfA, 0);
  EXPECT_EQ("a", backend->draws[0].text);
  EXPECT_EQ(wxRect(10, 20, 100, 80), backend->draws[0].rect);
  EXPECT_EQ("b", backend->draws[1].text);
  EXPECT_EQ(wxRect(10, 20 + heightOfA, 100, 80 - heightOfA), backend->draws[1].rect);
  EXPECT_EQ(wxALIGN_CENTER_HORIZONTAL, backend->draws[1].alignment);
}

// Aligned each in what the lines above left, centred lines would stand half a line apart and
// overlap: they are stacked as one block in the middle instead, each in a rectangle of its
// own height.
TEST_F(RendererBaseOverlay, SplitLabelCentredVerticallyIsOneBlockInTheMiddle) {
  const wxRect rect(10, 20, 100, 81);
  backend->DrawLabel(nullptr, "a\n\nbg", font, *wxWHITE, rect, wxALIGN_CENTER, false, wxNullColour);
  ASSERT_EQ(2u, backend->draws.size());
  const int a = backend->MeasureText("a", font).y;
  const int bg = backend->MeasureText("bg", font).y;
  const int top = 20 + (81 - a - bg) / 2;
  EXPECT_EQ(wxRect(10, top, 100, a), backend->draws[0].rect);
  EXPECT_EQ(wxRect(10, top + a, 100, bg), backend->draws[1].rect);
  for (const DrawCall& call : backend->draws) EXPECT_EQ(wxALIGN_CENTER, call.alignment);
}

// Aligned each in what the lines above left, bottom-aligned lines would all stand on the
// bottom edge: the block ends there instead, its last line on the edge.
TEST_F(RendererBaseOverlay, SplitLabelAlignedToTheBottomEndsOnTheBottomEdge) {
  const wxRect rect(0, 0, 100, 100);
  const int alignment = wxALIGN_BOTTOM | wxALIGN_RIGHT;
  backend->DrawLabel(nullptr, "one\ntwo\nthree", font, *wxWHITE, rect, alignment, true, *wxBLUE);
  ASSERT_EQ(3u, backend->draws.size());
  EXPECT_EQ(100, backend->draws[2].rect.GetBottom() + 1);
  for (size_t i = 1; i < backend->draws.size(); ++i) {
    EXPECT_EQ(backend->draws[i - 1].rect.GetBottom() + 1, backend->draws[i].rect.y);
  }
  for (const DrawCall& call : backend->draws) {
    EXPECT_EQ(alignment, call.alignment);
    EXPECT_TRUE(call.scale);
    EXPECT_EQ(*wxBLUE, call.background);
  }
}

TEST_F(RendererBaseOverlay, OneCentredLineIsAlignedInTheWholeRectangle) {
  backend->DrawLabel(nullptr, "\nonly\n", font, *wxWHITE, wxRect(5, 6, 70, 80), wxALIGN_CENTER,
                     false, wxNullColour);
  ASSERT_EQ(1u, backend->draws.size());
  EXPECT_EQ("only", backend->draws[0].text);
  EXPECT_EQ(wxRect(5, 6, 70, 80), backend->draws[0].rect);
}

TEST_F(RendererBaseOverlay, SplitLabelMovesEachLineByTheHeightOfTheLineAbove) {
  const wxFont big(wxFontInfo(30).Family(wxFONTFAMILY_SWISS));
  backend->DrawLabel(nullptr, "one\ntwo\nthree", big, *wxWHITE, wxRect(0, 0, 300, 300), 0, false,
                     wxNullColour);
  ASSERT_EQ(3u, backend->draws.size());
  const int one = backend->MeasureText("one", big).y;
  const int two = backend->MeasureText("two", big).y;
  EXPECT_EQ(one, backend->draws[1].rect.y);
  EXPECT_EQ(one + two, backend->draws[2].rect.y);
  EXPECT_EQ(300 - one - two, backend->draws[2].rect.height);
}

// Geometry near the int limits is stacked in a wider type and clamped, never overflowed.
TEST_F(RendererBaseOverlay, SplitLabelNearTheIntLimitsStacksClamped) {
  backend->DrawLabel(nullptr, "a\nb", font, *wxWHITE, wxRect(0, INT_MAX - 2, 100, INT_MIN + 1), 0,
                     false, wxNullColour);
  ASSERT_EQ(2u, backend->draws.size());
  EXPECT_EQ(INT_MAX, backend->draws[1].rect.y);
  EXPECT_EQ(INT_MIN, backend->draws[1].rect.height);
}

TEST_F(RendererBaseOverlay, SplitLabelFadesEveryLine) {
  backend->SetOpacity(51);
  backend->DrawLabel(nullptr, "x\ny", font, wxColour(0, 0, 0, 250), wxRect(0, 0, 10, 10), 0, false,
                     *wxBLUE);
  ASSERT_EQ(2u, backend->draws.size());
  for (const DrawCall& call : backend->draws) {
    EXPECT_EQ(50, call.colour.Alpha());
    EXPECT_EQ(*wxBLUE, call.background);
  }
}

TEST_F(RendererBaseOverlay, MeasureTextUsesTheParentsDc) {
  wxWindowDC dc(frame);
  wxCoord width, height;
  dc.GetTextExtent("Hello", &width, &height, nullptr, nullptr, &font);
  EXPECT_EQ(wxSize(width, height), backend->RendererBase::MeasureText("Hello", font));
  EXPECT_GT(width, 0);
}

TEST_F(RendererBaseOverlay, MeasureTextWithAnInvalidFontUsesTheDcsFont) {
  const wxSize size = backend->RendererBase::MeasureText("Hello", wxNullFont);
  EXPECT_GT(size.x, 0);
  EXPECT_GT(size.y, 0);
}

TEST_F(RendererBaseOverlay, LineHeightIsTheHeightOfA) {
  EXPECT_EQ(backend->MeasureText("A", font).y, backend->GetLineHeight(font));
}

TEST_F(RendererBaseOverlay, TextLocationWithoutAlignmentDoesNotMeasure) {
  EXPECT_EQ(wxPoint(7, 9), backend->GetTextLocation(font, "abc", wxRect(7, 9, 100, 50), 0));
  EXPECT_EQ(0, backend->measureCalls);
}

TEST_F(RendererBaseOverlay, TextLocationForEveryAlignment) {
  const wxSize size = backend->MeasureText("abc", font);
  const wxRect rect(7, 9, 101, 51);
  const int right = 7 + 101 - size.x;
  const int centre = 7 + (101 - size.x) / 2;
  const int bottom = 9 + 51 - size.y;
  const int middle = 9 + (51 - size.y) / 2;
  EXPECT_EQ(wxPoint(right, 9), backend->GetTextLocation(font, "abc", rect, wxALIGN_RIGHT));
  EXPECT_EQ(wxPoint(centre, 9),
            backend->GetTextLocation(font, "abc", rect, wxALIGN_CENTER_HORIZONTAL));
  EXPECT_EQ(wxPoint(7, bottom), backend->GetTextLocation(font, "abc", rect, wxALIGN_BOTTOM));
  EXPECT_EQ(wxPoint(7, middle),
            backend->GetTextLocation(font, "abc", rect, wxALIGN_CENTER_VERTICAL));
  EXPECT_EQ(wxPoint(centre, middle), backend->GetTextLocation(font, "abc", rect, wxALIGN_CENTER));
  // Right wins over centre, bottom over middle.
  EXPECT_EQ(
      wxPoint(right, bottom),
      backend->GetTextLocation(font, "abc", rect, wxALIGN_RIGHT | wxALIGN_CENTER | wxALIGN_BOTTOM));
}

TEST_F(RendererBaseOverlay, TextLocationDividesTowardZero) {
  // Text wider than the rectangle: a negative half rounds toward zero.
  const wxString text = "a fairly long piece of text";
  const wxSize size = backend->MeasureText(text, font);
  const wxRect rect(0, 0, 3, 3);
  ASSERT_GT(size.x, 3);
  EXPECT_EQ((3 - size.x) / 2,
            backend->GetTextLocation(font, text, rect, wxALIGN_CENTER_HORIZONTAL).x);
}

TEST_F(RendererBaseOverlay, TextLocationNearTheIntLimitsIsClamped) {
  const wxString text = "a fairly long piece of text";
  const int all = wxALIGN_RIGHT | wxALIGN_BOTTOM;
  EXPECT_EQ(wxPoint(INT_MAX, INT_MAX),
            backend->GetTextLocation(font, "a", wxRect(INT_MAX - 1, INT_MAX - 1, 100, 100), all));
  EXPECT_EQ(wxPoint(INT_MAX, INT_MAX),
            backend->GetTextLocation(font, "a", wxRect(INT_MAX - 1, INT_MAX - 1, 100, 100),
                                     wxALIGN_CENTER));
  EXPECT_EQ(wxPoint(INT_MIN, INT_MIN),
            backend->GetTextLocation(font, text, wxRect(INT_MIN + 1, INT_MIN + 1, 0, 0), all));
}

TEST_F(RendererBaseOverlay, ScaledFontOfOnePointIsReturnedUnchanged) {
  wxFont tiny(wxFontInfo(1).Family(wxFONTFAMILY_SWISS));
  backend->m_renderClientWidth = 1;
  backend->m_renderClientHeight = 1;
  const wxFont result = backend->GetScaledFont(tiny, "does not fit at all", wxPoint(0, 0));
  EXPECT_EQ(1, result.GetPointSize());
  EXPECT_EQ(0, backend->measureCalls);
}

TEST_F(RendererBaseOverlay, ScaledFontThatFitsIsKept) {
  backend->m_renderClientWidth = 2000;
  backend->m_renderClientHeight = 2000;
  EXPECT_EQ(12, backend->GetScaledFont(font, "fits", wxPoint(0, 0)).GetPointSize());
}

TEST_F(RendererBaseOverlay, ScaledFontShrinksUntilTheTextFits) {
  const wxFont big(wxFontInfo(40).Family(wxFONTFAMILY_SWISS));
  const wxString text = "Camera 12";
  const wxSize full = backend->MeasureText(text, big);
  backend->m_renderClientWidth = 10 + full.x / 2;
  backend->m_renderClientHeight = 500;
  const wxFont scaled = backend->GetScaledFont(big, text, wxPoint(10, 0));
  EXPECT_LT(scaled.GetPointSize(), 40);
  EXPECT_GT(scaled.GetPointSize(), 1);
  EXPECT_LE(10 + backend->MeasureText(text, scaled).x, backend->m_renderClientWidth);
  // One point larger would not have fitted.
  wxFont larger = scaled;
  larger.SetPointSize(scaled.GetPointSize() + 1);
  EXPECT_GT(10 + backend->MeasureText(text, larger).x, backend->m_renderClientWidth);
  EXPECT_EQ(40, big.GetPointSize());  // the caller's font is untouched
}

TEST_F(RendererBaseOverlay, ScaledFontAtAnOriginNearTheIntLimitNeverFits) {
  backend->m_renderClientWidth = 2000;
  backend->m_renderClientHeight = 2000;
  EXPECT_EQ(1, backend->GetScaledFont(font, "Ab", wxPoint(INT_MAX - 1, 0)).GetPointSize());
  EXPECT_EQ(1, backend->GetScaledFont(font, "Ab", wxPoint(0, INT_MAX - 1)).GetPointSize());
}

TEST_F(RendererBaseOverlay, ScaledFontNeverGoesBelowOnePoint) {
  const wxFont big(wxFontInfo(6).Family(wxFONTFAMILY_SWISS));
  backend->m_renderClientWidth = 1;
  backend->m_renderClientHeight = 1;
  EXPECT_EQ(1, backend->GetScaledFont(big, "never fits", wxPoint(0, 0)).GetPointSize());
}

// Found by fuzzing the facade: shrinking a point at a time measured the text once per point,
// so a host's 60000-point font (or one at an origin outside the tile, which never fits)
// held the paint for minutes. Sizes at which the text is several times too large are halved
// instead; the result is still the largest size that fits, within a few dozen measurements.
TEST_F(RendererBaseOverlay, AHugeFontIsFittedInFewMeasurements) {
  backend->m_renderClientWidth = 200;
  backend->m_renderClientHeight = 200;
  const wxFont huge(wxFontInfo(60000).Family(wxFONTFAMILY_SWISS));
  ASSERT_EQ(60000, huge.GetPointSize());
  const wxFont scaled = backend->GetScaledFont(huge, "Ab", wxPoint(0, 0));
  EXPECT_LT(backend->measureCalls, 200);
  EXPECT_LE(backend->MeasureText("Ab", scaled).x, 200);
  EXPECT_LE(backend->MeasureText("Ab", scaled).y, 200);
  wxFont larger = scaled;
  larger.SetPointSize(scaled.GetPointSize() + 1);
  const wxSize largerExtent = backend->MeasureText("Ab", larger);
  EXPECT_TRUE(largerExtent.x > 200 || largerExtent.y > 200) << scaled.GetPointSize();

  backend->measureCalls = 0;
  EXPECT_EQ(1, backend->GetScaledFont(huge, "Ab", wxPoint(500, 0)).GetPointSize());
  EXPECT_LT(backend->measureCalls, 40);
}

TEST(OsdPositions, MapToAlignmentFlags) {
  const int expected[] = {0, 0, 256, 512, 2048, 2304, 2560, 1024, 1280, 1536, 0};
  for (int position = 0; position <= 10; ++position) {
    EXPECT_EQ(expected[position], RendererBase::OsdPosToAlignment(position)) << position;
  }
  EXPECT_EQ(0, RendererBase::OsdPosToAlignment(-1));
}

TEST(ColourHelpers, ChangeAlphaKeepsTheColour) {
  EXPECT_EQ(wxColour(1, 2, 3, 4), RendererBase::ChangeAlpha(wxColour(1, 2, 3, 200), 4));
}

TEST(ColourHelpers, AdjustAlphaScalesAndRoundsDown) {
  EXPECT_EQ(128, RendererBase::AdjustAlpha(wxColour(0, 0, 0, 255), 128).Alpha());
  EXPECT_EQ(0, RendererBase::AdjustAlpha(wxColour(0, 0, 0, 1), 254).Alpha());
  EXPECT_EQ(100, RendererBase::AdjustAlpha(wxColour(9, 8, 7, 200), 128).Alpha());
  EXPECT_EQ(wxColour(9, 8, 7, 255), RendererBase::AdjustAlpha(wxColour(9, 8, 7, 255), 255));
}

TEST(ColourHelpers, InvalidColourComesBackUnchanged) {
  EXPECT_FALSE(RendererBase::AdjustAlpha(wxNullColour, 10).IsOk());
  EXPECT_FALSE(RendererBase::ChangeAlpha(wxNullColour, 10).IsOk());
}
