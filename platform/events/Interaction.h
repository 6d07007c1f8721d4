// Licence: MIT, see LICENSE.
// This process's part in the session's interaction with its user, for those who show something.
// Main thread.
//
// Only one process of a session interacts with the user at a time: it has the turn, until it gives
// it up or dies. AEInteractWithUser waits for the turn; whatever is then shown holds it.
#ifndef PLATFORM_EVENTS_INTERACTION_H
#define PLATFORM_EVENTS_INTERACTION_H

#include <HIToolbox/Notification.h>

namespace platform::events {

/// Something that is up and waits for the user. Takes the turn if it can be had at once and keeps
/// it while it exists; with the last of several it is given up. Where another process has the turn
/// this is without effect: a program that shows an alert without waiting for its turn shows it.
class Presentation final {
 public:
  Presentation();
  ~Presentation();
  Presentation(const Presentation&) = delete;
  Presentation& operator=(const Presentation&) = delete;
};

/// How a notice is posted while AEInteractWithUser waits. The manager of notices, which stands
/// above this one, says so when the program starts; until then none is posted.
struct NoticeCalls {
  OSErr (*install)(NMRecPtr record);
  OSErr (*remove)(NMRecPtr record);
};
void setNoticeCalls(NoticeCalls calls);

}  // namespace platform::events

#endif
