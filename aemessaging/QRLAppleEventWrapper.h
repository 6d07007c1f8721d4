// Licence: MIT, see LICENSE.
#ifndef QUORVANT_AEMESSAGING_QRLAPPLEEVENTWRAPPER_H
#define QUORVANT_AEMESSAGING_QRLAPPLEEVENTWRAPPER_H

#include <Carbon/Carbon.h>
#include <quorvant/aemessaging/QRLAppleEventDestinationAddress.h>
#include <quorvant/aemessaging/QRLAppleEventReturnAddress.h>
#include <quorvant/util/QRLExport.h>
#include <quorvant/util/QRLTypes.h>

/// One outgoing Apple event and its reply. A derived class decides how the event is sent.
///
/// Fill in the class, ID, reply mode, return ID, transaction ID and destination; createEvent; add
/// the parameters to `event`; sendEvent; read `reply`; finalizeEvent. The descriptors go with the
/// object, the reply port only with finalizeEvent. One thread uses a wrapper at a time.
class QRL_EXPORT QRLAppleEventWrapper {
 public:
  QRLAppleEventWrapper();
  virtual ~QRLAppleEventWrapper();

  /// Destroys the reply port. Returns 0.
  virtual SInt32 finalizeEvent();

 protected:
  /// Sends `event`, and waits for `reply` if `replyMode` asks for one. `sendMode` is complete.
  virtual OSErr doSendEvent(SInt32 sendMode, SInt32 timeout, SInt16 priority) = 0;

 public:
  QRLAppleEventWrapper(const QRLAppleEventWrapper&) = delete;
  QRLAppleEventWrapper& operator=(const QRLAppleEventWrapper&) = delete;

  /// Makes the reply port, the target and the event. paramErr without a destination; else the first
  /// failing step's result, with the flags telling what was made before it.
  OSErr createEvent();

  /// Sends the event, in `sendMode` but for the reply mode, which is always the wrapper's own. The
  /// time-out is in ticks. Returns the send's error; then the "errn" that the server put into its
  /// reply, with `replyHadError` telling the two apart; 0 when there is none. A failed send may be
  /// repeated.
  SInt32 sendEvent(SInt32 sendMode, SInt32 timeout, SInt16 priority);

  /// Writes a descriptor as AEPrintDescToHandle does into an array with a terminating 0, which the
  /// caller deletes with delete[]. On failure `text` is untouched: AEPrintDescToHandle's error, or
  /// memFullErr where there is no text or no memory.
  static OSErr printDescToBufAlloc(const AEDesc* desc, char*& text);
  /// Goes through the motions of printing a descriptor and writes nothing: a place for a debugger.
  static void printDesc(const char* label, const AEDesc* desc);

  AEDesc target;            // the destination's address descriptor
  Boolean32 targetCreated;  // whether `target` is there to be disposed
  Boolean32 eventCreated;   // whether `event` is
  Boolean32 replyReceived;  // whether `reply` is
  Boolean32 replyHadError;  // whether the reply carries an error number
  AEEventClass eventClass;
  AEEventID eventID;
  SInt32 replyMode;  // kAENoReply, kAEQueueReply or kAEWaitReply; other bits are ignored
  AEReturnID returnID;
  AETransactionID transactionID;
  QRLAppleEventDestinationAddress* destination;  // not owned
  QRLAppleEventReturnAddress returnAddress;
  AppleEvent event;
  AppleEvent reply;
};

#endif
