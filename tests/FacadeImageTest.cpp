// Host images at the facade, watched through back-end doubles: a back-end hears of an image
// only when it is drawn there, makes its own image once, has it released when the facade lets
// go of the back-end or of the image, and is never handed pointers that the facade did not
// make.
#include "FacadeTest.h"
#include "RecordingBackend.h"

namespace {

class Images : public FacadeTest {
 protected:
  void SetUp() override {
    FacadeTest::SetUp();
    facade = MakeFacade(RENDER_MODE_SOFTWARE);
    backend = Install(1);
  }

  // A fresh double as both back-ends; its images are counted in `liveImages`.
  RecordingBackend* Install(int seed) {
    auto* installed = new RecordingBackend(tile, seed);
    installed->liveImages = &liveImages;
    facade->InstallBackend(installed, RENDER_MODE_SOFTWARE);
    installed->calls.clear();
    return installed;
  }

  // A second double put in front of the first, as a software fallback does.
  RecordingBackend* EnterFallback() {
    auto* software = new RecordingBackend(tile, 2);
    software->liveImages = &liveImages;
    facade->m_renderer = software;
    return software;
  }

  // A host image, drawn once on the active back-end.
  IRendererImage* DrawnImage() {
    IRendererImage* image = facade->CreateImage(SolidImage(wxSize(6, 4), *wxRED));
    facade->DrawImage(nullptr, image, 0, 0);
    return image;
  }

  // The back-end image that `image` holds for `renderer` (null when none).
  static IRendererImage* BackendImage(IRendererImage* image, IRenderer* renderer) {
    auto* own = static_cast<RendererImage*>(image);
    const auto found = own->m_backendImages.find(renderer);
    return found == own->m_backendImages.end() ? nullptr : found->second;
  }

  static std::string DrawRecord(IRendererImage* backendImage, int x, int y) {
    return "DrawImage(null," + Str(backendImage) + "," + Str(x) + "," + Str(y) + ")";
  }

