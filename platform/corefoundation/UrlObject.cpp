// Licence: MIT, see LICENSE.
#include "platform/corefoundation/UrlObject.h"

#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

CFURLRef Url::make(CFAllocatorRef allocator, std::string_view text, CFURLRef baseURL) {
  if (!isLegalUrl(text) || (text.empty() && baseURL == nullptr)) return nullptr;
  const Bytes bytes(reinterpret_cast<const UInt8*>(text.data()), text.size());
  Held string(referenceTo<CFStringRef>(String::ofBytes(allocator, bytes)));
  if (!string) return nullptr;
  const bool isAbsolute = splitUrl(text).scheme.has_value();
  auto base = Held<CFURLRef>::retaining(isAbsolute ? nullptr : baseURL);
  return referenceTo<CFURLRef>(create<Url>(allocator, std::move(string), std::move(base)));
}

bool Url::equals(const Object& other) const {
  const Url& url = static_cast<const Url&>(other);
  return CFEqual(string.get(), url.string.get()) && CFEqual(base.get(), url.base.get());
}

CFStringRef Url::copyDescription() const {
  return CFStringCreateWithFormat(nullptr, nullptr,
                                  CFSTR("<CFURL %p [%p]>{string = %@, base = %@}"), this,
                                  allocator(), string.get(), base.get());
}

CFStringRef Url::copyFormatted() const {
  if (!base) return CFStringCreateCopy(nullptr, string.get());
  return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%@ -- %@"), string.get(), base.get());
}

std::string_view Url::text() const {
  const Bytes bytes = stringOf(string.get())->text().bytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string Url::absoluteText() const {
  const Url* origin = urlOf(base.get());
  if (origin == nullptr) return std::string(text());
  const std::string absolute = origin->absoluteText();
  return resolveUrl(splitUrl(absolute), parts());
}

std::optional<std::string> Url::filePath() const {
  const UrlParts components = parts();
  if (!components.isDecomposable()) return std::nullopt;
  std::string path = unescape(components.path);
  if (path.empty() || path.find('\0') != std::string::npos) return std::nullopt;
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::optional<std::string> utf8Of(CFStringRef string) {
  const CFIndex length = CFStringGetLength(string);
  const CFIndex room = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8);
  if (stringOf(string) == nullptr || room < 0) return std::nullopt;
  std::string text(static_cast<std::size_t>(room), '\0');
  CFIndex used = 0;
  const CFIndex taken = CFStringGetBytes(string, {0, length}, kCFStringEncodingUTF8, 0, false,
                                         reinterpret_cast<UInt8*>(text.data()), room, &used);
  if (taken != length) return std::nullopt;
  text.resize(static_cast<std::size_t>(used));
  return text;
}

CFStringRef copyOfUTF8(CFAllocatorRef allocator, std::string_view text) {
  return CFStringCreateWithBytes(allocator, reinterpret_cast<const UInt8*>(text.data()),
                                 static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false);
}

std::optional<std::string> pathOfFile(CFURLRef url) {
  const Held absolute(CFURLCopyAbsoluteURL(url));
  const Url* object = urlOf(absolute.get());
  if (object == nullptr) return std::nullopt;
  const UrlParts parts = object->parts();
  const bool isHere =
      !parts.authority || parts.authority->empty() || parts.authority == "localhost";
  return parts.scheme == "file" && isHere ? object->filePath() : std::nullopt;
}

}  // namespace platform::corefoundation
