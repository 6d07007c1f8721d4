// Licence: MIT, see LICENSE.
// Receive rights as objects.
//
// A port can die on any thread while its object is being released on another. What the notice of
// death holds is therefore not the object but a link to it, which the object cuts as it goes; and
// what lists objects without owning them (the link, the table of valid ports, a port's source)
// takes a reference only while the last one is not yet gone.
#ifndef PLATFORM_COREFOUNDATION_MACHPORT_H
#define PLATFORM_COREFOUNDATION_MACHPORT_H

#include <CoreFoundation/CFMachPort.h>

#include <atomic>
#include <memory>
#include <mutex>

#include "platform/corefoundation/RunLoopItem.h"
#include "platform/corefoundation/RunLoopSource.h"

namespace platform::corefoundation {

class MachPort final : public Object {
 public:
  enum class Right { kOwned, kBorrowed };
  struct Link {
    std::mutex lock;
    MachPort* port = nullptr;
    std::atomic<bool> isDead{false};
  };

  MachPort(mach_port_t receiveRight, Right ownership, CFMachPortCallBack function,
           InfoReference info, std::shared_ptr<Link> toThis);
  ~MachPort() override;

  static CFTypeID type();
  CFTypeID typeID() const override { return type(); }
  CFStringRef copyDescription() const override;

  /// Lists the object under its port's name. If a valid one that may stand for it is there already,
  /// that one is the result. Throws std::bad_alloc.
  Held<MachPort*> enterTable();
  /// Has the death of the port invalidate the object.
  void watch();
  /// The valid object of a port, with a reference.
  static Held<MachPort*> find(mach_port_t port);

  mach_port_t name() const { return port; }
  InfoReference context() const;
  bool isValid() const { return valid; }
  void invalidate();
  CFMachPortInvalidationCallBack invalidationCallBack() const;
  void setInvalidationCallBack(CFMachPortInvalidationCallBack function);
  /// The port's source, with a reference; null without memory or for an invalid port.
  CFRunLoopSourceRef copySource(CFAllocatorRef allocator, CFIndex order);
  void forgetSource(const RunLoopSource& dying);
  void receive(void* message, CFIndex size);

 private:
  void callInvalidation(CFMachPortInvalidationCallBack function, const InfoReference& info);
  void leaveTable();

  const mach_port_t port;
  const Right right;
  const CFMachPortCallBack callBack;
  const std::shared_ptr<Link> link;
  std::uint32_t deathNotice = 0;

  mutable std::mutex lock;
  std::atomic<bool> valid{true};  // changes under the lock
  InfoReference sharedInfo;
  CFMachPortInvalidationCallBack atInvalidation = nullptr;
  RunLoopSource* source = nullptr;  // not retained: it retains the port
};

}  // namespace platform::corefoundation

#endif
