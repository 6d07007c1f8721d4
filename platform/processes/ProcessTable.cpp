// Licence: MIT, see LICENSE.
//
// Checking in: draw a serial number, register the private port under it, and only then publish the
// record, so that whoever sees a process can send to it. What a process that dies half-way leaves
// behind is a socket under a number that nobody will ever ask for.
#include "platform/processes/ProcessTable.h"

#include <CarbonCore/MacErrors.h>
#include <mach/mach.h>

#include <charconv>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/host/FileContents.h"
#include "platform/host/NameDirectory.h"
#include "platform/host/ProcessIdentity.h"
#include "platform/host/ProgramPath.h"
#include "platform/host/RecordFolder.h"
#include "platform/host/Roots.h"
#include "platform/host/SeqPacket.h"
#include "platform/host/Ticks.h"
#include "platform/mach/NameSpace.h"
#include "platform/mach/PortSpace.h"
#include "platform/processes/ProcessRecords.h"

namespace platform::processes {
namespace {

constexpr char kFolder[] = "processes";
constexpr std::size_t kMaximumPackageInfo = 4096;

/// A receive right, destroyed with its owner.
class PrivatePort final {
 public:
  PrivatePort() { mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &right); }
  PrivatePort(PrivatePort&& other) noexcept : right(std::exchange(other.right, MACH_PORT_NULL)) {}
  PrivatePort& operator=(PrivatePort&&) = delete;
  ~PrivatePort() {
    if (right != MACH_PORT_NULL) mach_port_destroy(mach_task_self(), right);
  }
  mach_port_name_t name() const { return right; }

 private:
  mach_port_name_t right = MACH_PORT_NULL;
};

/// This process in one name space.
struct Membership {
  std::string path;
  mach::Directory nameSpace;
  ProcessRecords records;
  host::Descriptor record;  // open, and so locked
  PrivatePort port;
  Serial serial;
};

struct Table {
  std::mutex mutex;
  std::optional<Membership> membership;
};

Table& table() {
  static Table& instance = *new Table;  // threads may use it while the process exits
  return instance;
}

constexpr std::string_view kPortPrefix = "port.";

std::string portName(Serial serial, SInt32 pid) {
  // The process ID keeps a look-up that falls back to the system's name space from finding a
  // process with the same serial number there.
  return std::string(kPortPrefix) + std::to_string(serial) + "." + std::to_string(pid);
}

/// Removes what dead processes have left. A port is tried only if it has no live record, so that no
/// other process is woken for this.
void reap(const host::NameDirectory& directory, const ProcessRecords& records) {
  records.reap();
  const auto names = directory.names(kFolder);
  if (!names) return;
  for (const std::string& name : *names) {
    if (!name.starts_with(kPortPrefix)) continue;
    Serial serial = 0;
    std::from_chars(name.data() + kPortPrefix.size(), name.data() + name.size(), serial);
    if (!records.find(serial)) directory.reap(kFolder, name);
  }
}

ProcessRecord describeSelf() {
  ProcessRecord record;
  record.pid = host::currentProcess();
  record.launcher = host::parentProcess();
  record.launchTicks = host::ticksAt(host::monotonicNow());
  record.path = host::programPath();
  record.name = processName(record.path);
  if (const auto application = applicationFolder(record.path)) {
    const auto info = host::readFile(*application + "/Contents/PkgInfo", kMaximumPackageInfo);
    if (info) readPackageInfo(*info, record);
  }
  return record;
}

std::optional<Membership> join(const std::string& path) {
  const host::Result<mach::Directory> directory = mach::ownDirectory();
  if (!directory) return std::nullopt;
  host::Result<host::Descriptor> folder =
      (*directory)->subdirectory(kFolder, host::NameDirectory::Make::kYes);
  if (!folder) return std::nullopt;
  ProcessRecords records{host::RecordFolder(std::move(*folder))};
  reap(**directory, records);

  const ProcessRecord self = describeSelf();
  const Serial serial = records.draw();
  PrivatePort port;
  if (serial == 0 || port.name() == MACH_PORT_NULL) return std::nullopt;
  const std::string name = portName(serial, self.pid);
  if (mach::registerIn(kFolder, name.c_str(), port.name()) != KERN_SUCCESS) return std::nullopt;
  host::Result<host::Descriptor> record = records.publish(serial, self);
  if (!record) return std::nullopt;
  return Membership{path,  *directory, std::move(records), std::move(*record), std::move(port),
                    serial};
}

/// This process's membership of the present name space, null if it cannot have one. Who leaves a
/// name space leaves nothing in it.
const Membership* membershipOf(Table& state) {
  const std::string path = host::userNameSpacePath();
  if (state.membership &&
      (state.membership->path != path || state.membership->nameSpace->isRemoved())) {
    state.membership.reset();
  }
  if (!state.membership) {
    if (std::optional<Membership> joined = join(path)) state.membership.emplace(std::move(*joined));
  }
  return state.membership ? &*state.membership : nullptr;
}

/// The low word of a process's number, the caller's own for kCurrentProcess; 0 for what is none.
Serial serialOf(const Membership& self, const ProcessSerialNumber& process) {
  if (process.highLongOfPSN != 0) return 0;
  return process.lowLongOfPSN == kCurrentProcess ? self.serial : process.lowLongOfPSN;
}

}  // namespace

