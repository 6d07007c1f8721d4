// Licence: MIT, see LICENSE.
#include <AE/AppleEvents.h>

#include "tools/qrl/Commands.h"

namespace qrl {

ExitStatus run(const QuitCommand& command) {
  SendCommand send;
  send.port = command.port;
  send.eventClass = kCoreEventClass;
  send.eventID = kAEQuitApplication;
  send.timeout = command.timeout;
  return run(send);
}

}  // namespace qrl
