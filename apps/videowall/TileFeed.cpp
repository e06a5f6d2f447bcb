// TileFeed: read, pace, decode; hand over under the feed's lock; reconnect with back-off.
#include "TileFeed.h"

namespace {

constexpr std::chrono::seconds kStallLimit{5};

}  // namespace

TileFeed::TileFeed(std::unique_ptr<IPacketSource> source, HandOver handOver)
    : m_source(std::move(source)),
      m_location(m_source->Location()),
      m_handOver(handOver),
      m_thread(&TileFeed::Run, this) {}

TileFeed::~TileFeed() {
  RequestStop();
  m_thread.join();
}

void TileFeed::RequestStop() {
  {
    const std::lock_guard<std::mutex> guard(m_wakeLock);
    m_stopping = true;
  }
  m_wake.notify_all();
}

bool TileFeed::TakePicture(const PictureTaker& copy) {
  {
    const std::unique_lock<std::mutex> guard(m_decoderLock, std::try_to_lock);
    if (!guard.owns_lock() || !m_fresh) return false;
    m_fresh = false;
    copy(m_decoder, static_cast<double>(m_decoder.GetPts()) * m_secondsPerTick);
  }
  if (m_handOver == HandOver::Lockstep) {
    // Taken under the wait's lock, so a worker about to wait cannot miss the news.
    { const std::lock_guard<std::mutex> wake(m_wakeLock); }
    m_wake.notify_all();
  }
  return true;
}

void TileFeed::Run() {
  while (!IsStopping()) {
    if (Connect()) Play();
    m_source->Close();
    if (IsStopping()) return;
    SetState(FeedState::NoSignal);
    SleepUntil(std::chrono::steady_clock::now() + m_backoff.Next());
  }
}

bool TileFeed::Connect() {
  if (m_source->Open() != DECOMP_OK) return false;
  const VideoStreamInfo_t& info = m_source->StreamInfo();
  m_pacer.SetTimeBase(info.timeBaseNum, info.timeBaseDen);
  m_pacer.Restart();
  m_lastPicture = std::chrono::steady_clock::now();
  const std::lock_guard<std::mutex> guard(m_decoderLock);
  m_secondsPerTick =
      info.timeBaseDen > 0 ? static_cast<double>(info.timeBaseNum) / info.timeBaseDen : 0;
  return m_decoder.Open(info) == DECOMP_OK;
}

void TileFeed::Play() {
  MediaPacket_t packet;
  while (!IsStopping() && !IsStalled()) {
    if (m_source->ReadPacket(packet) != DECOMP_OK) return;
    const auto now = std::chrono::steady_clock::now();
    const bool paced = m_source->IsPaced() && m_handOver == HandOver::Latest;
    if (paced && !SleepUntil(m_pacer.DueTime(packet.pts, now))) return;
    Decode(packet);
    if (m_handOver == HandOver::Lockstep && !WaitUntilTaken()) return;
  }
}

void TileFeed::Decode(const MediaPacket_t& packet) {
  {
    const std::lock_guard<std::mutex> guard(m_decoderLock);
    const int pictures =
        m_decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts);
    if (pictures <= 0) return;
    if (m_fresh) ++m_dropped;
    m_fresh = true;
  }
  ++m_received;
  m_lastPicture = std::chrono::steady_clock::now();
  if (State() != FeedState::Playing) m_backoff.Reset();
  SetState(FeedState::Playing);
}

bool TileFeed::IsStalled() const {
  return std::chrono::steady_clock::now() - m_lastPicture > kStallLimit;
}

// The time spent waiting is the GUI's, not the source's: it does not count towards a stall.
bool TileFeed::WaitUntilTaken() {
  std::unique_lock<std::mutex> guard(m_wakeLock);
  m_wake.wait(guard, [this] { return IsStopping() || !m_fresh; });
  m_lastPicture = std::chrono::steady_clock::now();
  return !IsStopping();
}

bool TileFeed::SleepUntil(std::chrono::steady_clock::time_point due) {
  std::unique_lock<std::mutex> guard(m_wakeLock);
  return !m_wake.wait_until(guard, due, [this] { return IsStopping(); });
}
