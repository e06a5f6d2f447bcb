// The display aspect ratio chosen from a list of measured ratios: a single measurement as
// hundredths (4:3 exactly), otherwise a vote between wide and narrow around 14/9, or the
// caller's mode and preference.
#include <cmath>
#include <iomanip>
#include <limits>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>

#include <renderer/Renderer.h>

namespace {

struct Case {
  std::vector<float> ratios;
  bool preferWide;
  int mode;
  wxSize expected;
};

std::ostream& operator<<(std::ostream& out, const Case& c) {
  out << std::setprecision(9) << "{";
  for (float ratio : c.ratios) out << ratio << " ";
  return out << "} preferWide " << c.preferWide << " mode " << c.mode << " -> " << c.expected.x
             << ":" << c.expected.y;
}

constexpr float kEpsilon = 1.1920929e-07f;          // single-precision epsilon
const float kFourThirds = 1.3333334f;               // 4:3 as a float
const double kFourteenNinths = 1.5555555555555554;  // the wide/narrow line
// The float nearest to 14/9 lies just above the double 14/9; the float below it, just under.
const float kJustWide = static_cast<float>(kFourteenNinths);
const float kJustNarrow = std::nextafter(kJustWide, 0.0f);
const float kInf = std::numeric_limits<float>::infinity();
const float kNaN = std::numeric_limits<float>::quiet_NaN();
const wxSize kWide(16, 9);
const wxSize kNarrow(4, 3);

class AspectRatio : public ::testing::TestWithParam<Case> {};

TEST_P(AspectRatio, IsChosenByTheRules) {
  const Case& c = GetParam();
  EXPECT_EQ(c.expected, Renderer::DetermineAspectRatio(c.ratios, c.preferWide, c.mode));
}

INSTANTIATE_TEST_SUITE_P(Examples, AspectRatio,
                         ::testing::Values(Case{{1.7777778f}, false, 0, wxSize(177, 100)},
                                           Case{{kFourThirds}, true, 0, kNarrow},
                                           Case{{}, true, 0, kWide},
                                           Case{{1.0f, 1.7f}, false, 0, kNarrow},
                                           Case{{0.0f}, true, 1, kNarrow}));

// One measurement, modes 0 and 1: its hundredths, truncated; zero and 4:3 (within the
// epsilon) give exactly 4:3.
INSTANTIATE_TEST_SUITE_P(
    SingleValue, AspectRatio,
    ::testing::Values(
        Case{{1.7777778f}, true, 1, wxSize(177, 100)},
        Case{{2.3999999f}, false, 0, wxSize(239, 100)}, Case{{1.25f}, true, 0, wxSize(125, 100)},
        Case{{0.5f}, true, 1, wxSize(50, 100)}, Case{{-1.5f}, false, 0, wxSize(-150, 100)},
        Case{{0.0f}, false, 0, kNarrow}, Case{{kEpsilon}, true, 0, kNarrow},
        Case{{-kEpsilon}, true, 1, kNarrow}, Case{{2 * kEpsilon}, true, 0, wxSize(0, 100)},
        Case{{kFourThirds}, false, 1, kNarrow}, Case{{kFourThirds + kEpsilon}, false, 0, kNarrow},
        Case{{kFourThirds - kEpsilon}, false, 0, kNarrow},
        Case{{kFourThirds + 2e-6f}, true, 0, wxSize(133, 100)},
        Case{{kFourThirds - 2e-6f}, true, 0, wxSize(133, 100)},
        // Modes other than 0 and 1 do not take the single value.
        Case{{1.25f}, false, 2, kWide}, Case{{1.7777778f}, true, 3, kNarrow},
        Case{{1.7777778f}, true, -1, kNarrow}));

// Mode 0 with a list: wide (above 14/9) against narrow votes; zeros do not vote; a tie goes to
// the preference.
INSTANTIATE_TEST_SUITE_P(
    Vote, AspectRatio,
    ::testing::Values(Case{{kJustWide, kJustWide}, false, 0, kWide},
                      Case{{kJustNarrow, kJustNarrow}, true, 0, kNarrow},
                      Case{{kJustWide, kJustNarrow}, true, 0, kWide},
                      Case{{kJustWide, kJustNarrow}, false, 0, kNarrow},
                      Case{{1.7777778f, 1.7777778f, 1.3333334f}, false, 0, kWide},
                      Case{{1.25f, 1.3333334f, 1.7777778f}, true, 0, kNarrow},
                      Case{{0.0f, 0.0f, 1.7777778f, 0.0f}, false, 0, kWide},
                      Case{{0.0f, kEpsilon, -kEpsilon}, true, 0, kWide},
                      Case{{0.0f, 0.0f}, false, 0, kNarrow},
                      Case{{2 * kEpsilon, 0.0f}, true, 0, kNarrow}, Case{{}, false, 0, kNarrow}));

// Every other mode ignores the values: 1 follows the preference, 2 is wide, anything else
// narrow; a single value counts as a list here too when the mode is not 0 or 1.
INSTANTIATE_TEST_SUITE_P(
    Modes, AspectRatio,
    ::testing::Values(Case{{1.7777778f, 1.7777778f}, false, 1, kNarrow},
                      Case{{1.25f, 1.25f, 1.25f}, true, 1, kWide}, Case{{}, true, 1, kWide},
                      Case{{}, false, 1, kNarrow}, Case{{1.25f, 1.25f}, false, 2, kWide},
                      Case{{}, false, 2, kWide}, Case{{1.7777778f, 1.7777778f}, true, 3, kNarrow},
                      Case{{}, true, 3, kNarrow}, Case{{1.7777778f, 2.0f}, true, -1, kNarrow},
                      Case{{}, true, 42, kNarrow}));

// Values that are not numbers, infinite or huge never crash and give a ratio.
INSTANTIATE_TEST_SUITE_P(
    Extremes, AspectRatio,
    ::testing::Values(Case{{kNaN}, true, 0, kNarrow}, Case{{kInf}, false, 1, kNarrow},
                      Case{{-kInf}, true, 0, kNarrow}, Case{{kInf, kInf}, false, 0, kWide},
                      Case{{kNaN, kNaN}, false, 0, kNarrow}, Case{{kNaN, kNaN}, true, 0, kWide},
                      Case{{std::numeric_limits<float>::max(), 1.0f, 2.0f}, false, 0, kWide}));

// A single huge value: hundredths that no int can hold are kept within the int range.
TEST(AspectRatioExtremes, HugeSingleValueStaysWithinTheIntRange) {
  const wxSize big = Renderer::DetermineAspectRatio({std::numeric_limits<float>::max()}, true, 0);
  EXPECT_EQ(100, big.y);
  EXPECT_GT(big.x, 0);
  const wxSize small =
      Renderer::DetermineAspectRatio({-std::numeric_limits<float>::max()}, true, 1);
  EXPECT_EQ(100, small.y);
  EXPECT_LT(small.x, 0);
}

// The threshold is compared in double precision: the float nearest to 14/9 lies above the
// double 14/9 and so votes wide.
TEST(AspectRatioExtremes, FloatNearestFourteenNinthsVotesWide) {
  ASSERT_GT(static_cast<double>(kJustWide), kFourteenNinths);
  EXPECT_EQ(kWide, Renderer::DetermineAspectRatio({kJustWide, kJustWide}, false, 0));
  EXPECT_EQ(kNarrow, Renderer::DetermineAspectRatio({kJustNarrow, kJustNarrow}, true, 0));
  ASSERT_LE(static_cast<double>(kJustNarrow), kFourteenNinths);
}

}  // namespace
