// Licence: MIT, see LICENSE.
#ifndef QUORVANT_AEMESSAGING_QRLPORTAEMACHPORTLISTENER_H
#define QUORVANT_AEMESSAGING_QRLPORTAEMACHPORTLISTENER_H

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <mach/mach.h>
#include <quorvant/util/QRLExport.h>
#include <servers/bootstrap.h>

/// Handles one Apple event. Its result, when it is not 0, becomes the reply's "errn". Event and
/// reply belong to the listener; parameters may be put into the reply.
typedef SInt32 (*QRLAEDispatchCallback)(UInt32 eventClass, UInt32 eventID, const AEDesc* event,
                                        AEDesc* reply, void* refcon);

/// Reads what a dispatcher needs to know of an event. Each output may be null; the first failure
/// ends the reading and is returned, and the outputs behind it are untouched.
QRL_EXPORT OSErr QRLGetAEDispatchAttributes(const AEDesc& event, UInt32* eventClass,
                                            UInt32* eventID, unsigned char* wantsReply);

/// Receives Apple events on a port that is registered under a name with the bootstrap server. All
/// calls are made on the thread whose run loop serves the port; there are no locks.
class QRL_EXPORT QRLPortAEMachPortListener {
 public:
  QRLPortAEMachPortListener();
  virtual ~QRLPortAEMachPortListener();

  /// Registers the name and serves its port in the run loop's default mode. Calling it again with
  /// the same name stores the new callback and refcon, rebuilds a port that has died, and adds the
  /// port to a further run loop; a null run loop leaves it in those that it is in.
  ///
  /// paramErr for a null callback, a null or empty name, one of more than 127 characters or another
  /// than the listener holds; portInUse (-97) if somebody else's port has the name; else the
  /// kernel's or bootstrap server's result; kIOReturnNoResources without a port or run-loop source.
  virtual SInt32 ListenOnPort(const char* name, CFRunLoopRef runLoop,
                              QRLAEDispatchCallback callback, void* refcon);

  /// Handles one message: decodes, dispatches and answers it. What is no Apple event is ignored.
  virtual void PortCallback(CFMachPortRef port, void* msg, CFIndex size);

  /// Core Foundation's notice that the port is no longer valid: destroys the registered port.
  virtual void PortInvalidated(CFMachPortRef port);

  QRLPortAEMachPortListener(const QRLPortAEMachPortListener&) = delete;
  QRLPortAEMachPortListener& operator=(const QRLPortAEMachPortListener&) = delete;

  /// Stops listening and releases port and source; the name stays the listener's. Returns `err`.
  SInt32 Deallocate(SInt32 err);

  /// The process's bootstrap port, asked for once.
  static SInt32 GetBootstrapPort(unsigned int& port);

  /// Looks a name up. `port` receives the send right found, which the caller then holds, else 0.
  /// paramErr for a name that is null, empty or longer than 127 characters.
  static SInt32 CheckPortRegistered(const char* name, unsigned int& port);

  /// The functions given to Core Foundation; `info` is the listener.
  static void _PortCallback(CFMachPortRef port, void* msg, CFIndex size, void* info);
  static void _PortInvalidated(CFMachPortRef port, void* info);

 protected:
  CFMachPortRef machPort;            // owned, or null
  CFRunLoopSourceRef runLoopSource;  // of machPort; owned, or null
  QRLAEDispatchCallback callback;
  void* refcon;                           // for the callback
  mach_port_t registeredPort;             // the port that we registered, 0 when none
  char portName[BOOTSTRAP_MAX_NAME_LEN];  // empty when the listener has none

  static mach_port_t gBootstrapPort;  // shared by all listeners, 0 until fetched

  class Attempt;  // one call of ListenOnPort
};

#endif
