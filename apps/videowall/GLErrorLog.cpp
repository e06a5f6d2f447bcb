// GLErrorLog: a log target in front of the previous one.
#include "GLErrorLog.h"

namespace {

constexpr size_t kLinesKept = 5;

}  // namespace

GLErrorLog::GLErrorLog()
    : m_previous(wxLog::SetActiveTarget(this)), m_previousVerbose(wxLog::GetVerbose()) {
  wxLog::SetVerbose(true);
}

GLErrorLog::~GLErrorLog() {
  wxLog::SetVerbose(m_previousVerbose);
  wxLog::SetActiveTarget(m_previous);
}

void GLErrorLog::DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) {
  if (msg.StartsWith("OpenGL Error")) {
    ++m_count;
    if (m_firstLines.size() < kLinesKept) m_firstLines.push_back(msg);
  }
  if (level <= wxLOG_Warning && m_previous) m_previous->LogRecord(level, msg, info);
}
