// Licence: MIT, see LICENSE.
#include <quorvant/debug/QRLAppErrorUtils.h>
#include <syslog.h>

#include <cstdio>
#include <cstring>

namespace {

// LOG_WARNING and the bit 0x400, which lies outside the facilities and is passed on as it stands.
constexpr int kSyslogPriority = 1028;

}  // namespace

const char* QRLAppErrorUtils::sExecutableName = "(AppExecutablePathHere)";
const char* QRLAppErrorUtils::sExecutableShortName = "(AppNameHere)";
const char* QRLAppErrorUtils::sLogFileName = "/var/log/Quorvant debug.log";
Boolean32 QRLAppErrorUtils::sSysLogErrs = false;
UInt32 QRLAppErrorUtils::sNotificationFlags = 0;
constinit NMRec QRLAppErrorUtils::sNotificationRecord = [] {
  NMRec record{};
  record.qType = nmType;
  return record;
}();
char QRLAppErrorUtils::sIOReturnText[32];

void QRLAppErrorUtils::setAppName(const char* path) {
  if (path == nullptr) return;
  sExecutableName = path;
  const char* slash = std::strrchr(path, '/');
  sExecutableShortName = slash != nullptr ? slash + 1 : path;
}

SInt32 QRLAppErrorUtils::setLogfileName(const char*, bool, const char*) { return 0; }

char* QRLAppErrorUtils::logIOReturn(int code) {
  const unsigned int bits = static_cast<unsigned int>(code);
  std::snprintf(sIOReturnText, sizeof sIOReturnText, "(sys=%x, sub=%x, code=%x)", bits >> 26,
                (bits >> 14) & 0xfff, bits & 0x3fff);
  return sIOReturnText;
}

void QRLAppErrorUtils::reportError(const char* kind, const char* message, const char* file,
                                   SInt32 line, bool) {
  if (sSysLogErrs) {
    syslog(kSyslogPriority, "%s Assert Failed: %s line %ld : %s\n", kind, file,
           static_cast<long>(line), message);
  }
  Debugger();
}

SInt32 QRLAppErrorUtils::reportErrorNotify(const char* kind, const char* message, const char* file,
                                           SInt32 line, bool flag) {
  reportError(kind, message, file, line, flag);
  return userNotify(reinterpret_cast<unsigned char*>(const_cast<char*>(message)));
}

SInt32 QRLAppErrorUtils::userNotify(unsigned char* pascalMessage) {
  // Looking and setting are one step, so that of two threads only one fills in the record.
  const UInt32 earlier = BitOrAtomic(kNotificationPosted, &sNotificationFlags);
  if ((earlier & kNotificationPosted) != 0) return 0;
  sNotificationRecord.nmStr = pascalMessage;
  sNotificationRecord.nmResp = NewNMUPP(notifyNMCompletion);
  NMInstall(&sNotificationRecord);
  return 0;
}

void QRLAppErrorUtils::notifyNMCompletion(NMRec*) {
  BitAndAtomic(~kNotificationPosted, &sNotificationFlags);
}
