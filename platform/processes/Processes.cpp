// Licence: MIT, see LICENSE.
#include <HIServices/Processes.h>

#include <CarbonCore/MacErrors.h>
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/processes/ProcessTable.h"

namespace platform::processes {
namespace {

// The record as it was first defined, with pointers of four bytes.
constexpr std::size_t kMinimumInfoLength = 60;
constexpr CFIndex kMaximumNameLength = 31;

using String = corefoundation::Held<CFStringRef>;

/// A file's name as a string. Names that are not UTF-8 are the old encoding's.
String makeString(const std::string& name) {
  for (const CFStringEncoding encoding : {kCFStringEncodingUTF8, kCFStringEncodingMacRoman}) {
    String string(CFStringCreateWithCString(nullptr, name.c_str(), encoding));
    if (string) return string;
  }
  return String();
}

void fillPascalName(const std::string& name, StringPtr buffer) {
  const String string = makeString(name);
  CFIndex length = 0;
  if (string) {
    CFStringGetBytes(string.get(), CFRangeMake(0, CFStringGetLength(string.get())),
                     kCFStringEncodingMacRoman, '?', false, buffer + 1, kMaximumNameLength,
                     &length);
  }
  buffer[0] = static_cast<unsigned char>(length);
}

/// The serial number of the process that started another, if it still runs: its process ID may
/// belong to a later one.
ProcessSerialNumber launcherOf(const ProcessRecord& record, const ProcessSerialNumber& process) {
  ProcessSerialNumber launcher;
  const bool found = findProcessWithID(record.launcher, launcher) == noErr &&
                     launcher.lowLongOfPSN < process.lowLongOfPSN;
  return found ? launcher : ProcessSerialNumber{0, kNoProcess};
}

ProcessInfoRec makeInfo(const ProcessRecord& record, const ProcessSerialNumber& process) {
  ProcessInfoRec info = {};
  info.processNumber = process;
  info.processType = record.type;
  info.processSignature = record.signature;
  info.processLauncher = launcherOf(record, process);
  info.processLaunchDate = record.launchTicks;
  return info;
}

OSErr getInformation(const ProcessSerialNumber& psn, ProcessInfoRec& info) {
  if (info.processInfoLength < kMinimumInfoLength) return paramErr;
  // A shorter record than ours ends before the last field.
  const std::size_t length = std::min<std::size_t>(info.processInfoLength, sizeof info);
  if (length == sizeof info && info.processAppSpec != nullptr) return paramErr;

  ProcessSerialNumber process;
  ProcessRecord record;
  if (const OSStatus error = findProcess(psn, process, record)) return static_cast<OSErr>(error);
  ProcessInfoRec result = makeInfo(record, process);
  result.processInfoLength = info.processInfoLength;
  result.processName = info.processName;
  if (info.processName != nullptr) fillPascalName(record.name, info.processName);
  std::memcpy(&info, &result, length);
  return noErr;
}

OSErr compare(const ProcessSerialNumber& one, const ProcessSerialNumber& other, Boolean& same) {
  ProcessSerialNumber first, second;
  ProcessRecord record;
  if (const OSStatus error = findProcess(one, first, record)) return static_cast<OSErr>(error);
  if (const OSStatus error = findProcess(other, second, record)) return static_cast<OSErr>(error);
  same = first.lowLongOfPSN == second.lowLongOfPSN;
  return noErr;
}

/// Runs a call, turning exhausted memory into its code.
template <typename Result, typename Call>
Result guarded(Call call) {
  try {
    return static_cast<Result>(call());
  } catch (const std::bad_alloc&) {
    return memFullErr;
  }
}

}  // namespace
}  // namespace platform::processes

using platform::processes::guarded;
using platform::processes::ProcessRecord;

OSErr GetCurrentProcess(ProcessSerialNumber* psn) {
  if (psn == nullptr) return paramErr;
  return guarded<OSErr>([&] { return platform::processes::checkIn(*psn); });
}

OSErr GetNextProcess(ProcessSerialNumber* psn) {
  if (psn == nullptr) return paramErr;
  return guarded<OSErr>([&] { return platform::processes::advance(*psn); });
}

OSErr GetProcessInformation(const ProcessSerialNumber* psn, ProcessInfoRec* info) {
  if (psn == nullptr || info == nullptr) return paramErr;
  return guarded<OSErr>([&] { return platform::processes::getInformation(*psn, *info); });
}

OSErr SameProcess(const ProcessSerialNumber* psn1, const ProcessSerialNumber* psn2,
                  Boolean* result) {
  if (psn1 == nullptr || psn2 == nullptr || result == nullptr) return paramErr;
  return guarded<OSErr>([&] { return platform::processes::compare(*psn1, *psn2, *result); });
}

OSStatus GetProcessPID(const ProcessSerialNumber* psn, int* pid) {
  if (psn == nullptr || pid == nullptr) return paramErr;
  return guarded<OSStatus>([&]() -> OSStatus {
    ProcessSerialNumber process;
    ProcessRecord record;
    const OSStatus error = platform::processes::findProcess(*psn, process, record);
    if (error == noErr) *pid = record.pid;
    return error;
  });
}

OSStatus GetProcessForPID(int pid, ProcessSerialNumber* psn) {
  if (psn == nullptr) return paramErr;
  return guarded<OSStatus>([&] { return platform::processes::findProcessWithID(pid, *psn); });
}

OSStatus CopyProcessName(const ProcessSerialNumber* psn, CFStringRef* name) {
  if (psn == nullptr || name == nullptr) return paramErr;
  return guarded<OSStatus>([&]() -> OSStatus {
    ProcessSerialNumber process;
    ProcessRecord record;
    if (const OSStatus error = platform::processes::findProcess(*psn, process, record)) {
      return error;
    }
    auto string = platform::processes::makeString(record.name);
    if (!string) return memFullErr;
    *name = string.take();
    return noErr;
  });
}
