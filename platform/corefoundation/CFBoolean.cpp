// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

#include "platform/corefoundation/CFRuntime.h"

namespace platform::corefoundation {

namespace {

class Truth final : public Object {
 public:
  static CFTypeID type() {
    static const CFTypeID id = registerType("CFBoolean");
    return id;
  }

  constexpr Truth(Immortality immortal, bool isTrue) : Object(immortal), value(isTrue) {}

  CFTypeID typeID() const override { return type(); }
  CFStringRef copyDescription() const override {
    return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<CFBoolean %p [%p]>{value = %@}"),
                                    this, allocator(), this);
  }
  CFStringRef copyFormatted() const override { return value ? CFSTR("true") : CFSTR("false"); }

  const bool value;
};

constinit Static<Truth> gTrue(Immortality{}, true);
constinit Static<Truth> gFalse(Immortality{}, false);

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

// Casts written out: these must have their values before any constructor runs.
const CFBooleanRef kCFBooleanTrue = reinterpret_cast<CFBooleanRef>(&gTrue);
const CFBooleanRef kCFBooleanFalse = reinterpret_cast<CFBooleanRef>(&gFalse);

CFTypeID CFBooleanGetTypeID(void) { return Truth::type(); }

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
  const Truth* truth = checkedObject<Truth>(boolean);
  return truth != nullptr && truth->value;
}
