// Licence: MIT, see LICENSE.
/// How an application reports its errors: to the system log, to an attached debugger, and to the
/// user by a notice. There is one such reporter in a process, so everything here is static.
///
/// The names are set once at start, before other threads run. Notices may be asked for and
/// dismissed on any thread.
#ifndef QUORVANT_DEBUG_QRLAPPERRORUTILS_H
#define QUORVANT_DEBUG_QRLAPPERRORUTILS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>
#include <quorvant/util/QRLTypes.h>

class QRL_EXPORT QRLAppErrorUtils {
 public:
  QRLAppErrorUtils() = delete;

  /// Tells the reporter the application's full path. The text is not copied and must outlive all
  /// reports; a null path changes nothing.
  static void setAppName(const char* path);

  /// Accepted and ignored: the log file's name is fixed. Returns 0.
  static SInt32 setLogfileName(const char* name, bool flag, const char* other);

  /// The fields of an IOKit result code as text, "(sys=38, sub=0, code=2be)". The text is static
  /// and overwritten by the next call, so one thread at a time may use it.
  static char* logIOReturn(int code);

  /// Reports a failed assertion: one line in the system log if sSysLogErrs is set, then the
  /// debugger. `flag` is not used.
  static void reportError(const char* kind, const char* message, const char* file, SInt32 line,
                          bool flag);

  /// As reportError, and then shows the user `message`, which is a Pascal string here: its first
  /// byte is its length (and appears in the log line). Returns 0.
  static SInt32 reportErrorNotify(const char* kind, const char* message, const char* file,
                                  SInt32 line, bool flag);

  /// Posts one notice; while it stands, further ones are dropped. The message is not copied and
  /// must last until the notice is dismissed. Returns 0 whether or not the notice could be shown.
  static SInt32 userNotify(unsigned char* pascalMessage);

  /// The user has dismissed the notice: the next one may be posted. The record stays queued.
  static void notifyNMCompletion(NMRec* record);

  static const char* sExecutableName;       // the application's path as given
  static const char* sExecutableShortName;  // the last component of it
  static const char* sLogFileName;
  static Boolean32 sSysLogErrs;  // whether reportError writes to the system log; off at first

 protected:
  static constexpr UInt32 kNotificationPosted = 1;  // bit of sNotificationFlags

  static UInt32 sNotificationFlags;  // changed by atomic operations only
  static NMRec sNotificationRecord;
  static char sIOReturnText[32];  // the longest text has 28 characters
};

#endif
