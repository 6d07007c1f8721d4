// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/CopyAEParams.h>
#include <quorvant/util/HandleUtils.h>

#include <algorithm>

namespace {

bool wantsAnyType(DescType type) { return type == typeWildCard || type == typeBest; }

// A parameter as it is stored, and where a caller wants its bytes. `Place` has makeRoom(size), and
// between begin() and end() bytes() of that size.
struct Parameter {
  const AppleEvent& event;
  AEKeyword keyword;
  DescType type = 0;
  Size size = 0;
};

template <typename Place, typename Copy>
OSErr fill(Place& place, Size size, Copy copy) {
  const OSErr err = place.makeRoom(static_cast<SInt32>(size));
  if (err != noErr) return err;
  place.begin();
  const OSErr copyErr = copy(place.bytes());
  place.end();
  return copyErr;
}

template <typename Place>
OSErr copyStored(Parameter& parameter, DescType desiredType, Place& place) {
  return fill(place, parameter.size, [&](void* bytes) {
    return AEGetParamPtr(&parameter.event, parameter.keyword, desiredType, nullptr, bytes,
                         parameter.size, &parameter.size);
  });
}

template <typename Place>
OSErr copyCoerced(Parameter& parameter, DescType desiredType, Place& place) {
  AEDesc coerced;
  AEInitializeDesc(&coerced);
  const OSErr err = AEGetParamDesc(&parameter.event, parameter.keyword, desiredType, &coerced);
  if (err != noErr) return err;
  parameter.size = AEGetDescDataSize(&coerced);
  const OSErr copyErr = fill(place, parameter.size, [&](void* bytes) {
    return AEGetDescData(&coerced, bytes, parameter.size);
  });
  const OSErr disposeErr = AEDisposeDesc(&coerced);
  return copyErr != noErr ? copyErr : disposeErr;
}

template <typename Place>
OSErr copyParameter(Parameter& parameter, DescType desiredType, bool mayCoerce, Place& place) {
  const OSErr err =
      AESizeOfParam(&parameter.event, parameter.keyword, &parameter.type, &parameter.size);
  if (err != noErr) return err;
  if (desiredType == parameter.type || wantsAnyType(desiredType)) {
    return copyStored(parameter, desiredType, place);
  }
  const OSErr coerceErr = copyCoerced(parameter, desiredType, place);
  return mayCoerce ? coerceErr : OSErr{errAECoercionFail};
}

class AllocatedPlace final {
 public:
  AllocatedPlace(AEPtrAllocator with, void*& out) : allocator(with), data(out) {}
  OSErr makeRoom(SInt32 size) { return CallAEPtrAllocator(allocator, data, size); }
  void begin() {}
  void* bytes() const { return data; }
  void end() {}

 private:
  AEPtrAllocator allocator;
  void*& data;
};

class HandlePlace final {
 public:
  explicit HandlePlace(Handle ofCaller) : handle(ofCaller) {}
  OSErr makeRoom(SInt32 size) { return NFSetHandleSize(handle, size); }
  void begin() { HLock(handle); }
  void* bytes() const { return *handle; }
  void end() { HUnlock(handle); }

 private:
  Handle handle;
};

}  // namespace

OSErr CallAEPtrAllocator(AEPtrAllocator allocator, void*& block, SInt32 size) {
  size = std::max(size, SInt32{1});
  block = allocator != nullptr ? allocator(size) : NewPtr(size);
  if (block == nullptr) return memFullErr;
  return noErr;
}

OSErr AECopyParamData(const AppleEvent& event, AEKeyword keyword, DescType desiredType, void*& data,
                      SInt32* actualSize, DescType* actualType, AEPtrAllocator allocator) {
  data = nullptr;
  Parameter parameter{event, keyword};
  AllocatedPlace place(allocator, data);
  const OSErr err = copyParameter(parameter, desiredType, actualType != nullptr, place);
  if (actualType != nullptr) *actualType = parameter.type;
  if (actualSize != nullptr) *actualSize = static_cast<SInt32>(parameter.size);
  return err;
}

OSErr AECopyParamDataToHandle(const AppleEvent& event, AEKeyword keyword, DescType desiredType,
                              Handle handle, DescType* actualType) {
  Parameter parameter{event, keyword};
  HandlePlace place(handle);
  const OSErr err = copyParameter(parameter, desiredType, actualType != nullptr, place);
  if (actualType != nullptr) *actualType = parameter.type;
  if (err != noErr && handle != nullptr) SetHandleSize(handle, 0);
  return err;
}
