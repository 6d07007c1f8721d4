/* Licence: MIT, see LICENSE. */
/*
 * Run loops: one a thread, which sleeps until something that the thread waits for happens and then
 * calls the function that goes with it.
 *
 * A loop runs in one mode at a time and serves what was added to that mode: sources (of version 0,
 * signalled by a program; of version 1, a port at which messages arrive), timers, and observers,
 * which are told what the loop is about to do. Each turn of a run does in this order: observers of
 * kCFRunLoopBeforeTimers and kCFRunLoopBeforeSources; the version-0 sources that are signalled;
 * unless a message is already there, observers of kCFRunLoopBeforeWaiting, sleep, observers of
 * kCFRunLoopAfterWaiting; the timers that are due; one message. Call-backs may run the loop again,
 * in the same or another mode: a timer or observer that is being called is not called again
 * meanwhile.
 *
 * Every call may be made from any thread, on any loop; those that run a loop run the calling
 * thread's. Call-backs are called on the loop's thread, `schedule` and `cancel` on the adding and
 * removing one, with no lock held. A loop ends with its thread; a reference that somebody keeps is
 * then good for nothing but CFRelease. A null or foreign reference has no effect, and gives null, 0
 * or false. So does a lack of memory.
 *
 * An `info` is retained by its context's function (if there is one) once at creation and released
 * once: by a source with its last reference, by a timer or observer when it is invalidated, a
 * call-back that is under way on another thread ending first.
 */
#ifndef COREFOUNDATION_CFRUNLOOP_H
#define COREFOUNDATION_CFRUNLOOP_H

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFString.h>
#include <mach/port.h>

typedef struct __CFRunLoop* CFRunLoopRef;
typedef struct __CFRunLoopSource* CFRunLoopSourceRef;
typedef struct __CFRunLoopObserver* CFRunLoopObserverRef;
typedef struct __CFRunLoopTimer* CFRunLoopTimerRef;

/* Why a run ended. */
enum {
  kCFRunLoopRunFinished = 1, /* the mode has no sources and no timers */
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4
};

/* What an observer is told, and wants to be told. */
typedef enum {
  kCFRunLoopEntry = 1 << 0,
  kCFRunLoopBeforeTimers = 1 << 1,
  kCFRunLoopBeforeSources = 1 << 2,
  kCFRunLoopBeforeWaiting = 1 << 5,
  kCFRunLoopAfterWaiting = 1 << 6,
  kCFRunLoopExit = 1 << 7,
  kCFRunLoopAllActivities = 0x0FFFFFFF
} CFRunLoopActivity;

/* A source that a program signals. All call-backs but perform may be null; sources of the same
 * perform are then equal if their infos are. `schedule` and `cancel` are told of each mode that the
 * source joins and leaves. */
typedef struct {
  CFIndex version; /* 0 */
  void* info;
  const void* (*retain)(const void* info);
  void (*release)(const void* info);
  CFStringRef (*copyDescription)(const void* info);
  Boolean (*equal)(const void* info1, const void* info2);
  CFHashCode (*hash)(const void* info);
  void (*schedule)(void* info, CFRunLoopRef runLoop, CFStringRef mode);
  void (*cancel)(void* info, CFRunLoopRef runLoop, CFStringRef mode);
  void (*perform)(void* info);
} CFRunLoopSourceContext;

/* A source that is a port. `getPort` names the receive right when the source joins a mode.
 * `perform` gets a message, good until it returns, and may return an answer in the same shape
 * (header, body, one descriptor), allocated from the allocator and its data by malloc, for the loop
 * to send to its msgh_remote_port without waiting, and to free. */
typedef struct {
  CFIndex version; /* 1 */
  void* info;
  const void* (*retain)(const void* info);
  void (*release)(const void* info);
  CFStringRef (*copyDescription)(const void* info);
  Boolean (*equal)(const void* info1, const void* info2);
  CFHashCode (*hash)(const void* info);
  mach_port_t (*getPort)(void* info);
  void* (*perform)(void* message, CFIndex size, CFAllocatorRef allocator, void* info);
} CFRunLoopSourceContext1;

