// Licence: MIT, see LICENSE.
#include <quorvant/util/HandleUtils.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

/// What a creation gives: the handle's success, or why there is none.
OSErr creationStatus(char** h) { return h == nullptr ? NFAllocFailureStatus() : OSErr{noErr}; }

void zero(char** h, SInt32 size) {
  if (size > 0) std::memset(*h, 0, static_cast<size_t>(size));
}

bool isMissing(const void* data, SInt32 size) { return data == nullptr && size > 0; }

/// Makes a block one that may be resized: neither purgeable nor locked.
void release(char** h, SInt8 state) {
  if ((state & kHandlePurgeableMask) != 0) HNoPurge(h);
  if ((state & kHandleLockedMask) != 0) HUnlock(h);
}

/// Gives an empty handle a block.
OSErr fill(char** h, SInt32 size, SInt32& newSize) {
  ReallocateHandle(h, size);
  if (*h == nullptr) return NFAllocFailureStatus();
  OSErr err = NFGetHandleSize(h, newSize);
  const SInt8 state = HGetState(h);
  if (err == noErr) err = MemError();
  if (err == noErr) release(h, state);
  return err;
}

/// Resizes the block of a handle that has one. Growing gives a fresh block: what is in it need not
/// be copied.
OSErr resize(char** h, SInt32 size, SInt32& newSize) {
  const SInt8 state = HGetState(h);
  OSErr err = MemError();
  if (err != noErr) return err;
  err = NFGetHandleSize(h, newSize);
  release(h, state);
  if (err != noErr || newSize == size) return err;
  if (size < newSize) {
    SetHandleSize(h, size);
  } else {
    ReallocateHandle(h, size);
  }
  err = MemError();
  return err == noErr ? NFGetHandleSize(h, newSize) : err;
}

}  // namespace

OSErr NFAllocFailureStatus() {
  const OSErr err = MemError();
  return err == noErr ? OSErr{memFullErr} : err;
}

OSErr NFNewHandle(char**& h, SInt32 size) {
  h = NewHandle(size);
  return creationStatus(h);
}

OSErr NFNewHandleClear(char**& h, SInt32 size) {
  h = NewHandleClear(size);
  return creationStatus(h);
}

OSErr NFNewHandleFromPtr(char**& h, const void* data, SInt32 size) {
  h = nullptr;
  if (isMissing(data, size)) return paramErr;
  const OSErr err = NFNewHandle(h, size);
  if (err == noErr && size >= 1) BlockMoveData(data, *h, size);
  return err;
}

OSErr NFNewHandleSys(char**& h, SInt32 size) { return NFNewHandle(h, size); }

OSErr NFNewHandleSysClear(char**& h, SInt32 size) { return NFNewHandleClear(h, size); }

OSErr NFNewHandleTemp(char**& h, SInt32 size) {
  OSErr err = noErr;
  h = TempNewHandle(size, &err);
  return h == nullptr && err == noErr ? OSErr{memFullErr} : err;
}

OSErr NFNewHandleTempClear(char**& h, SInt32 size) {
  const OSErr err = NFNewHandleTemp(h, size);
  if (err == noErr) zero(h, size);
  return err;
}

OSErr NFNewHandleSysTemp(char**& h, SInt32 size) { return NFNewHandleTemp(h, size); }

OSErr NFNewHandleSysTempClear(char**& h, SInt32 size) { return NFNewHandleTempClear(h, size); }

OSErr NFGetHandleSize(char** h, SInt32& size) {
  const Size found = GetHandleSize(h);
  const bool fits = found <= std::numeric_limits<SInt32>::max();
  size = fits ? static_cast<SInt32>(found) : 0;
  return fits ? MemError() : OSErr{paramErr};
}

OSErr NFDisposeHandle(char**& h) {
  if (h == nullptr) return noErr;
  char** disposed = h;
  h = nullptr;
  DisposeHandle(disposed);
  return MemError();
}

OSErr NFSetHandleSize(char** h, SInt32 size) {
  if (h == nullptr) return nilHandleErr;
  HUnlock(h);
  SetHandleSize(h, size);
  const OSErr err = MemError();
  if (err != noErr) return err;
  return GetHandleSize(h) < size ? OSErr{memFullErr} : OSErr{noErr};
}

OSErr NFSetHandleSizeClear(char** h, SInt32 size) {
  const OSErr err = NFSetHandleSize(h, size);
  if (err == noErr) zero(h, size);
  return err;
}

OSErr NFEmptyHandle(char** h) {
  EmptyHandle(h);
  return MemError();
}

OSErr NFReallocHandle(char** h, SInt32 size) {
  if (h == nullptr) return nilHandleErr;
  SInt32 newSize = 0;
  const OSErr err = *h == nullptr ? fill(h, size, newSize) : resize(h, size, newSize);
  if (err != noErr) return err;
  return newSize < size ? OSErr{memFullErr} : OSErr{noErr};
}

OSErr NFReallocHandleClear(char** h, SInt32 size) {
  const OSErr err = NFReallocHandle(h, size);
  if (err == noErr) zero(h, size);
  return err;
}

OSErr NFSetStringHandle(unsigned char** h, const unsigned char* pstr) {
  static constexpr unsigned char kEmpty[] = {0};
  const unsigned char* text = pstr == nullptr ? kEmpty : pstr;
  return NFPtrToHandle(reinterpret_cast<char**>(h), text, text[0] + 1);
}

OSErr NFPtrToHandle(char** h, const void* data, SInt32 size) {
  if (h != nullptr && isMissing(data, size)) return paramErr;
  const OSErr err = NFReallocHandle(h, size);
  if (err == noErr) BlockMoveData(data, *h, size);
  return err;
}

OSErr NFPtrAndHand(char** h, const void* data, SInt32 size) {
  PtrAndHand(data, h, size);
  return MemError();
}

OSErr NFCopyHandle(char** source, char** destination) {
  if (source == nullptr || destination == nullptr) return paramErr;
  if (source == destination) return noErr;
  if (*source == nullptr) return NFEmptyHandle(destination);
  SInt32 size = 0;
  OSErr err = NFGetHandleSize(source, size);
  if (err == noErr) err = NFReallocHandle(destination, size);
  if (err == noErr) BlockMoveData(*source, *destination, size);
  return err;
}

OSErr NFCloneHandle(char** source, char**& destination) {
  if (source == nullptr) return NFDisposeHandle(destination);
  SInt32 size = 0;
  OSErr err = NFGetHandleSize(source, size);
  if (err != noErr) return err;
  err =
      destination == nullptr ? NFNewHandle(destination, size) : NFReallocHandle(destination, size);
  if (err == noErr) BlockMoveData(*source, *destination, size);
  return err;
}

void CopyRightJust(const void* source, SInt32 sourceLength, void* destination,
                   SInt32 destinationLength, char fill) {
  const auto* from = static_cast<const char*>(source);
  auto* to = static_cast<char*>(destination);
  const SInt32 taken = std::max(sourceLength, SInt32{0});
  if (destinationLength > taken) {
    const SInt32 before = destinationLength - taken;
    BlockMoveData(from, to + before, taken);
    std::memset(to, fill, static_cast<size_t>(before));
  } else {
    BlockMoveData(from + (taken - destinationLength), to, destinationLength);
  }
}
