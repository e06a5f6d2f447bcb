// Labels on the GL back-end and the two-level cache of glyph fonts behind them, checked on
// the pixels drawn and on the cache entries.
#include <GL/gl.h>

#include <cstring>

#include <renderer/wxGLFont.h>

#include "GLTest.h"

namespace {

// Alpha blending rounds each channel once.
constexpr int kBlendRounding = 1;

const wxColour kBox(0, 0, 255);
const wxColour kInvisible(0, 0, 0, 0);

class OverlayFonts : public GLTest {
 protected:
  void SetUp() override {
    GLTest::SetUp();
    font = wxFont(wxFontInfo(14).Family(wxFONTFAMILY_SWISS));
    other = wxFont(wxFontInfo(20).Family(wxFONTFAMILY_ROMAN));
  }
  void TearDown() override {
    GLTest::TearDown();
    EXPECT_TRUE(OpenGLRenderer::m_sharedFonts.empty()) << "renderers gone, fonts left";
  }
  // Paints `renderer` with an overlay pass that runs `draw`.
  wxImage PaintWith(GLTestRenderer* renderer,
                    const std::function<void(OpenGLRenderer*, wxDC*)>& draw) {
    OverlayFunction overlays([&draw](IRenderer* painting, wxDC* dc) {
      draw(static_cast<OpenGLRenderer*>(painting), dc);
    });
    renderer->SetDrawOverlaysHandler(&overlays);
    const wxImage drawn = Paint(renderer);
    renderer->SetDrawOverlaysHandler(nullptr);
    return drawn;
  }
  // The number of holders of the process-wide glyph font for `f`, 0 when there is none.
  static int SharedHolders(const wxFont& f) {
    FontReference* entry = OpenGLRenderer::GetFontReference(OpenGLRenderer::m_sharedFonts, f);
    return entry ? entry->refCount : 0;
  }
  // Bounding box of the pixels that differ from the tile's background.
  wxRect InkArea(const wxImage& image) const {
    wxRect area;
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        if (PixelNear(image, x, y, kTileColour, 8)) continue;
        area = area.IsEmpty() ? wxRect(x, y, 1, 1) : area.Union(wxRect(x, y, 1, 1));
      }
    }
    return area;
  }
  // Paints a label "Gate 4" in `textColour` on a blue box in (20, 30, 160, 60) with
  // `alignment`: the tile must show the box, exactly the measured text size, and nothing else.
  ::testing::AssertionResult DrawsOnlyItsBox(const wxColour& textColour, int alignment) {
    GLTestRenderer* renderer = MakeRenderer();
    wxRect box;
    const wxImage drawn = PaintWith(renderer, [&](OpenGLRenderer* painting, wxDC* dc) {
      const wxRect rect(20, 30, 160, 60);
      box = wxRect(painting->GetTextLocation(font, "Gate 4", rect, alignment),
                   painting->MeasureText("Gate 4", font));
      painting->DrawLabel(dc, "Gate 4", font, textColour, rect, alignment, false, kBox);
    });
    if (box.width <= 0) return ::testing::AssertionFailure() << "the text measured empty";
    wxImage expected = BackgroundImage();
    expected.SetRGB(box, kBox.Red(), kBox.Green(), kBox.Blue());
    return ImagesNear(drawn, expected, kExactPixels, Name());
  }
  static std::string Name() {
    return ::testing::UnitTest::GetInstance()->current_test_info()->name();
  }

  wxFont font;
  wxFont other;
};

}  // namespace

TEST_F(OverlayFonts, LabelBackgroundIsABoxExactlyTheMeasuredTextSize) {
  EXPECT_TRUE(DrawsOnlyItsBox(kInvisible, wxALIGN_CENTER));
}

TEST_F(OverlayFonts, TranslucentLabelBackgroundIsBlended) {
  GLTestRenderer* renderer = MakeRenderer();
  wxRect box;
  const wxImage drawn = PaintWith(renderer, [&](OpenGLRenderer* painting, wxDC* dc) {
    const wxRect rect(10, 10, 100, 40);
    box = wxRect(painting->GetTextLocation(font, "Lobby", rect, 0),
                 painting->MeasureText("Lobby", font));
    painting->DrawLabel(dc, "Lobby", font, kInvisible, rect, 0, false, wxColour(0, 0, 255, 128));
  });
  const wxColour blended((kTileColour.Red() * 127) / 255, (kTileColour.Green() * 127) / 255,
                         (kTileColour.Blue() * 127 + 255 * 128) / 255);
  EXPECT_TRUE(PixelNear(drawn, box.x, box.y, blended, kBlendRounding));
  EXPECT_TRUE(PixelNear(drawn, box.GetRight(), box.GetBottom(), blended, kBlendRounding));
  EXPECT_TRUE(PixelNear(drawn, box.GetRight() + 1, box.y, kTileColour, kExactPixels));
}

