// wxGLFont on the real Mesa context: page making, glyph packing and wrapping, measuring, and
// text drawn into the frame buffer and read back.
#include <GL/gl.h>
#include <wx/glcanvas.h>

#include <renderer/wxGLFont.h>

#include "PixelCompare.h"
#include "WxTest.h"

namespace {

constexpr int kCanvasSize = 128;

// Opens the font's internals to the tests.
class InspectableFont : public wxGLFont {
 public:
  using wxGLFont::BlockSize;
  using wxGLFont::m_boundTexture;
  using wxGLFont::m_characters;
  using wxGLFont::m_inBegin;
  using wxGLFont::m_textures;
  using wxGLFont::wxGLFont;
  TextureInfo_t* Page(size_t index) {
    auto it = m_textures.begin();
    std::advance(it, index);
    return it->second.get();
  }
};

class GlyphFont : public WxTest {
 protected:
  void SetUp() override {
    WxTest::SetUp();
    canvas =
        new wxGLCanvas(frame, wxID_ANY, nullptr, wxPoint(0, 0), wxSize(kCanvasSize, kCanvasSize));
    ASSERT_TRUE(ShowAndWaitForPaint(canvas));
    context = std::make_unique<wxGLContext>(canvas);
    ASSERT_TRUE(context->SetCurrent(*canvas));
    glViewport(0, 0, kCanvasSize, kCanvasSize);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, kCanvasSize, kCanvasSize, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    font = wxFont(wxFontInfo(14).Family(wxFONTFAMILY_SWISS));
  }
  void TearDown() override {
    EXPECT_EQ(GLenum(GL_NO_ERROR), glGetError());
    context.reset();
    WxTest::TearDown();
  }
  // Draws white text blended over black at (x, y) and returns the canvas as an image.
  wxImage DrawText(wxGLFont& glFont, const wxString& text, float x, float y) {
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(1, 1, 1, 1);
    glFont.WriteText(text, x, y, 0);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    return ReadCanvas();
  }
  wxImage ReadCanvas() {
    std::vector<unsigned char> rgb(kCanvasSize * kCanvasSize * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, kCanvasSize, kCanvasSize, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
    wxImage image(kCanvasSize, kCanvasSize);
    for (int row = 0; row < kCanvasSize; ++row) {  // GL rows run bottom-up
      std::copy_n(&rgb[(kCanvasSize - 1 - row) * kCanvasSize * 3], kCanvasSize * 3,
                  image.GetData() + row * kCanvasSize * 3);
    }
    return image;
  }
  // Bounding box of the lit pixels.
  static wxRect LitArea(const wxImage& image) {
    wxRect area;
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        if (image.GetRed(x, y) > 64)
          area = area.IsEmpty() ? wxRect(x, y, 1, 1) : area.Union(wxRect(x, y, 1, 1));
      }
    }
    return area;
  }

  wxGLCanvas* canvas = nullptr;
  std::unique_ptr<wxGLContext> context;
  wxFont font;
};

}  // namespace

TEST_F(GlyphFont, StartsEmptyAndMakesNoGlCall) {
  InspectableFont glFont(font);
  EXPECT_TRUE(glFont.m_textures.empty());
  EXPECT_TRUE(glFont.m_characters.empty());
  EXPECT_EQ(0u, glFont.m_boundTexture);
  EXPECT_FALSE(glFont.m_inBegin);
  EXPECT_TRUE(glFont.GetFont() == font);
}

TEST_F(GlyphFont, PagesAreAlphaTexturesOfThePageSize) {
  InspectableFont glFont(font, wxSize(64, 32));
  TextureInfo_t* page = glFont.CreateTexture();
  ASSERT_NE(nullptr, page);
  EXPECT_NE(0u, page->id);
  EXPECT_EQ(64u, page->width);
  EXPECT_EQ(32u, page->height);
  EXPECT_EQ(0u, page->penX);
  EXPECT_EQ(0u, page->penY);
  EXPECT_EQ(page->id, glFont.m_boundTexture);
  GLint width = 0, height = 0, format = 0, mode = 0;
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
  glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &mode);
  EXPECT_EQ(64, width);
  EXPECT_EQ(32, height);
  EXPECT_EQ(GL_ALPHA, format);
  EXPECT_EQ(GL_MODULATE, mode);
}