typedef struct {
  CFIndex version; /* 0 */
  void* info;
  const void* (*retain)(const void* info);
  void (*release)(const void* info);
  CFStringRef (*copyDescription)(const void* info);
} CFRunLoopObserverContext;
typedef CFRunLoopObserverContext CFRunLoopTimerContext;

typedef void (*CFRunLoopObserverCallBack)(CFRunLoopObserverRef observer, CFRunLoopActivity activity,
                                          void* info);
typedef void (*CFRunLoopTimerCallBack)(CFRunLoopTimerRef timer, void* info);

EXTERN_API_BEGIN

extern const CFStringRef kCFRunLoopDefaultMode;
/* As the mode of adding, removing and asking: all modes of the common set, present and future. The
 * default mode is in it from the start. No mode to run in. */
extern const CFStringRef kCFRunLoopCommonModes;

CFTypeID CFRunLoopGetTypeID(void);
/* The calling thread's loop, made on first use. */
CFRunLoopRef CFRunLoopGetCurrent(void);
/* The loop of the process's first thread. */
CFRunLoopRef CFRunLoopGetMain(void);

/* Runs the calling thread's loop in the default mode until it is stopped or the mode is empty. */
void CFRunLoopRun(void);

/*
 * Runs the calling thread's loop in a mode for so many seconds and tells why it ended. With 0
 * seconds one turn is made that does not sleep and serves one source or timer, after one version-0
 * source. With returnAfterSourceHandled the run ends after a turn that served a source, serving one
 * of version 0 a turn. Sources are served by order; timers do not count as sources.
 */
SInt32 CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds,
                          Boolean returnAfterSourceHandled);

/* Ends the run that is innermost at this moment; while none is, the next run returns at once. */
void CFRunLoopStop(CFRunLoopRef runLoop);
/* Makes a sleeping loop take another turn. */
void CFRunLoopWakeUp(CFRunLoopRef runLoop);
/* Whether the loop sleeps. */
Boolean CFRunLoopIsWaiting(CFRunLoopRef runLoop);

/* The mode that the loop runs in, null if it does not run. */
CFStringRef CFRunLoopCopyCurrentMode(CFRunLoopRef runLoop);
/* The modes that something was ever added to, among them the default mode. */
CFArrayRef CFRunLoopCopyAllModes(CFRunLoopRef runLoop);
/* Adds a mode to the common set, for good, with everything that was added to the common modes. */
void CFRunLoopAddCommonMode(CFRunLoopRef runLoop, CFStringRef mode);
/* When the mode's next timer fires, 0 if it has none. */
CFAbsoluteTime CFRunLoopGetNextTimerFireDate(CFRunLoopRef runLoop, CFStringRef mode);

/*
 * A mode retains what is added to it, once however often it is added. A source may be in many modes
 * of many loops, a timer or observer in modes of one loop: adding it to another's has no effect.
 */
Boolean CFRunLoopContainsSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFStringRef mode);
void CFRunLoopAddSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFStringRef mode);
void CFRunLoopRemoveSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFStringRef mode);
Boolean CFRunLoopContainsObserver(CFRunLoopRef runLoop, CFRunLoopObserverRef observer,
                                  CFStringRef mode);
void CFRunLoopAddObserver(CFRunLoopRef runLoop, CFRunLoopObserverRef observer, CFStringRef mode);
void CFRunLoopRemoveObserver(CFRunLoopRef runLoop, CFRunLoopObserverRef observer, CFStringRef mode);
Boolean CFRunLoopContainsTimer(CFRunLoopRef runLoop, CFRunLoopTimerRef timer, CFStringRef mode);
void CFRunLoopAddTimer(CFRunLoopRef runLoop, CFRunLoopTimerRef timer, CFStringRef mode);
void CFRunLoopRemoveTimer(CFRunLoopRef runLoop, CFRunLoopTimerRef timer, CFStringRef mode);

