// wxGLFont: text in an OpenGL context, drawn from a glyph atlas.
//
// Each character is rasterised once with the toolkit (white on black in a memory device
// context), its red channel becomes the alpha of a texel block in an atlas page, and from then
// on the glyph is one textured quad. Pages are made on demand and never evicted while the font
// lives. The class sets no blending, texturing enable or colour of its own: the caller enables
// 2-D texturing and alpha blending and sets the text colour, and the pages' GL_MODULATE
// environment makes each glyph's alpha multiply that colour. It draws one line: line breaking,
// kerning and alignment are the caller's. Every call needs the owning GL context current.
#pragma once

#include <map>
#include <memory>
#include <set>

#include <wx/bitmap.h>
#include <wx/font.h>
#include <wx/gdicmn.h>
#include <wx/string.h>

// One atlas page.
struct TextureInfo_t {
  unsigned int id;     // GL texture name
  unsigned int width;  // page size in texels
  unsigned int height;
  unsigned int penX;  // next free column of the current row
  unsigned int penY;  // top row of the current row
};

// One glyph: where it lies in its page and how big it is.
struct CharacterInfo_t {
  TextureInfo_t* texture;  // the page holding it (not owned)
  float texX;              // texture coordinates of its top-left corner
  float texY;
  float texWidth;  // its size in texture coordinates
  float texHeight;
  unsigned int width;  // its size in pixels; 0 x 0 for a character that draws nothing
  unsigned int height;
};

class wxGLFont {
 public:
  static constexpr int kDefaultPageSize = 512;

  explicit wxGLFont(wxFont font);
  wxGLFont(wxFont font, wxSize textureSize);
  virtual ~wxGLFont();
  wxGLFont(const wxGLFont&) = delete;
  wxGLFont& operator=(const wxGLFont&) = delete;

  // Page size of pages made from now on (and of the scratch bitmap).
  void SetTextureSize(wxSize textureSize);

  // A bracket of drawing calls that keeps the last page bound; End unbinds it.
  void Begin();
  void End();
  void BindTexture(unsigned int id);

  CharacterInfo_t* GetCharacter(wchar_t c);
  CharacterInfo_t* GetOrCreateCharacter(wchar_t c);
  TextureInfo_t* CreateTexture();
  CharacterInfo_t* CreateCharacter(wchar_t c, TextureInfo_t* page);

  void PreLoadChars(const wxString& text);
  void PreLoadAscii();

  // Sum of the glyph widths and the tallest glyph height; creates glyphs as needed.
  void MeasureText(const wxString& text, float& width, float& height);
  // The same measure of `text` in `font` from the toolkit alone: no glyph, page or GL call is
  // made. Unlike MeasureText it also counts characters too big for a page.
  static wxSize MeasureWithoutGlyphs(const wxFont& font, const wxString& text);

  // Draws `text` with the first glyph's top-left corner at (x, y), depth z, y growing down.
  void WriteText(const wxString& text, float x, float y, float z);
  void WriteChar(wchar_t c, float x, float y, float z);

  // The toolkit font the glyphs are made from.
  const wxFont& GetFont() const;

 protected:
  // Side of the texel block a glyph of `size` pixels is uploaded in: the smallest power of two
  // that holds it, never below 2.
  static unsigned int BlockSize(unsigned int size);

  // The texture bound to GL_TEXTURE_2D in the current context.
  static unsigned int CurrentBinding();
  // Whether a glyph of `size` pixels (as rasterised) fits a page of the current page size.
  bool FitsAnEmptyPage(wxSize size) const;
  // Puts the glyph just rasterised (of `size` pixels) on `page`; null when it does not fit.
  CharacterInfo_t* PlaceGlyph(wchar_t c, wxSize size, TextureInfo_t* page);

  // Rasterises one character on the scratch bitmap; returns its measured size (0 x 0 if it
  // draws nothing) or false when the bitmap cannot be made.
  bool RasteriseGlyph(wchar_t c, wxSize& size);
  void UploadGlyph(TextureInfo_t* page, unsigned int blockWidth, unsigned int blockHeight);

  wxFont m_font;
  int m_textureWidth;
  int m_textureHeight;
  unsigned int m_boundTexture;
  wxBitmap m_glyphBitmap;
  bool m_inBegin;
  std::map<unsigned int, std::unique_ptr<TextureInfo_t>> m_textures;
  std::map<wchar_t, std::unique_ptr<CharacterInfo_t>> m_characters;
  std::set<wchar_t> m_neverFits;  // glyphs bigger than a page at the current page size
};
