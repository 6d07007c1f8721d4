// Licence: MIT, see LICENSE.
#include <cstring>
#include <optional>
#include <utility>

#include "platform/corefoundation/Formatting.h"

namespace platform::corefoundation {

namespace {

// Far more than any call passes; keeps a mistaken "%2000000000$d" from asking for a huge table.
constexpr int kMaximumArguments = 256;
constexpr int kMaximumAmount = 1 << 20;

struct IntegerLength {
  const char* modifier;
  ArgumentType type;
};

constexpr IntegerLength kIntegerLengths[] = {
    {"", ArgumentType::kInt},        {"hh", ArgumentType::kInt},
    {"h", ArgumentType::kInt},       {"l", ArgumentType::kLong},
    {"ll", ArgumentType::kLongLong}, {"q", ArgumentType::kLongLong},
    {"z", ArgumentType::kSize},      {"t", ArgumentType::kPointerDifference},
    {"j", ArgumentType::kMaximum}};

ArgumentType integerType(const std::string& modifier) {
  for (const IntegerLength& length : kIntegerLengths) {
    if (modifier == length.modifier) return length.type;
  }
  return ArgumentType::kInt;
}

bool isOneOf(char letter, const char* letters) {
  return letter != 0 && std::strchr(letters, letter) != nullptr;
}

// What a conversion takes; nothing if the letter is no conversion.
std::optional<ArgumentType> argumentType(char conversion, const std::string& modifier) {
  if (isOneOf(conversion, "diuxXoDUO")) return integerType(modifier);
  if (isOneOf(conversion, "cC")) return ArgumentType::kInt;
  if (isOneOf(conversion, "eEfFgGaA")) {
    return modifier == "L" ? ArgumentType::kLongDouble : ArgumentType::kDouble;
  }
  if (isOneOf(conversion, "@sSpn")) return ArgumentType::kPointer;
  return std::nullopt;
}

class Parser {
 public:
  explicit Parser(const TextView& text) : format(text) {}

  // The next piece; one without a conversion is the last.
  FormatPiece next() {
    FormatPiece piece;
    piece.literalStart = piece.literalEnd = position;
    while (piece.literalEnd < format.length) {
      position = piece.literalEnd;
      if (format[position] == '%' && readConversion(piece)) return piece;
      ++piece.literalEnd;
    }
    piece.conversion = 0;
    position = piece.literalEnd;
    return piece;
  }

 private:
  char peek() const {
    if (position >= format.length) return 0;
    const UniChar unit = format[position];
    return unit < 0x80 ? static_cast<char>(unit) : '\0';
  }
  bool take(char letter) {
    if (peek() != letter) return false;
    ++position;
    return true;
  }
  static bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }

  int readNumber() {
    int number = 0;
    for (; isDigit(peek()); ++position) {
      if (number < kMaximumAmount) number = 10 * number + (peek() - '0');
    }
    return number;
  }

  // "12$", as an index counted from 0.
  std::optional<int> readPosition() {
    const CFIndex start = position;
    const int number = readNumber();
    if (number > 0 && number <= kMaximumArguments && take('$')) return number - 1;
    position = start;
    return std::nullopt;
  }

  Amount readAmount() {
    if (!take('*')) return {true, readNumber(), -1};
    const std::optional<int> explicitPosition = readPosition();
    return {true, 0, explicitPosition ? *explicitPosition : nextArgument++};
  }

  void readLengthModifier(FormatPiece& piece) {
    for (; isOneOf(peek(), "hlqzjtL"); ++position) piece.lengthModifier += peek();
  }

  bool readConversion(FormatPiece& piece) {
    const int earlierArgument = nextArgument;
    FormatPiece made;
    made.literalStart = piece.literalStart;
    made.literalEnd = position++;
    const std::optional<int> explicitPosition = readPosition();
    for (; isOneOf(peek(), "-+ #0'"); ++position) made.flags += peek();
    if (peek() == '*' || isDigit(peek())) made.width = readAmount();
    if (take('.')) made.precision = readAmount();
    readLengthModifier(made);
    made.conversion = peek();
    if (!finish(made, explicitPosition)) {
      nextArgument = earlierArgument;
      return false;
    }
    ++position;
    piece = std::move(made);
    return true;
  }

  bool finish(FormatPiece& piece, std::optional<int> explicitPosition) {
    if (piece.conversion == '%') return true;
    const auto type = argumentType(piece.conversion, piece.lengthModifier);
    if (!type) return false;
    piece.type = *type;
    piece.argument = explicitPosition ? *explicitPosition : nextArgument++;
    return piece.argument < kMaximumArguments;
  }

  const TextView& format;
  CFIndex position = 0;
  int nextArgument = 0;
};

}  // namespace

std::vector<FormatPiece> parseFormat(const TextView& format) {
  Parser parser(format);
  std::vector<FormatPiece> pieces;
  do {
    pieces.push_back(parser.next());
  } while (pieces.back().conversion != 0);
  return pieces;
}

}  // namespace platform::corefoundation
