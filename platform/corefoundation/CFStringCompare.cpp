// Licence: MIT, see LICENSE.
// The order of strings.
#include <CoreFoundation/CFString.h>

#include "platform/corefoundation/CaseFolding.h"
#include "platform/corefoundation/Order.h"
#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

namespace {

// A position in a text, and what is read there.
struct Cursor {
  const TextView& text;
  CFIndex index = 0;

  bool atEnd() const { return index >= text.length; }
  bool atDigit() const { return !atEnd() && text[index] >= '0' && text[index] <= '9'; }
  UniChar unit(CFOptionFlags options) const {
    return (options & kCFCompareCaseInsensitive) != 0 ? foldCase(text[index]) : text[index];
  }
  void skipZeros() {
    while (!atEnd() && text[index] == '0') ++index;
  }
};

CFIndex digitsAt(Cursor cursor) {
  const CFIndex start = cursor.index;
  while (cursor.atDigit()) ++cursor.index;
  return cursor.index - start;
}

// Runs of digits by their value, however long; both cursors end up behind them.
CFComparisonResult compareDigits(Cursor& a, Cursor& b) {
  a.skipZeros();
  b.skipZeros();
  const CFIndex length = digitsAt(a);
  CFComparisonResult result = order(length, digitsAt(b));
  for (CFIndex i = 0; i < length && result == kCFCompareEqualTo; ++i) {
    result = order(a.text[a.index++], b.text[b.index++]);
  }
  return result;
}

CFComparisonResult compare(const TextView& first, const TextView& second, CFOptionFlags options) {
  Cursor a{first};
  Cursor b{second};
  while (!a.atEnd() && !b.atEnd()) {
    CFComparisonResult result;
    if ((options & kCFCompareNumerically) != 0 && a.atDigit() && b.atDigit()) {
      result = compareDigits(a, b);
    } else {
      result = order(a.unit(options), b.unit(options));
      ++a.index;
      ++b.index;
    }
    if (result != kCFCompareEqualTo) return result;
  }
  return order(b.atEnd(), a.atEnd());
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFOptionFlags options) {
  const String* first = stringOf(a);
  const String* second = stringOf(b);
  if (first == nullptr || second == nullptr) return order(first != nullptr, second != nullptr);
  return compare(first->text(), second->text(), options);
}