TEST_F(OverlayFonts, LabelWithoutBackgroundDrawsOnlyTheText) {
  GLTestRenderer* renderer = MakeRenderer();
  wxRect box;
  const wxImage drawn = PaintWith(renderer, [&](OpenGLRenderer* painting, wxDC* dc) {
    const wxRect rect(30, 40, 150, 50);
    box =
        wxRect(painting->GetTextLocation(font, "HIM", rect, 0), painting->MeasureText("HIM", font));
    painting->DrawLabel(dc, "HIM", font, *wxWHITE, rect, 0, false, wxNullColour);
  });
  const wxRect ink = InkArea(drawn);
  ASSERT_FALSE(ink.IsEmpty());
  // The glyphs are drawn half a pixel up and left of the text position.
  EXPECT_TRUE(wxRect(box).Inflate(1).Contains(ink));
  EXPECT_GT(ink.width, box.width / 2);
  // Inside the text box but between the letters the background shows: no box was drawn.
  int background = 0;
  for (int y = box.y; y <= box.GetBottom(); ++y) {
    for (int x = box.x; x <= box.GetRight(); ++x) {
      background += PixelNear(drawn, x, y, kTileColour, kExactPixels) ? 1 : 0;
    }
  }
  EXPECT_GT(background, box.width * box.height / 4);
}

TEST_F(OverlayFonts, TextTakesItsColourAndAlignment) {
  GLTestRenderer* renderer = MakeRenderer();
  wxRect box;
  const wxImage drawn = PaintWith(renderer, [&](OpenGLRenderer* painting, wxDC* dc) {
    const wxRect rect(0, 0, kTileWidth, kTileHeight);
    const int alignment = RendererBase::OsdPosToAlignment(9);
    box = wxRect(painting->GetTextLocation(font, "MMM", rect, alignment),
                 painting->MeasureText("MMM", font));
    painting->DrawLabel(dc, "MMM", font, wxColour(255, 255, 0), rect, alignment, false,
                        wxNullColour);
  });
  EXPECT_EQ(kTileWidth, box.GetRight() + 1);
  EXPECT_EQ(kTileHeight, box.GetBottom() + 1);
  const wxRect ink = InkArea(drawn);
  ASSERT_FALSE(ink.IsEmpty());
  EXPECT_TRUE(wxRect(box).Inflate(1).Contains(ink));
  // The middle of an M's stem is full ink: pure yellow.
  bool yellow = false;
  for (int y = ink.y; y <= ink.GetBottom() && !yellow; ++y) {
    for (int x = ink.x; x <= ink.GetRight() && !yellow; ++x) {
      yellow = PixelNear(drawn, x, y, wxColour(255, 255, 0), 2);
    }
  }
  EXPECT_TRUE(yellow);
}

TEST_F(OverlayFonts, MultiLineLabelIsDrawnLineByLine) {
  GLTestRenderer* renderer = MakeRenderer();
  int lineHeight = 0;
  const wxImage drawn = PaintWith(renderer, [&](OpenGLRenderer* painting, wxDC* dc) {
    lineHeight = painting->MeasureText("II", font).y;
    painting->DrawLabel(dc, "II\n\nII", font, *wxWHITE, wxRect(10, 10, 100, 100), 0, false,
                        wxNullColour);
  });
  const wxRect ink = InkArea(drawn);
  ASSERT_FALSE(ink.IsEmpty());
  // Two lines, the second one line lower: the empty line between them is gone.
  EXPECT_LE(ink.GetBottom(), 10 + 2 * lineHeight);
  EXPECT_GT(ink.GetBottom(), 10 + lineHeight);
  const wxRect firstLine = InkArea(drawn.GetSubImage(wxRect(0, 0, kTileWidth, 10 + lineHeight)));
  EXPECT_FALSE(firstLine.IsEmpty());
}

