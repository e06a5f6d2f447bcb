// ScreenCapture: XGetImage of the root window, unpacked by the visual's colour masks.
#include "ScreenCapture.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <wx/utils.h>

#include <cstdint>
#include <cstring>
#include <memory>

namespace {

struct XImageDeleter {
  void operator()(XImage* image) const { XDestroyImage(image); }
};

int ShiftOf(unsigned long mask) { return mask ? __builtin_ctzl(mask) : 0; }

// Copies one row of 32-bit pixels into RGB bytes.
void UnpackRow(const XImage& shown, int row, unsigned char* rgb) {
  const char* line = shown.data + static_cast<ptrdiff_t>(row) * shown.bytes_per_line;
  const int red = ShiftOf(shown.red_mask);
  const int green = ShiftOf(shown.green_mask);
  const int blue = ShiftOf(shown.blue_mask);
  for (int column = 0; column < shown.width; ++column, rgb += 3) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, line + column * 4, sizeof(pixel));
    rgb[0] = static_cast<unsigned char>(pixel >> red);
    rgb[1] = static_cast<unsigned char>(pixel >> green);
    rgb[2] = static_cast<unsigned char>(pixel >> blue);
  }
}

}  // namespace

wxImage ScreenCapture::GrabScreen(const wxRect& rect) {
  Display* display = wxGetX11Display();
  if (!display || rect.IsEmpty()) return wxImage();
  XSync(display, False);
  std::unique_ptr<XImage, XImageDeleter> shown(XGetImage(display, DefaultRootWindow(display),
                                                         rect.x, rect.y, rect.width, rect.height,
                                                         AllPlanes, ZPixmap));
  if (!shown || shown->bits_per_pixel != 32 || shown->byte_order != LSBFirst) return wxImage();
  wxImage image(rect.width, rect.height, false);
  for (int row = 0; row < rect.height; ++row) {
    UnpackRow(*shown, row, image.GetData() + static_cast<ptrdiff_t>(row) * rect.width * 3);
  }
  return image;
}