/*
 * Sources. Those of lower order are served first. The context is copied; its version says which of
 * the two it is (null for any other, or without the call-back that is needed).
 */
CFTypeID CFRunLoopSourceGetTypeID(void);
CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef allocator, CFIndex order,
                                         CFRunLoopSourceContext* context);
CFIndex CFRunLoopSourceGetOrder(CFRunLoopSourceRef source);
/* Takes the source out of all modes of all loops; it never performs again. */
void CFRunLoopSourceInvalidate(CFRunLoopSourceRef source);
Boolean CFRunLoopSourceIsValid(CFRunLoopSourceRef source);
/* Set the version first: a context of another version is left alone. */
void CFRunLoopSourceGetContext(CFRunLoopSourceRef source, CFRunLoopSourceContext* context);
/* Has a version-0 source perform once, in the next turn of a loop that has it. A sleeping loop goes
 * on sleeping until it is woken. */
void CFRunLoopSourceSignal(CFRunLoopSourceRef source);

/*
 * Observers, called by order for the activities given; one that does not repeat is invalidated
 * after its first call. The context may be null.
 */
CFTypeID CFRunLoopObserverGetTypeID(void);
CFRunLoopObserverRef CFRunLoopObserverCreate(CFAllocatorRef allocator, CFOptionFlags activities,
                                             Boolean repeats, CFIndex order,
                                             CFRunLoopObserverCallBack callBack,
                                             CFRunLoopObserverContext* context);
CFOptionFlags CFRunLoopObserverGetActivities(CFRunLoopObserverRef observer);
Boolean CFRunLoopObserverDoesRepeat(CFRunLoopObserverRef observer);
CFIndex CFRunLoopObserverGetOrder(CFRunLoopObserverRef observer);
void CFRunLoopObserverInvalidate(CFRunLoopObserverRef observer);
Boolean CFRunLoopObserverIsValid(CFRunLoopObserverRef observer);
void CFRunLoopObserverGetContext(CFRunLoopObserverRef observer, CFRunLoopObserverContext* context);

/*
 * Timers, fired by date whatever their order. One with a positive interval fires at its first date
 * plus whole multiples of it, however late a call comes; dates that went by meanwhile are skipped.
 * Any other is invalidated after it fired. Setting the clock moves no timer. The context may be
 * null; flags are reserved.
 */
CFTypeID CFRunLoopTimerGetTypeID(void);
CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef allocator, CFAbsoluteTime fireDate,
                                       CFTimeInterval interval, CFOptionFlags flags, CFIndex order,
                                       CFRunLoopTimerCallBack callBack,
                                       CFRunLoopTimerContext* context);
/* 0 for a timer that is no longer valid. */
CFAbsoluteTime CFRunLoopTimerGetNextFireDate(CFRunLoopTimerRef timer);
/* Starts the timer's row of dates anew. */
void CFRunLoopTimerSetNextFireDate(CFRunLoopTimerRef timer, CFAbsoluteTime fireDate);
/* 0 for a timer that does not repeat. */
CFTimeInterval CFRunLoopTimerGetInterval(CFRunLoopTimerRef timer);
Boolean CFRunLoopTimerDoesRepeat(CFRunLoopTimerRef timer);
CFIndex CFRunLoopTimerGetOrder(CFRunLoopTimerRef timer);
void CFRunLoopTimerInvalidate(CFRunLoopTimerRef timer);
Boolean CFRunLoopTimerIsValid(CFRunLoopTimerRef timer);
void CFRunLoopTimerGetContext(CFRunLoopTimerRef timer, CFRunLoopTimerContext* context);

EXTERN_API_END

#endif
