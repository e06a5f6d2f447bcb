// The shared fixture of the GUI suites: each test gets a shown top-level frame and helpers to
// let the toolkit process its events, plus a log capture with the exact location of each line.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <wx/frame.h>
#include <wx/log.h>

// Runs pending events and idle handlers (deferred destruction included).
void PumpEvents();

// Pumps until `done` holds or `timeoutMs` has passed; returns whether it held.
bool PumpUntil(const std::function<bool()>& done, int timeoutMs = 3000);

// Shows `window` and waits until the toolkit has painted it once (mapped and exposed).
bool ShowAndWaitForPaint(wxWindow* window, int timeoutMs = 3000);

class WxTest : public ::testing::Test {
 protected:
  static constexpr int kFrameWidth = 320;
  static constexpr int kFrameHeight = 240;

  void SetUp() override;
  void TearDown() override;

  // A plain child window of the frame at a known place and size, the tile of most tests.
  wxWindow* MakeTile(const wxPoint& position, const wxSize& size);

  wxFrame* frame = nullptr;
};

// One captured log line.
struct LogLine {
  wxLogLevel level;
  std::string text;
  std::string file;
  std::string function;
};

// Captures every log line while alive, with verbose logging switched on; restores the
// previous target and verbosity afterwards.
class LogCapture : public wxLog {
 public:
  LogCapture();
  ~LogCapture() override;

  const std::vector<LogLine>& Lines() const { return m_lines; }
  std::vector<std::string> Texts() const;
  // Number of captured lines with exactly this text.
  int Count(const std::string& text) const;

 protected:
  void DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) override;

 private:
  std::vector<LogLine> m_lines;
  wxLog* m_previous;
  bool m_previousVerbose;
};
