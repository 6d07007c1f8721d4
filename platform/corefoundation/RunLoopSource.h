// Licence: MIT, see LICENSE.
// The two versions of run-loop sources.
#ifndef PLATFORM_COREFOUNDATION_RUNLOOPSOURCE_H
#define PLATFORM_COREFOUNDATION_RUNLOOPSOURCE_H

#include <CoreFoundation/CFRunLoop.h>

#include "platform/corefoundation/RunLoopItem.h"

namespace platform::corefoundation {

class RunLoopSource : public RunLoopItem {
 public:
  static CFTypeID type();
  CFTypeID typeID() const override { return type(); }
  bool equals(const Object& other) const override;
  CFHashCode hash() const override;

  CFIndex version() const { return contextVersion; }
  virtual void copyContext(CFRunLoopSourceContext* into) const = 0;
  virtual void signal() {}
  virtual bool isSignalled() const { return false; }
  /// Takes a signal, if there is one, and with it the duty to perform.
  virtual bool takeSignal() { return false; }
  virtual void perform() {}
  /// Takes one message of the port and performs with it. False if there is none.
  virtual bool serve(mach_port_name_t) { return false; }

 protected:
  RunLoopSource(CFIndex version, CFIndex order, InfoReference info);

  using Equal = Boolean (*)(const void* info1, const void* info2);
  using Hash = CFHashCode (*)(const void* info);
  /// Compare infos as the context says, or by their addresses.
  bool haveEqualInfo(const RunLoopSource& other, Equal function) const;
  CFHashCode hashOfInfo(Hash function) const;
  void* infoValue() const { return context()->value(); }

 private:
  virtual bool isAlike(const RunLoopSource& other) const = 0;
  const CFIndex contextVersion;
};

/// Version 0: performs when a program has signalled it.
class SignalledSource final : public RunLoopSource {
 public:
  SignalledSource(const CFRunLoopSourceContext& context, CFIndex order, InfoReference info);

  CFHashCode hash() const override { return hashOfInfo(callBacks.hash); }
  void copyContext(CFRunLoopSourceContext* into) const override;
  void joinedMode(RunLoop& loop, CFStringRef mode) override;
  void leftMode(RunLoop& loop, CFStringRef mode) override;
  void signal() override { signalled = true; }
  bool isSignalled() const override { return signalled; }
  bool takeSignal() override { return signalled.exchange(false); }
  void perform() override { callBacks.perform(infoValue()); }

 private:
  bool isAlike(const RunLoopSource& other) const override;
  const CFRunLoopSourceContext callBacks;
  std::atomic<bool> signalled{false};
};

/// Version 1: performs with each message that arrives at a port.
class PortSource : public RunLoopSource {
 public:
  PortSource(const CFRunLoopSourceContext1& context, CFIndex order, InfoReference info);

  CFHashCode hash() const override { return hashOfInfo(callBacks.hash); }
  void copyContext(CFRunLoopSourceContext* into) const override;
  mach_port_t port() const override { return callBacks.getPort(infoValue()); }
  bool serve(mach_port_name_t port) override;

 private:
  bool isAlike(const RunLoopSource& other) const override;
  const CFRunLoopSourceContext1 callBacks;
};

}  // namespace platform::corefoundation

#endif
