// Licence: MIT, see LICENSE.
// The session's turn at interacting with its user, as this process sees it. Main thread.
#ifndef PLATFORM_EVENTS_INTERACTIONTURN_H
#define PLATFORM_EVENTS_INTERACTIONTURN_H

#include <mach/port.h>

namespace platform::events {

class InteractionTurn final {
 public:
  static InteractionTurn& ours();

  InteractionTurn(const InteractionTurn&) = delete;
  InteractionTurn& operator=(const InteractionTurn&) = delete;

  enum class Answer { kOurs, kTaken };
  /// Takes the turn, if this process does not have it and no other does. Where it cannot be told
  /// who has it, nobody is kept waiting: kOurs.
  Answer take();

  /// Has a message come to a port of ours when whoever has the turn gives it up or dies. False when
  /// nobody seems to have it any more.
  bool noticeEnd(mach_port_name_t replyPort);

  /// The turn is to be used: it lasts until something was presented, or the loop is idle.
  void grant() { granted = true; }
  void loopIsIdle();

  void beginPresentation();
  void endPresentation();

 private:
  InteractionTurn() = default;
  void release();

  mach_port_name_t port = MACH_PORT_NULL;  // registered while we have the turn
  int presentations = 0;
  bool granted = false;
};

}  // namespace platform::events

#endif
