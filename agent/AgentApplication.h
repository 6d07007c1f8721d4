// Licence: MIT, see LICENSE.
/// The agent: a background application that listens for Apple events on a port of its own and
/// through the high-level-event queue, shows an alert when asked, and quits when nothing more
/// waits. All of it runs on the main thread.
#ifndef QUORVANT_AGENT_AGENTAPPLICATION_H
#define QUORVANT_AGENT_AGENTAPPLICATION_H

#include <Carbon/Carbon.h>
#include <quorvant/aemessaging/QRLPortAEMachPortListener.h>
#include <quorvant/util/QRLTypes.h>

/// The agent's own event class, and its one event: show the alert.
inline constexpr AEEventClass kAgentEventClass = 'QrlP';
inline constexpr AEEventID kAgentShowAlert = 'Mcam';

/// The alert's resource ID.
inline constexpr SInt16 kAgentAlertID = 138;

/// Whether a quit was asked for; what MyHandleEvent answers.
extern Boolean32 gQuit;

/// Whether the agent quits once it has served a request and no high-level event waits. On at the
/// start; the command line clears it.
extern Boolean32 gQuitWhenDone;

/// Listens on the agent's port; owned, null when there is none.
extern QRLPortAEMachPortListener* cmPortAEListener;

/// The whole life of the agent; returns the process's exit status, of which the host keeps the low
/// eight bits (-97, the port name is in use, becomes 159). "-keepRunning" and "-r" make it stay
/// until it is told to quit; any other argument is ignored.
int AgentMain(int argc, char** argv);

/// Makes this process known to the Toolbox.
void Initialize();

/// Creates the listener, listens on the agent's port and installs the handlers. The first failure
/// is returned and ends the work; the listener then waits for removeAEHandlers.
OSStatus installAEHandlers();

/// Installs the handlers of high-level events, and allows interaction for local clients. The first
/// failure is returned and ends the work.
OSStatus installNormalAEHandlers();

/// Destroys the listener, if there is one. The installed handlers stay. Returns 0.
OSStatus removeAEHandlers();

/// Hands an event that came on the port to its handler; errAEEventNotHandled for one that has none.
/// The refcon is not used.
SInt32 AgentAEDispatchCallback(UInt32 eventClass, UInt32 eventID, const AEDesc* event,
                               AEDesc* reply, void* refcon);

/// Ends the event loop, and a wait for the user's attention. Returns 0.
OSErr AEQuitHandler(const AppleEvent* event, AppleEvent* reply, SInt32 refcon);

/// Shows the alert, whether or not the user's attention could be had, and then quits if nothing
/// more waits. Returns 0.
OSErr AEMacamHandler(const AppleEvent* event, AppleEvent* reply, SInt32 refcon);

/// Serves one event during a wait for the user's attention; true ends the wait. Asks to be called
/// again as late as possible.
Boolean MyHandleEvent(EventRecord& event, SInt32& sleep, RgnHandle& mouseRegion);
Boolean MyAEIdleCallback(EventRecord* event, SInt32* sleep, RgnHandle* mouseRegion);

/// Ends the event loop if the agent is to quit when done and no high-level event waits. Returns 0.
OSStatus QuitIfNoEventsPending();

#endif
