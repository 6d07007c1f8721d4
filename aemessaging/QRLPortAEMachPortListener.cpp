// Licence: MIT, see LICENSE.
//
// ListenOnPort works in two halves. The first brings the listener's own state in line with the
// world: objects that Core Foundation has invalidated are released, and a registration that is no
// longer ours is given up, until what is left is either "registered as asked" or "not registered".
// The second half makes whatever is missing. Both work on what one call has found out, the Attempt;
// each step of it is skipped once there is an error, but for the releases.
//
// A look-up adds a send right to the name that it answers with. Only the number is of interest
// here, so the right is given up again as soon as it has been compared.
#include <IOKit/IOReturn.h>
#include <quorvant/aemessaging/QRLPortAEMachPortListener.h>

#include <cstring>

namespace {

constexpr std::size_t kLongestName = BOOTSTRAP_MAX_NAME_LEN - 1;

bool isUsableName(const char* name) {
  if (name == nullptr) return false;
  const std::size_t length = strnlen(name, kLongestName + 1);
  return length > 0 && length <= kLongestName;
}

// Gives up the one send right that a look-up has added.
void giveUpSendRight(mach_port_t port) {
  if (port != MACH_PORT_NULL) mach_port_deallocate(mach_task_self(), port);
}

// Destroys the right that a look-up gave, unless its name also stands for a receive right: that one
// belongs to somebody else in this process, whose port must not die of it.
kern_return_t destroyFoundRight(mach_port_t port) {
  mach_port_type_t type = MACH_PORT_TYPE_NONE;
  const kern_return_t result = mach_port_type(mach_task_self(), port, &type);
  if (result == KERN_SUCCESS && (type & MACH_PORT_TYPE_RECEIVE) != 0) {
    return mach_port_deallocate(mach_task_self(), port);
  }
  return mach_port_destroy(mach_task_self(), port);
}

}  // namespace

class QRLPortAEMachPortListener::Attempt {
 public:
  Attempt(QRLPortAEMachPortListener& owner, const char* wantedName,
          QRLAEDispatchCallback wantedCallback);

  void settle();
  void claimName();
  void makePort();
  void makeSource();
  void publish(void* newRefcon);
  void serveIn(CFRunLoopRef runLoop);
  SInt32 result() const { return err; }

 private:
  bool hasName() const { return listener.portName[0] != '\0'; }
  void forgetName() { listener.portName[0] = '\0'; }
  void takeName() { std::memcpy(listener.portName, name, sizeof name); }
  void releaseInvalidObjects();
  bool lookUpHeldName();

  QRLPortAEMachPortListener& listener;
  QRLAEDispatchCallback callback;
  name_t name = {};  // a copy: the caller's may be the listener's own field
  SInt32 err = noErr;
  CFMachPortRef cfPort = nullptr;
  CFRunLoopSourceRef source = nullptr;
  unsigned int ourPort = MACH_PORT_NULL;
  unsigned int bootstrap = MACH_PORT_NULL;
  unsigned int found = MACH_PORT_NULL;  // by the last look-up
};

QRLPortAEMachPortListener::Attempt::Attempt(QRLPortAEMachPortListener& owner,
                                            const char* wantedName,
                                            QRLAEDispatchCallback wantedCallback)
    : listener(owner), callback(wantedCallback) {
  if (callback == nullptr || !isUsableName(wantedName) ||
      (hasName() && std::strcmp(listener.portName, wantedName) != 0)) {
    err = paramErr;
    return;
  }
  std::memcpy(name, wantedName, std::strlen(wantedName) + 1);
}

void QRLPortAEMachPortListener::Attempt::releaseInvalidObjects() {
  cfPort = listener.machPort;
  ourPort = MACH_PORT_NULL;
  if (cfPort != nullptr && !CFMachPortIsValid(cfPort)) {
    if (listener.runLoopSource != nullptr) CFRunLoopSourceInvalidate(listener.runLoopSource);
    CFRelease(cfPort);
    listener.machPort = cfPort = nullptr;
  } else if (cfPort != nullptr) {
    ourPort = CFMachPortGetPort(cfPort);
  }

  source = listener.runLoopSource;
  if (source != nullptr && !CFRunLoopSourceIsValid(source)) {
    CFRelease(source);
    listener.runLoopSource = source = nullptr;
  }
}

