// A host image across a back-end switch, on the real back-ends: drawn on OpenGL (what the X
// server shows), switched to software, drawn again (into a memory bitmap). Each back-end makes
// its own image once, and both show the image's pixels where the host put them.
#include <wx/dcmemory.h>

#include "FacadeTest.h"

namespace {

// The GL test renderer, counting the images it is asked to make.
class CountingGL : public GLTestRenderer {
 public:
  CountingGL(wxWindow* parent, int* made) : GLTestRenderer(parent), m_made(made) {}
  IRendererImage* CreateImage(const wxImage& image) override {
    ++*m_made;
    return GLTestRenderer::CreateImage(image);
  }

 private:
  int* m_made;
};

// Top half red, bottom half yellow: upside down or shifted shows.
wxImage TwoBandPicture(const wxSize& size) {
  wxImage picture = SolidImage(size, *wxRED);
  picture.SetRGB(wxRect(0, size.y / 2, size.x, size.y - size.y / 2), 255, 255, 0);
  return picture;
}

// `background` with `picture` pasted at `at`.
wxImage Pasted(wxImage background, const wxImage& picture, const wxPoint& at) {
  background.Paste(picture, at.x, at.y);
  return background;
}

// GL places a quad's edges a fraction of a pixel off the integer grid (its projection maps the
// last pixel to the window's edge), so the pixels on either side of each edge of `area`, and of
// the line between the bands, are taken from `actual`; every other pixel must match.
wxImage AcceptingEdges(wxImage expected, const wxImage& actual, const wxRect& area) {
  const int middle = area.y + area.height / 2;
  for (int y = area.y - 1; y <= area.GetBottom() + 1; ++y) {
    for (int x = area.x - 1; x <= area.GetRight() + 1; ++x) {
      const bool edge = x <= area.x || x >= area.GetRight() || y <= area.y ||
                        y >= area.GetBottom() || y == middle - 1 || y == middle;
      if (!edge || x < 0 || y < 0 || x >= actual.GetWidth() || y >= actual.GetHeight()) continue;
      expected.SetRGB(x, y, actual.GetRed(x, y), actual.GetGreen(x, y), actual.GetBlue(x, y));
    }
  }
  return expected;
}

using ImageAcrossBackends = ScreenFacadeTest;

TEST_F(ImageAcrossBackends, MadeOncePerBackendAndShownRightOnBoth) {
  RunProbe(tile);
  ASSERT_TRUE(OpenGLRenderer::m_isSupported);
  TestRenderer* facade = MakeFacade(RENDER_MODE_SOFTWARE);
  int madeOnGL = 0;
  auto* gl = new CountingGL(tile, &madeOnGL);
  facade->InstallBackend(gl, RENDER_MODE_OPENGL);
  facade->m_renderMode = RENDER_MODE_OPENGL;
  Settle(gl);

  const wxPoint at(30, 20);
  const wxImage picture = TwoBandPicture(wxSize(40, 30));
  IRendererImage* image = facade->CreateImage(picture);
  OverlayFunction host([&](IRenderer*, wxDC* dc) { facade->DrawImage(dc, image, at.x, at.y); });
  facade->SetDrawOverlaysHandler(&host);
  auto* own = static_cast<RendererImage*>(image);

  facade->Render(nullptr);
  facade->Render(nullptr);
  EXPECT_EQ(1, madeOnGL) << "made on the GL back-end once, for two draws";
  ASSERT_EQ(1u, own->m_backendImages.count(gl));
  const wxImage shown = ReadShown(tile);
  const wxImage onGL = Pasted(BackgroundImage(), picture, at);
  EXPECT_TRUE(ImagesNear(shown, AcceptingEdges(onGL, shown, wxRect(at, picture.GetSize())),
                         kExactPixels, "image-on-gl"));
  EXPECT_TRUE(ImagesNear(gl->drawn, AcceptingEdges(onGL, gl->drawn, wxRect(at, picture.GetSize())),
                         kExactPixels, "image-on-gl-drawn"));

  facade->SetRenderMode(RENDER_MODE_SOFTWARE);
  EXPECT_TRUE(own->m_backendImages.empty()) << "the GL back-end's image was not released";
  PumpEvents();  // the GL back-end goes

  wxBitmap bitmap(tile->GetClientSize(),
                  24);  // the software back-end clears it to the tile's colour
  IRendererImage* madeOnSoftware = nullptr;
  for (int paint = 0; paint < 2; ++paint) {
    wxMemoryDC dc(bitmap);
    facade->Render(&dc);
    ASSERT_EQ(1u, own->m_backendImages.size());
    ASSERT_EQ(1u, own->m_backendImages.count(facade->m_renderer));
    if (paint == 0) madeOnSoftware = own->m_backendImages.at(facade->m_renderer);
    EXPECT_NE(nullptr, madeOnSoftware);
    EXPECT_EQ(madeOnSoftware, own->m_backendImages.at(facade->m_renderer))
        << "made again on the second draw";
  }
  EXPECT_EQ(1, madeOnGL);
  EXPECT_TRUE(ImagesNear(bitmap.ConvertToImage(), Pasted(BackgroundImage(), picture, at),
                         kExactPixels, "image-on-software"));
}

}  // namespace
