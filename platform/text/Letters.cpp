// Licence: MIT, see LICENSE.
#include "platform/text/Letters.h"

#include <array>
#include <string_view>

namespace platform::text {
namespace {

using Map = std::array<UInt8, 256>;

/// Characters that derive from a bare letter.
struct Derived {
  char letter;
  std::string_view forms;
};

// With a diacritical mark.
constexpr Derived kMarked[] = {
    {'A', "\x80\x81\xCB\xCC\xE5\xE7"},
    {'C', "\x82"},
    {'E', "\x83\xE6\xE8\xE9"},
    {'I', "\xEA\xEB\xEC\xED"},
    {'N', "\x84"},
    {'O', "\x85\xCD\xEE\xEF\xF1"},
    {'U', "\x86\xF2\xF3\xF4"},
    {'Y', "\xD9"},
    {'a', "\x87\x88\x89\x8A\x8B\x8C"},
    {'c', "\x8D"},
    {'e', "\x8E\x8F\x90\x91"},
    {'i', "\x92\x93\x94\x95"},
    {'n', "\x96"},
    {'o', "\x97\x98\x99\x9A\x9B"},
    {'u', "\x9C\x9D\x9E\x9F"},
    {'y', "\xD8"},
};

// Ligatures, and letters with a bar.
constexpr Derived kOwnLetters[] = {
    {'A', "\xAE"},     {'O', "\xAF\xCE"}, {'a', "\xBE"},
    {'f', "\xDE\xDF"}, {'o', "\xBF\xCF"}, {'s', "\xA7"},
};

// Small letters beyond ASCII and their capitals, position by position.
constexpr std::string_view kSmall =
    "\x8A\x8C\x8D\x8E\x96\x9A\x9F\x88\x8B\x9B\xBE\xBF\xCF\xD8\x89\x90\x87\x91\x8F\x92\x94\x95\x93"
    "\x97\x99\x98\x9C\x9E\x9D";
constexpr std::string_view kCapital =
    "\x80\x81\x82\x83\x84\x85\x86\xCB\xCC\xCD\xAE\xAF\xCE\xD9\xE5\xE6\xE7\xE8\xE9\xEA\xEB\xEC\xED"
    "\xEE\xEF\xF1\xF2\xF3\xF4";
static_assert(kSmall.size() == kCapital.size());

constexpr std::size_t place(char character) { return static_cast<UInt8>(character); }

constexpr Map identity() {
  Map map{};
  for (std::size_t i = 0; i < map.size(); ++i) map[i] = static_cast<UInt8>(i);
  return map;
}

constexpr Map kCapitals = [] {
  Map map = identity();
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    map[place(letter)] = static_cast<UInt8>(letter - 'a' + 'A');
  }
  for (std::size_t i = 0; i < kSmall.size(); ++i) {
    map[place(kSmall[i])] = static_cast<UInt8>(kCapital[i]);
  }
  return map;
}();

constexpr Map kBareLetters = [] {
  Map map = identity();
  for (const Derived& derived : kMarked) {
    for (const char form : derived.forms) map[place(form)] = static_cast<UInt8>(derived.letter);
  }
  return map;
}();

// Bare letters are ASCII, so that 512 places for each character of ASCII leave room behind them for
// the others: 0 for itself, its marked forms by their codes, then the letters that derive from it.
constexpr std::array<UInt16, 256> kOrder = [] {
  constexpr std::size_t kEach = 512;
  std::array<UInt16, 256> order{};
  for (std::size_t i = 0; i < order.size(); ++i) {
    order[i] = static_cast<UInt16>(i < 0x80 ? i * kEach : 0xFF00 | i);
  }
  const auto stand = [&order](const Derived& derived, std::size_t behind) {
    for (const char form : derived.forms) {
      order[place(form)] =
          static_cast<UInt16>(place(derived.letter) * kEach + behind + place(form));
    }
  };
  for (const Derived& derived : kMarked) stand(derived, 0);
  for (const Derived& derived : kOwnLetters) stand(derived, kEach / 2);
  return order;
}();

}  // namespace

UInt8 capital(UInt8 character) { return kCapitals[character]; }
UInt8 withoutMark(UInt8 character) { return kBareLetters[character]; }
UInt16 comparisonOrder(UInt8 character) { return kOrder[character]; }

}  // namespace platform::text