OSStatus checkIn(ProcessSerialNumber& self) {
  Table& state = table();
  const std::lock_guard lock(state.mutex);
  const Membership* membership = membershipOf(state);
  if (membership == nullptr) return procNotFound;
  self = {0, membership->serial};
  return noErr;
}

mach_port_name_t privatePort() {
  Table& state = table();
  const std::lock_guard lock(state.mutex);
  return state.membership ? state.membership->port.name() : mach_port_name_t{MACH_PORT_NULL};
}

ProcessSerialNumber presentSerialNumber() {
  Table& state = table();
  const std::lock_guard lock(state.mutex);
  return {0, state.membership ? state.membership->serial : Serial{kNoProcess}};
}

OSStatus portOfProcess(const ProcessSerialNumber& process, mach_port_name_t& port) {
  ProcessSerialNumber found;
  ProcessRecord record;
  if (const OSStatus error = findProcess(process, found, record)) return error;
  const std::string name = portName(found.lowLongOfPSN, record.pid);
  if (mach::lookUpIn(kFolder, name.c_str(), &port) != KERN_SUCCESS) return procNotFound;
  return noErr;
}

bool isCurrentProcess(const ProcessSerialNumber& process) {
  Table& state = table();
  const std::lock_guard lock(state.mutex);
  const Membership* self = membershipOf(state);
  if (self == nullptr) return process.highLongOfPSN == 0 && process.lowLongOfPSN == kCurrentProcess;
  return serialOf(*self, process) == self->serial;
}

OSStatus findProcess(const ProcessSerialNumber& process, ProcessSerialNumber& found,
                     ProcessRecord& record) {
  Table& state = table();
  const std::lock_guard lock(state.mutex);
  const Membership* self = membershipOf(state);
  if (self == nullptr) return procNotFound;
  const Serial serial = serialOf(*self, process);
  std::optional<ProcessRecord> read = self->records.find(serial);
  if (!read) return procNotFound;
  found = {0, serial};
  record = std::move(*read);
  return noErr;
}

OSStatus findProcessWithID(SInt32 pid, ProcessSerialNumber& found) {
  Table& state = table();
  const std::lock_guard lock(state.mutex);
  const Membership* self = membershipOf(state);
  const Serial serial = self == nullptr ? 0 : self->records.withProcessID(pid);
  if (serial == 0) return procNotFound;
  found = {0, serial};
  return noErr;
}

OSStatus advance(ProcessSerialNumber& process) {
  Table& state = table();
  const std::lock_guard lock(state.mutex);
  const Membership* self = membershipOf(state);
  const bool ordered = self != nullptr && process.highLongOfPSN == 0;
  const Serial following = ordered ? self->records.next(serialOf(*self, process)) : 0;
  process = {0, following};
  if (following == kNoProcess) return procNotFound;
  return noErr;
}

}  // namespace platform::processes
