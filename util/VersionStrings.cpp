// Licence: MIT, see LICENSE.
#include <quorvant/util/VersionStrings.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>

namespace {

struct Stage {
  char letter;
  UInt8 code;
};

constexpr Stage kStages[] = {{'d', 0x20}, {'a', 0x40}, {'b', 0x60}, {'f', 0x80}};
constexpr char kFinal = 'f';

char stageLetter(UInt8 code) {
  for (const Stage& stage : kStages) {
    if (stage.code == code) return stage.letter;
  }
  return '?';
}

bool isStage(char letter) { return letter != '\0' && std::strchr("dabf", letter) != nullptr; }

UInt32 stageCode(char letter) {
  for (const Stage& stage : kStages) {
    if (stage.letter == letter) return stage.code;
  }
  return 0x80;
}

UInt32 bits(UInt32 word, int shift, UInt32 mask) { return word >> shift & mask; }

/// Text written piece by piece, of which the buffer is known to be long enough.
class Writer final {
 public:
  explicit Writer(char* start) : end(start) {}
  void put(char character) { *end++ = character; }
  void putNumber(UInt32 number) {
    if (number >= 10) putNumber(number / 10);
    put(static_cast<char>('0' + number % 10));
  }
  char* end;
};

/// Reads a number as "%d" does; one that is out of range is the nearest there is.
std::optional<SInt32> takeNumber(const char*& text) {
  char* end = nullptr;
  const long number = std::strtol(text, &end, 10);
  if (end == text) return std::nullopt;
  text = end;
  if (number > std::numeric_limits<SInt32>::max()) return std::numeric_limits<SInt32>::max();
  if (number < std::numeric_limits<SInt32>::min()) return std::numeric_limits<SInt32>::min();
  return static_cast<SInt32>(number);
}

/// Reads a full stop and a number behind it. False if the number is missing.
bool takeFurther(const char*& text, SInt32& number) {
  if (*text != '.') return true;
  ++text;
  const std::optional<SInt32> taken = takeNumber(text);
  number = taken.value_or(0);
  return taken.has_value();
}

UInt32 nibble(SInt32 number, int shift) { return (static_cast<UInt32>(number) & 0xF) << shift; }

}  // namespace

char* VersToString(UInt32 version, unsigned char* buffer, bool withStage) {
  if (buffer == nullptr) return nullptr;
  char* const text = reinterpret_cast<char*>(buffer + 1);
  Writer writer(text);
  if (const UInt32 tens = bits(version, 28, 0xF); tens != 0) writer.putNumber(tens);
  writer.putNumber(bits(version, 24, 0xF));
  writer.put('.');
  writer.putNumber(bits(version, 20, 0xF));
  if (const UInt32 fix = bits(version, 16, 0xF); fix != 0) {
    writer.put('.');
    writer.putNumber(fix);
  }
  if (withStage) {
    writer.put(stageLetter(static_cast<UInt8>(bits(version, 8, 0xFF))));
    writer.putNumber(bits(version, 0, 0xFF));
  }
  *writer.end = '\0';
  buffer[0] = static_cast<unsigned char>(writer.end - text);
  return text;
}

OSErr StringToVers(const char* text, UInt32& version) {
  if (text == nullptr) return paramErr;
  const std::optional<SInt32> major = takeNumber(text);
  SInt32 minor = 0;
  SInt32 fix = 0;
  if (!major || !takeFurther(text, minor)) return paramErr;
  // Only a minor number can have a fix number behind it, but where there is none the text stands at
  // no full stop.
  if (!takeFurther(text, fix)) return paramErr;
  char stage = kFinal;
  SInt32 revision = 0;
  if (isStage(*text)) {
    stage = *text++;
    const std::optional<SInt32> taken = takeNumber(text);
    if (!taken) return paramErr;
    revision = *taken;
  }
  version = nibble(*major / 10, 28) | nibble(*major % 10, 24) | nibble(minor, 20) |
            nibble(fix, 16) | stageCode(stage) << 8 | (static_cast<UInt32>(revision) & 0xFF);
  return noErr;
}
