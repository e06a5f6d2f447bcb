// The worker of a tile: real H.264 from a synthetic camera through the real decoder, the
// hand-over to the GUI side, a source that goes away and comes back, and stopping.
#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include <gtest/gtest.h>

#include "MediaPacketSource.h"
#include "SyntheticPacketSource.h"
#include "TestHttpServer.h"
#include "TileFeed.h"
#include "WallMovie.h"

using namespace std::chrono_literals;

namespace {

// A synthetic camera that can be switched off: while off, opening fails; a camera switched
// off while playing ends its stream.
class SwitchableSource : public IPacketSource {
 public:
  explicit SwitchableSource(std::shared_ptr<std::atomic<bool>> on)
      : m_camera(320, 240, 0), m_on(std::move(on)) {}
  int Open() override { return *m_on ? m_camera.Open() : DECOMP_ERROR_OPEN_FAILED; }
  void Close() override { m_camera.Close(); }
  const VideoStreamInfo_t& StreamInfo() const override { return m_camera.StreamInfo(); }
  int ReadPacket(MediaPacket_t& packet) override {
    return *m_on ? m_camera.ReadPacket(packet) : DECOMP_END_OF_STREAM;
  }
  bool IsPaced() const override { return true; }
  std::string Location() const override { return "switchable"; }

 private:
  SyntheticPacketSource m_camera;
  std::shared_ptr<std::atomic<bool>> m_on;
};

bool WaitFor(const std::function<bool()>& done, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(5ms);
  }
  return true;
}

}  // namespace

TEST(TileFeedTest, DecodesTheSyntheticCameraAndHandsEachPictureOverOnce) {
  TileFeed feed(std::make_unique<SyntheticPacketSource>(320, 240, 0));
  int width = 0;
  double seconds = -1;
  const auto take = [&](CDecompressor& decoder, double time) {
    width = decoder.GetWidth();
    seconds = time;
  };
  ASSERT_TRUE(WaitFor([&] { return feed.TakePicture(take); }, 10s));
  EXPECT_EQ(FeedState::Playing, feed.State());
  EXPECT_EQ(320, width);
  EXPECT_GE(seconds, 0.0);
  EXPECT_FALSE(feed.TakePicture(take)) << "the same picture handed over twice";
  ASSERT_TRUE(WaitFor([&] { return feed.TakePicture(take); }, 1s));
  EXPECT_GE(feed.Received(), 2);
}

// In lockstep (the soak run) the worker waits for the GUI: every picture decoded is handed
// over, in order, none is dropped, and none is decoded ahead while the last waits.
TEST(TileFeedTest, InLockstepEveryPictureIsHandedOverAndNoneDecodedAhead) {
  TileFeed feed(std::make_unique<SyntheticPacketSource>(320, 240, 0), HandOver::Lockstep);
  std::vector<double> times;
  const auto take = [&](CDecompressor&, double seconds) { times.push_back(seconds); };
  for (int picture = 0; picture < 60; ++picture) {
    ASSERT_TRUE(WaitFor([&] { return feed.TakePicture(take); }, 10s)) << "picture " << picture;
  }
  ASSERT_TRUE(WaitFor([&] { return feed.Received() == 61; }, 10s));
  std::this_thread::sleep_for(200ms);
  EXPECT_EQ(61, feed.Received()) << "the next picture waits until this one is taken";
  EXPECT_EQ(0, feed.Dropped());
  for (size_t i = 1; i < times.size(); ++i) {
    EXPECT_NEAR(0.04, times[i] - times[i - 1], 1e-6) << "picture " << i << " follows the last";
  }
}

TEST(TileFeedTest, PicturesTheGuiDoesNotTakeAreDroppedNotQueued) {
  TileFeed feed(std::make_unique<SyntheticPacketSource>(320, 240, 0));
  ASSERT_TRUE(WaitFor([&] { return feed.Received() >= 5; }, 10s));
  EXPECT_GE(feed.Dropped(), feed.Received() - 2);
  int taken = 0;
  feed.TakePicture([&](CDecompressor&, double) { ++taken; });
  feed.TakePicture([&](CDecompressor&, double) { ++taken; });
  EXPECT_EQ(1, taken);
}

TEST(TileFeedTest, ALostSourceHasNoSignalAndPlaysAgainWhenItComesBack) {
  auto on = std::make_shared<std::atomic<bool>>(true);
  TileFeed feed(std::make_unique<SwitchableSource>(on));
  ASSERT_TRUE(WaitFor([&] { return feed.State() == FeedState::Playing; }, 10s));
  *on = false;
  ASSERT_TRUE(WaitFor([&] { return feed.State() == FeedState::NoSignal; }, 1s));
  const long long received = feed.Received();
  *on = true;
  ASSERT_TRUE(WaitFor([&] { return feed.State() == FeedState::Playing; }, 3s));
  EXPECT_GT(feed.Received(), received);
}

TEST(TileFeedTest, StoppingEndsAReconnectWaitAtOnce) {
  auto on = std::make_shared<std::atomic<bool>>(false);
  const auto start = std::chrono::steady_clock::now();
  {
    TileFeed feed(std::make_unique<SwitchableSource>(on));
    ASSERT_TRUE(WaitFor([&] { return feed.State() == FeedState::NoSignal; }, 1s));
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, 900ms);
}

// A live stream that ends is a lost source: no signal, then the next connection plays again.
TEST(TileFeedTest, AnHttpStreamThatEndsIsReconnectedAfterASecond) {
  const std::string path = WallMovie::TempPath("wall-stream.ts");
  ASSERT_TRUE(WallMovie::Write(path, 320, 240, 25));
  std::ifstream file(path, std::ios::binary);
  TestHttpServer server(std::vector<unsigned char>(std::istreambuf_iterator<char>(file), {}));
  TileFeed feed(std::make_unique<MediaPacketSource>(server.Url("camera.ts")));
  ASSERT_TRUE(WaitFor([&] { return feed.Received() >= 20; }, 10s));
  ASSERT_TRUE(WaitFor([&] { return feed.State() == FeedState::NoSignal; }, 6s));
  const long long firstConnection = feed.Received();
  ASSERT_TRUE(WaitFor([&] { return feed.Received() >= firstConnection + 20; }, 6s));
  std::remove(path.c_str());
}
