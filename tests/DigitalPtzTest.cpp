// Digital PTZ geometry: aspect ratio in effect, letterbox and pillarbox placement, the zoom
// window and its clamping, and the slot that names the PTZ in effect.
#include <climits>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include <decompressor/CDigitalPTZ.h>
#include <decompressor/CDigitalPTZType.h>
#include <decompressor/NormalDigitalPTZ.h>

// Lets failures print rectangles as numbers.
void PrintTo(const PtzRect& r, std::ostream* os) {
  *os << "(" << r.x << ", " << r.y << ", " << r.width << ", " << r.height << ")";
}

namespace {

PtzRect Destination(const NormalDigitalPTZ& ptz, float aspect) {
  PtzRect r;
  ptz.GetDestinationRect(aspect, r.x, r.y, r.width, r.height);
  return r;
}

struct Adjusted {
  PtzRect source;
  PtzRect destination;
};

Adjusted AdjustedRects(const NormalDigitalPTZ& ptz) {
  Adjusted a;
  ptz.GetAdjustedRects(a.source.x, a.source.y, a.source.width, a.source.height, a.destination.x,
                       a.destination.y, a.destination.width, a.destination.height);
  return a;
}

class NormalPtzTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ptz.SetSize(1920, 1080);
    ptz.SetClientSize(800, 800);
  }
  NormalDigitalPTZ ptz;
};

}  // namespace

TEST(DigitalPtz, StartsDisabledUnzoomedAndInactive) {
  CDigitalPTZ ptz;
  float pan, tilt, zoom;
  ptz.GetPanTiltZoom(pan, tilt, zoom);
  EXPECT_FALSE(ptz.enabled);
  EXPECT_EQ(0.0f, pan);
  EXPECT_EQ(0.0f, tilt);
  EXPECT_EQ(1.0f, zoom);
  EXPECT_FALSE(ptz.GetZoomActive());
  EXPECT_EQ(CDigitalPTZ::kDefaultMaxZoom, ptz.GetMaxZoom());
  EXPECT_FALSE(ptz.IsActive());
}

TEST(DigitalPtz, IsActiveOnlyWhenEnabledAndZoomedIn) {
  CDigitalPTZ ptz;
  ptz.SetPanTiltZoom(0, 0, 2);
  EXPECT_FALSE(ptz.IsActive());
  ptz.enabled = true;
  EXPECT_TRUE(ptz.IsActive());
  ptz.SetPanTiltZoom(0.5f, 0, 1);
  EXPECT_FALSE(ptz.IsActive());
}

TEST(DigitalPtz, KeepsSettingsAsSet) {
  CDigitalPTZ ptz;
  ptz.SetPanTiltZoom(-3.0f, 0.25f, 40.0f);
  ptz.SetZoomActive(true);
  ptz.SetMaxZoom(8.0f);
  float pan, tilt, zoom;
  ptz.GetPanTiltZoom(pan, tilt, zoom);
  EXPECT_EQ(-3.0f, pan);
  EXPECT_EQ(0.25f, tilt);
  EXPECT_EQ(40.0f, zoom);
  EXPECT_TRUE(ptz.GetZoomActive());
  EXPECT_EQ(8.0f, ptz.GetMaxZoom());
}

TEST(DigitalPtz, ZoomWindowOfEmptyRegionIsEmpty) {
  CDigitalPTZ ptz;
  ptz.SetPanTiltZoom(0, 0, 2);
  EXPECT_TRUE(ptz.GetZoomWindow(PtzRect{0, 0, 0, 100}).IsEmpty());
}

TEST(DigitalPtz, ZoomWindowIsAtLeastOnePixel) {
  CDigitalPTZ ptz;
  ptz.SetMaxZoom(1000.0f);
  ptz.SetPanTiltZoom(1, 1, 1000.0f);
  EXPECT_EQ((PtzRect{9, 9, 1, 1}), ptz.GetZoomWindow(PtzRect{0, 0, 10, 10}));
}

// Found by the fuzzer: the window's last position (start + span - size) was summed in int.
TEST(DigitalPtz, ZoomWindowOfARegionReachingPastTheIntLimitStaysInsideIt) {
  CDigitalPTZ ptz;
  for (float pan : {-1.0f, 0.0f, 1.0f}) {
    ptz.SetPanTiltZoom(pan, pan, 1.0f);
    const PtzRect window = ptz.GetZoomWindow(PtzRect{INT_MAX - 10, INT_MAX - 3, 55, 20});
    EXPECT_EQ(55, window.width);
    EXPECT_EQ(20, window.height);
    EXPECT_LE(static_cast<long long>(window.x) + window.width, INT_MAX) << pan;
    EXPECT_LE(static_cast<long long>(window.y) + window.height, INT_MAX) << pan;
    EXPECT_GE(window.x, INT_MAX - 55) << pan;
  }
}

TEST_F(NormalPtzTest, CurrentAspectRatioIsTheVideoShapeWithoutAForcedRatio) {
  EXPECT_FLOAT_EQ(1920.0f / 1080.0f, ptz.GetCurrentAspectRatio());
}

