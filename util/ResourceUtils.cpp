// Licence: MIT, see LICENSE.
#include <quorvant/util/ResourceUtils.h>

#include <quorvant/util/StringUtils.h>

#include <algorithm>
#include <cstring>

namespace {

/// What is behind the handle that the Resource Manager has just given, in memory.
OSErr statusOf(Handle h) {
  if (h == nullptr) {
    const OSErr err = ResError();
    return err == noErr ? OSErr{resNotFound} : err;
  }
  if (*h != nullptr) return noErr;
  LoadResource(h);
  if (*h != nullptr) return noErr;
  OSErr err = ResError();
  if (err == noErr) err = MemError();
  return err == noErr ? OSErr{memFullErr} : err;
}

/// Copies as much of a Pascal string as there is of it and as fits.
OSErr copyString(Handle h, unsigned char* buffer, SInt32 size) {
  const auto* source = reinterpret_cast<const unsigned char*>(*h);
  const auto available = static_cast<SInt32>(GetHandleSize(h));
  if (available < 1) return noErr;
  const SInt32 wanted = std::min<SInt32>(source[0] + 1, available);
  BlockMoveData(source, buffer, std::min(wanted, size));
  if (wanted <= size) return noErr;
  buffer[0] = static_cast<unsigned char>(size - 1);
  return writingPastEnd;
}

}  // namespace

OSErr NFGetResource(ResType type, ResID id, Handle& h) {
  h = GetResource(type, id);
  return statusOf(h);
}

OSErr NFGet1Resource(ResType type, ResID id, Handle& h) {
  h = Get1Resource(type, id);
  return statusOf(h);
}

OSErr NFCopy1Resource(ResType type, ResID id, void* buffer, SInt32 size, SInt32* resourceSize) {
  Handle h = nullptr;
  const OSErr err = NFGet1Resource(type, id, h);
  const auto available = err == noErr ? static_cast<SInt32>(GetHandleSize(h)) : SInt32{0};
  if (resourceSize != nullptr) *resourceSize = available;
  if (buffer == nullptr || size < 1) return err;
  const SInt32 copied = std::min(available, size);
  if (copied > 0) BlockMoveData(*h, buffer, copied);
  std::memset(static_cast<char*>(buffer) + copied, 0, static_cast<size_t>(size - copied));
  return err;
}

OSErr NFCopy1StringResource(ResType type, ResID id, unsigned char* buffer, SInt32 size,
                            const unsigned char* fallback) {
  Handle h = nullptr;
  const OSErr err = NFGet1Resource(type, id, h);
  if (buffer == nullptr || size < 1) return err;
  buffer[0] = 0;
  if (err == noErr) return copyString(h, buffer, size);
  if (err != resNotFound || fallback == nullptr) return err;
  pstrcpy(buffer, fallback, size);
  return noErr;
}
