// Licence: MIT, see LICENSE.
#include <quorvant/util/StringUtils.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr int kPascalSize = 256;       // of the longest Pascal string, length byte included
constexpr int kComparedSize = 255;     // of the Pascal strings that are compared
constexpr int kMostOfBothForms = 254;  // characters, so that a terminator follows in 256 bytes

bool isUsable(const void* destination, int size) { return destination != nullptr && size >= 1; }

/// Not looking further than `most` bytes.
int lengthUpTo(const char* text, int most) {
  if (text == nullptr || most < 1) return 0;
  const void* end = std::memchr(text, 0, static_cast<size_t>(most));
  return end == nullptr ? most : static_cast<int>(static_cast<const char*>(end) - text);
}

int length(const unsigned char* text) { return text == nullptr ? 0 : text[0]; }

/// The number of characters to append to a string where there is room for `room` - 1.
int countToAppend(int wanted, int room) { return wanted < room ? wanted : room - 1; }

/// Nothing for a count below 1.
void move(void* to, const void* from, int count) { BlockMoveData(from, to, count); }

unsigned char* append(unsigned char* destination, const void* characters, int count) {
  if (count < 1) return destination;
  move(destination + destination[0] + 1, characters, count);
  destination[0] = static_cast<unsigned char>(destination[0] + count);
  return destination;
}

}  // namespace

unsigned char* pstrcpy(unsigned char* destination, const unsigned char* source, int size) {
  if (!isUsable(destination, size)) return destination;
  if (source == nullptr) {
    destination[0] = 0;
  } else {
    move(destination, source, std::min(length(source), size - 1) + 1);
  }
  return destination;
}

char* pcstrcpy(char* destination, const unsigned char* source, int size) {
  if (!isUsable(destination, size)) return destination;
  const int count = std::min(length(source), size - 1);
  if (count > 0) move(destination, source + 1, count);
  destination[count] = '\0';
  return destination;
}

unsigned char* cpstrcpy(unsigned char* destination, const char* source, int size) {
  if (!isUsable(destination, size)) return destination;
  const int count = lengthUpTo(source, std::min(size, kPascalSize) - 1);
  move(destination + 1, source, count);
  destination[0] = static_cast<unsigned char>(count);
  return destination;
}

char* cstrcpy(char* destination, const char* source, int size) {
  if (!isUsable(destination, size)) return destination;
  const int count = lengthUpTo(source, size - 1);
  if (count > 0) {
    move(destination, source, count + 1);
  } else {
    destination[0] = '\0';
  }
  return destination;
}

unsigned char* pstrcat(unsigned char* destination, const unsigned char* source, int size) {
  return append(destination, source + 1, countToAppend(source[0], size - destination[0]));
}

unsigned char* cpstrcat(unsigned char* destination, const char* source, int size) {
  const int room = size - destination[0];
  return append(destination, source, countToAppend(lengthUpTo(source, room), room));
}

char* cstrcat(char* destination, const char* source, int size) {
  if (destination == nullptr) return destination;
  const int used = lengthUpTo(destination, size);
  cstrcpy(destination + used, source, size - used);
  return destination;
}

char* pcstrcat(char* destination, const unsigned char* source, int size) {
  const int used = lengthUpTo(destination, size);
  const int room = size - used;
  if (room < 1) return destination;
  const int count = countToAppend(source[0], room);
  move(destination + used, source + 1, count);
  destination[used + count] = '\0';
  return destination;
}

int stricmp(const char* a, const char* b, bool caseSensitive, bool diacriticalSensitive) {
  unsigned char first[kPascalSize];
  return pcstricmp(cpstrcpy(first, a, kComparedSize), b, caseSensitive, diacriticalSensitive);
}

int pcstricmp(const unsigned char* a, const char* b, bool caseSensitive,
              bool diacriticalSensitive) {
  static constexpr unsigned char kEmpty[] = {0};
  unsigned char second[kPascalSize];
  cpstrcpy(second, b, kComparedSize);
  return RelString(a == nullptr ? kEmpty : a, second, caseSensitive, diacriticalSensitive);
}

char* NumToCString(SInt32 value, char* buffer, int size) {
  Str255 text;
  NumToString(value, text);
  return pcstrcpy(buffer, text, size);
}

void MakePCString(unsigned char* buffer, int length, int size) {
  if (!isUsable(buffer, size)) return;
  if (size == 1) {
    buffer[0] = 0;  // no room for a terminator
    return;
  }
  const int count = std::clamp(length, 0, size - 2);
  buffer[1 + count] = 0;
  buffer[0] = static_cast<unsigned char>(std::min(count, kMostOfBothForms));
}

char* BufToCString(char* buffer, const char* source, int sourceLength, int size) {
  if (!isUsable(buffer, size) || sourceLength < 0) return buffer;
  const int count = source == nullptr ? 0 : std::max(std::min(sourceLength, size) - 1, 0);
  move(buffer, source, count);
  buffer[count] = '\0';
  return buffer;
}

void TruncToCStr(char* buffer, char ch, UInt32 length) {
  if (buffer == nullptr) return;
  if (void* found = std::memchr(buffer, ch, length)) *static_cast<char*>(found) = '\0';
}
