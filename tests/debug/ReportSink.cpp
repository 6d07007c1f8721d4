// Licence: MIT, see LICENSE.
#include "tests/debug/ReportSink.h"

#include <cstdarg>
#include <cstdio>

namespace tests {

ReportSink& reportSink() {
  static ReportSink sink;
  return sink;
}

}  // namespace tests

extern "C" {

OSErr __real_NMInstall(NMRecPtr record);

void __wrap_syslog(int priority, const char* format, ...) {
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  tests::reportSink().events.push_back("log " + std::to_string(priority) + ": " + text);
}

void __wrap_Debugger() { tests::reportSink().events.push_back("debugger"); }

OSErr __wrap_NMInstall(NMRecPtr record) {
  tests::ReportSink& sink = tests::reportSink();
  sink.events.push_back("notice");
  sink.notices.push_back(record);
  return sink.postNotices ? __real_NMInstall(record) : sink.noticeResult;
}

}  // extern "C"
