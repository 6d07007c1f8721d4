// Licence: MIT, see LICENSE.
// What XML and old-style text have in common: encodings, and places for people.
#include <algorithm>

#include "platform/corefoundation/PropertyListReading.h"
#include "platform/corefoundation/UrlObject.h"

namespace platform::corefoundation {

namespace {

struct NamedEncoding {
  std::string_view name;
  CFStringEncoding encoding;
};

constexpr NamedEncoding kNamedEncodings[] = {
    {"utf-8", kCFStringEncodingUTF8},          {"us-ascii", kCFStringEncodingASCII},
    {"ascii", kCFStringEncodingASCII},         {"iso-8859-1", kCFStringEncodingISOLatin1},
    {"latin1", kCFStringEncodingISOLatin1},    {"macintosh", kCFStringEncodingMacRoman},
    {"x-mac-roman", kCFStringEncodingMacRoman}};

bool isSameName(std::string_view name, std::string_view known) {
  return std::ranges::equal(name, known, [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + 32) : a) == b;
  });
}

std::string_view withoutBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  return text;
}

// The value of the encoding attribute of an XML declaration, empty if there is none.
std::string_view declaredEncoding(std::string_view text) {
  if (!text.starts_with("<?xml")) return {};
  text = text.substr(0, text.find("?>"));
  constexpr std::string_view kAttribute = "encoding";
  const std::size_t at = text.find(kAttribute);
  if (at == std::string_view::npos) return {};
  text = withoutBlanks(text.substr(at + kAttribute.size()));
  if (!text.starts_with('=')) return {};
  text = withoutBlanks(text.substr(1));
  if (text.empty() || (text.front() != '"' && text.front() != '\'')) return {};
  const std::size_t end = text.find(text.front(), 1);
  return end != std::string_view::npos ? text.substr(1, end - 1) : std::string_view();
}

std::optional<CFStringEncoding> wideEncoding(Bytes file) {
  if (file.size() < 2) return std::nullopt;
  const unsigned first = static_cast<unsigned>(file[0] << 8 | file[1]);
  if (first == 0xFEFF || first == 0x003C) return kCFStringEncodingUTF16BE;
  if (first == 0xFFFE || first == 0x3C00) return kCFStringEncodingUTF16LE;
  return std::nullopt;
}

std::optional<CFStringEncoding> byteEncoding(std::string_view text) {
  const std::string_view name = declaredEncoding(text);
  if (!name.empty()) {
    for (const NamedEncoding& each : kNamedEncodings) {
      if (isSameName(name, each.name)) return each.encoding;
    }
    return std::nullopt;
  }
  const bool isUTF8 = isXML(text) || decodedLength(bytesIn(text), kCFStringEncodingUTF8);
  return isUTF8 ? kCFStringEncodingUTF8 : kCFStringEncodingMacRoman;
}

}  // namespace

bool isBinary(Bytes file) {
  constexpr std::string_view kMagic = "bplist";
  return file.size() >= kMagic.size() && std::ranges::equal(file.first(kMagic.size()), kMagic);
}

bool isXML(std::string_view text) {
  text = withoutBlanks(text);
  if (!text.starts_with('<')) return false;
  text.remove_prefix(1);
  if (text.starts_with('?') || text.starts_with('!')) return true;
  const auto end = std::ranges::find_if_not(text, [](char c) { return c >= 'a' && c <= 'z'; });
  return std::any_of(text.begin(), end, [](char c) { return !isHexDigit(c); });
}

std::optional<std::string_view> textOfPropertyList(Bytes file, std::string& storage,
                                                   ReadingFault& fault) {
  const Bytes whole = file;
  takeByteOrderMark(file, kCFStringEncodingUTF8);
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  std::optional<CFStringEncoding> encoding = wideEncoding(file);
  if (encoding) {
    takeByteOrderMark(file, *encoding);
  } else {
    encoding = whole.size() != file.size() ? kCFStringEncodingUTF8 : byteEncoding(text);
  }
  if (!encoding) {
    fault.set("the declared encoding is not known", 0);
    return std::nullopt;
  }
  if (*encoding == kCFStringEncodingUTF8) return text;
  const Held decoded(CFStringCreateWithBytes(nullptr, file.data(),
                                             static_cast<CFIndex>(file.size()), *encoding, false));
  std::optional<std::string> converted = utf8Of(decoded.get());
  if (!converted) {
    fault.set("the text is not valid in its encoding", 0);
    return std::nullopt;
  }
  storage = std::move(*converted);
  return storage;
}

TextPlace placeOf(std::string_view text, std::size_t offset) {
  TextPlace place;
  offset = std::min(offset, text.size());
  for (std::size_t i = 0; i < offset; ++i) {
    const bool isBreak = text[i] == '\n' || (text[i] == '\r' && text.substr(i + 1, 1) != "\n");
    if (isBreak) {
      ++place.line;
      place.column = 1;
    } else if ((text[i] & 0xC0) != 0x80) {
      ++place.column;
    }
  }
  return place;
}

}  // namespace platform::corefoundation
