// wxGLFont: glyph rasterising, atlas packing and textured-quad text.
#include "wxGLFont.h"

#include <algorithm>
#include <vector>

#include <GL/gl.h>
#include <wx/dcmemory.h>
#include <wx/image.h>

#include "GLErrors.h"

namespace {

// Keeps GL_UNPACK_ALIGNMENT at 1 while glyph rows (as narrow as 2 bytes) are uploaded, and
// gives the caller's setting back afterwards.
class TightUnpackRows {
 public:
  TightUnpackRows() {
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &m_previous);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  }
  ~TightUnpackRows() { glPixelStorei(GL_UNPACK_ALIGNMENT, m_previous); }
  TightUnpackRows(const TightUnpackRows&) = delete;
  TightUnpackRows& operator=(const TightUnpackRows&) = delete;

 private:
  GLint m_previous = 4;
};

// One character's extent as the glyph rasteriser takes it: the bounds the toolkit reports for
// drawing it, 0 x 0 for a character that draws nothing.
wxSize GlyphExtent(wxDC& dc, wchar_t c) {
  static const wxBitmap noImage;
  wxRect bounds;
  dc.DrawLabel(wxString(c), noImage, wxRect(0, 0, 0, 0), 0, -1, &bounds);
  return bounds.width > 0 && bounds.height > 0 ? bounds.GetSize() : wxSize(0, 0);
}

void SetColourBias(float bias) {
  glPixelTransferf(GL_RED_BIAS, bias);
  glPixelTransferf(GL_GREEN_BIAS, bias);
  glPixelTransferf(GL_BLUE_BIAS, bias);
}

}  // namespace

wxGLFont::wxGLFont(wxFont font) : wxGLFont(font, wxSize(kDefaultPageSize, kDefaultPageSize)) {}

wxGLFont::wxGLFont(wxFont font, wxSize textureSize)
    : m_font(font),
      m_textureWidth(textureSize.x),
      m_textureHeight(textureSize.y),
      m_boundTexture(0),
      m_inBegin(false) {}

wxGLFont::~wxGLFont() {
  BindTexture(0);
  m_characters.clear();
  for (const auto& page : m_textures) glDeleteTextures(1, &page.second->id);
  m_textures.clear();
}

// A glyph too big for the old pages may fit the new ones.
void wxGLFont::SetTextureSize(wxSize textureSize) {
  m_textureWidth = textureSize.x;
  m_textureHeight = textureSize.y;
  m_neverFits.clear();
}

void wxGLFont::Begin() { m_inBegin = true; }

void wxGLFont::End() {
  BindTexture(0);
  m_inBegin = false;
}

// Always binds: one font serves renderers whose contexts each keep bindings of their own, so
// what this font bound last (in whichever context) says nothing about the current one.
void wxGLFont::BindTexture(unsigned int id) {
  m_boundTexture = id;
  glBindTexture(GL_TEXTURE_2D, id);
}

unsigned int wxGLFont::CurrentBinding() {
  GLint bound = 0;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  return static_cast<unsigned int>(bound);
}

const wxFont& wxGLFont::GetFont() const { return m_font; }

CharacterInfo_t* wxGLFont::GetCharacter(wchar_t c) {
  const auto found = m_characters.find(c);
  return found == m_characters.end() ? nullptr : found->second.get();
}

// A glyph goes on the newest page; when it does not fit there a new page is made. A glyph
// bigger than a whole page would fail on every page: it is remembered as such, so that later
// requests neither rasterise it again nor make a new, forever empty page each time.
CharacterInfo_t* wxGLFont::GetOrCreateCharacter(wchar_t c) {
  if (CharacterInfo_t* glyph = GetCharacter(c)) return glyph;
  if (m_neverFits.count(c)) return nullptr;
  wxSize size;
  if (!RasteriseGlyph(c, size)) return nullptr;
  if (!FitsAnEmptyPage(size)) {
    m_neverFits.insert(c);
    return nullptr;
  }
  if (!m_textures.empty()) {
    if (CharacterInfo_t* glyph = PlaceGlyph(c, size, m_textures.rbegin()->second.get())) {
      return glyph;
    }
  }
  TextureInfo_t* page = CreateTexture();
  return page ? PlaceGlyph(c, size, page) : nullptr;
}

