// Licence: MIT, see LICENSE.
// Feeds a file to the readers of property lists, of whichever form it is. What is read must be
// valid, and the same again after it was written.
#include <CoreFoundation/CFPropertyList.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/corefoundation/CFRuntime.h"

namespace {

using platform::corefoundation::Held;

void require(bool holds) {
  if (!holds) std::abort();
}

Held<CFDataRef> writtenAs(CFPropertyListRef list, CFPropertyListFormat format) {
  const Held stream(CFWriteStreamCreateWithAllocatedBuffers(nullptr, nullptr));
  require(CFWriteStreamOpen(stream.get()));
  if (CFPropertyListWriteToStream(list, stream.get(), format, nullptr) == 0) return {};
  return Held(static_cast<CFDataRef>(
      CFWriteStreamCopyProperty(stream.get(), kCFStreamPropertyDataWritten)));
}

Held<CFTypeRef> listOf(CFDataRef file, CFOptionFlags mutability) {
  CFStringRef reason = nullptr;
  Held<CFTypeRef> list(CFPropertyListCreateFromXMLData(nullptr, file, mutability, &reason));
  const Held<CFStringRef> owned(reason);
  require(!list == (reason != nullptr));
  return list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Held file(
      CFDataCreateWithBytesNoCopy(nullptr, data, static_cast<CFIndex>(size), kCFAllocatorNull));
  const auto list = listOf(file.get(), kCFPropertyListImmutable);
  const auto changing = listOf(file.get(), kCFPropertyListMutableContainersAndLeaves);
  require(!list == !changing);
  if (!list) return 0;
  require(CFEqual(list.get(), changing.get()));
  require(CFPropertyListIsValid(list.get(), kCFPropertyListBinaryFormat_v1_0));
  const auto binary = writtenAs(list.get(), kCFPropertyListBinaryFormat_v1_0);
  require(static_cast<bool>(binary));
  require(CFEqual(listOf(binary.get(), kCFPropertyListImmutable).get(), list.get()));
  // XML may have to refuse: half a character, a date outside its years. Its dates lose fractions.
  const auto xml = writtenAs(list.get(), kCFPropertyListXMLFormat_v1_0);
  if (xml) require(static_cast<bool>(listOf(xml.get(), kCFPropertyListImmutable)));
  return 0;
}
