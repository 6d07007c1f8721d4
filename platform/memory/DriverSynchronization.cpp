// Licence: MIT, see LICENSE.
#include <CarbonCore/DriverSynchronization.h>

#include <atomic>

namespace {

template <typename T>
T add(SInt32 amount, T* value) {
  return std::atomic_ref<T>(*value).fetch_add(static_cast<T>(amount));
}

template <typename T>
T bitAnd(UInt32 mask, T* value) {
  return std::atomic_ref<T>(*value).fetch_and(static_cast<T>(mask));
}

template <typename T>
T bitOr(UInt32 mask, T* value) {
  return std::atomic_ref<T>(*value).fetch_or(static_cast<T>(mask));
}

template <typename T>
T bitXor(UInt32 mask, T* value) {
  return std::atomic_ref<T>(*value).fetch_xor(static_cast<T>(mask));
}

}  // namespace

Boolean CompareAndSwap(UInt32 oldValue, UInt32 newValue, UInt32* address) {
  return std::atomic_ref<UInt32>(*address).compare_exchange_strong(oldValue, newValue) ? 1 : 0;
}

SInt32 IncrementAtomic(SInt32* value) { return add(1, value); }
SInt32 DecrementAtomic(SInt32* value) { return add(-1, value); }
SInt32 AddAtomic(SInt32 amount, SInt32* value) { return add(amount, value); }
UInt32 BitAndAtomic(UInt32 mask, UInt32* value) { return bitAnd(mask, value); }
UInt32 BitOrAtomic(UInt32 mask, UInt32* value) { return bitOr(mask, value); }
UInt32 BitXorAtomic(UInt32 mask, UInt32* value) { return bitXor(mask, value); }

SInt16 IncrementAtomic16(SInt16* value) { return add(1, value); }
SInt16 DecrementAtomic16(SInt16* value) { return add(-1, value); }
SInt16 AddAtomic16(SInt32 amount, SInt16* value) { return add(amount, value); }
UInt16 BitAndAtomic16(UInt32 mask, UInt16* value) { return bitAnd(mask, value); }
UInt16 BitOrAtomic16(UInt32 mask, UInt16* value) { return bitOr(mask, value); }
UInt16 BitXorAtomic16(UInt32 mask, UInt16* value) { return bitXor(mask, value); }

SInt8 IncrementAtomic8(SInt8* value) { return add(1, value); }
SInt8 DecrementAtomic8(SInt8* value) { return add(-1, value); }
SInt8 AddAtomic8(SInt32 amount, SInt8* value) { return add(amount, value); }
UInt8 BitAndAtomic8(UInt32 mask, UInt8* value) { return bitAnd(mask, value); }
UInt8 BitOrAtomic8(UInt32 mask, UInt8* value) { return bitOr(mask, value); }
UInt8 BitXorAtomic8(UInt32 mask, UInt8* value) { return bitXor(mask, value); }
