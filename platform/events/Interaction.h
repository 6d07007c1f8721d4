// Licence: MIT, see LICENSE.
// This process's part in the session's interaction with its user, for those who show something.
// Main thread.
//
// Only one process of a session interacts with the user at a time: it has the turn, until it gives
// it up or dies. AEInteractWithUser waits for the turn, and so does what is shown without it;
// whatever is up holds it.
#ifndef PLATFORM_EVENTS_INTERACTION_H
#define PLATFORM_EVENTS_INTERACTION_H

#include <HIToolbox/Notification.h>

#include <functional>

namespace platform::events {

/// Waits until this process has the turn, so that what two processes want to show at once comes one
/// after the other. The main loop goes on meanwhile; after everything that it has served `givesUp`
/// is asked whether there is still something to wait for. False when it says so. Nobody waits off
/// the main thread, or where it cannot be told who has the turn.
bool awaitTurn(const std::function<bool()>& givesUp);

/// Something that is up and waits for the user. Takes the turn if it can be had at once and keeps
/// it while it exists; with the last of several it is given up.
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
