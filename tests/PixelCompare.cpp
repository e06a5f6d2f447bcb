// Pixel comparisons that leave the pictures behind when they fail.
#include "PixelCompare.h"

#include <cstdlib>
#include <sstream>

#include <wx/filename.h>

std::string ArtifactDirectory() {
  const char* configured = std::getenv("RENDERER_TEST_ARTIFACTS");
  const std::string directory = configured && *configured ? configured : "test-artifacts";
  wxFileName::Mkdir(directory, wxS_DIR_DEFAULT, wxPATH_MKDIR_FULL);
  return directory;
}

namespace {

std::string SaveFailure(const wxImage& actual, const wxImage& expected, const std::string& name) {
  const std::string base = ArtifactDirectory() + "/" + name;
  actual.SaveFile(base + "-actual.png", wxBITMAP_TYPE_PNG);
  expected.SaveFile(base + "-expected.png", wxBITMAP_TYPE_PNG);
  if (actual.GetSize() == expected.GetSize()) {
    wxImage difference(actual.GetSize());
    const size_t bytes = static_cast<size_t>(actual.GetWidth()) * actual.GetHeight() * 3;
    for (size_t i = 0; i < bytes; ++i) {
      difference.GetData()[i] =
          static_cast<unsigned char>(std::abs(actual.GetData()[i] - expected.GetData()[i]));
    }
    difference.SaveFile(base + "-difference.png", wxBITMAP_TYPE_PNG);
  }
  return base + "-{actual,expected,difference}.png";
}

}  // namespace

::testing::AssertionResult ImagesNear(const wxImage& actual, const wxImage& expected, int tolerance,
                                      const std::string& name) {
  if (actual.GetSize() != expected.GetSize()) {
    return ::testing::AssertionFailure()
           << "size " << actual.GetWidth() << "x" << actual.GetHeight() << " instead of "
           << expected.GetWidth() << "x" << expected.GetHeight() << "; saved "
           << SaveFailure(actual, expected, name);
  }
  int mismatches = 0;
  std::ostringstream first;
  for (int y = 0; y < actual.GetHeight(); ++y) {
    for (int x = 0; x < actual.GetWidth(); ++x) {
      const int dr = std::abs(actual.GetRed(x, y) - expected.GetRed(x, y));
      const int dg = std::abs(actual.GetGreen(x, y) - expected.GetGreen(x, y));
      const int db = std::abs(actual.GetBlue(x, y) - expected.GetBlue(x, y));
      if (dr <= tolerance && dg <= tolerance && db <= tolerance) continue;
      if (mismatches++ == 0) {
        first << "first at (" << x << ", " << y << "): (" << int(actual.GetRed(x, y)) << ", "
              << int(actual.GetGreen(x, y)) << ", " << int(actual.GetBlue(x, y)) << ") instead of ("
              << int(expected.GetRed(x, y)) << ", " << int(expected.GetGreen(x, y)) << ", "
              << int(expected.GetBlue(x, y)) << ")";
      }
    }
  }
  if (mismatches == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << mismatches << " pixels differ by more than " << tolerance << ", " << first.str()
         << "; saved " << SaveFailure(actual, expected, name);
}

::testing::AssertionResult PixelNear(const wxImage& image, int x, int y, const wxColour& expected,
                                     int tolerance) {
  const int r = image.GetRed(x, y);
  const int g = image.GetGreen(x, y);
  const int b = image.GetBlue(x, y);
  if (std::abs(r - expected.Red()) <= tolerance && std::abs(g - expected.Green()) <= tolerance &&
      std::abs(b - expected.Blue()) <= tolerance) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure()
         << "pixel (" << x << ", " << y << ") is (" << r << ", " << g << ", " << b
         << "), expected (" << int(expected.Red()) << ", " << int(expected.Green()) << ", "
         << int(expected.Blue()) << ") within " << tolerance;
}

wxImage SolidImage(const wxSize& size, const wxColour& colour) {
  wxImage image(size);
  image.SetRGB(wxRect(size), colour.Red(), colour.Green(), colour.Blue());
  return image;
}
