// Verbose logging for the whole library.
//
// Every message goes to the toolkit's log at the verbose information level (shown only when
// verbose logging is on), with the source file and function given as its location, so hosts
// and tests can tell where a line came from without the build's absolute paths.
#pragma once

#include <wx/log.h>
#include <wx/string.h>

inline void LogVerbose(const char* source, const char* function, const wxString& text) {
  if (wxLog::IsLevelEnabled(wxLOG_Info, wxLOG_COMPONENT) && wxLog::GetVerbose()) {
    wxLogger(wxLOG_Info, source, 0, function, wxLOG_COMPONENT).Log("%s", text);
  }
}
