// Pixel comparisons with named tolerances. On a mismatch the actual and expected pictures (and
// a difference picture) are written as PNG files so the failure can be looked at; the message
// says where.
#pragma once

#include <string>

#include <gtest/gtest.h>
#include <wx/colour.h>
#include <wx/image.h>

// Channel tolerances, in 8-bit steps.
constexpr int kExactPixels = 0;
constexpr int kYuvConversionTolerance = 2;  // GPU conversion against the CPU reference
constexpr int kScalingTolerance = 8;        // toolkit scaling against a nearest-neighbour model

// Where failing pictures go: $RENDERER_TEST_ARTIFACTS, else "test-artifacts" in the working
// directory.
std::string ArtifactDirectory();

// Every pixel of `actual` within `tolerance` of `expected` in R, G and B (sizes must match).
::testing::AssertionResult ImagesNear(const wxImage& actual, const wxImage& expected, int tolerance,
                                      const std::string& name);

// One pixel within `tolerance` of a colour, R, G and B.
::testing::AssertionResult PixelNear(const wxImage& image, int x, int y, const wxColour& expected,
                                     int tolerance);

// An image of `size` filled with `colour`.
wxImage SolidImage(const wxSize& size, const wxColour& colour);
