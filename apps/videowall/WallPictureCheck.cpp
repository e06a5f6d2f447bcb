// WallPictureCheck: bar colours at the bars' centres, a run of white on the box's row.
#include "WallPictureCheck.h"

#include <cstdlib>

#include <decompressor/CSyntheticCamera.h>

namespace {

constexpr int kBars = 7;
constexpr int kTolerance = 64;
// 75 % bars, left to right: white, yellow, cyan, green, magenta, red, blue.
constexpr unsigned char kBarRgb[kBars][3] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191},
                                             {0, 191, 0},     {191, 0, 191}, {191, 0, 0},
                                             {0, 0, 191}};

bool IsNear(const wxImage& image, int x, int y, const unsigned char* rgb) {
  return std::abs(image.GetRed(x, y) - rgb[0]) <= kTolerance &&
         std::abs(image.GetGreen(x, y) - rgb[1]) <= kTolerance &&
         std::abs(image.GetBlue(x, y) - rgb[2]) <= kTolerance;
}

bool IsWhite(const wxImage& image, int x, int y) {
  return image.GetRed(x, y) > 190 && image.GetGreen(x, y) > 190 && image.GetBlue(x, y) > 190;
}

}  // namespace

bool WallPictureCheck::CheckTile(const wxImage& wall, const wxRect& picture,
                                 const wxSize& cameraSize, wxString& why) {
  if (!wall.IsOk() || picture.IsEmpty() || !wxRect(wall.GetSize()).Contains(picture)) {
    why = "the picture rectangle is not inside the image";
    return false;
  }
  return CheckBars(wall, picture, why) && CheckBox(wall, picture, cameraSize, why);
}

bool WallPictureCheck::CheckBars(const wxImage& wall, const wxRect& picture, wxString& why) {
  const int y = picture.y + picture.height * 2 / 5;
  for (int bar = 0; bar < kBars; ++bar) {
    const int x = picture.x + picture.width * (2 * bar + 1) / (2 * kBars);
    if (!IsNear(wall, x, y, kBarRgb[bar])) {
      why = wxString::Format("bar %d at (%d, %d) is (%d, %d, %d)", bar + 1, x, y, wall.GetRed(x, y),
                             wall.GetGreen(x, y), wall.GetBlue(x, y));
      return false;
    }
  }
  return true;
}

bool WallPictureCheck::CheckBox(const wxImage& wall, const wxRect& picture,
                                const wxSize& cameraSize, wxString& why) {
  const CSyntheticCamera camera(cameraSize.x, cameraSize.y, 1);
  const PtzRect box = camera.GetBoxRect(0);
  const double scale = static_cast<double>(picture.height) / camera.GetHeight();
  const int y = picture.y + static_cast<int>((box.y + box.height / 2.0) * scale);
  const int side = static_cast<int>(box.width * picture.width / camera.GetWidth());
  int run = 0;
  int longest = 0;
  for (int x = picture.x; x < picture.GetRight(); ++x) {
    run = IsWhite(wall, x, y) ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  if (longest * 2 >= side) return true;
  why = wxString::Format("no white box on row %d (longest white run %d, box side %d)", y, longest,
                         side);
  return false;
}