  int liveImages = 0;  // declared first: it outlives the facades
  TestRenderer* facade = nullptr;
  RecordingBackend* backend = nullptr;
};

TEST_F(Images, CreatedAndDeletedWithoutADrawNoBackendHearsOfIt) {
  IRendererImage* image = facade->CreateImage(SolidImage(wxSize(6, 4), *wxRED));
  ASSERT_NE(nullptr, image);
  EXPECT_TRUE(image->IsOk());
  EXPECT_EQ(wxSize(6, 4), image->GetSize());
  EXPECT_EQ(1u, facade->m_images.size());
  facade->DeleteImage(image);
  EXPECT_TRUE(facade->m_images.empty());
  EXPECT_TRUE(backend->calls.empty()) << backend->calls.front();
  EXPECT_EQ(0, liveImages);
}

TEST_F(Images, DrawnTwiceOnOneBackendItIsMadeThereOnce) {
  IRendererImage* image = facade->CreateImage(SolidImage(wxSize(6, 4), *wxRED));
  facade->DrawImage(nullptr, image, 3, 5);
  facade->DrawImage(nullptr, image, 7, 9);
  IRendererImage* made = BackendImage(image, backend);
  ASSERT_NE(nullptr, made);
  EXPECT_EQ((std::vector<std::string>{"CreateImage(6x4)", DrawRecord(made, 3, 5),
                                      DrawRecord(made, 7, 9)}),
            backend->calls);
  EXPECT_EQ(1, liveImages);
}

TEST_F(Images, UnknownOrNullPointerIsNotDeletedNorForwarded) {
  IRendererImage* image = facade->CreateImage(SolidImage(wxSize(6, 4), *wxRED));
  int foreignLive = 0;
  TestImage foreign(wxSize(2, 2), &foreignLive);
  facade->DeleteImage(&foreign);
  facade->DeleteImage(nullptr);
  EXPECT_TRUE(backend->calls.empty()) << backend->calls.front();
  EXPECT_EQ(1, foreignLive) << "the foreign image was deleted";
  ASSERT_EQ(1u, facade->m_images.size());
  EXPECT_EQ(image, facade->m_images.front());
}

TEST_F(Images, ForeignOrNullPointerDrawsNothing) {
  facade->CreateImage(SolidImage(wxSize(6, 4), *wxRED));
  TestImage foreign(wxSize(2, 2), nullptr);
  facade->DrawImage(nullptr, &foreign, 1, 1);
  facade->DrawImage(nullptr, nullptr, 1, 1);
  EXPECT_TRUE(backend->calls.empty()) << backend->calls.front();
}

// Images never drawn on the back-end are released there with null, deliberately.
TEST_F(Images, ReleasingABackendPassesNullForImagesNeverDrawnThere) {
  IRendererImage* drawn = facade->CreateImage(SolidImage(wxSize(6, 4), *wxRED));
  IRendererImage* undrawn = facade->CreateImage(SolidImage(wxSize(3, 3), *wxBLUE));
  facade->DrawImage(nullptr, drawn, 0, 0);
  IRendererImage* made = BackendImage(drawn, backend);
  ASSERT_NE(nullptr, made);
  backend->calls.clear();

  facade->DeleteImages(backend);

  EXPECT_EQ((std::vector<std::string>{"DeleteImage(" + Str(made) + ")", "DeleteImage(null)"}),
            backend->calls);
  EXPECT_EQ(0, liveImages);
  EXPECT_EQ(0u, static_cast<RendererImage*>(drawn)->m_backendImages.count(backend));
  EXPECT_EQ(0u, static_cast<RendererImage*>(undrawn)->m_backendImages.count(backend));
  EXPECT_EQ(2u, facade->m_images.size()) << "the host's images stay";
}

TEST_F(Images, NullBackendImageIsKeptAsNullAndTriedAgainAtTheNextDraw) {
  IRendererImage* image = facade->CreateImage(SolidImage(wxSize(6, 4), *wxRED));
  backend->createNullImages = true;
  facade->DrawImage(nullptr, image, 1, 2);
  EXPECT_EQ((std::vector<std::string>{"CreateImage(6x4)", DrawRecord(nullptr, 1, 2)}),
            backend->calls);
  auto* own = static_cast<RendererImage*>(image);
  ASSERT_EQ(1u, own->m_backendImages.count(backend));
  EXPECT_EQ(nullptr, own->m_backendImages.at(backend));

  facade->DrawImage(nullptr, image, 1, 2);
  EXPECT_EQ(2, backend->Count("CreateImage")) << "tried again";
  EXPECT_EQ(2, backend->Count("DrawImage"));

  backend->createNullImages = false;
  backend->calls.clear();
  facade->DrawImage(nullptr, image, 3, 4);
  facade->DrawImage(nullptr, image, 3, 4);
  IRendererImage* made = BackendImage(image, backend);
  ASSERT_NE(nullptr, made);
  EXPECT_EQ((std::vector<std::string>{"CreateImage(6x4)", DrawRecord(made, 3, 4),
                                      DrawRecord(made, 3, 4)}),
            backend->calls);
}

TEST_F(Images, ImageWithoutPixelsDrawsNothing) {
  IRendererImage* image = facade->CreateImage(wxImage());
  ASSERT_NE(nullptr, image);
  EXPECT_FALSE(image->IsOk());
  EXPECT_EQ(wxSize(0, 0), image->GetSize());
  facade->DrawImage(nullptr, image, 0, 0);
  EXPECT_TRUE(backend->calls.empty()) << backend->calls.front();
  EXPECT_TRUE(static_cast<RendererImage*>(image)->m_backendImages.empty());
}

// The replaced back-end's images go at the switch, before the back-end itself goes at idle
// time; the next draw makes the image on the new back-end.
TEST_F(Images, SwitchReleasesTheOldBackendsImagesAndTheNextDrawMakesANewOne) {
  IRendererImage* image = DrawnImage();
  IRendererImage* made = BackendImage(image, backend);
  ASSERT_EQ(1, liveImages);
  backend->calls.clear();

  facade->SetRenderMode(RENDER_MODE_AUTO);
  EXPECT_EQ(0, liveImages);
  EXPECT_EQ(1, backend->Count("DeleteImage"));
  EXPECT_EQ("DeleteImage(" + Str(made) + ")", backend->calls.back());
  EXPECT_TRUE(static_cast<RendererImage*>(image)->m_backendImages.empty());
  PumpEvents();  // the double goes now

  RecordingBackend* next = Install(3);
  facade->DrawImage(nullptr, image, 0, 0);
  EXPECT_EQ(1, next->Count("CreateImage"));
  EXPECT_EQ(1, liveImages);
}

// A software fallback in front of the double: the host's image is made on the software
// back-end too, and the primary keeps its own for the way back.
TEST_F(Images, ReturnFromFallbackReusesThePrimarysImage) {
  IRendererImage* image = DrawnImage();
  IRendererImage* onPrimary = BackendImage(image, backend);
  RecordingBackend* software = EnterFallback();
  facade->m_renderMode = RENDER_MODE_OPENGL;  // a mode that can leave the fallback
  facade->DrawImage(nullptr, image, 0, 0);
  EXPECT_EQ(1, software->Count("CreateImage"));
  ASSERT_EQ(2, liveImages);
  backend->calls.clear();

  facade->SoftwareFallback(false);
  ASSERT_EQ(backend, facade->m_renderer);
  EXPECT_EQ(1, liveImages) << "the software back-end's image goes with it";
  facade->DrawImage(nullptr, image, 5, 6);
  EXPECT_EQ(0, backend->Count("CreateImage"));
  EXPECT_EQ(DrawRecord(onPrimary, 5, 6), backend->calls.back());
}

// A switch during a fallback releases the images of both back-ends.
TEST_F(Images, SwitchInFallbackReleasesTheImagesOfBothBackends) {
  IRendererImage* image = DrawnImage();
  RecordingBackend* software = EnterFallback();
  facade->DrawImage(nullptr, image, 0, 0);
  IRendererImage* onSoftware = BackendImage(image, software);
  ASSERT_EQ(2, liveImages);
  software->calls.clear();

  facade->SetRenderMode(RENDER_MODE_AUTO);
  EXPECT_EQ(0, liveImages);
  EXPECT_EQ(1, software->Count("DeleteImage"));
  EXPECT_EQ("DeleteImage(" + Str(onSoftware) + ")", software->calls.back())
      << "the software back-end waits for idle time, its image does not";
  EXPECT_TRUE(static_cast<RendererImage*>(image)->m_backendImages.empty());
}

// Everything the facade made goes with it: its host images, and through them the back-end
// images on the active and on the primary back-end of a software fallback.
TEST_F(Images, DestructionReleasesEveryImage) {
  IRendererImage* onBoth = DrawnImage();
  facade->CreateImage(SolidImage(wxSize(5, 5), *wxGREEN));  // never drawn
  EnterFallback();
  facade->DrawImage(nullptr, onBoth, 0, 0);
  ASSERT_EQ(2, liveImages);
  ASSERT_EQ(2u, static_cast<RendererImage*>(onBoth)->m_backendImages.size());

  DestroyFacade(facade);
  EXPECT_EQ(0, liveImages);
}

}  // namespace