bool QRLPortAEMachPortListener::Attempt::lookUpHeldName() {
  found = MACH_PORT_NULL;
  return bootstrap_look_up(bootstrap, listener.portName, &found) == BOOTSTRAP_SUCCESS &&
         found != MACH_PORT_NULL;
}

// Ends with the name held only if it is registered with our own port. A second round at most: the
// first one that finds a foreign port forgets the name.
void QRLPortAEMachPortListener::Attempt::settle() {
  for (;;) {
    releaseInvalidObjects();
    if (err == noErr) err = GetBootstrapPort(bootstrap);
    if (err != noErr || !hasName()) return;
    if (!lookUpHeldName()) {
      forgetName();
      return;
    }
    if (found == ourPort && std::strcmp(listener.portName, name) == 0) {
      giveUpSendRight(found);
      return;
    }
    err = destroyFoundRight(found);
    if (cfPort != nullptr) CFMachPortInvalidate(cfPort);
    forgetName();
  }
}

void QRLPortAEMachPortListener::Attempt::claimName() {
  if (err != noErr || hasName()) return;
  takeName();
  if (!lookUpHeldName()) return;
  giveUpSendRight(found);
  if (found != ourPort) err = portInUse;
}

void QRLPortAEMachPortListener::Attempt::makePort() {
  if (err != noErr || ourPort != MACH_PORT_NULL) return;
  if (cfPort == nullptr) {
    CFMachPortContext context{};
    context.info = &listener;
    cfPort = CFMachPortCreate(kCFAllocatorDefault, _PortCallback, &context, nullptr);
    listener.machPort = cfPort;
    if (cfPort != nullptr) CFMachPortSetInvalidationCallBack(cfPort, _PortInvalidated);
  }
  if (cfPort != nullptr) ourPort = CFMachPortGetPort(cfPort);
  if (ourPort == MACH_PORT_NULL) err = kIOReturnNoResources;
}

void QRLPortAEMachPortListener::Attempt::makeSource() {
  if (err != noErr || source != nullptr) return;
  source = CFMachPortCreateRunLoopSource(kCFAllocatorDefault, cfPort, 0);
  listener.runLoopSource = source;
  if (source == nullptr) err = kIOReturnNoResources;
}

void QRLPortAEMachPortListener::Attempt::publish(void* newRefcon) {
  if (err != noErr) return;
  listener.callback = callback;
  listener.refcon = newRefcon;
  takeName();
  if (found == ourPort) return;
  err = bootstrap_register(bootstrap, listener.portName, ourPort);
  if (err == BOOTSTRAP_SUCCESS) listener.registeredPort = ourPort;
}

void QRLPortAEMachPortListener::Attempt::serveIn(CFRunLoopRef runLoop) {
  if (err != noErr || runLoop == nullptr) return;
  if (!CFRunLoopContainsSource(runLoop, source, kCFRunLoopDefaultMode)) {
    CFRunLoopAddSource(runLoop, source, kCFRunLoopDefaultMode);
  }
}

mach_port_t QRLPortAEMachPortListener::gBootstrapPort = MACH_PORT_NULL;

QRLPortAEMachPortListener::QRLPortAEMachPortListener()
    : machPort(nullptr),
      runLoopSource(nullptr),
      callback(nullptr),
      refcon(nullptr),
      registeredPort(MACH_PORT_NULL),
      portName{} {}

QRLPortAEMachPortListener::~QRLPortAEMachPortListener() { Deallocate(noErr); }

SInt32 QRLPortAEMachPortListener::ListenOnPort(const char* name, CFRunLoopRef runLoop,
                                               QRLAEDispatchCallback newCallback, void* newRefcon) {
  Attempt attempt(*this, name, newCallback);
  attempt.settle();
  attempt.claimName();
  attempt.makePort();
  attempt.makeSource();
  attempt.publish(newRefcon);
  attempt.serveIn(runLoop);
  return attempt.result();
}

