// Licence: MIT, see LICENSE.
#include "platform/corefoundation/Streams.h"

#include <new>

namespace platform::corefoundation {

namespace {

// As every host numbers them.
constexpr int kNoSuchFile = 2;
constexpr int kMemoryExhausted = 12;

}  // namespace

bool isFileURL(CFURLRef url) {
  try {
    return pathOfFile(url).has_value();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

int StreamFile::open(host::FilePurpose purpose) {
  try {
    const std::optional<std::string> path = pathOfFile(url.get());
    if (!path) return kNoSuchFile;
    return file.open(*path, purpose) ? 0 : file.failure();
  } catch (const std::bad_alloc&) {
    return kMemoryExhausted;
  }
}

CFTypeRef StreamFile::copyOffset() {
  const host::Result<std::uint64_t> offset = file.offset();
  if (!offset) return nullptr;
  const SInt64 value = static_cast<SInt64>(*offset);
  return CFNumberCreate(nullptr, kCFNumberSInt64Type, &value);
}

bool StreamFile::setOffset(CFTypeRef value) {
  SInt64 offset = 0;
  if (value == nullptr || CFGetTypeID(value) != CFNumberGetTypeID()) return false;
  if (!CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt64Type, &offset))
    return false;
  return offset >= 0 && static_cast<bool>(file.moveTo(static_cast<std::uint64_t>(offset)));
}

}  // namespace platform::corefoundation
