// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFStream.h>

#include <algorithm>
#include <limits>
#include <span>

#include "platform/corefoundation/Streams.h"

namespace platform::corefoundation {

namespace {

class MemoryReadStream final : public ReadStream {
 public:
  MemoryReadStream(std::span<const UInt8> bytes, CFAllocatorRef bytesDeallocator)
      : content(bytes), deallocator(Held<CFAllocatorRef>::retaining(bytesDeallocator)) {}
  ~MemoryReadStream() override {
    CFAllocatorDeallocate(deallocator.get(), const_cast<UInt8*>(content.data()));
  }

  CFIndex read(UInt8* buffer, CFIndex size) override {
    CFIndex taken = 0;
    const UInt8* from = take(size, taken);
    std::copy_n(from, taken, buffer);
    return taken;
  }
  const UInt8* take(CFIndex maximum, CFIndex& taken) override {
    const UInt8* from = content.data() + position;
    taken = std::min(maximum, length() - position);
    position += taken;
    if (position == length()) status = kCFStreamStatusAtEnd;
    return from;
  }

 protected:
  bool doOpen() override {
    if (content.empty()) status = kCFStreamStatusAtEnd;
    return true;
  }

 private:
  CFIndex length() const { return static_cast<CFIndex>(content.size()); }

  const std::span<const UInt8> content;
  const Held<CFAllocatorRef> deallocator;
  CFIndex position = 0;
};

class FileReadStream final : public ReadStream {
 public:
  explicit FileReadStream(Held<CFURLRef> fileURL) : file(std::move(fileURL)) {}

  CFIndex read(UInt8* buffer, CFIndex size) override {
    const auto got = file.contents().read(
        {reinterpret_cast<std::byte*>(buffer), static_cast<std::size_t>(size)});
    if (!got) {
      fail(file.contents().failure());
      return -1;
    }
    if (*got == 0) status = kCFStreamStatusAtEnd;
    return static_cast<CFIndex>(*got);
  }
  CFTypeRef copyProperty(CFStringRef name) override {
    const bool has = isOpen() && isProperty(name, kCFStreamPropertyFileCurrentOffset);
    return has ? file.copyOffset() : nullptr;
  }
  bool setProperty(CFStringRef name, CFTypeRef value) override {
    if (!isOpen() || !isProperty(name, kCFStreamPropertyFileCurrentOffset)) return false;
    if (!file.setOffset(value)) return false;
    status = kCFStreamStatusOpen;
    return true;
  }

 protected:
  bool doOpen() override {
    const int code = file.open(host::FilePurpose::kRead);
    return code == 0 || fail(code);
  }
  void doClose() override { file.close(); }

 private:
  StreamFile file;
};

ReadStream* readStreamOf(CFReadStreamRef reference) { return checkedObject<ReadStream>(reference); }

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFTypeID CFReadStreamGetTypeID(void) { return ReadStream::type(); }

CFReadStreamRef CFReadStreamCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes,
                                                  CFIndex length, CFAllocatorRef bytesDeallocator) {
  if (length < 0 || (bytes == nullptr && length > 0)) return nullptr;
  if (bytesDeallocator == nullptr) bytesDeallocator = CFAllocatorGetDefault();
  const std::span content(bytes, static_cast<std::size_t>(length));
  return referenceTo<CFReadStreamRef>(
      create<MemoryReadStream>(allocator, content, bytesDeallocator));
}

CFReadStreamRef CFReadStreamCreateWithFile(CFAllocatorRef allocator, CFURLRef fileURL) {
  if (!isFileURL(fileURL)) return nullptr;
  return referenceTo<CFReadStreamRef>(
      create<FileReadStream>(allocator, Held<CFURLRef>::retaining(fileURL)));
}

Boolean CFReadStreamOpen(CFReadStreamRef stream) {
  ReadStream* object = readStreamOf(stream);
  return object != nullptr && object->open();
}

void CFReadStreamClose(CFReadStreamRef stream) {
  if (ReadStream* object = readStreamOf(stream)) object->close();
}

CFStreamStatus CFReadStreamGetStatus(CFReadStreamRef stream) {
  const ReadStream* object = readStreamOf(stream);
  return object != nullptr ? object->status : CFStreamStatus{kCFStreamStatusNotOpen};
}

CFStreamError CFReadStreamGetError(CFReadStreamRef stream) {
  const ReadStream* object = readStreamOf(stream);
  return object != nullptr ? object->error : CFStreamError{};
}

CFIndex CFReadStreamRead(CFReadStreamRef stream, UInt8* buffer, CFIndex bufferSize) {
  ReadStream* object = readStreamOf(stream);
  if (object == nullptr || buffer == nullptr || bufferSize <= 0 || !object->isOpen()) return -1;
  if (object->status == kCFStreamStatusAtEnd) return 0;
  return object->read(buffer, bufferSize);
}

Boolean CFReadStreamHasBytesAvailable(CFReadStreamRef stream) {
  const ReadStream* object = readStreamOf(stream);
  return object != nullptr && object->status == kCFStreamStatusOpen;
}

const UInt8* CFReadStreamGetBuffer(CFReadStreamRef stream, CFIndex maximum, CFIndex* readBytes) {
  CFIndex unused = 0;
  CFIndex& taken = readBytes != nullptr ? *readBytes : unused;
  taken = 0;
  ReadStream* object = readStreamOf(stream);
  if (object == nullptr || maximum < 0 || object->status != kCFStreamStatusOpen) return nullptr;
  return object->take(maximum > 0 ? maximum : std::numeric_limits<CFIndex>::max(), taken);
}

CFTypeRef CFReadStreamCopyProperty(CFReadStreamRef stream, CFStringRef name) {
  ReadStream* object = readStreamOf(stream);
  return object != nullptr ? object->copyProperty(name) : nullptr;
}

Boolean CFReadStreamSetProperty(CFReadStreamRef stream, CFStringRef name, CFTypeRef value) {
  ReadStream* object = readStreamOf(stream);
  return object != nullptr && object->setProperty(name, value);
}
