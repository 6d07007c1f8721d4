// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/AETypeCoercion.h>

#include <algorithm>

namespace {

bool isAnyType(DescType type) { return type == typeWildCard || type == typeBest; }

// Owns a descriptor until it is moved to a caller's.
class TempDesc final {
 public:
  TempDesc() { AEInitializeDesc(&desc); }
  ~TempDesc() { AEDisposeDesc(&desc); }
  TempDesc(const TempDesc&) = delete;
  TempDesc& operator=(const TempDesc&) = delete;

  DescType type() const { return desc.descriptorType; }
  void moveTo(AEDesc& result) {
    AEDisposeDesc(&result);
    result = desc;
    AEInitializeDesc(&desc);
  }

  AEDesc desc;
};

bool isReachedThroughText(DescType type) {
  switch (type) {
    case typePString:
    case typeCString:
    case typeEncodedString:
    case typeStyledUnicodeText:
    case typeUnicodeText:
      return true;
    default:
      return false;
  }
}

OSErr coerceThroughText(const AEDesc& source, DescType toType, AEDesc& result) {
  TempDesc text;
  const OSErr err = AECoerceDesc(&source, typeChar, &text.desc);
  return err == noErr ? AECoerceDescToType(text.desc, toType, result) : err;
}

OSErr duplicate(const AEDesc& source, AEDesc& result) {
  if (&source == &result) return noErr;
  AEDisposeDesc(&result);
  return AEDuplicateDesc(&source, &result);
}

// A block as a descriptor, of the type asked for where AECoercePtr can make it, else of its own.
OSErr makeDesc(DescType type, const void* data, SInt32 size, bool tryCoercion, DescType toType,
               TempDesc& made) {
  if (tryCoercion && AECoercePtr(type, data, size, toType, &made.desc) == noErr) return noErr;
  return AECreateDesc(type, data, size, &made.desc);
}

// The bytes behind `offset` are reached by way of a copy that begins at the beginning.
OSErr copyRange(const AEDesc& desc, void* buffer, SInt32 offset, SInt32 count) {
  if (offset == 0) return AEGetDescData(&desc, buffer, count);
  const Size end = static_cast<Size>(offset) + count;
  const Ptr block = NewPtr(end);
  if (block == nullptr) return memFullErr;
  const OSErr err = AEGetDescData(&desc, block, end);
  if (err == noErr) BlockMoveData(block + offset, buffer, count);
  DisposePtr(block);
  return err;
}

// The block has the type asked for already.
SInt32 moveBytes(const void* data, SInt32 size, void* buffer, SInt32 bufferSize, SInt32* actualSize,
                 SInt32 offset) {
  if (actualSize != nullptr) *actualSize = size;
  const SInt64 count = std::min(static_cast<SInt64>(size) - offset, SInt64{bufferSize});
  if (count < 1 || data == nullptr || buffer == nullptr) return 0;
  BlockMoveData(static_cast<const char*>(data) + offset, buffer, static_cast<Size>(count));
  return static_cast<SInt32>(count);
}

}  // namespace

DescType OSTypeInList(DescType type, const DescType* list, SInt32 count, DescType wildType,
                      DescType bestType) {
  if (list == nullptr) return 0;
  for (SInt32 i = 0; i < count; ++i) {
    if (list[i] == type) return type;
    if (type == typeWildCard) return wildType;
    if (type == typeBest) return bestType;
  }
  return 0;
}

OSErr AECoerceDescToType(const AEDesc& source, DescType toType, AEDesc& result) {
  if (source.descriptorType == toType || isAnyType(toType)) return duplicate(source, result);
  TempDesc coerced;
  OSErr err = AECoerceDesc(&source, toType, &coerced.desc);
  if (err == noErr && coerced.type() == toType) {
    coerced.moveTo(result);
    return noErr;
  }
  if (err == noErr) err = errAECoercionFail;
  // Text that cannot be had in another form cannot be had by way of itself either.
  if (source.descriptorType == typeChar || !isReachedThroughText(toType)) return err;
  return coerceThroughText(source, toType, result);
}

