// Licence: MIT, see LICENSE.
#ifndef QUORVANT_AEMESSAGING_QRLAPPLEEVENTWRAPPER_H
#define QUORVANT_AEMESSAGING_QRLAPPLEEVENTWRAPPER_H

#include <Carbon/Carbon.h>
#include <quorvant/aemessaging/GetAEParams.h>
#include <quorvant/aemessaging/PutAEParams.h>
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

  // Parameters of the event, as the functions of PutAEParams.h.
  OSErr putBoolean(AEKeyword keyword, bool* value) { return PutAEBoolean(event, keyword, value); }
  OSErr putBoolean(AEKeyword keyword, unsigned char* value) {
    return PutAEBoolean(event, keyword, value);
  }
  OSErr putShort(AEKeyword keyword, SInt16* value) { return PutAEShort(event, keyword, value); }
  OSErr putLong(AEKeyword keyword, SInt32* value) { return PutAELong(event, keyword, value); }
  OSErr putInteger(AEKeyword keyword, int* value) { return PutAEInteger(event, keyword, value); }
  OSErr putLongLong(AEKeyword keyword, SInt64* value) {
    return PutAELongLong(event, keyword, value);
  }
  OSErr putUInt64(AEKeyword keyword, UInt64* value) { return PutAEUInt64(event, keyword, value); }
  OSErr putFloat(AEKeyword keyword, float* value) { return PutAEFloat(event, keyword, value); }
  OSErr putDouble(AEKeyword keyword, double* value) { return PutAEDouble(event, keyword, value); }
  OSErr putOSType(AEKeyword keyword, OSType* code) { return PutAEOSType(event, keyword, code); }
  OSErr putCString(AEKeyword keyword, const char* text) {
    return PutAECString(event, keyword, text);
  }
  OSErr putPString(AEKeyword keyword, const unsigned char* text) {
    return PutAEPString(event, keyword, text);
  }
  OSErr putText(AEKeyword keyword, const unsigned char* text, SInt32 size) {
    return PutAEText(event, keyword, text, size);
  }
  OSErr putShortArray(AEKeyword keyword, SInt16* array, SInt32 count) {
    return PutAEShortArray(event, keyword, array, count);
  }
  OSErr putLongArray(AEKeyword keyword, SInt32* array, SInt32 count) {
    return PutAELongArray(event, keyword, array, count);
  }

  // Parameters of the reply, as the functions of GetAEParams.h.
  OSErr getParamExists(AEKeyword keyword, bool& exists) const {
    return GetAEParamExists(reply, keyword, exists);
  }
  OSErr getBoolean(AEKeyword keyword, bool* value) const {
    return GetAEBoolean(reply, keyword, value);
  }
  OSErr getBoolean(AEKeyword keyword, unsigned char* value) const {
    return GetAEBoolean(reply, keyword, value);
  }
  OSErr getShort(AEKeyword keyword, SInt16* value) const {
    return GetAEShort(reply, keyword, value);
  }
  OSErr getLong(AEKeyword keyword, SInt32* value) const { return GetAELong(reply, keyword, value); }
  OSErr getLongLong(AEKeyword keyword, SInt64* value) const {
    return GetAELongLong(reply, keyword, value);
  }
  OSErr getUInt64(AEKeyword keyword, UInt64* value) const {
    return GetAEUInt64(reply, keyword, value);
  }
  OSErr getOSType(AEKeyword keyword, OSType* code) const {
    return GetAEOSType(reply, keyword, code);
  }
  OSErr getCString(AEKeyword keyword, char* buffer, SInt32 size) const {
    return GetAECString(reply, keyword, buffer, size);
  }
  OSErr getPString(AEKeyword keyword, unsigned char* buffer, SInt32 size) const {
    return GetAEPString(reply, keyword, buffer, size);
  }
  OSErr getText(AEKeyword keyword, unsigned char* buffer, SInt32& size) const {
    return GetAEText(reply, keyword, buffer, size);
  }
  OSErr getShortArray(AEKeyword keyword, SInt16* array, SInt32& count) const {
    return GetAEShortArray(reply, keyword, array, count);
  }
  OSErr getLongArray(AEKeyword keyword, SInt32* array, SInt32& count) const {
    return GetAELongArray(reply, keyword, array, count);
  }

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
