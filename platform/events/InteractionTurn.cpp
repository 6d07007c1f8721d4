// Licence: MIT, see LICENSE.
//
// The turn is a name that one process registers a port under; whoever has the name has the turn.
// Who waits sends a message to that port that is never answered: when the port dies, with its
// process or because the turn is given up, each waiting process is told that there will be no
// answer, and tries to register. One wins, the others wait for that one's port.
#include "platform/events/InteractionTurn.h"

#include <mach/mach.h>
#include <servers/bootstrap.h>

#include <string>
#include <utility>

#include "platform/events/Interaction.h"
#include "platform/host/Clock.h"
#include "platform/host/SeqPacket.h"
#include "platform/mach/PortSpace.h"

namespace platform::events {
namespace {

constexpr char kFolder[] = "session";
constexpr mach_msg_id_t kWaiting = 0x77616974;  // 'wait'
// A message to a process that does not read any, and has room for one from everybody.
constexpr host::Nanoseconds kSendPatience = 1'000'000'000;

/// The user's ID keeps a look-up that falls back to the system's name space from finding the turn
/// of another session.
std::string turnName() { return "interaction." + std::to_string(host::effectiveUser()); }

}  // namespace

InteractionTurn& InteractionTurn::ours() {
  static InteractionTurn instance;
  return instance;
}

InteractionTurn::Answer InteractionTurn::take() {
  if (port != MACH_PORT_NULL) return Answer::kOurs;
  mach_port_name_t claim = MACH_PORT_NULL;
  if (mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &claim) != KERN_SUCCESS) {
    return Answer::kOurs;
  }
  const kern_return_t result = mach::registerIn(kFolder, turnName().c_str(), claim);
  if (result == KERN_SUCCESS) {
    port = claim;
    return Answer::kOurs;
  }
  mach_port_destroy(mach_task_self(), claim);
  const bool taken = result == BOOTSTRAP_NAME_IN_USE || result == BOOTSTRAP_SERVICE_ACTIVE;
  return taken ? Answer::kTaken : Answer::kOurs;
}

bool InteractionTurn::noticeEnd(mach_port_name_t replyPort) {
  mach_port_name_t holder = MACH_PORT_NULL;
  if (mach::lookUpIn(kFolder, turnName().c_str(), &holder) != KERN_SUCCESS) return false;
  const kern_return_t sent =
      mach::send(holder, replyPort, kWaiting, {}, host::Deadline::after(kSendPatience));
  mach_port_deallocate(mach_task_self(), holder);
  return sent == KERN_SUCCESS;
}

void InteractionTurn::release() {
  granted = false;
  const mach_port_name_t held = std::exchange(port, MACH_PORT_NULL);
  if (held != MACH_PORT_NULL) mach_port_destroy(mach_task_self(), held);
}

void InteractionTurn::loopIsIdle() {
  if (granted && presentations == 0) release();
}

void InteractionTurn::beginPresentation() {
  take();
  ++presentations;
}

void InteractionTurn::endPresentation() {
  if (--presentations == 0) release();
}

Presentation::Presentation() { InteractionTurn::ours().beginPresentation(); }

Presentation::~Presentation() { InteractionTurn::ours().endPresentation(); }

}  // namespace platform::events
