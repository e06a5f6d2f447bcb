// ExpectedPicture: what a tile shows after the GL back-end drew one textured quad, worked out
// pixel by pixel on the processor.
//
// The model: the projection maps the renderer's x (0 .. width - 1) onto the whole viewport,
// so a pixel's centre p + 0.5 lies at renderer x = (p + 0.5) (width - 1) / width, and likewise
// for y. The quad runs from its destination's first to its last pixel; a pixel whose centre
// lies inside shows the texel its centre samples: the texture coordinate interpolated
// linearly between the quad's corners, rounded down (GL_NEAREST). A frame drawn "1:1" thus
// shows some texels twice and skips others.
//
// The model is only trusted where the rasteriser cannot round the other way: a pixel centre
// too close to the quad's edge, or a sample too close to a texel boundary with different
// colours on its two sides, makes the picture ambiguous, and building it fails, so that a test
// picks an unambiguous geometry instead of loosening its tolerance. The margin is small where
// the quad's corners lie on the rasteriser's sub-pixel grid (only float rounding then) and
// larger where the corners are snapped to it.
#pragma once

#include <functional>

#include <gtest/gtest.h>
#include <wx/colour.h>
#include <wx/gdicmn.h>
#include <wx/image.h>

// One textured quad as the renderer draws it.
struct QuadPlacement {
  wxRect destination;  // the renderer's pixel coordinates: the quad runs x .. x + width - 1
  double left;         // texture coordinates at the corners, in texels
  double top;
  double right;
  double bottom;
};

// The colour texel (x, y) shows, for 0 <= x < `texels.x` and 0 <= y < `texels.y`.
struct TexelSource {
  wxSize texels;
  std::function<wxColour(int x, int y)> colour;
};

// Works out the tile of `tile` pixels with `background` outside the quad, into `expected`.
// `subpixelBits` is the rasteriser's sub-pixel precision (GL_SUBPIXEL_BITS).
::testing::AssertionResult ExpectedPicture(const wxSize& tile, const wxColour& background,
                                           const QuadPlacement& quad, const TexelSource& texels,
                                           int subpixelBits, wxImage* expected);