TEST_F(GlyphFont, GlyphsAreMadeOnceAndPackedAlongTheRow) {
  InspectableFont glFont(font);
  CharacterInfo_t* a = glFont.GetOrCreateCharacter(L'A');
  ASSERT_NE(nullptr, a);
  EXPECT_EQ(a, glFont.GetOrCreateCharacter(L'A'));
  EXPECT_EQ(a, glFont.GetCharacter(L'A'));
  EXPECT_EQ(nullptr, glFont.GetCharacter(L'B'));
  CharacterInfo_t* b = glFont.GetOrCreateCharacter(L'B');
  ASSERT_NE(nullptr, b);
  EXPECT_EQ(1u, glFont.m_textures.size());
  EXPECT_EQ(a->texture, b->texture);
  EXPECT_FLOAT_EQ(static_cast<float>(a->width) / 512, b->texX);
  EXPECT_FLOAT_EQ(static_cast<float>(a->width) / 512, a->texWidth);
  EXPECT_FLOAT_EQ(static_cast<float>(a->height) / 512, a->texHeight);
  EXPECT_EQ(a->width + b->width, a->texture->penX);
}

TEST_F(GlyphFont, BlocksArePowersOfTwoOfAtLeastTwo) {
  EXPECT_EQ(2u, InspectableFont::BlockSize(1));
  EXPECT_EQ(2u, InspectableFont::BlockSize(2));
  EXPECT_EQ(4u, InspectableFont::BlockSize(3));
  EXPECT_EQ(16u, InspectableFont::BlockSize(9));
  EXPECT_EQ(512u, InspectableFont::BlockSize(512));
}

TEST_F(GlyphFont, PenMovesByTheGlyphWidthNotTheBlock) {
  // Find a glyph 3 pixels wide (uploaded as a block of 4) among narrow characters.
  for (int points = 5; points <= 16; ++points) {
    InspectableFont glFont(wxFont(wxFontInfo(points).Family(wxFONTFAMILY_SWISS)));
    for (wchar_t c : std::wstring(L".,:;'|!il1")) {
      CharacterInfo_t* glyph = glFont.GetOrCreateCharacter(c);
      ASSERT_NE(nullptr, glyph);
      if (glyph->width != 3) continue;
      const unsigned int before = glyph->texture->penX;
      CharacterInfo_t* next = glFont.GetOrCreateCharacter(L'W');
      EXPECT_FLOAT_EQ(static_cast<float>(before) / 512, next->texX);
      EXPECT_EQ(before + next->width, next->texture->penX);
      return;
    }
  }
  FAIL() << "no 3-pixel glyph among the narrow characters at 5 to 16 points";
}

TEST_F(GlyphFont, CharacterThatDrawsNothingIsCachedEmpty) {
  InspectableFont glFont(font);
  CharacterInfo_t* glyph = glFont.GetOrCreateCharacter(L'\n');
  ASSERT_NE(nullptr, glyph);
  EXPECT_EQ(0u, glyph->width);
  EXPECT_EQ(0u, glyph->height);
  EXPECT_EQ(0u, glyph->texture->penX);
  float width = -1, height = -1;
  glFont.MeasureText(L"A\nA", width, height);
  const CharacterInfo_t* a = glFont.GetCharacter(L'A');
  EXPECT_FLOAT_EQ(2.0f * a->width, width);
  EXPECT_FLOAT_EQ(static_cast<float>(a->height), height);
}

