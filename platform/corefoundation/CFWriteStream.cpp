// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFStream.h>

#include <algorithm>

#include "platform/corefoundation/GrowingBuffer.h"
#include "platform/corefoundation/Streams.h"

namespace platform::corefoundation {

namespace {

constexpr int kOutOfMemory = 12;  // ENOMEM everywhere

// The caller's memory, which is full at some point.
class BufferWriteStream final : public WriteStream {
 public:
  BufferWriteStream(UInt8* buffer, CFIndex size) : bytes(buffer), capacity(size) {}

  CFIndex write(const UInt8* source, CFIndex length) override {
    const CFIndex put = std::min(length, capacity - used);
    std::copy_n(source, put, bytes + used);
    used += put;
    if (used == capacity) status = kCFStreamStatusAtEnd;
    return put;
  }
  CFTypeRef copyProperty(CFStringRef name) override {
    const bool has = isProperty(name, kCFStreamPropertyDataWritten);
    return has ? CFDataCreate(nullptr, bytes, used) : nullptr;
  }

 protected:
  bool doOpen() override {
    if (capacity == 0) status = kCFStreamStatusAtEnd;
    return true;
  }

 private:
  UInt8* const bytes;
  const CFIndex capacity;
  CFIndex used = 0;
};

class MemoryWriteStream final : public WriteStream {
 public:
  explicit MemoryWriteStream(CFAllocatorRef bufferAllocator)
      : memory(Held<CFAllocatorRef>::retaining(bufferAllocator)) {}
  ~MemoryWriteStream() override { buffer.release(memory.get()); }

  CFIndex write(const UInt8* source, CFIndex length) override {
    if (buffer.append(memory.get(), source, length)) return length;
    fail(kOutOfMemory);
    return -1;
  }
  CFTypeRef copyProperty(CFStringRef name) override {
    const bool has = isProperty(name, kCFStreamPropertyDataWritten);
    return has ? CFDataCreate(nullptr, buffer.data(), buffer.size()) : nullptr;
  }

 private:
  const Held<CFAllocatorRef> memory;
  GrowingBuffer<UInt8> buffer;
};

class FileWriteStream final : public WriteStream {
 public:
  explicit FileWriteStream(Held<CFURLRef> fileURL) : file(std::move(fileURL)) {}

  CFIndex write(const UInt8* source, CFIndex length) override {
    const auto put = file.contents().write(
        {reinterpret_cast<const std::byte*>(source), static_cast<std::size_t>(length)});
    if (put) return static_cast<CFIndex>(*put);
    fail(file.contents().failure());
    return -1;
  }
  CFTypeRef copyProperty(CFStringRef name) override {
    const bool has = isOpen() && isProperty(name, kCFStreamPropertyFileCurrentOffset);
    return has ? file.copyOffset() : nullptr;
  }
  bool setProperty(CFStringRef name, CFTypeRef value) override {
    if (isProperty(name, kCFStreamPropertyAppendToFile)) {
      const bool isKnown = status == kCFStreamStatusNotOpen && value != nullptr &&
                           CFGetTypeID(value) == CFBooleanGetTypeID();
      if (isKnown) adds = CFBooleanGetValue(static_cast<CFBooleanRef>(value));
      return isKnown;
    }
    return isOpen() && isProperty(name, kCFStreamPropertyFileCurrentOffset) &&
           file.setOffset(value);
  }

 protected:
  bool doOpen() override {
    const int code = file.open(adds ? host::FilePurpose::kAdd : host::FilePurpose::kReplace);
    return code == 0 || fail(code);
  }
  void doClose() override { file.close(); }

 private:
  StreamFile file;
  bool adds = false;
};

WriteStream* writeStreamOf(CFWriteStreamRef reference) {
  return checkedObject<WriteStream>(reference);
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

const CFStringRef kCFStreamPropertyDataWritten = CFSTR("kCFStreamPropertyDataWritten");
const CFStringRef kCFStreamPropertyAppendToFile = CFSTR("kCFStreamPropertyAppendToFile");
const CFStringRef kCFStreamPropertyFileCurrentOffset = CFSTR("kCFStreamPropertyFileCurrentOffset");

CFTypeID CFWriteStreamGetTypeID(void) { return WriteStream::type(); }

CFWriteStreamRef CFWriteStreamCreateWithBuffer(CFAllocatorRef allocator, UInt8* buffer,
                                               CFIndex capacity) {
  if (capacity < 0 || (buffer == nullptr && capacity > 0)) return nullptr;
  return referenceTo<CFWriteStreamRef>(create<BufferWriteStream>(allocator, buffer, capacity));
}

CFWriteStreamRef CFWriteStreamCreateWithAllocatedBuffers(CFAllocatorRef allocator,
                                                         CFAllocatorRef bufferAllocator) {
  if (bufferAllocator == nullptr) bufferAllocator = CFAllocatorGetDefault();
  return referenceTo<CFWriteStreamRef>(create<MemoryWriteStream>(allocator, bufferAllocator));
}

CFWriteStreamRef CFWriteStreamCreateWithFile(CFAllocatorRef allocator, CFURLRef fileURL) {
  if (!isFileURL(fileURL)) return nullptr;
  return referenceTo<CFWriteStreamRef>(
      create<FileWriteStream>(allocator, Held<CFURLRef>::retaining(fileURL)));
}

Boolean CFWriteStreamOpen(CFWriteStreamRef stream) {
  WriteStream* object = writeStreamOf(stream);
  return object != nullptr && object->open();
}

void CFWriteStreamClose(CFWriteStreamRef stream) {
  if (WriteStream* object = writeStreamOf(stream)) object->close();
}

CFStreamStatus CFWriteStreamGetStatus(CFWriteStreamRef stream) {
  const WriteStream* object = writeStreamOf(stream);
  return object != nullptr ? object->status : CFStreamStatus{kCFStreamStatusNotOpen};
}

CFStreamError CFWriteStreamGetError(CFWriteStreamRef stream) {
  const WriteStream* object = writeStreamOf(stream);
  return object != nullptr ? object->error : CFStreamError{};
}

CFIndex CFWriteStreamWrite(CFWriteStreamRef stream, const UInt8* bytes, CFIndex length) {
  WriteStream* object = writeStreamOf(stream);
  if (object == nullptr || bytes == nullptr || length < 0 || !object->isOpen()) return -1;
  if (length == 0 || object->status == kCFStreamStatusAtEnd) return 0;
  return object->write(bytes, length);
}

Boolean CFWriteStreamCanAcceptBytes(CFWriteStreamRef stream) {
  const WriteStream* object = writeStreamOf(stream);
  return object != nullptr && object->status == kCFStreamStatusOpen;
}

CFTypeRef CFWriteStreamCopyProperty(CFWriteStreamRef stream, CFStringRef name) {
  WriteStream* object = writeStreamOf(stream);
  return object != nullptr ? object->copyProperty(name) : nullptr;
}

Boolean CFWriteStreamSetProperty(CFWriteStreamRef stream, CFStringRef name, CFTypeRef value) {
  WriteStream* object = writeStreamOf(stream);
  return object != nullptr && object->setProperty(name, value);
}
