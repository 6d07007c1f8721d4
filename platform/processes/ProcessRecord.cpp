// Licence: MIT, see LICENSE.
#include "platform/processes/ProcessRecord.h"

#include <algorithm>

namespace platform::processes {
namespace {

constexpr UInt32 kMagic = 'QPrc';
constexpr UInt32 kVersion = 1;
constexpr std::size_t kFixedSize = 9 * 4;  // magic, version, five fields, two lengths
constexpr std::size_t kMaximumText = (kMaximumRecordSize - kFixedSize) / 2;

void putWord(std::vector<std::byte>& bytes, UInt32 word) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(std::byte(word >> shift & 0xFF));
}

void putText(std::vector<std::byte>& bytes, std::string_view text) {
  putWord(bytes, static_cast<UInt32>(text.size()));
  for (char character : text) bytes.push_back(std::byte(character));
}

UInt32 wordAt(const std::byte* bytes) {
  UInt32 word = 0;
  for (int i = 0; i < 4; ++i) word = word << 8 | std::to_integer<UInt32>(bytes[i]);
  return word;
}

/// Takes values off the front of a stretch of bytes; after the first that is not there, none is.
class Reader final {
 public:
  explicit Reader(std::span<const std::byte> bytes) : rest(bytes) {}

  UInt32 word() {
    if (rest.size() < 4) return fail();
    const UInt32 value = wordAt(rest.data());
    rest = rest.subspan(4);
    return value;
  }

  std::string text() {
    const UInt32 length = word();
    if (length > rest.size()) {
      fail();
      return {};
    }
    std::string value(reinterpret_cast<const char*>(rest.data()), length);
    rest = rest.subspan(length);
    return value;
  }

  /// Whether everything was there and nothing is left.
  bool finished() const { return whole && rest.empty(); }

 private:
  UInt32 fail() {
    whole = false;
    rest = {};
    return 0;
  }

  std::span<const std::byte> rest;
  bool whole = true;
};

std::string_view lastComponent(std::string_view path) {
  return path.substr(path.rfind('/') + 1);  // npos + 1 is 0
}

std::string_view parent(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

constexpr std::string_view kApplicationSuffix = ".app";

}  // namespace

std::vector<std::byte> encodeRecord(const ProcessRecord& record) {
  const auto bounded = [](std::string_view text) {
    return text.size() <= kMaximumText ? text : std::string_view();
  };
  std::vector<std::byte> bytes;
  putWord(bytes, kMagic);
  putWord(bytes, kVersion);
  putWord(bytes, static_cast<UInt32>(record.pid));
  putWord(bytes, static_cast<UInt32>(record.launcher));
  putWord(bytes, record.launchTicks);
  putWord(bytes, record.type);
  putWord(bytes, record.signature);
  putText(bytes, bounded(record.name));
  putText(bytes, bounded(record.path));
  return bytes;
}

std::optional<ProcessRecord> decodeRecord(std::span<const std::byte> bytes) {
  Reader reader(bytes);
  if (reader.word() != kMagic || reader.word() != kVersion) return std::nullopt;
  ProcessRecord record;
  record.pid = static_cast<SInt32>(reader.word());
  record.launcher = static_cast<SInt32>(reader.word());
  record.launchTicks = reader.word();
  record.type = reader.word();
  record.signature = reader.word();
  record.name = reader.text();
  record.path = reader.text();
  if (!reader.finished() || record.pid <= 0) return std::nullopt;
  return record;
}

std::optional<std::string> applicationFolder(std::string_view programPath) {
  const std::string_view contents = parent(parent(programPath));
  const std::string_view folder = parent(contents);
  const std::string_view name = lastComponent(folder);
  if (lastComponent(contents) != "Contents" || !name.ends_with(kApplicationSuffix) ||
      name == kApplicationSuffix) {
    return std::nullopt;
  }
  return std::string(folder);
}

std::string processName(std::string_view programPath) {
  const std::optional<std::string> folder = applicationFolder(programPath);
  if (!folder) return std::string(lastComponent(programPath));
  std::string_view name = lastComponent(*folder);
  name.remove_suffix(kApplicationSuffix.size());
  return std::string(name);
}

bool readPackageInfo(std::span<const std::byte> contents, ProcessRecord& record) {
  if (contents.size() < 8) return false;
  record.type = wordAt(contents.data());
  record.signature = wordAt(contents.data() + 4);
  return true;
}

}  // namespace platform::processes
