// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFString.h>

#include <functional>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/corefoundation/Order.h"
#include "platform/host/Clock.h"

namespace platform::corefoundation {

namespace {

constexpr double kNanosecondsPerSecond = 1e9;

class Date final : public Object {
 public:
  static CFTypeID type() {
    static const CFTypeID id = registerType("CFDate");
    return id;
  }

  explicit Date(CFAbsoluteTime at) : time(at) {}

  CFTypeID typeID() const override { return type(); }
  bool equals(const Object& other) const override {
    return time == static_cast<const Date&>(other).time;
  }
  CFHashCode hash() const override { return std::hash<double>()(time); }
  CFStringRef copyDescription() const override {
    return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<CFDate %p [%p]>{time = %f}"), this,
                                    allocator(), time);
  }

  const CFAbsoluteTime time;
};

const Date* dateOf(CFDateRef reference) { return checkedObject<Date>(reference); }

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

const CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200.0;
const CFTimeInterval kCFAbsoluteTimeIntervalSince1904 = 3061152000.0;

CFAbsoluteTime CFAbsoluteTimeGetCurrent(void) {
  return static_cast<double>(platform::host::wallNow()) / kNanosecondsPerSecond -
         kCFAbsoluteTimeIntervalSince1970;
}

CFTypeID CFDateGetTypeID(void) { return Date::type(); }

CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at) {
  return referenceTo<CFDateRef>(create<Date>(allocator, at));
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date) {
  const Date* object = dateOf(date);
  return object != nullptr ? object->time : 0;
}

CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef date, CFDateRef other) {
  return CFDateGetAbsoluteTime(date) - CFDateGetAbsoluteTime(other);
}

CFComparisonResult CFDateCompare(CFDateRef a, CFDateRef b, void*) {
  return order(CFDateGetAbsoluteTime(a), CFDateGetAbsoluteTime(b));
}
