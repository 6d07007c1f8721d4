// Licence: MIT, see LICENSE.
// What qrl's exit status means; the man page and `qrl --help` say the same.
#ifndef TOOLS_QRL_EXITSTATUS_H
#define TOOLS_QRL_EXITSTATUS_H

#include <stdexcept>

namespace qrl {

enum ExitStatus : int {
  kDone = 0,
  kServerError = 1,  // the server answered with an error
  kUsage = 2,        // the command line makes no sense
  kBadData = 65,     // a file is not what it should be
  kNoInput = 66,     // a file is missing or may not be read
  kNoSuchName = 69,  // nobody alive holds the name or serial number; no such resource
  kHostFailed = 70,  // the host refused or failed; a line on stderr says how
  kServerGone = 76,  // the server went away before it answered
  kTimedOut = 124,
};

/// A command line that makes no sense; its text is the one line that the person reads.
class UsageError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace qrl

#endif
