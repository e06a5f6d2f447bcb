// GLErrorLog: counts the GL errors the renderer library reports, for as long as it lives.
//
// The library reports every GL error it finds as a verbose log line beginning "OpenGL Error";
// this log target switches verbose logging on, counts those lines and keeps the first few, and
// passes warnings and errors of any kind on to the log target it replaced (the rest of the
// verbose chatter is dropped). It looks for nothing else and changes nothing in the library.
#pragma once

#include <vector>

#include <wx/log.h>

class GLErrorLog : public wxLog {
 public:
  GLErrorLog();
  // Puts the previous log target and verbosity back.
  ~GLErrorLog() override;
  GLErrorLog(const GLErrorLog&) = delete;
  GLErrorLog& operator=(const GLErrorLog&) = delete;

  long long Count() const { return m_count; }
  // The first lines counted, as logged.
  const std::vector<wxString>& FirstLines() const { return m_firstLines; }

 protected:
  void DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) override;

 private:
  wxLog* m_previous;
  bool m_previousVerbose;
  long long m_count = 0;
  std::vector<wxString> m_firstLines;
};
