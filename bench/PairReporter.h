// PairReporter: Google Benchmark's console table, and after it one line per case that has a
// peer in the same run (a facade case and the same work on the back-end, a GetImage case and
// a memcpy of the same bytes), comparing their times. With --benchmark_repetitions the means
// are compared. Which case is whose peer, and how a line reads, the program says; this class
// only collects the times and pairs them. It measures nothing itself.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

class PairReporter : public benchmark::ConsoleReporter {
 public:
  // A case's times per iteration, in milliseconds.
  struct Times {
    double real = 0;
    double cpu = 0;
  };
  // The run name of `name`'s peer, or "" for a case without one.
  using PeerOf = std::function<std::string(const std::string& name)>;
  // Prints the line of a case and its peer.
  using Line = std::function<void(const std::string& name, const Times& times, const Times& peer)>;

  PairReporter(PeerOf peerOf, Line line);

  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  PeerOf m_peerOf;
  Line m_line;
  std::map<std::string, Times> m_times;
};