void QRLPortAEMachPortListener::PortCallback(CFMachPortRef port, void* msg, CFIndex) {
  if (port != machPort) return;
  AppleEvent event = {typeNull, nullptr};
  AppleEvent reply = {typeNull, nullptr};
  if (AEDecodeMessage(static_cast<mach_msg_header_t*>(msg), &event, &reply) != noErr) return;

  UInt32 eventClass = 0;
  UInt32 eventID = 0;
  unsigned char wantsReply = false;
  if (QRLGetAEDispatchAttributes(event, &eventClass, &eventID, &wantsReply) != noErr) return;

  SInt32 result = errAEEventNotHandled;
  if (callback != nullptr) result = callback(eventClass, eventID, &event, &reply, refcon);

  // The callback may have destroyed this listener: nothing of it is touched from here on. It may
  // also have kept the event and the reply, which is why neither is ever disposed here.
  if (!wantsReply) return;
  if (result != noErr &&
      AEPutParamPtr(&reply, keyErrorNumber, typeSInt32, &result, sizeof result) != noErr) {
    return;
  }
  AESendMessage(&reply, nullptr, kAENoReply, kAEDefaultTimeout);
}

void QRLPortAEMachPortListener::PortInvalidated(CFMachPortRef port) {
  if (port == nullptr || registeredPort == MACH_PORT_NULL) return;
  if (CFMachPortGetPort(port) != registeredPort) return;
  mach_port_destroy(mach_task_self(), registeredPort);
  registeredPort = MACH_PORT_NULL;
}

SInt32 QRLPortAEMachPortListener::Deallocate(SInt32 err) {
  if (runLoopSource != nullptr) {
    CFRunLoopSourceRef source = runLoopSource;
    runLoopSource = nullptr;
    CFRunLoopSourceInvalidate(source);
    CFRelease(source);
  }
  if (machPort != nullptr) {
    CFMachPortRef port = machPort;
    machPort = nullptr;
    CFMachPortInvalidate(port);
    unsigned int found = MACH_PORT_NULL;
    CheckPortRegistered(portName, found);
    giveUpSendRight(found);
    CFRelease(port);
  }
  return err;
}

SInt32 QRLPortAEMachPortListener::GetBootstrapPort(unsigned int& port) {
  if (gBootstrapPort != MACH_PORT_NULL) {
    port = gBootstrapPort;
    return KERN_SUCCESS;
  }
  const kern_return_t result = task_get_special_port(mach_task_self(), TASK_BOOTSTRAP_PORT, &port);
  if (result == KERN_SUCCESS) gBootstrapPort = port;
  return result;
}

SInt32 QRLPortAEMachPortListener::CheckPortRegistered(const char* name, unsigned int& port) {
  port = MACH_PORT_NULL;
  if (!isUsableName(name)) return paramErr;
  unsigned int bootstrap = MACH_PORT_NULL;
  const SInt32 err = GetBootstrapPort(bootstrap);
  if (err != KERN_SUCCESS) return err;
  name_t buffer;
  std::memcpy(buffer, name, std::strlen(name) + 1);
  return bootstrap_look_up(bootstrap, buffer, &port);
}

void QRLPortAEMachPortListener::_PortCallback(CFMachPortRef port, void* msg, CFIndex size,
                                              void* info) {
  if (info == nullptr) return;
  static_cast<QRLPortAEMachPortListener*>(info)->PortCallback(port, msg, size);
}

void QRLPortAEMachPortListener::_PortInvalidated(CFMachPortRef port, void* info) {
  if (info == nullptr) return;
  static_cast<QRLPortAEMachPortListener*>(info)->PortInvalidated(port);
}

OSErr QRLGetAEDispatchAttributes(const AEDesc& event, UInt32* eventClass, UInt32* eventID,
                                 unsigned char* wantsReply) {
  OSErr err = noErr;
  if (eventClass != nullptr) {
    err = AEGetAttributePtr(&event, keyEventClassAttr, typeType, nullptr, eventClass,
                            sizeof *eventClass, nullptr);
  }
  if (err == noErr && eventID != nullptr) {
    err = AEGetAttributePtr(&event, keyEventIDAttr, typeType, nullptr, eventID, sizeof *eventID,
                            nullptr);
  }
  if (err == noErr && wantsReply != nullptr) {
    err = AEGetAttributePtr(&event, keyReplyRequestedAttr, typeBoolean, nullptr, wantsReply,
                            sizeof *wantsReply, nullptr);
  }
  return err;
}
