// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <array>
#include <new>

#include "platform/corefoundation/PropertyListReading.h"
#include "platform/corefoundation/PropertyListWriting.h"
#include "platform/corefoundation/WithoutMemory.h"

namespace platform::corefoundation {

namespace {

constexpr std::size_t kMostRead = std::size_t{1} << 30;

void report(CFStringRef* errorString, const char* reason) {
  if (errorString == nullptr || reason == nullptr) return;
  *errorString = CFStringCreateWithCString(nullptr, reason, kCFStringEncodingUTF8);
}

void reportAt(CFStringRef* errorString, const ReadingFault& fault) {
  if (errorString == nullptr) return;
  *errorString = CFStringCreateWithFormat(nullptr, nullptr, CFSTR("offset %lu: %s"),
                                          static_cast<unsigned long>(fault.offset), fault.reason);
}

void reportAt(CFStringRef* errorString, std::string_view text, const ReadingFault& fault) {
  if (errorString == nullptr) return;
  const TextPlace place = placeOf(text, fault.offset);
  *errorString = CFStringCreateWithFormat(nullptr, nullptr, CFSTR("line %lu, column %lu: %s"),
                                          place.line, place.column, fault.reason);
}

class Reading final {
 public:
  Reading(CFAllocatorRef allocator, CFOptionFlags mutability, CFStringRef* error)
      : builder(allocator, mutability), errorString(error) {}

  CFPropertyListRef read(Bytes file);
  CFPropertyListFormat format() const { return found; }

 private:
  const PropertyListBuilder builder;
  CFStringRef* const errorString;
  CFPropertyListFormat found = kCFPropertyListBinaryFormat_v1_0;
};

CFPropertyListRef Reading::read(Bytes file) {
  ReadingFault fault;
  if (isBinary(file)) {
    Held<CFTypeRef> list = readBinary(file, builder, fault);
    if (!list) reportAt(errorString, fault);
    return list.take();
  }
  std::string storage;
  const std::optional<std::string_view> text = textOfPropertyList(file, storage, fault);
  Held<CFTypeRef> list;
  if (text && isXML(*text)) {
    found = kCFPropertyListXMLFormat_v1_0;
    list = readXML(*text, builder, fault);
  } else if (text) {
    found = kCFPropertyListOpenStepFormat;
    list = readOldStyle(*text, builder, fault);
  }
  if (!list) reportAt(errorString, text.value_or(std::string_view{}), fault);
  return list.take();
}

// Null, or why there are not as many bytes (0: as there are).
const char* readStream(CFReadStreamRef stream, CFIndex length, std::vector<UInt8>& bytes) {
  constexpr std::size_t kChunk = 64 * 1024;
  if (length < 0) return "there is no such length";
  const std::size_t wanted = length > 0 ? static_cast<std::size_t>(length) : kMostRead;
  while (bytes.size() < wanted) {
    const std::size_t before = bytes.size();
    bytes.resize(before + std::min(std::max(kChunk, before), wanted - before));
    const CFIndex got = CFReadStreamRead(stream, bytes.data() + before,
                                         static_cast<CFIndex>(bytes.size() - before));
    bytes.resize(before + static_cast<std::size_t>(std::max(got, CFIndex{0})));
    if (got < 0) return "the stream cannot be read";
    if (got == 0) return length > 0 ? "the stream ends too early" : nullptr;
  }
  return length > 0 ? nullptr : "the stream is too long";
}

const char* writeTo(CFWriteStreamRef stream, const std::string& bytes) {
  const UInt8* next = reinterpret_cast<const UInt8*>(bytes.data());
  const UInt8* const end = next + bytes.size();
  while (next < end) {
    const CFIndex put = CFWriteStreamWrite(stream, next, static_cast<CFIndex>(end - next));
    if (put <= 0) return "the stream does not take it";
    next += put;
  }
  return nullptr;
}

const char* write(CFPropertyListRef list, CFPropertyListFormat format, std::string& to) {
  if (format == kCFPropertyListXMLFormat_v1_0) return writeXML(list, to);
  if (format == kCFPropertyListBinaryFormat_v1_0) return writeBinary(list, to);
  return "the format is not one to be written";
}

// Runs what may run out of memory, which is then the reason.
template <typename Call>
auto reporting(CFStringRef* errorString, Call call) -> decltype(call()) {
  if (errorString != nullptr) *errorString = nullptr;
  try {
    return call();
  } catch (const std::bad_alloc&) {
    report(errorString, kNoMemory);
    return {};
  }
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef xmlData,
                                                  CFOptionFlags mutabilityOption,
                                                  CFStringRef* errorString) {
  return reporting(errorString, [&] {
    const auto length = static_cast<std::size_t>(CFDataGetLength(xmlData));
    return Reading(allocator, mutabilityOption, errorString)
        .read({CFDataGetBytePtr(xmlData), length});
  });
}

CFPropertyListRef CFPropertyListCreateFromStream(CFAllocatorRef allocator, CFReadStreamRef stream,
                                                 CFIndex streamLength,
                                                 CFOptionFlags mutabilityOption,
                                                 CFPropertyListFormat* format,
                                                 CFStringRef* errorString) {
  return reporting(errorString, [&]() -> CFPropertyListRef {
    std::vector<UInt8> bytes;
    if (const char* reason = readStream(stream, streamLength, bytes)) {
      report(errorString, reason);
      return nullptr;
    }
    Reading reading(allocator, mutabilityOption, errorString);
    const CFPropertyListRef list = reading.read(bytes);
    if (list != nullptr && format != nullptr) *format = reading.format();
    return list;
  });
}

CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef propertyList) {
  return nullWithoutMemory([&]() -> CFDataRef {
    std::string bytes;
    if (writeXML(propertyList, bytes) != nullptr) return nullptr;
    return CFDataCreate(allocator, reinterpret_cast<const UInt8*>(bytes.data()),
                        static_cast<CFIndex>(bytes.size()));
  });
}

CFIndex CFPropertyListWriteToStream(CFPropertyListRef propertyList, CFWriteStreamRef stream,
                                    CFPropertyListFormat format, CFStringRef* errorString) {
  return reporting(errorString, [&]() -> CFIndex {
    std::string bytes;
    const char* reason = write(propertyList, format, bytes);
    if (reason == nullptr) reason = writeTo(stream, bytes);
    report(errorString, reason);
    return reason == nullptr ? static_cast<CFIndex>(bytes.size()) : 0;
  });
}
