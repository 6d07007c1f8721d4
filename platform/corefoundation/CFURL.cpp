// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFURL.h>

#include <algorithm>

#include "platform/corefoundation/StringObject.h"
#include "platform/corefoundation/UrlObject.h"
#include "platform/corefoundation/WithoutMemory.h"

namespace platform::corefoundation {

namespace {

CFStringRef copyPart(CFAllocatorRef allocator, const std::optional<std::string_view>& part) {
  return part ? copyOfUTF8(allocator, *part) : nullptr;
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFTypeID CFURLGetTypeID(void) { return Url::type(); }

CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef text, CFURLRef baseURL) {
  if (baseURL != nullptr && urlOf(baseURL) == nullptr) return nullptr;
  return nullWithoutMemory([&]() -> CFURLRef {
    const std::optional<std::string> bytes = utf8Of(text);
    return bytes ? Url::make(allocator, *bytes, baseURL) : nullptr;
  });
}

CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                              CFStringEncoding encoding, CFURLRef baseURL) {
  const Held text(CFStringCreateWithBytes(nullptr, bytes, length, encoding, false));
  return CFURLCreateWithString(allocator, text.get(), baseURL);
}

CFURLRef CFURLCopyAbsoluteURL(CFURLRef url) {
  const Url* object = urlOf(url);
  if (object == nullptr) return nullptr;
  if (!object->base) return Held<CFURLRef>::retaining(url).take();
  return nullWithoutMemory([&] { return Url::make(nullptr, object->absoluteText(), nullptr); });
}

CFStringRef CFURLGetString(CFURLRef url) {
  const Url* object = urlOf(url);
  return object != nullptr ? object->string.get() : nullptr;
}

CFURLRef CFURLGetBaseURL(CFURLRef url) {
  const Url* object = urlOf(url);
  return object != nullptr ? object->base.get() : nullptr;
}

Boolean CFURLCanBeDecomposed(CFURLRef url) {
  const Url* object = urlOf(url);
  return object != nullptr && object->parts().isDecomposable();
}

CFStringRef CFURLCopyScheme(CFURLRef url) {
  const Url* object = urlOf(url);
  if (object == nullptr) return nullptr;
  const UrlParts parts = object->parts();
  return parts.scheme ? copyPart(nullptr, parts.scheme) : CFURLCopyScheme(object->base.get());
}

CFStringRef CFURLCopyNetLocation(CFURLRef url) {
  const Url* object = urlOf(url);
  return object != nullptr ? copyPart(nullptr, object->parts().authority) : nullptr;
}

CFStringRef CFURLCopyPath(CFURLRef url) {
  return CFURLCanBeDecomposed(url) ? copyPart(nullptr, urlOf(url)->parts().path) : nullptr;
}

Boolean CFURLHasDirectoryPath(CFURLRef url) {
  if (!CFURLCanBeDecomposed(url)) return false;
  const std::string_view path = urlOf(url)->parts().path;
  const std::string_view last = path.substr(path.rfind('/') + 1);
  return (path.ends_with('/') || last == "." || last == "..");
}

CFStringRef CFURLCopyLastPathComponent(CFURLRef url) {
  if (!CFURLCanBeDecomposed(url)) return nullptr;
  return nullWithoutMemory([url] {
    const std::string_view path = urlOf(url)->parts().path;
    const NameRange name = lastName(path);
    if (name.begin == name.end && !path.empty()) return copyOfUTF8(nullptr, "/");
    return copyOfUTF8(nullptr, unescape(path.substr(name.begin, name.end - name.begin)));
  });
}

CFStringRef CFURLCopyPathExtension(CFURLRef url) {
  if (!CFURLCanBeDecomposed(url)) return nullptr;
  return nullWithoutMemory([url]() -> CFStringRef {
    const std::string_view path = urlOf(url)->parts().path;
    const NameRange range = lastName(path);
    const std::string name = unescape(path.substr(range.begin, range.end - range.begin));
    const std::optional<std::size_t> dot = extensionDot(name);
    return dot ? copyOfUTF8(nullptr, std::string_view(name).substr(*dot + 1)) : nullptr;
  });
}