TEST_F(NormalPtzTest, CurrentAspectRatioIsTheForcedRatioWhenSet) {
  ptz.SetAspectRatio(1.25f);
  EXPECT_FLOAT_EQ(1.25f, ptz.GetCurrentAspectRatio());
  EXPECT_FLOAT_EQ(1.25f, ptz.GetAspectRatio());
}

TEST_F(NormalPtzTest, CurrentAspectRatioIsZeroWithoutVideoHeight) {
  ptz.SetSize(640, 0);
  EXPECT_EQ(0.0f, ptz.GetCurrentAspectRatio());
}

TEST_F(NormalPtzTest, WideVideoInSquareClientIsLetterboxed) {
  EXPECT_EQ((PtzRect{0, 175, 800, 450}), Destination(ptz, ptz.GetCurrentAspectRatio()));
}

TEST_F(NormalPtzTest, NarrowVideoInWideClientIsPillarboxed) {
  ptz.SetSize(640, 480);
  ptz.SetClientSize(800, 450);
  EXPECT_EQ((PtzRect{100, 0, 600, 450}), Destination(ptz, ptz.GetCurrentAspectRatio()));
}

TEST_F(NormalPtzTest, ForcedRatioShapesTheDestination) {
  ptz.SetSize(640, 480);
  ptz.SetAspectRatio(16.0f / 9.0f);
  EXPECT_EQ((PtzRect{0, 175, 800, 450}), Destination(ptz, ptz.GetCurrentAspectRatio()));
}

TEST_F(NormalPtzTest, IgnoredRatioFillsTheClient) {
  ptz.SetIgnoreAspectRatio(true);
  EXPECT_TRUE(ptz.GetIgnoreAspectRatio());
  EXPECT_EQ((PtzRect{0, 0, 800, 800}), Destination(ptz, ptz.GetCurrentAspectRatio()));
}

TEST_F(NormalPtzTest, UnusableAspectFillsTheClient) {
  EXPECT_EQ((PtzRect{0, 0, 800, 800}), Destination(ptz, 0.0f));
  EXPECT_EQ((PtzRect{0, 0, 800, 800}), Destination(ptz, -1.0f));
  EXPECT_EQ((PtzRect{0, 0, 800, 800}), Destination(ptz, 1.0f / 0.0f));
}

// Found by the fuzzer: a client INT_MAX wide and 25 high with an aspect just under its own
// made the width a float product that rounded past INT_MAX, and the bars' width overflowed.
TEST_F(NormalPtzTest, AClientAtTheIntLimitKeepsTheDestinationInsideIt) {
  ptz.SetClientSize(INT_MAX, 25);
  const PtzRect wide = Destination(ptz, 85899344.0f);
  EXPECT_EQ(25, wide.height);
  EXPECT_GE(wide.x, 0);
  EXPECT_GT(wide.width, INT_MAX - 64);
  EXPECT_LE(static_cast<long long>(wide.x) + wide.width, INT_MAX);
  ptz.SetClientSize(25, INT_MAX);
  const PtzRect tall = Destination(ptz, 1.0f / 85899344.0f);
  EXPECT_EQ(25, tall.width);
  EXPECT_GE(tall.y, 0);
  EXPECT_LE(static_cast<long long>(tall.y) + tall.height, INT_MAX);
}

TEST_F(NormalPtzTest, ZoomOneShowsTheWholePicture) {
  const Adjusted a = AdjustedRects(ptz);
  EXPECT_EQ((PtzRect{0, 0, 1920, 1080}), a.source);
  EXPECT_EQ((PtzRect{0, 175, 800, 450}), a.destination);
}

TEST_F(NormalPtzTest, ZoomTwoCentredShowsTheMiddleQuarter) {
  ptz.SetPanTiltZoom(0, 0, 2);
  const Adjusted a = AdjustedRects(ptz);
  EXPECT_EQ((PtzRect{480, 270, 960, 540}), a.source);
  EXPECT_EQ((PtzRect{0, 175, 800, 450}), a.destination);
}

TEST_F(NormalPtzTest, ZoomTwoPannedToEachEdge) {
  ptz.SetPanTiltZoom(-1, 0, 2);
  EXPECT_EQ((PtzRect{0, 270, 960, 540}), AdjustedRects(ptz).source);
  ptz.SetPanTiltZoom(1, 0, 2);
  EXPECT_EQ((PtzRect{960, 270, 960, 540}), AdjustedRects(ptz).source);
  ptz.SetPanTiltZoom(0, -1, 2);
  EXPECT_EQ((PtzRect{480, 0, 960, 540}), AdjustedRects(ptz).source);
  ptz.SetPanTiltZoom(0, 1, 2);
  EXPECT_EQ((PtzRect{480, 540, 960, 540}), AdjustedRects(ptz).source);
}

TEST_F(NormalPtzTest, PanBeyondTheEdgeIsClampedInsideTheVideo) {
  ptz.SetPanTiltZoom(7, -9, 2);
  EXPECT_EQ((PtzRect{960, 0, 960, 540}), AdjustedRects(ptz).source);
}