TEST_F(GlyphFont, EmptyStringMeasuresNothingAndDrawsNothing) {
  InspectableFont glFont(font);
  float width = -1, height = -1;
  glFont.MeasureText("", width, height);
  EXPECT_EQ(0.0f, width);
  EXPECT_EQ(0.0f, height);
  EXPECT_TRUE(LitArea(DrawText(glFont, "", 10, 10)).IsEmpty());
  EXPECT_EQ(GLenum(GL_NO_ERROR), glGetError());
}

TEST_F(GlyphFont, GlyphCrossingTheRightEdgeStartsARowLower) {
  InspectableFont glFont(font);
  CharacterInfo_t* first = glFont.GetOrCreateCharacter(L'M');
  ASSERT_NE(nullptr, first);
  TextureInfo_t* page = first->texture;
  page->penX = 510;
  page->penY = 20;
  CharacterInfo_t* wrapped = glFont.GetOrCreateCharacter(L'N');
  ASSERT_NE(nullptr, wrapped);
  EXPECT_EQ(page, wrapped->texture);
  EXPECT_FLOAT_EQ(0.0f, wrapped->texX);
  EXPECT_FLOAT_EQ((20.0f + wrapped->height) / 512, wrapped->texY);
  EXPECT_EQ(wrapped->width, page->penX);
}

TEST_F(GlyphFont, GlyphCrossingTheBottomEdgeGoesToANewPage) {
  InspectableFont glFont(font);
  CharacterInfo_t* first = glFont.GetOrCreateCharacter(L'M');
  ASSERT_NE(nullptr, first);
  first->texture->penY = 510;
  CharacterInfo_t* next = glFont.GetOrCreateCharacter(L'N');
  ASSERT_NE(nullptr, next);
  EXPECT_EQ(2u, glFont.m_textures.size());
  EXPECT_NE(first->texture, next->texture);
  EXPECT_FLOAT_EQ(0.0f, next->texX);
  EXPECT_FLOAT_EQ(0.0f, next->texY);
}

// A glyph larger than a page can never fit one: it fails without making a page, and is
// remembered, so asking again (every paint of the label) makes none either. Each request used
// to leave one more empty page behind.
TEST_F(GlyphFont, GlyphLargerThanAPageFailsWithoutMakingPages) {
  InspectableFont glFont(wxFont(wxFontInfo(40).Family(wxFONTFAMILY_SWISS)), wxSize(8, 8));
  for (int request = 0; request < 3; ++request) {
    EXPECT_EQ(nullptr, glFont.GetOrCreateCharacter(L'W'));
  }
  EXPECT_TRUE(glFont.m_textures.empty());
  EXPECT_TRUE(glFont.m_characters.empty());
  float width = -1;
  float height = -1;
  glFont.MeasureText("WW", width, height);
  EXPECT_EQ(0.0f, width);
  EXPECT_TRUE(glFont.m_textures.empty());
  glFont.SetTextureSize(wxSize(wxGLFont::kDefaultPageSize, wxGLFont::kDefaultPageSize));
  EXPECT_NE(nullptr, glFont.GetOrCreateCharacter(L'W')) << "larger pages take it";
}

// An error an earlier call left pending is not the page creation's: the glyph is made.
TEST_F(GlyphFont, ErrorLeftByEarlierCallsDoesNotFailThePage) {
  InspectableFont glFont(font);
  glEnable(0);  // GL_INVALID_ENUM, pending
  EXPECT_NE(nullptr, glFont.GetOrCreateCharacter(L'A'));
  EXPECT_EQ(1u, glFont.m_textures.size());
}

// Measuring without glyphs gives what measuring with them gives, and makes no page.
TEST_F(GlyphFont, MeasuringWithoutGlyphsMatchesTheGlyphs) {
  InspectableFont glFont(font);
  const wxString text = "Parking level 2, gate 7";
  const wxSize unbuilt = wxGLFont::MeasureWithoutGlyphs(font, text);
  EXPECT_TRUE(glFont.m_textures.empty());
  float width = 0;
  float height = 0;
  glFont.MeasureText(text, width, height);
  EXPECT_EQ(wxSize(static_cast<int>(width), static_cast<int>(height)), unbuilt);
}