OSErr AECoerceDescToTypeList(const AEDesc& source, AEDesc& result, const DescType* list,
                             SInt32 count, DescType wildType, DescType bestType) {
  OSErr err = errAECoercionFail;
  const DescType listed = OSTypeInList(source.descriptorType, list, count, wildType, bestType);
  if (listed != 0) {
    err = AECoerceDescToType(source, listed, result);
    if (err == noErr) return noErr;
  }
  if (list == nullptr) return err;
  for (SInt32 i = 0; i < count; ++i) {
    DescType type = list[i];
    if (type == typeWildCard) {
      type = wildType;
    } else if (type == typeBest) {
      type = bestType;
    }
    err = AECoerceDescToType(source, type, result);
    if (err == noErr) return noErr;
  }
  return err;
}

OSErr AECopyPtrToDesc(DescType type, const void* data, SInt32 size, AEDesc& result) {
  return AECoercePtrToDesc(type, data, size, type, result);
}

OSErr AECoercePtrToDesc(DescType type, const void* data, SInt32 size, DescType toType,
                        AEDesc& result) {
  TempDesc made;
  const OSErr err = makeDesc(type, data, size, toType != type && !isAnyType(toType), toType, made);
  if (err != noErr) return err;
  if (toType != made.type() && !isAnyType(toType)) {
    return AECoerceDescToType(made.desc, toType, result);
  }
  made.moveTo(result);
  return noErr;
}

OSErr AECoercePtrToTypeList(DescType type, const void* data, SInt32 size, AEDesc& result,
                            const DescType* list, SInt32 count, DescType wildType,
                            DescType bestType) {
  const DescType listed = OSTypeInList(type, list, count, wildType, bestType);
  TempDesc made;
  const OSErr err =
      makeDesc(type, data, size, listed != 0 && listed != type && !isAnyType(listed), listed, made);
  if (err != noErr) return err;
  if (listed != made.type() && !isAnyType(listed)) {
    return AECoerceDescToTypeList(made.desc, result, list, count, wildType, bestType);
  }
  made.moveTo(result);
  return noErr;
}

SInt32 AECopyDescToPtr(const AEDesc& desc, void* buffer, SInt32 bufferSize, SInt32* actualSize,
                       SInt32 offset) {
  const auto size = static_cast<SInt32>(AEGetDescDataSize(&desc));
  if (actualSize != nullptr) *actualSize = size;
  if (offset < 0) offset += size;
  if (bufferSize < 0 || offset < 0 || offset > size) return paramErr;
  const SInt32 count = std::min(size - offset, bufferSize);
  if (count < 1 || buffer == nullptr) return count;
  const OSErr err = copyRange(desc, buffer, offset, count);
  return err == noErr ? count : err;
}

SInt32 AECoerceDescToPtr(const AEDesc& desc, void* buffer, SInt32 bufferSize, DescType toType,
                         SInt32* actualSize, SInt32 offset) {
  if (desc.descriptorType == toType) {
    return AECopyDescToPtr(desc, buffer, bufferSize, actualSize, offset);
  }
  TempDesc coerced;
  const OSErr err = AECoerceDescToType(desc, toType, coerced.desc);
  if (err != noErr) return err;
  return AECopyDescToPtr(coerced.desc, buffer, bufferSize, actualSize, offset);
}

SInt32 AECoercePtrToPtr(DescType type, const void* data, SInt32 size, DescType toType, void* buffer,
                        SInt32 bufferSize, SInt32* actualSize, SInt32 offset) {
  if (type == toType) return moveBytes(data, size, buffer, bufferSize, actualSize, offset);
  TempDesc coerced;
  const OSErr err = AECoercePtrToDesc(type, data, size, toType, coerced.desc);
  if (err != noErr) return err;
  return AECopyDescToPtr(coerced.desc, buffer, bufferSize, actualSize, offset);
}