// Lines centred vertically or aligned to the bottom stand one under the other as a block that
// the alignment places: each line's background box is exactly its measured size, the boxes
// touch and none covers another.
TEST_F(OverlayFonts, MultiLineLabelsCentredOrAtTheBottomAreStackedAsOneBlock) {
  GLTestRenderer* renderer = MakeRenderer();
  const wxRect rect(20, 20, 160, 110);
  const wxString lines[] = {"Gate 4", "North"};
  for (int alignment :
       {int{wxALIGN_CENTER}, int{wxALIGN_CENTER_VERTICAL}, wxALIGN_BOTTOM | wxALIGN_RIGHT}) {
    SCOPED_TRACE(alignment);
    wxSize sizes[2];
    const wxImage drawn = PaintWith(renderer, [&](OpenGLRenderer* painting, wxDC* dc) {
      for (int i = 0; i < 2; ++i) sizes[i] = painting->MeasureText(lines[i], font);
      painting->DrawLabel(dc, lines[0] + "\n" + lines[1], font, kInvisible, rect, alignment, false,
                          kBox);
    });
    const int block = sizes[0].y + sizes[1].y;
    int top = (alignment & wxALIGN_BOTTOM) ? rect.GetBottom() + 1 - block
                                           : rect.y + (rect.height - block) / 2;
    wxImage expected = BackgroundImage();
    for (const wxSize& size : sizes) {
      int left = rect.x;
      if (alignment & wxALIGN_RIGHT) left = rect.GetRight() + 1 - size.x;
      if (alignment & wxALIGN_CENTER_HORIZONTAL) left = rect.x + (rect.width - size.x) / 2;
      expected.SetRGB(wxRect(wxPoint(left, top), size), kBox.Red(), kBox.Green(), kBox.Blue());
      top += size.y;
    }
    EXPECT_TRUE(
        ImagesNear(drawn, expected, kExactPixels, Name() + "-" + std::to_string(alignment)));
  }
}

TEST_F(OverlayFonts, TwoRenderersShareOneGlyphFont) {
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer();
  const auto label = [this](OpenGLRenderer* painting, wxDC* dc) {
    painting->DrawLabel(dc, "A", font, *wxWHITE, wxRect(0, 0, 50, 50), 0, false, wxNullColour);
  };
  PaintWith(first, label);
  PaintWith(second, label);
  ASSERT_EQ(1u, OpenGLRenderer::m_sharedFonts.size());
  EXPECT_EQ(2, SharedHolders(font));
  ASSERT_EQ(1u, first->m_overlayFonts.size());
  ASSERT_EQ(1u, second->m_overlayFonts.size());
  wxGLFont* shared = OpenGLRenderer::m_sharedFonts[0]->glFont;
  EXPECT_EQ(shared, first->m_overlayFonts[0]->glFont);
  EXPECT_EQ(shared, second->m_overlayFonts[0]->glFont);

  // The second renderer skips the font for a pass: it lets go, the glyph font survives.
  PaintWith(second, [](OpenGLRenderer*, wxDC*) {});
  EXPECT_TRUE(second->m_overlayFonts.empty());
  EXPECT_EQ(1, SharedHolders(font));
  EXPECT_EQ(shared, OpenGLRenderer::m_sharedFonts[0]->glFont);
}

TEST_F(OverlayFonts, EachDistinctFontHasItsOwnEntry) {
  GLTestRenderer* renderer = MakeRenderer();
  PaintWith(renderer, [this](OpenGLRenderer* painting, wxDC* dc) {
    painting->DrawLabel(dc, "a", font, *wxWHITE, wxRect(0, 0, 50, 50), 0, false, wxNullColour);
    painting->DrawLabel(dc, "b", other, *wxWHITE, wxRect(0, 0, 50, 50), 0, false, wxNullColour);
    painting->DrawLabel(dc, "c", font, *wxWHITE, wxRect(0, 0, 50, 50), 0, false, wxNullColour);
  });
  EXPECT_EQ(2u, OpenGLRenderer::m_sharedFonts.size());
  ASSERT_EQ(2u, renderer->m_overlayFonts.size());
  EXPECT_EQ(1, SharedHolders(font));
  EXPECT_EQ(1, SharedHolders(other));
  // Uses counted during the pass: two labels plus their measuring for the first font.
  EXPECT_GE(OpenGLRenderer::GetFontReference(renderer->m_overlayFonts, font)->refCount, 2);
}

TEST_F(OverlayFonts, MeasuringOutsideAPassIsForgottenByTheNextPassThatDoesNotUseIt) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  EXPECT_GT(renderer->MeasureText("Exit", other).x, 0);
  ASSERT_EQ(1u, renderer->m_overlayFonts.size());
  EXPECT_EQ(1, renderer->m_overlayFonts[0]->refCount);
  EXPECT_EQ(1, SharedHolders(other));
  renderer->MeasureText("Exit", other);
  EXPECT_EQ(2, renderer->m_overlayFonts[0]->refCount);

  PaintWith(renderer, [](OpenGLRenderer*, wxDC*) {});
  EXPECT_TRUE(renderer->m_overlayFonts.empty());
  EXPECT_EQ(0, SharedHolders(other));
  EXPECT_TRUE(OpenGLRenderer::m_sharedFonts.empty());
}

