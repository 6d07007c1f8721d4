// Licence: MIT, see LICENSE.
#include "platform/corefoundation/MachPort.h"

#include <mach/mach.h>

#include <map>
#include <new>
#include <utility>

#include "platform/mach/PortSpace.h"

namespace platform::corefoundation {

namespace {

// The valid ports of the process, none of them retained.
struct Table {
  std::mutex lock;
  std::map<mach_port_t, MachPort*> ports;
};

Table& table() {
  // Never destroyed: ports may be released until the very end of the process.
  static Table& instance = *new Table;
  return instance;
}

// With the table's lock held.
Held<MachPort*> listed(mach_port_t port) {
  const auto found = table().ports.find(port);
  if (found == table().ports.end() || !found->second->isValid()) return {};
  return Held<MachPort*>(found->second->retainUnlessDying() ? found->second : nullptr);
}

mach_port_t portOf(void* info) { return static_cast<MachPort*>(info)->name(); }

void* receiveAt(void* message, CFIndex size, CFAllocatorRef, void* info) {
  static_cast<MachPort*>(info)->receive(message, size);
  return nullptr;
}

CFRunLoopSourceContext1 sourceContext(MachPort* port) {
  CFRunLoopSourceContext1 context{};
  context.version = 1;
  context.info = port;
  context.retain = CFRetain;
  context.release = CFRelease;
  context.copyDescription = CFCopyDescription;
  context.getPort = portOf;
  context.perform = receiveAt;
  return context;
}

// A port's source lets its port know when it goes.
class MachPortSource final : public PortSource {
 public:
  MachPortSource(const CFRunLoopSourceContext1& context, CFIndex order, InfoReference info)
      : PortSource(context, order, std::move(info)) {}
  ~MachPortSource() override {
    if (auto* port = static_cast<MachPort*>(infoValue())) port->forgetSource(*this);
  }
};

}  // namespace

MachPort::MachPort(mach_port_t receiveRight, Right ownership, CFMachPortCallBack function,
                   InfoReference info, std::shared_ptr<Link> toThis)
    : port(receiveRight),
      right(ownership),
      callBack(function),
      link(std::move(toThis)),
      sharedInfo(std::move(info)) {
  link->port = this;
}

MachPort::~MachPort() {
  {
    const std::lock_guard guard(link->lock);
    link->port = nullptr;
  }
  leaveTable();
  if (deathNotice != 0) mach::cancelDeathNotice(deathNotice);
  // Once the port is dead its name may be somebody else's.
  if (right == Right::kOwned && !link->isDead) mach_port_destroy(mach_task_self(), port);
}

CFTypeID MachPort::type() {
  static const CFTypeID id = registerType("CFMachPort");
  return id;
}

CFStringRef MachPort::copyDescription() const { return copyDescriptionWith(this, context().get()); }

InfoReference MachPort::context() const {
  const std::lock_guard guard(lock);
  return sharedInfo;
}

// The table.

Held<MachPort*> MachPort::find(mach_port_t port) {
  const std::lock_guard guard(table().lock);
  return listed(port);
}

Held<MachPort*> MachPort::enterTable() {
  const std::lock_guard guard(table().lock);
  if (right == Right::kBorrowed) {
    if (Held<MachPort*> other = listed(port)) return other;
  }
  table().ports[port] = this;
  return Held<MachPort*>::retaining(this);
}

void MachPort::leaveTable() {
  const std::lock_guard guard(table().lock);
  const auto found = table().ports.find(port);
  if (found != table().ports.end() && found->second == this) table().ports.erase(found);
}

// Death and invalidation.

void MachPort::watch() {
  deathNotice = mach::noticeDeath(port, [link = link] {
    Held<MachPort*> object;
    {
      const std::lock_guard guard(link->lock);
      link->isDead = true;
      if (link->port == nullptr || !link->port->retainUnlessDying()) return;
      object = Held<MachPort*>(link->port);
    }
    object.get()->invalidate();
  });
}

void MachPort::invalidate() {
  const Held<MachPort*> keptAlive = Held<MachPort*>::retaining(this);
  CFMachPortInvalidationCallBack function = nullptr;
  Held<RunLoopSource*> itsSource;
  InfoReference info;
  {
    const std::lock_guard guard(lock);
    if (!valid) return;
    valid = false;
    function = atInvalidation;
    info = sharedInfo;
    if (source != nullptr && source->retainUnlessDying()) itsSource = Held<RunLoopSource*>(source);
  }
  leaveTable();
  callInvalidation(function, info);
  if (info->isReleased()) {
    const std::lock_guard guard(lock);
    sharedInfo.reset();  // `info` is another reference: the release is not called here
  }
  info.reset();
  if (itsSource) itsSource.get()->invalidate();
}

void MachPort::callInvalidation(CFMachPortInvalidationCallBack function,
                                const InfoReference& info) {
  if (function == nullptr) return;
  function(referenceTo<CFMachPortRef>(this), info != nullptr ? info->value() : nullptr);
}

CFMachPortInvalidationCallBack MachPort::invalidationCallBack() const {
  const std::lock_guard guard(lock);
  return atInvalidation;
}

void MachPort::setInvalidationCallBack(CFMachPortInvalidationCallBack function) {
  {
    const std::lock_guard guard(lock);
    atInvalidation = function;
    if (valid) return;
  }
  callInvalidation(function, context());
}

// Messages.

CFRunLoopSourceRef MachPort::copySource(CFAllocatorRef allocator, CFIndex order) {
  const auto current = [this] {
    const bool isUsable = source != nullptr && source->isValid() && source->retainUnlessDying();
    return isUsable ? referenceTo<CFRunLoopSourceRef>(source) : nullptr;
  };
  {
    const std::lock_guard guard(lock);
    if (!valid) return nullptr;
    if (const CFRunLoopSourceRef reference = current()) return reference;
  }
  // Made without the lock, since an allocator may be the program's own.
  InfoReference info = makeContextInfo();
  if (info == nullptr) return nullptr;
  const CFRunLoopSourceContext1 context = sourceContext(this);
  const Held<MachPortSource*> made(create<MachPortSource>(allocator, context, order, info));
  if (!made) return nullptr;
  info->adopt(&context);

  const std::lock_guard guard(lock);
  if (!valid) return nullptr;
  if (const CFRunLoopSourceRef reference = current()) return reference;
  source = made.get();
  source->retain();
  return referenceTo<CFRunLoopSourceRef>(source);
}

void MachPort::forgetSource(const RunLoopSource& dying) {
  const std::lock_guard guard(lock);
  if (source == &dying) source = nullptr;
}

void MachPort::receive(void* message, CFIndex size) {
  const InfoReference info = context();
  if (!valid || info == nullptr || callBack == nullptr) return;
  callBack(referenceTo<CFMachPortRef>(this), message, size, info->value());
}

}  // namespace platform::corefoundation
