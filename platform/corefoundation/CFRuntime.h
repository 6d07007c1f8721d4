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

/// Registers a type under its name ("CFString") and gives its ID. A type asks once and keeps it, in
/// a static member function type(). The name must stay for good.
CFTypeID registerType(const char* name);
/// The name of a registered type, else null.
const char* typeName(CFTypeID type);

/// Says that an object is constructed immortal: for the ones that are there before main.
struct Immortality {};

class Object {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  virtual CFTypeID typeID() const = 0;
  /// Called with an object of the same type that is not this one. By default only identity is
  /// equality.
  virtual bool equals(const Object& other) const;
  /// Equal objects have equal hashes. By default made of the address.
  virtual CFHashCode hash() const;
  /// The text of CFCopyDescription, owned by the caller.
  virtual CFStringRef copyDescription() const;
  /// The text that %@ stands for in a format, owned by the caller. By default the description.
  virtual CFStringRef copyFormatted() const;

  void retain() const;
  void release() const;
  /// Retains, unless the last reference is already gone: for tables that list objects without
  /// owning them. The table's lock must keep the destructor from getting past it.
  bool retainUnlessDying() const;
  CFIndex retainCount() const;
  /// Whose memory the object is; the system's for one that is there before main.
  CFAllocatorRef allocator() const { return owner != nullptr ? owner : kCFAllocatorSystemDefault; }
  void makeImmortal() { references.store(kImmortal, std::memory_order_relaxed); }

 protected:
  constexpr Object() = default;
  constexpr explicit Object(Immortality) : references(kImmortal) {}
  virtual ~Object() = default;
  /// After the last release: destroys the object and gives its memory back.
  virtual void destroy();
  /// For an object that `create` does not make.
  void setAllocator(CFAllocatorRef allocator) { owner = allocator; }

 private:
  template <typename T, typename... Arguments>
  friend T* createWithSpace(CFAllocatorRef allocator, std::size_t space, Arguments&&... arguments);

  static constexpr UInt32 kImmortal = 0xFFFFFFFF;
  mutable std::atomic<UInt32> references{1};
  CFAllocatorRef owner = nullptr;
};

inline bool Object::retainUnlessDying() const {
  UInt32 count = references.load(std::memory_order_relaxed);
  while (count != 0) {
    if (count == kImmortal || references.compare_exchange_weak(count, count + 1)) return true;
  }
  return false;
}

/// Memory from an allocator (null: the thread's default, which is then retained for the object's
/// life).
void* allocateObject(CFAllocatorRef& allocator, std::size_t size);
void freeObject(CFAllocatorRef allocator, void* memory);

/// Makes an object with one reference, and so many bytes of its own right behind it; null if there
/// is no memory. Its constructor must not throw.
template <typename T, typename... Arguments>
T* createWithSpace(CFAllocatorRef allocator, std::size_t space, Arguments&&... arguments) {
  void* memory = allocateObject(allocator, sizeof(T) + space);
  if (memory == nullptr) return nullptr;
  T* object = new (memory) T(std::forward<Arguments>(arguments)...);
  object->owner = allocator;
  return object;
}

/// Makes an object with one reference, or null if there is no memory. Its constructor must not
/// throw.
template <typename T, typename... Arguments>
T* create(CFAllocatorRef allocator, Arguments&&... arguments) {
  return createWithSpace<T>(allocator, 0, std::forward<Arguments>(arguments)...);
}

/// The object behind an opaque reference; T is its real type. Null stays null.
template <typename T>
T* objectOf(CFTypeRef reference) {
  return static_cast<T*>(const_cast<Object*>(static_cast<const Object*>(reference)));
}

/// The object behind an opaque reference, or null if it is not of T's type.
template <typename T>
T* checkedObject(CFTypeRef reference) {
  const Object* object = objectOf<const Object>(reference);
  return object != nullptr && object->typeID() == T::type() ? objectOf<T>(reference) : nullptr;
}

/// The opaque reference of an object.
template <typename Ref>
Ref referenceTo(const Object* object) {
  return reinterpret_cast<Ref>(const_cast<Object*>(object));
}

/// Memory of an object that is there before main and is never destroyed.
template <typename T>
union Static {
  template <typename... Arguments>
  constexpr explicit Static(Arguments&&... arguments) : object(arguments...) {}
  ~Static() {}
  T object;
};

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
