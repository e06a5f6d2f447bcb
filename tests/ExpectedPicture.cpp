// The per-pixel model of one textured quad.
#include "ExpectedPicture.h"

#include <cmath>
#include <optional>
#include <sstream>

namespace {

// Margins, in pixels and in texels: float rounding only, or the snapping of corners to a
// sub-pixel grid of 1/256 (at most 1/512 of a pixel), with room to spare.
constexpr double kExactCornerMargin = 1e-3;
constexpr double kSnappedCornerMargin = 1e-2;

// Along one axis: a viewport of `viewport` pixels, a quad from `first` to `last` (renderer
// coordinates) with texture coordinates `from` to `to`.
struct Axis {
  int viewport;
  double first;
  double last;
  double from;
  double to;

  double WindowPosition(double position) const { return position * viewport / (viewport - 1.0); }
};

struct Sample {
  bool inside;          // the centre lies between the quad's edges
  double coordinate;    // texture coordinate there, in texels
  double edgeDistance;  // pixels from the centre to the nearer quad edge
};

// Where pixel `pixel`'s centre lies along `axis`, and what it samples there.
Sample SampleAlong(const Axis& axis, int pixel) {
  const double centre = pixel + 0.5;
  const double start = axis.WindowPosition(axis.first);
  const double end = axis.WindowPosition(axis.last);
  const double fraction = (centre - start) / (end - start);
  return Sample{centre >= start && centre <= end, axis.from + fraction * (axis.to - axis.from),
                std::min(std::abs(centre - start), std::abs(centre - end))};
}

bool OnGrid(double position, int subpixelBits) {
  const double scaled = std::ldexp(position, subpixelBits);
  return std::abs(scaled - std::round(scaled)) < 1e-9;
}

bool CornersOnGrid(const Axis& x, const Axis& y, int subpixelBits) {
  return OnGrid(x.WindowPosition(x.first), subpixelBits) &&
         OnGrid(x.WindowPosition(x.last), subpixelBits) &&
         OnGrid(y.WindowPosition(y.first), subpixelBits) &&
         OnGrid(y.WindowPosition(y.last), subpixelBits);
}

// The texel a coordinate rounds down to; below 0 the clamped edge texel, past the picture
// nothing (the texture's padding, whose contents are unknown).
std::optional<int> TexelIndex(double coordinate, int texels) {
  const int index = static_cast<int>(std::floor(coordinate));
  if (index >= texels) return std::nullopt;
  return std::max(index, 0);
}

std::optional<wxColour> ColourAt(const TexelSource& texels, double s, double t) {
  const std::optional<int> x = TexelIndex(s, texels.texels.x);
  const std::optional<int> y = TexelIndex(t, texels.texels.y);
  if (!x || !y) return std::nullopt;
  return texels.colour(*x, *y);
}

// The colour a sample shows, when rounding by `margin` either way cannot change it.
std::optional<wxColour> UnambiguousColour(const TexelSource& texels, double s, double t,
                                          double margin) {
  const std::optional<wxColour> colour = ColourAt(texels, s, t);
  if (!colour) return std::nullopt;
  for (const double ds : {-margin, margin}) {
    for (const double dt : {-margin, margin}) {
      if (ColourAt(texels, s + ds, t + dt) != colour) return std::nullopt;
    }
  }
  return colour;
}

}  // namespace

::testing::AssertionResult ExpectedPicture(const wxSize& tile, const wxColour& background,
                                           const QuadPlacement& quad, const TexelSource& texels,
                                           int subpixelBits, wxImage* expected) {
  const wxRect& d = quad.destination;
  const Axis x{tile.x, double(d.x), double(d.x + d.width - 1), quad.left, quad.right};
  const Axis y{tile.y, double(d.y), double(d.y + d.height - 1), quad.top, quad.bottom};
  const double margin =
      CornersOnGrid(x, y, subpixelBits) ? kExactCornerMargin : kSnappedCornerMargin;
  *expected = wxImage(tile);
  expected->SetRGB(wxRect(tile), background.Red(), background.Green(), background.Blue());
  std::ostringstream ambiguous;
  int ambiguities = 0;
  for (int py = 0; py < tile.y; ++py) {
    for (int px = 0; px < tile.x; ++px) {
      const Sample sx = SampleAlong(x, px);
      const Sample sy = SampleAlong(y, py);
      const bool nearX = sx.edgeDistance <= margin;
      const bool nearY = sy.edgeDistance <= margin;
      const bool coverageUnsure = (nearX && (sy.inside || nearY)) || (nearY && sx.inside);
      std::optional<wxColour> colour = background;
      if (coverageUnsure) {
        colour = std::nullopt;
      } else if (sx.inside && sy.inside) {
        colour = UnambiguousColour(texels, sx.coordinate, sy.coordinate, margin);
      }
      if (!colour) {
        if (ambiguities++ == 0) ambiguous << "first at (" << px << ", " << py << ")";
        continue;
      }
      expected->SetRGB(px, py, colour->Red(), colour->Green(), colour->Blue());
    }
  }
  if (ambiguities == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << ambiguities << " pixels of the expected picture are "
                                       << "ambiguous, " << ambiguous.str();
}