TEST_F(GlyphFont, PreloadingAsciiMakesNinetySixGlyphs) {
  InspectableFont glFont(font);
  glFont.PreLoadAscii();
  EXPECT_EQ(96u, glFont.m_characters.size());
  EXPECT_NE(nullptr, glFont.GetCharacter(L' '));
  EXPECT_NE(nullptr, glFont.GetCharacter(L'~'));
  EXPECT_NE(nullptr, glFont.GetCharacter(wchar_t(127)));
  EXPECT_EQ(nullptr, glFont.GetCharacter(wchar_t(31)));
  EXPECT_EQ(0u, glFont.m_boundTexture);  // outside a bracket the page is unbound afterwards
}

TEST_F(GlyphFont, BeginKeepsThePageBoundAndEndUnbindsIt) {
  InspectableFont glFont(font);
  glFont.Begin();
  EXPECT_TRUE(glFont.m_inBegin);
  glFont.PreLoadChars("ab");
  EXPECT_NE(0u, glFont.m_boundTexture);
  glFont.End();
  EXPECT_FALSE(glFont.m_inBegin);
  EXPECT_EQ(0u, glFont.m_boundTexture);
  GLint bound = -1;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_EQ(0, bound);
}

TEST_F(GlyphFont, WrittenTextCoversItsMeasuredSize) {
  InspectableFont glFont(font);
  float width = 0, height = 0;
  glFont.MeasureText("H", width, height);
  const wxImage image = DrawText(glFont, "H", 20, 30);
  const wxRect lit = LitArea(image);
  ASSERT_FALSE(lit.IsEmpty());
  EXPECT_TRUE(wxRect(20, 30, int(width), int(height)).Contains(lit))
      << lit.x << "," << lit.y << " " << lit.width << "x" << lit.height;
  EXPECT_GE(lit.width, int(width) / 2);  // an H fills most of its cell
  EXPECT_EQ(0u, glFont.m_boundTexture);
}

TEST_F(GlyphFont, TextKeepsTheGlyphOrderAcrossPages) {
  InspectableFont glFont(font);
  CharacterInfo_t* a = glFont.GetOrCreateCharacter(L'I');
  a->texture->penY = 510;  // the next glyph needs a new page
  CharacterInfo_t* b = glFont.GetOrCreateCharacter(L'L');
  ASSERT_NE(a->texture, b->texture);
  const unsigned int firstPage = a->texture->id;
  const unsigned int secondPage = b->texture->id;

  glFont.Begin();
  glFont.BindTexture(secondPage);
  const wxImage image = DrawText(glFont, "IL", 10, 10);
  // The second page, bound on entry, was drawn first; the first page last, so it is still bound.
  EXPECT_EQ(firstPage, glFont.m_boundTexture);
  glFont.End();

  const wxRect lit = LitArea(image);
  ASSERT_FALSE(lit.IsEmpty());
  EXPECT_GE(lit.x, 10);
  EXPECT_LE(lit.GetRight(), 10 + int(a->width + b->width) - 1);
  // The L (second glyph) lies right of the I.
  wxImage rightHalf = image.GetSubImage(wxRect(10 + a->width, 0, b->width, kCanvasSize));
  EXPECT_FALSE(LitArea(rightHalf).IsEmpty());
}

TEST_F(GlyphFont, WriteCharDrawsOneCharacter) {
  InspectableFont glFont(font);
  glEnable(GL_TEXTURE_2D);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glColor4f(1, 1, 1, 1);
  glFont.WriteChar(L'X', 40, 40, 0);
  glDisable(GL_BLEND);
  glDisable(GL_TEXTURE_2D);
  const wxRect lit = LitArea(ReadCanvas());
  ASSERT_FALSE(lit.IsEmpty());
  EXPECT_GE(lit.x, 40);
  EXPECT_GE(lit.y, 40);
}

