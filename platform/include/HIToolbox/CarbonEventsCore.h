/* Licence: MIT, see LICENSE. */
/* The application's event loop. Main thread. */
#ifndef HITOOLBOX_CARBONEVENTSCORE_H
#define HITOOLBOX_CARBONEVENTSCORE_H

#include <CarbonCore/ConditionalMacros.h>

EXTERN_API_BEGIN

/*
 * Runs the application until QuitApplicationEventLoop is called: the main run loop in its default
 * mode, and the high-level events of the queue, each of which goes to AEProcessAppleEvent. Both get
 * their turn, however busy the other is. Events that arrive while a handler runs a loop of its own
 * stay in the queue until the handler returns. Returns at once if the quit came before.
 */
void RunApplicationEventLoop(void);

/*
 * Makes RunApplicationEventLoop return once the call-back that is under way has returned, and the
 * next one if none runs. A run loop that a call-back runs inside goes on until it ends by itself.
 * Any thread.
 */
void QuitApplicationEventLoop(void);

EXTERN_API_END

#endif
