// Licence: MIT, see LICENSE.
// The object core of Core Foundation: what every reference points to.
//
// An object lives in memory of its CFAllocator. The last release runs the destructor and gives the
// memory back. Objects of the kind of kCFBooleanTrue are immortal: retaining and releasing does not
// count on them.
#ifndef PLATFORM_COREFOUNDATION_CFRUNTIME_H
#define PLATFORM_COREFOUNDATION_CFRUNTIME_H

#include <CoreFoundation/CFBase.h>

#include <atomic>
#include <new>
#include <utility>

namespace platform::corefoundation {

/// Registers a type under its name ("CFString") and gives its ID. A type asks once and keeps it.
CFTypeID registerType(const char* name);

class Object {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  virtual CFTypeID typeID() const = 0;
  /// Called with an object of the same type that is not this one. By default only identity is equality.
  virtual bool equals(const Object& other) const;
  /// Equal objects have equal hashes. By default made of the address.
  virtual CFHashCode hash() const;
  /// The text of CFCopyDescription, owned by the caller.
  virtual CFStringRef copyDescription() const;

  void retain() const;
  void release() const;
  CFIndex retainCount() const;
  CFAllocatorRef allocator() const { return owner; }
  void makeImmortal() { references.store(kImmortal, std::memory_order_relaxed); }

 protected:
  Object() = default;
  virtual ~Object();

 private:
  template <typename T, typename... Arguments>
  friend T* create(CFAllocatorRef allocator, Arguments&&... arguments);

  static constexpr UInt32 kImmortal = 0xFFFFFFFF;
  mutable std::atomic<UInt32> references{1};
  CFAllocatorRef owner = nullptr;
};

/// Memory from an allocator (null: the thread's default, which is then retained for the object's life).
void* allocateObject(CFAllocatorRef& allocator, std::size_t size);
void freeObject(CFAllocatorRef allocator, void* memory);

/// Makes an object with one reference, or null if there is no memory. Its constructor must not throw.
template <typename T, typename... Arguments>
T* create(CFAllocatorRef allocator, Arguments&&... arguments) {
  void* memory = allocateObject(allocator, sizeof(T));
  if (memory == nullptr) return nullptr;
  T* object = new (memory) T(std::forward<Arguments>(arguments)...);
  object->owner = allocator;
  return object;
}

/// The object behind an opaque reference; T is its real type. Null stays null.
template <typename T>
T* objectOf(CFTypeRef reference) {
  return static_cast<T*>(const_cast<Object*>(static_cast<const Object*>(reference)));
}

/// The opaque reference of an object.
template <typename Ref>
Ref referenceTo(const Object* object) {
  return reinterpret_cast<Ref>(const_cast<Object*>(object));
}

/// Owns one reference to an object.
template <typename Ref>
class Held {
 public:
  Held() = default;
  explicit Held(Ref owned) : reference(owned) {}
  static Held retaining(Ref borrowed) {
    if (borrowed != nullptr) CFRetain(borrowed);
    return Held(borrowed);
  }
  Held(Held&& other) noexcept : reference(std::exchange(other.reference, nullptr)) {}
  Held& operator=(Held&& other) noexcept {
    std::swap(reference, other.reference);
    return *this;
  }
  Held(const Held& other) : Held(retaining(other.reference)) {}
  Held& operator=(const Held& other) {
    Held copy(other);
    std::swap(reference, copy.reference);
    return *this;
  }
  ~Held() {
    if (reference != nullptr) CFRelease(reference);
  }

  Ref get() const { return reference; }
  Ref take() { return std::exchange(reference, nullptr); }
  explicit operator bool() const { return reference != nullptr; }
  friend bool operator==(const Held& a, const Held& b) { return a.reference == b.reference; }

 private:
  Ref reference = nullptr;
};

}  // namespace platform::corefoundation

#endif
