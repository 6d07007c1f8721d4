// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFMachPort.h>
#include <mach/mach.h>

#include <memory>
#include <new>
#include <utility>

#include "platform/corefoundation/MachPort.h"

namespace platform::corefoundation {

namespace {

// An object that nobody else knows yet; null if there is no memory.
Held<MachPort*> make(CFAllocatorRef allocator, mach_port_t port, MachPort::Right right,
                     CFMachPortCallBack callBack, const InfoReference& info) {
  try {
    if (info == nullptr) return {};
    return Held<MachPort*>(create<MachPort>(allocator, port, right, callBack, info,
                                            std::make_shared<MachPort::Link>()));
  } catch (const std::bad_alloc&) {
    return {};
  }
}

// Makes a new object known: the result is that object, having taken the context over, or the one
// that is there for its port already, or null.
Held<MachPort*> publish(Held<MachPort*> made, ContextInfo& info, const CFMachPortContext* context) {
  info.adopt(context);
  Held<MachPort*> object;
  try {
    object = made.get()->enterTable();
    if (object == made) object.get()->watch();
  } catch (const std::bad_alloc&) {
    object = {};
  }
  if (!(object == made)) info.disown();
  return object;
}

// Hands an object out, and tells whether it uses the context that was given.
CFMachPortRef handOut(Held<MachPort*> object, bool usesContext, Boolean* shouldFreeInfo) {
  if (shouldFreeInfo != nullptr) *shouldFreeInfo = !usesContext;
  return referenceTo<CFMachPortRef>(object.take());
}

bool isReceiveRight(mach_port_t port) {
  mach_port_type_t type = MACH_PORT_TYPE_NONE;
  return mach_port_type(mach_task_self(), port, &type) == KERN_SUCCESS &&
         (type & MACH_PORT_TYPE_RECEIVE) != 0;
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFTypeID CFMachPortGetTypeID() { return MachPort::type(); }

CFMachPortRef CFMachPortCreate(CFAllocatorRef allocator, CFMachPortCallBack callBack,
                               CFMachPortContext* context, Boolean* shouldFreeInfo) {
  mach_port_t port = MACH_PORT_NULL;
  if (mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port) != KERN_SUCCESS) {
    return handOut({}, false, shouldFreeInfo);
  }
  const InfoReference info = makeContextInfo();
  Held<MachPort*> made = make(allocator, port, MachPort::Right::kOwned, callBack, info);
  if (!made) {
    mach_port_destroy(mach_task_self(), port);
    return handOut({}, false, shouldFreeInfo);
  }
  Held<MachPort*> object = publish(std::move(made), *info, context);
  const bool usesContext{object};
  return handOut(std::move(object), usesContext, shouldFreeInfo);
}

CFMachPortRef CFMachPortCreateWithPort(CFAllocatorRef allocator, mach_port_t port,
                                       CFMachPortCallBack callBack, CFMachPortContext* context,
                                       Boolean* shouldFreeInfo) {
  if (Held<MachPort*> existing = MachPort::find(port)) {
    return handOut(std::move(existing), false, shouldFreeInfo);
  }
  if (!isReceiveRight(port)) return handOut({}, false, shouldFreeInfo);
  const InfoReference info = makeContextInfo();
  Held<MachPort*> made = make(allocator, port, MachPort::Right::kBorrowed, callBack, info);
  if (!made) return handOut({}, false, shouldFreeInfo);
  const MachPort* const fresh = made.get();
  Held<MachPort*> object = publish(std::move(made), *info, context);
  const bool usesContext = object.get() == fresh;
  return handOut(std::move(object), usesContext, shouldFreeInfo);
}

mach_port_t CFMachPortGetPort(CFMachPortRef reference) {
  const auto* port = checkedObject<MachPort>(reference);
  return port != nullptr ? port->name() : MACH_PORT_NULL;
}

void CFMachPortGetContext(CFMachPortRef reference, CFMachPortContext* context) {
  const auto* port = checkedObject<MachPort>(reference);
  if (port != nullptr) ContextInfo::copyTo(context, port->context().get());
}

CFMachPortInvalidationCallBack CFMachPortGetInvalidationCallBack(CFMachPortRef reference) {
  const auto* port = checkedObject<MachPort>(reference);
  return port != nullptr ? port->invalidationCallBack() : nullptr;
}

void CFMachPortSetInvalidationCallBack(CFMachPortRef reference,
                                       CFMachPortInvalidationCallBack callBack) {
  if (auto* port = checkedObject<MachPort>(reference)) port->setInvalidationCallBack(callBack);
}

void CFMachPortInvalidate(CFMachPortRef reference) {
  if (auto* port = checkedObject<MachPort>(reference)) port->invalidate();
}

Boolean CFMachPortIsValid(CFMachPortRef reference) {
  const auto* port = checkedObject<MachPort>(reference);
  return port != nullptr && port->isValid();
}

CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef allocator, CFMachPortRef reference,
                                                 CFIndex order) {
  auto* port = checkedObject<MachPort>(reference);
  return port != nullptr ? port->copySource(allocator, order) : nullptr;
}