// A host measuring a label before it paints opens no bracket: nothing would close it.
TEST_F(OverlayFonts, MeasuringOutsideAPassLeavesNoBracketOpen) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  EXPECT_GT(renderer->MeasureText("Exit", font).x, 0);
  EXPECT_EQ(nullptr, renderer->m_activeOverlayFont);
  GLint bound = -1;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_EQ(0, bound);
}

// The sequence: tile S shows a frame and a label; renderer R (another tile, another
// context) measures new text in the same font outside a pass, which makes a glyph on the
// font's page in R's context. S's next paint must show the label as before; had the font
// trusted the binding it made in R's context, S's label would sample S's video texture.
TEST_F(OverlayFonts, LabelSurvivesAMeasurementInAnotherRenderersContext) {
  GLTestRenderer* shown = MakeRenderer();
  wxWindow* otherTile = MakeTile(wxPoint(220, 10), wxSize(80, 60));
  GLTestRenderer* measuring = MakeRenderer(otherTile);
  shown->SetCurrent();
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(shown->GetFrameBuffer(kTileWidth, kTileHeight, PIXEL_FORMAT_RGB24, planes, pitches));
  for (int y = 0; y < kTileHeight; ++y) std::memset(planes[0] + y * pitches[0], 90, pitches[0]);
  ASSERT_TRUE(shown->FlushFrameBuffer(planes, pitches));
  const auto label = [this](OpenGLRenderer* painting, wxDC* dc) {
    painting->DrawLabel(dc, "Gate 7", font, *wxWHITE, wxRect(20, 20, 150, 50), 0, false,
                        wxNullColour);
  };
  const wxImage before = PaintWith(shown, label);
  measuring->SetCurrent();
  EXPECT_GT(measuring->MeasureText("Quay", font).x, 0);  // glyphs Q, u, a, y are new
  const wxImage after = PaintWith(shown, label);
  EXPECT_TRUE(ImagesNear(after, before, kExactPixels, Name()));
}

TEST_F(OverlayFonts, PassEndsTheActiveFontsBracket) {
  GLTestRenderer* renderer = MakeRenderer();
  PaintWith(renderer, [this](OpenGLRenderer* painting, wxDC* dc) {
    painting->DrawLabel(dc, "x", font, *wxWHITE, wxRect(0, 0, 50, 50), 0, false, wxNullColour);
  });
  EXPECT_EQ(nullptr, renderer->m_activeOverlayFont);
  renderer->SetCurrent();
  GLint bound = -1;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_EQ(0, bound);
}

TEST_F(OverlayFonts, ActiveFontSwitchesEndThePreviousBracket) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  wxGLFont* first = renderer->GetOverlayFont(font);
  wxGLFont* second = renderer->GetOverlayFont(other);
  renderer->SetActiveOverlayFont(first);
  first->PreLoadChars("ab");  // inside the bracket its page stays bound
  GLint bound = 0;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_NE(0, bound);
  renderer->SetActiveOverlayFont(first);  // already active: nothing happens
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_NE(0, bound);
  renderer->SetActiveOverlayFont(second);  // ends the first bracket, unbinding its page
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_EQ(0, bound);
  EXPECT_EQ(second, renderer->m_activeOverlayFont);
  renderer->SetActiveOverlayFont(nullptr);
  EXPECT_EQ(nullptr, renderer->m_activeOverlayFont);
}

TEST_F(OverlayFonts, ReleasingTheActiveFontEndsItsBracketFirst) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  wxGLFont* glFont = renderer->CreateGLFont(font);
  EXPECT_EQ(1, SharedHolders(font));
  renderer->SetActiveOverlayFont(glFont);
  renderer->ReleaseGLFont(glFont);
  EXPECT_EQ(nullptr, renderer->m_activeOverlayFont);
  EXPECT_EQ(0, SharedHolders(font));
  EXPECT_TRUE(OpenGLRenderer::m_sharedFonts.empty());
}

TEST_F(OverlayFonts, ReleasingAGlyphFontNoEntryAccountsForDeletesIt) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  renderer->ReleaseGLFont(new wxGLFont(font));  // the leak check would catch a survivor
  renderer->ReleaseGLFont(nullptr);
  EXPECT_TRUE(OpenGLRenderer::m_sharedFonts.empty());
}