bool wxGLFont::FitsAnEmptyPage(wxSize size) const {
  if (size.x <= 0) return true;  // draws nothing, takes no room
  const unsigned int width = BlockSize(static_cast<unsigned int>(size.x));
  const unsigned int height = BlockSize(static_cast<unsigned int>(size.y));
  return width <= static_cast<unsigned int>(m_textureWidth) &&
         height <= static_cast<unsigned int>(m_textureHeight);
}

TextureInfo_t* wxGLFont::CreateTexture() {
  DrainGLErrors();  // the check below is about this page alone
  auto page = std::make_unique<TextureInfo_t>(
      TextureInfo_t{0, static_cast<unsigned int>(m_textureWidth),
                    static_cast<unsigned int>(m_textureHeight), 0, 0});
  glGenTextures(1, &page->id);
  if (page->id == 0) return nullptr;
  BindTexture(page->id);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_ALPHA, m_textureWidth, m_textureHeight, 0, GL_ALPHA,
               GL_UNSIGNED_BYTE, nullptr);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
  glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  if (glGetError() != GL_NO_ERROR) {
    BindTexture(0);
    glDeleteTextures(1, &page->id);
    return nullptr;
  }
  TextureInfo_t* made = page.get();
  m_textures[made->id] = std::move(page);
  return made;
}

unsigned int wxGLFont::BlockSize(unsigned int size) {
  unsigned int block = 2;
  while (size > block) block *= 2;
  return block;
}

bool wxGLFont::RasteriseGlyph(wchar_t c, wxSize& size) {
  if (!m_glyphBitmap.IsOk() || m_glyphBitmap.GetWidth() != m_textureWidth ||
      m_glyphBitmap.GetHeight() != m_textureHeight) {
    if (!m_glyphBitmap.Create(m_textureWidth, m_textureHeight, 24)) return false;
  }
  wxMemoryDC dc(m_glyphBitmap);
  dc.SetBackground(wxBrush(wxColour(0, 0, 0, 255), wxBRUSHSTYLE_SOLID));
  dc.Clear();
  dc.SetTextForeground(wxColour(255, 255, 255, 255));
  dc.SetFont(m_font);
  size = GlyphExtent(dc, c);
  return true;
}

// Uploads the top-left block of the scratch bitmap at the page's pen; the red channel of the
// white-on-black glyph becomes the alpha.
void wxGLFont::UploadGlyph(TextureInfo_t* page, unsigned int blockWidth, unsigned int blockHeight) {
  const wxImage block = m_glyphBitmap.ConvertToImage().GetSubImage(
      wxRect(0, 0, static_cast<int>(blockWidth), static_cast<int>(blockHeight)));
  std::vector<unsigned char> alpha(static_cast<size_t>(blockWidth) * blockHeight);
  for (size_t i = 0; i < alpha.size(); ++i) alpha[i] = block.GetData()[i * 3];
  BindTexture(page->id);
  TightUnpackRows tight;
  SetColourBias(1.0f);
  glTexSubImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(page->penX), static_cast<GLint>(page->penY),
                  static_cast<GLsizei>(blockWidth), static_cast<GLsizei>(blockHeight), GL_ALPHA,
                  GL_UNSIGNED_BYTE, alpha.data());
  SetColourBias(0.0f);
}

CharacterInfo_t* wxGLFont::CreateCharacter(wchar_t c, TextureInfo_t* page) {
  wxSize size;
  if (!RasteriseGlyph(c, size)) return nullptr;
  return PlaceGlyph(c, size, page);
}

CharacterInfo_t* wxGLFont::PlaceGlyph(wchar_t c, wxSize size, TextureInfo_t* page) {
  const unsigned int w = static_cast<unsigned int>(size.x);
  const unsigned int h = static_cast<unsigned int>(size.y);
  if (w > 0) {
    const unsigned int bw = BlockSize(w);
    const unsigned int bh = BlockSize(h);
    if (page->width < bw || page->height < bh) return nullptr;
    if (bw > static_cast<unsigned int>(m_glyphBitmap.GetWidth()) ||
        bh > static_cast<unsigned int>(m_glyphBitmap.GetHeight())) {
      return nullptr;  // pages made before a page-size change may outgrow the scratch bitmap
    }
    if (page->penX + bw > page->width) {  // new row; it stays even if the glyph then fails
      page->penX = 0;
      page->penY += h;
    }
    if (page->penY + bh > page->height) return nullptr;
    UploadGlyph(page, bw, bh);
  }
  auto glyph = std::make_unique<CharacterInfo_t>(CharacterInfo_t{
      page, static_cast<float>(page->penX) / m_textureWidth,
      static_cast<float>(page->penY) / m_textureHeight, static_cast<float>(w) / m_textureWidth,
      static_cast<float>(h) / m_textureHeight, w, h});
  // Only w columns are ever sampled, so the next glyph may cover this one's padding.
  page->penX += w;
  CharacterInfo_t* made = glyph.get();
  m_characters[c] = std::move(glyph);
  return made;
}