TEST_F(NormalPtzTest, HalfPanMovesTheCentreHalfway) {
  ptz.SetPanTiltZoom(0.5f, 0, 4);  // centre at x = 1440, window 480 wide
  EXPECT_EQ((PtzRect{1200, 405, 480, 270}), AdjustedRects(ptz).source);
}

TEST_F(NormalPtzTest, ZoomIsClampedBetweenOneAndTheMaximum) {
  ptz.SetMaxZoom(4);
  ptz.SetPanTiltZoom(0, 0, 10);
  EXPECT_EQ((PtzRect{720, 405, 480, 270}), AdjustedRects(ptz).source);
  ptz.SetPanTiltZoom(0, 0, 0.25f);
  EXPECT_EQ((PtzRect{0, 0, 1920, 1080}), AdjustedRects(ptz).source);
}

TEST_F(NormalPtzTest, ZoomWorksInsideTheSourceRectangle) {
  ptz.SetSourceRect(0, 0, 960, 540);
  ptz.SetPanTiltZoom(0, 0, 2);
  EXPECT_EQ((PtzRect{240, 135, 480, 270}), AdjustedRects(ptz).source);
  int x, y, w, h;
  ptz.GetSourceRect(x, y, w, h);
  EXPECT_EQ((PtzRect{0, 0, 960, 540}), (PtzRect{x, y, w, h}));
}

TEST_F(NormalPtzTest, SourceRectangleIsClippedToTheVideo) {
  ptz.SetSourceRect(1800, 1000, 400, 400);
  EXPECT_EQ((PtzRect{1800, 1000, 120, 80}), AdjustedRects(ptz).source);
  ptz.SetSourceRect(5000, 5000, 10, 10);  // wholly outside: the whole video
  EXPECT_EQ((PtzRect{0, 0, 1920, 1080}), AdjustedRects(ptz).source);
}

// The region's far edge is summed wide: near the int limit it is the video's edge.
TEST_F(NormalPtzTest, SourceRectangleReachingPastTheIntLimitIsClippedToTheVideo) {
  ptz.SetSourceRect(960, 540, INT_MAX, INT_MAX);
  EXPECT_EQ((PtzRect{960, 540, 960, 540}), AdjustedRects(ptz).source);
}

TEST_F(NormalPtzTest, SquareRegionIsShownSquare) {
  ptz.SetSourceRect(420, 0, 1080, 1080);
  const Adjusted a = AdjustedRects(ptz);
  EXPECT_EQ((PtzRect{420, 0, 1080, 1080}), a.source);
  EXPECT_EQ((PtzRect{0, 0, 800, 800}), a.destination);
}

TEST_F(NormalPtzTest, ZoomedPictureKeepsAForcedRatio) {
  ptz.SetSize(640, 480);
  ptz.SetAspectRatio(16.0f / 9.0f);
  ptz.SetPanTiltZoom(0, 0, 2);
  const Adjusted a = AdjustedRects(ptz);
  EXPECT_EQ((PtzRect{160, 120, 320, 240}), a.source);
  EXPECT_EQ((PtzRect{0, 175, 800, 450}), a.destination);
}

TEST(DigitalPtzType, PointsAtItsOwnDefaultAfterReset) {
  CDigitalPTZType slot;
  EXPECT_EQ(nullptr, slot.Get());
  auto owned = std::make_unique<NormalDigitalPTZ>();
  CDigitalPTZ* raw = owned.get();
  slot.Reset(std::move(owned));
  EXPECT_EQ(raw, slot.Get());
  slot.Reset(nullptr);
  EXPECT_EQ(nullptr, slot.Get());
}

TEST(DigitalPtzType, LentPtzReplacesTheDefaultUntilCleared) {
  CDigitalPTZType slot;
  slot.Reset(std::make_unique<CDigitalPTZ>());
  CDigitalPTZ* own = slot.Get();
  CDigitalPTZ lent;
  slot.Set(&lent);
  EXPECT_EQ(&lent, slot.Get());
  slot.Set(nullptr);
  EXPECT_EQ(own, slot.Get());
}

TEST(DigitalPtzType, SetFromAnotherSlotSharesALentPtzButNeverAnotherDefault) {
  CDigitalPTZType first;
  CDigitalPTZType second;
  first.Reset(std::make_unique<CDigitalPTZ>());
  second.Reset(std::make_unique<CDigitalPTZ>());
  CDigitalPTZ* secondOwn = second.Get();

  second.Set(first);
  EXPECT_EQ(secondOwn, second.Get());

  CDigitalPTZ lent;
  first.Set(&lent);
  second.Set(first);
  EXPECT_EQ(&lent, second.Get());
}

TEST(DigitalPtz, IsActiveIsTheFirstOperationAfterTheDestructor) {
  // Itanium ABI: a virtual member pointer holds 1 + the byte offset of its table entry, and the
  // destructor takes the first two entries.
  auto pointer = &CDigitalPTZ::IsActive;
  std::ptrdiff_t raw[2];
  std::memcpy(raw, &pointer, sizeof(raw));
  EXPECT_EQ(2, (raw[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}