TEST_F(OverlayFonts, RemovingAnUnknownFontDoesNothing) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  renderer->CreateGLFont(font);
  OpenGLRenderer::RemoveFontReference(OpenGLRenderer::m_sharedFonts, other);
  EXPECT_EQ(1u, OpenGLRenderer::m_sharedFonts.size());
  renderer->ReleaseGLFont(OpenGLRenderer::m_sharedFonts[0]->glFont);
}

TEST_F(OverlayFonts, InvalidFontDrawsWithTheDefaultFont) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  EXPECT_EQ(renderer->MeasureText("Default", *wxNORMAL_FONT),
            renderer->MeasureText("Default", wxNullFont));
  EXPECT_EQ(1u, renderer->m_overlayFonts.size());
  PaintWith(renderer, [](OpenGLRenderer*, wxDC*) {});
}

TEST_F(OverlayFonts, DestroyingARendererReleasesItsFonts) {
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer();
  const auto label = [this](OpenGLRenderer* painting, wxDC* dc) {
    painting->DrawLabel(dc, "B", font, *wxWHITE, wxRect(0, 0, 50, 50), 0, false, wxNullColour);
  };
  PaintWith(first, label);
  PaintWith(second, label);
  EXPECT_EQ(2, SharedHolders(font));
  DestroyRenderer(first);
  EXPECT_EQ(1, SharedHolders(font));
  DestroyRenderer(second);
  EXPECT_TRUE(OpenGLRenderer::m_sharedFonts.empty());
}

// A label given no text colour draws its background box and no text; the toolkit is never
// asked for the channels of an invalid colour (it asserts).
TEST_F(OverlayFonts, LabelWithoutATextColourDrawsOnlyItsBackground) {
  EXPECT_TRUE(DrawsOnlyItsBox(wxNullColour, 0));
}

// A 300-point label scaled into a small tile: the size is searched without building glyphs,
// so the pass ends with the one glyph font of the size used (a glyph font per point size tried
// took seconds per paint).
TEST_F(OverlayFonts, ScaledLabelBuildsGlyphsOnlyForTheSizeUsed) {
  GLTestRenderer* renderer = MakeRenderer();
  const wxFont huge(wxFontInfo(300).Family(wxFONTFAMILY_SWISS));
  const wxImage drawn = PaintWith(renderer, [&](OpenGLRenderer* painting, wxDC* dc) {
    painting->DrawLabel(dc, "Parking level 2", huge, *wxWHITE, wxRect(5, 5, 100, 5), 0, true,
                        wxNullColour);
  });
  EXPECT_EQ(1u, renderer->m_overlayFonts.size());
  EXPECT_EQ(1u, OpenGLRenderer::m_sharedFonts.size());
  const wxRect ink = InkArea(drawn);
  ASSERT_FALSE(ink.IsEmpty());
  EXPECT_LE(ink.GetRight(), kTileWidth - 1);
  EXPECT_GT(ink.GetRight(), kTileWidth / 2);
}

// The size search measures as the glyph font does, so the size it picks is the largest one
// whose drawn text fits: one point more does not.
TEST_F(OverlayFonts, ScaledFontIsTheLargestThatFits) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  const wxFont big(wxFontInfo(60).Family(wxFONTFAMILY_SWISS));
  const wxFont scaled = renderer->GetScaledFont(big, "Parking level 2", wxPoint(5, 5));
  ASSERT_LT(scaled.GetPointSize(), 60);
  wxFont larger = scaled;
  larger.SetPointSize(scaled.GetPointSize() + 1);
  EXPECT_LE(5 + renderer->MeasureText("Parking level 2", scaled).x, kTileWidth);
  EXPECT_GT(5 + renderer->MeasureText("Parking level 2", larger).x, kTileWidth);
  EXPECT_EQ(14, renderer->GetScaledFont(font, "I", wxPoint(0, 0)).GetPointSize())
      << "a font that fits already is kept";
  PaintWith(renderer, [](OpenGLRenderer*, wxDC*) {});
}

TEST_F(OverlayFonts, ScaledLabelShrinksToFitTheTile) {
  GLTestRenderer* renderer = MakeRenderer();
  const wxFont big(wxFontInfo(60).Family(wxFONTFAMILY_SWISS));
  const wxImage drawn = PaintWith(renderer, [&](OpenGLRenderer* painting, wxDC* dc) {
    painting->DrawLabel(dc, "Parking level 2", big, *wxWHITE, wxRect(5, 5, 100, 100), 0, true,
                        wxNullColour);
  });
  const wxRect ink = InkArea(drawn);
  ASSERT_FALSE(ink.IsEmpty());
  EXPECT_LE(ink.GetRight(), kTileWidth - 1);
  EXPECT_GT(ink.GetRight(), kTileWidth / 2);  // the text still spans most of the tile
}
