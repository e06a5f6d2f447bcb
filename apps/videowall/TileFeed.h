// TileFeed: the worker thread of one tile, reading and decoding its source, and the hand-over
// of decoded pictures to the GUI thread.
//
// The worker opens the source and a CDecompressor, reads packets (paced to their own rate for
// files and synthetic cameras) and decodes them. The decoder is shared with the GUI thread
// under the feed's own lock: the GUI takes the latest picture with TakePicture, which never
// waits (when the worker is decoding it tries again on its next tick). A picture the GUI has
// not taken when the next one is decoded is dropped and counted. A lost source (failure to
// open, end of a live stream, a read error, or no picture for five seconds) turns the state
// to NoSignal; the worker then tries again after 1, 2, 4 ... 30 s, and playing again resets
// the wait. Stopping wakes every wait at once; a read in progress ends within the source's
// timeout. In lockstep (the wall's soak run) the worker decodes the next picture only once the
// GUI has taken the last, as fast as the GUI takes them, and no picture is dropped. It draws
// nothing and calls no toolkit function.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include <decompressor/CDecompressor.h>

#include "IPacketSource.h"
#include "PacketPacer.h"
#include "ReconnectBackoff.h"

enum class FeedState { Connecting, Playing, NoSignal };

enum class HandOver {
  Latest,    // pictures at the source's own pace; one the GUI has not taken in time is dropped
  Lockstep,  // the next picture is decoded once the GUI has taken the last, without pacing
};

class TileFeed {
 public:
  // Runs `copy` with the decoder and the picture's time in seconds of the stream.
  using PictureTaker = std::function<void(CDecompressor& decoder, double pictureSeconds)>;

  // Starts the worker at once.
  explicit TileFeed(std::unique_ptr<IPacketSource> source, HandOver handOver = HandOver::Latest);
  // Stops and joins the worker.
  ~TileFeed();
  TileFeed(const TileFeed&) = delete;
  TileFeed& operator=(const TileFeed&) = delete;

  // Asks the worker to end without waiting for it (so many feeds can stop together).
  void RequestStop();

  // GUI thread: when a picture arrived since the last call and the decoder is free, runs
  // `copy` under the lock and returns true; otherwise returns false at once.
  bool TakePicture(const PictureTaker& copy);

  FeedState State() const { return static_cast<FeedState>(m_state.load()); }
  long long Received() const { return m_received; }
  long long Dropped() const { return m_dropped; }
  std::string Location() const { return m_location; }

 private:
  void Run();
  bool Connect();
  // Plays until the source is lost or the feed stops.
  void Play();
  void Decode(const MediaPacket_t& packet);
  bool IsStalled() const;
  // Lockstep: waits until the GUI has taken the latest picture; false when the feed is stopping.
  bool WaitUntilTaken();
  // Waits until `due`; false when the feed is stopping.
  bool SleepUntil(std::chrono::steady_clock::time_point due);
  bool IsStopping() const { return m_stopping; }
  void SetState(FeedState state) { m_state = static_cast<int>(state); }

  std::unique_ptr<IPacketSource> m_source;
  const std::string m_location;
  const HandOver m_handOver;
  PacketPacer m_pacer;
  ReconnectBackoff m_backoff;
  std::chrono::steady_clock::time_point m_lastPicture;

  std::mutex m_decoderLock;  // guards m_decoder and m_secondsPerTick, and every change of m_fresh
  CDecompressor m_decoder;
  std::atomic<bool> m_fresh{false};  // read without the lock by a worker waiting in lockstep
  double m_secondsPerTick = 0;

  // A FeedState, held as an int: GCC 12's ThreadSanitizer build reads a std::atomic of an enum
  // class from a wrong address.
  std::atomic<int> m_state{static_cast<int>(FeedState::Connecting)};
  std::atomic<long long> m_received{0};
  std::atomic<long long> m_dropped{0};

  std::mutex m_wakeLock;
  std::condition_variable m_wake;
  std::atomic<bool> m_stopping{false};
  std::thread m_thread;
};
