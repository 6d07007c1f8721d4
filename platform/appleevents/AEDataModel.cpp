// Licence: MIT, see LICENSE.
#include <AE/AEDataModel.h>

#include <algorithm>
#include <cstring>

#include "platform/appleevents/Coercion.h"
#include "platform/appleevents/Storage.h"

using namespace platform::appleevents;

void AEInitializeDesc(AEDesc* desc) {
  if (desc != nullptr) *desc = kNullDesc;
}

OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result) {
  if (result == nullptr) return paramErr;
  *result = kNullDesc;
  if (!isBlock(data, size)) return paramErr;
  return makeDesc(type, blockOf(data, size), result);
}

OSErr AEDisposeDesc(AEDesc* desc) {
  if (desc == nullptr) return paramErr;
  delete desc->dataHandle;
  *desc = kNullDesc;
  return noErr;
}

OSErr AEDuplicateDesc(const AEDesc* desc, AEDesc* result) {
  if (desc == nullptr || result == nullptr) return paramErr;
  const AEDesc source = *desc;  // which the result may be
  *result = kNullDesc;
  if (source.dataHandle == nullptr) {
    result->descriptorType = source.descriptorType;
    return noErr;
  }
  std::unique_ptr<Storage> copy = source.dataHandle->duplicate();
  if (copy == nullptr) return memFullErr;
  *result = {source.descriptorType, copy.release()};
  return noErr;
}

OSErr AEGetDescData(const AEDesc* desc, void* data, Size maximumSize) {
  if (desc == nullptr || !isBlock(data, maximumSize)) return paramErr;
  const Bytes bytes = bytesOf(*desc);
  const std::size_t count = std::min(bytes.size(), static_cast<std::size_t>(maximumSize));
  if (count > 0) std::memcpy(data, bytes.data(), count);
  return noErr;
}

Size AEGetDescDataSize(const AEDesc* desc) {
  return desc == nullptr ? 0 : static_cast<Size>(bytesOf(*desc).size());
}

OSErr AEGetDescDataRange(const AEDesc* desc, void* buffer, Size offset, Size length) {
  if (desc == nullptr || offset < 0 || !isBlock(buffer, length)) return paramErr;
  const Bytes bytes = bytesOf(*desc);
  const auto begin = static_cast<std::size_t>(offset);
  const auto count = static_cast<std::size_t>(length);
  if (begin > bytes.size() || count > bytes.size() - begin) return errAEBufferTooSmall;
  if (count > 0) std::memcpy(buffer, bytes.data() + begin, count);
  return noErr;
}

OSErr AEReplaceDescData(DescType type, const void* data, Size size, AEDesc* desc) {
  if (desc == nullptr || !isBlock(data, size)) return paramErr;
  HeldDesc made;
  const OSErr status = makeDesc(type, blockOf(data, size), made.out());
  if (status != noErr) return status;
  AEDisposeDesc(desc);
  *desc = made.take();
  return noErr;
}