void wxGLFont::PreLoadChars(const wxString& text) {
  for (wxUniChar c : text) GetOrCreateCharacter(static_cast<wchar_t>(c.GetValue()));
  if (!m_inBegin) BindTexture(0);
}

void wxGLFont::PreLoadAscii() {
  char codes[96];
  for (int i = 0; i < 96; ++i) codes[i] = static_cast<char>(32 + i);
  PreLoadChars(wxString(codes, wxConvLibc, sizeof(codes)));
}

void wxGLFont::MeasureText(const wxString& text, float& width, float& height) {
  width = 0.0f;
  height = 0.0f;
  for (wxUniChar c : text) {
    const CharacterInfo_t* glyph = GetOrCreateCharacter(static_cast<wchar_t>(c.GetValue()));
    if (!glyph) continue;
    width += static_cast<float>(glyph->width);
    height = std::max(height, static_cast<float>(glyph->height));
  }
  if (!m_inBegin) BindTexture(0);
}

// The characters are drawn on a bitmap of one pixel, which is all the extents need.
wxSize wxGLFont::MeasureWithoutGlyphs(const wxFont& font, const wxString& text) {
  wxBitmap scratch(1, 1, 24);
  wxMemoryDC dc(scratch);
  dc.SetFont(font);
  wxSize size(0, 0);
  for (wxUniChar c : text) {
    const wxSize extent = GlyphExtent(dc, static_cast<wchar_t>(c.GetValue()));
    size.x += extent.x;
    size.y = std::max(size.y, extent.y);
  }
  return size;
}

// One quad per glyph, one pass per page: the page bound on entry (if used) goes first without a
// rebind, the others follow in order of first use. The pen advances over every glyph in every
// pass, so glyphs of different pages keep their places.
void wxGLFont::WriteText(const wxString& text, float x, float y, float z) {
  m_boundTexture = CurrentBinding();  // the current context's, not the last one this font used
  std::vector<const CharacterInfo_t*> glyphs;
  std::vector<unsigned int> pages;
  for (wxUniChar c : text) {
    const CharacterInfo_t* glyph = GetOrCreateCharacter(static_cast<wchar_t>(c.GetValue()));
    if (!glyph || glyph->width == 0 || glyph->height == 0) continue;
    glyphs.push_back(glyph);
    if (std::find(pages.begin(), pages.end(), glyph->texture->id) == pages.end()) {
      pages.push_back(glyph->texture->id);
    }
  }
  glBegin(GL_QUADS);
  while (!pages.empty()) {
    auto bound = std::find(pages.begin(), pages.end(), m_boundTexture);
    if (bound == pages.end()) {
      glEnd();
      BindTexture(pages.front());
      glBegin(GL_QUADS);
      bound = pages.begin();
    }
    float pen = x;
    for (const CharacterInfo_t* glyph : glyphs) {
      if (glyph->texture->id == m_boundTexture) {
        const float right = pen + glyph->width;
        const float bottom = y + glyph->height;
        glTexCoord2f(glyph->texX, glyph->texY);
        glVertex3f(pen, y, z);
        glTexCoord2f(glyph->texX + glyph->texWidth, glyph->texY);
        glVertex3f(right, y, z);
        glTexCoord2f(glyph->texX + glyph->texWidth, glyph->texY + glyph->texHeight);
        glVertex3f(right, bottom, z);
        glTexCoord2f(glyph->texX, glyph->texY + glyph->texHeight);
        glVertex3f(pen, bottom, z);
      }
      pen += glyph->width;
    }
    pages.erase(bound);
  }
  glEnd();
  if (!m_inBegin) BindTexture(0);
}

void wxGLFont::WriteChar(wchar_t c, float x, float y, float z) { WriteText(wxString(c), x, y, z); }
