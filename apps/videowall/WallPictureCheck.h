// WallPictureCheck: whether a tile of a wall picture shows a synthetic camera's video: the
// seven 75 % colour bars in their order, and the white box in the band below them.
//
// It looks at fixed sample points of the tile's picture rectangle, within tolerances that
// survive H.264, scaling and either back-end; overlays are expected to stay off the sample
// rows (the wall puts its labels on the top and bottom edges). It knows nothing of windows or
// of other sources.
#pragma once

#include <wx/image.h>
#include <wx/string.h>

class WallPictureCheck {
 public:
  // Checks the camera picture of `cameraSize` shown in `picture` (image coordinates) of
  // `wall`; on failure `why` says what is missing.
  static bool CheckTile(const wxImage& wall, const wxRect& picture, const wxSize& cameraSize,
                        wxString& why);

 private:
  static bool CheckBars(const wxImage& wall, const wxRect& picture, wxString& why);
  static bool CheckBox(const wxImage& wall, const wxRect& picture, const wxSize& cameraSize,
                       wxString& why);
};
