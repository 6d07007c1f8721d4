// Licence: MIT, see LICENSE.
// What read and write streams have in common: the states that they go through, and the kinds that
// are made of a file.
#ifndef PLATFORM_COREFOUNDATION_STREAMS_H
#define PLATFORM_COREFOUNDATION_STREAMS_H

#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFStream.h>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/corefoundation/UrlObject.h"
#include "platform/host/FileStream.h"

namespace platform::corefoundation {

/// A stream is used only in the states that allow it; derived classes do the work, and answer false
/// or a negative number once they have called fail().
class Stream : public Object {
 public:
  bool open() {
    if (status != kCFStreamStatusNotOpen) return false;
    status = kCFStreamStatusOpen;
    return doOpen();
  }
  void close() {
    if (status == kCFStreamStatusClosed) return;
    doClose();
    if (status != kCFStreamStatusError) status = kCFStreamStatusClosed;
  }
  bool isOpen() const { return status == kCFStreamStatusOpen || status == kCFStreamStatusAtEnd; }

  virtual CFTypeRef copyProperty(CFStringRef) { return nullptr; }
  virtual bool setProperty(CFStringRef, CFTypeRef) { return false; }

  CFStreamStatus status = kCFStreamStatusNotOpen;
  CFStreamError error = {};

 protected:
  virtual bool doOpen() { return true; }
  virtual void doClose() {}
  bool fail(int code) {
    status = kCFStreamStatusError;
    error = {kCFStreamErrorDomainPOSIX, code};
    return false;
  }
};

class ReadStream : public Stream {
 public:
  static CFTypeID type() {
    static const CFTypeID id = registerType("CFReadStream");
    return id;
  }
  CFTypeID typeID() const final { return type(); }
  /// Called while the stream is open and not at its end, with room for at least a byte.
  virtual CFIndex read(UInt8* buffer, CFIndex size) = 0;
  /// Bytes of its own memory that count as read then; null if it has none.
  virtual const UInt8* take(CFIndex, CFIndex&) { return nullptr; }
};

class WriteStream : public Stream {
 public:
  static CFTypeID type() {
    static const CFTypeID id = registerType("CFWriteStream");
    return id;
  }
  CFTypeID typeID() const final { return type(); }
  /// Called while the stream is open and not full, with at least a byte.
  virtual CFIndex write(const UInt8* bytes, CFIndex length) = 0;
};

/// The part of a stream that is a file.
class StreamFile final {
 public:
  explicit StreamFile(Held<CFURLRef> fileURL) : url(std::move(fileURL)) {}

  /// The code of the failure, or 0. Running out of memory is one too.
  int open(host::FilePurpose purpose);
  void close() { file.close(); }
  CFTypeRef copyOffset();
  bool setOffset(CFTypeRef value);
  host::FileStream& contents() { return file; }

 private:
  const Held<CFURLRef> url;
  host::FileStream file;
};

/// Whether it is the URL of a file here.
bool isFileURL(CFURLRef url);
inline bool isProperty(CFStringRef name, CFStringRef known) {
  return name != nullptr && CFEqual(name, known);
}

}  // namespace platform::corefoundation

#endif
