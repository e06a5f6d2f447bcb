// Shared GUI fixture: frame per test, event pumping and log capture.
#include "WxTest.h"

#include <chrono>

#include <wx/app.h>
#include <wx/utils.h>
#include <wx/window.h>

void PumpEvents() {
  for (int i = 0; i < 3; ++i) {
    wxTheApp->ProcessPendingEvents();
    while (wxTheApp->Pending()) wxTheApp->Dispatch();
    wxTheApp->ProcessIdle();
  }
}

bool PumpUntil(const std::function<bool()>& done, int timeoutMs) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    PumpEvents();
    wxMilliSleep(2);
  }
  return true;
}

bool ShowAndWaitForPaint(wxWindow* window, int timeoutMs) {
  bool painted = false;
  auto onPaint = [&painted](wxPaintEvent& event) {
    painted = true;
    event.Skip();
  };
  window->Bind(wxEVT_PAINT, onPaint);
  window->Show();
  window->Refresh();
  const bool ok = PumpUntil([&painted] { return painted; }, timeoutMs);
  window->Unbind(wxEVT_PAINT, onPaint);
  return ok;
}

void WxTest::SetUp() {
  frame = new wxFrame(nullptr, wxID_ANY, "test", wxPoint(0, 0), wxDefaultSize);
  frame->SetClientSize(kFrameWidth, kFrameHeight);
  frame->SetBackgroundColour(*wxBLACK);
  ASSERT_TRUE(ShowAndWaitForPaint(frame)) << "the test frame was never painted";
}

void WxTest::TearDown() {
  if (frame) frame->Destroy();
  frame = nullptr;
  PumpEvents();
}

wxWindow* WxTest::MakeTile(const wxPoint& position, const wxSize& size) {
  auto* tile = new wxWindow(frame, wxID_ANY, position, size);
  tile->SetBackgroundColour(*wxBLACK);
  PumpEvents();
  return tile;
}

LogCapture::LogCapture()
    : m_previous(wxLog::SetActiveTarget(this)), m_previousVerbose(wxLog::GetVerbose()) {
  wxLog::SetVerbose(true);
}

LogCapture::~LogCapture() {
  wxLog::SetVerbose(m_previousVerbose);
  wxLog::SetActiveTarget(m_previous);
}

std::vector<std::string> LogCapture::Texts() const {
  std::vector<std::string> texts;
  for (const LogLine& line : m_lines) texts.push_back(line.text);
  return texts;
}

int LogCapture::Count(const std::string& text) const {
  int count = 0;
  for (const LogLine& line : m_lines) count += line.text == text ? 1 : 0;
  return count;
}

void LogCapture::DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) {
  m_lines.push_back(LogLine{level, msg.utf8_string(), info.filename ? info.filename : "",
                            info.func ? info.func : ""});
}
