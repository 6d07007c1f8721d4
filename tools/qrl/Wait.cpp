// Licence: MIT, see LICENSE.
#include <servers/bootstrap.h>

#include "platform/mach/NameList.h"
#include "tools/qrl/Commands.h"
#include "tools/qrl/Errors.h"
#include "tools/qrl/Output.h"

namespace qrl {
namespace {

using platform::host::Deadline;
using platform::host::Nanoseconds;

Deadline deadlineAfter(Seconds span) {
  if (span.count() == 0) return Deadline::immediate();
  return Deadline::after(static_cast<Nanoseconds>(span.count() * 1e9));
}

}  // namespace

ExitStatus run(const WaitCommand& command) {
  constexpr const char* kFolder = platform::mach::kBootstrapFolder;
  const Deadline deadline = deadlineAfter(command.timeout);
  const char* name = command.name.c_str();
  kern_return_t result = command.gone ? platform::mach::waitForEnd(kFolder, name, deadline)
                                      : platform::mach::waitForName(kFolder, name, deadline);
  if (result == KERN_SUCCESS) return kDone;
  if (result == MACH_RCV_TIMED_OUT) {
    return fail(kTimedOut,
                command.name + (command.gone ? " did not go" : " did not appear") + " in time");
  }
  if (result == BOOTSTRAP_NOT_PRIVILEGED) return kHostFailed;  // the refusal has its own line
  return fail(kHostFailed, "cannot wait for " + command.name + ": " + describeError(result));
}

}  // namespace qrl
