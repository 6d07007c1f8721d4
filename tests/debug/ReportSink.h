// Licence: MIT, see LICENSE.
// Where reports go under test: the calls to syslog, Debugger and NMInstall are caught by the linker
// and kept here in their order.
#ifndef TESTS_DEBUG_REPORTSINK_H
#define TESTS_DEBUG_REPORTSINK_H

#include <Carbon/Carbon.h>

#include <string>
#include <vector>

namespace tests {

struct ReportSink {
  std::vector<std::string> events;  // "log 1028: text", "debugger", "notice"
  std::vector<NMRecPtr> notices;
  OSErr noticeResult = noErr;
  bool postNotices = false;  // hand notices on to the real Notification Manager
};

/// The one sink of this program.
ReportSink& reportSink();

}  // namespace tests

#endif
