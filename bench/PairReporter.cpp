// PairReporter: the table as usual, the pairs at the end.
#include "PairReporter.h"

PairReporter::PairReporter(PeerOf peerOf, Line line)
    : ConsoleReporter(OO_Tabular), m_peerOf(std::move(peerOf)), m_line(std::move(line)) {}

void PairReporter::ReportRuns(const std::vector<Run>& runs) {
  ConsoleReporter::ReportRuns(runs);
  // One figure per case: its run, or with repetitions the mean (reported after the runs).
  for (const Run& run : runs) {
    const bool mean = run.run_type == Run::RT_Aggregate && run.aggregate_name == "mean";
    if (run.error_occurred || (run.run_type != Run::RT_Iteration && !mean)) continue;
    const double toMilliseconds = 1e3 / benchmark::GetTimeUnitMultiplier(run.time_unit);
    m_times[run.run_name.str()] = Times{run.GetAdjustedRealTime() * toMilliseconds,
                                        run.GetAdjustedCPUTime() * toMilliseconds};
  }
}

void PairReporter::Finalize() {
  ConsoleReporter::Finalize();
  for (const auto& [name, times] : m_times) {
    const std::string peerName = m_peerOf(name);
    if (peerName.empty()) continue;
    const auto peer = m_times.find(peerName);
    if (peer == m_times.end()) continue;
    m_line(name, times, peer->second);
  }
}