namespace {

// Fills a whole page with 255, so the texels a glyph upload touches show up as changed.
void FillPage(const TextureInfo_t* page) {
  const std::vector<unsigned char> full(static_cast<size_t>(page->width) * page->height, 255);
  glBindTexture(GL_TEXTURE_2D, page->id);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, page->width, page->height, GL_ALPHA, GL_UNSIGNED_BYTE,
                  full.data());
  glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

std::vector<unsigned char> ReadPage(const TextureInfo_t* page) {
  std::vector<unsigned char> alpha(static_cast<size_t>(page->width) * page->height);
  glBindTexture(GL_TEXTURE_2D, page->id);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_ALPHA, GL_UNSIGNED_BYTE, alpha.data());
  glBindTexture(GL_TEXTURE_2D, 0);
  return alpha;
}

// A font and a narrow character whose glyph is `width` pixels wide, searched over sizes.
bool FindGlyphOfWidth(unsigned int width, wxFont& font, wchar_t& character) {
  for (int points = 1; points <= 16; ++points) {
    const wxFont candidate(wxFontInfo(points).Family(wxFONTFAMILY_SWISS));
    InspectableFont probe(candidate);
    for (wchar_t c : std::wstring(L".,:;'|!il1")) {
      const CharacterInfo_t* glyph = probe.GetOrCreateCharacter(c);
      if (glyph && glyph->width == width) {
        font = candidate;
        character = c;
        return true;
      }
    }
  }
  return false;
}

}  // namespace

// The block uploaded for a glyph is the smallest power of two at least its size, never below
// 2: the texels just right of and below the block keep what the page held.
TEST_F(GlyphFont, GlyphIsUploadedAsAPowerOfTwoBlock) {
  for (const unsigned int width : {3u, 1u}) {
    wxFont narrow;
    wchar_t c = 0;
    ASSERT_TRUE(FindGlyphOfWidth(width, narrow, c)) << "no glyph " << width << " pixels wide";
    InspectableFont glFont(narrow, wxSize(64, 64));
    TextureInfo_t* page = glFont.CreateTexture();
    ASSERT_NE(nullptr, page);
    FillPage(page);
    const CharacterInfo_t* glyph = glFont.CreateCharacter(c, page);
    ASSERT_NE(nullptr, glyph);
    ASSERT_EQ(width, glyph->width);
    const unsigned int blockWidth = width == 3 ? 4 : 2;
    const unsigned int blockHeight = InspectableFont::BlockSize(glyph->height);
    const std::vector<unsigned char> alpha = ReadPage(page);
    const auto at = [&](unsigned int x, unsigned int y) { return alpha[y * 64 + x]; };
    // The block's last column is padding: black on the scratch bitmap, so 0 in the page.
    EXPECT_EQ(0, at(blockWidth - 1, 0)) << "width " << width;
    EXPECT_EQ(255, at(blockWidth, 0)) << "width " << width;
    EXPECT_EQ(255, at(0, blockHeight)) << "width " << width;
    EXPECT_EQ(width, page->penX);
  }
}

// A character that draws nothing neither draws nor moves the pen: "I\nI" looks like "II".
TEST_F(GlyphFont, EmptyGlyphIsSkippedWithoutAdvancing) {
  InspectableFont glFont(font);
  const wxImage together = DrawText(glFont, "II", 10, 10);
  glClear(GL_COLOR_BUFFER_BIT);
  const wxImage broken = DrawText(glFont, "I\nI", 10, 10);
  EXPECT_FALSE(LitArea(together).IsEmpty());
  EXPECT_TRUE(ImagesNear(broken, together, kExactPixels, "EmptyGlyphIsSkippedWithoutAdvancing"));
}
