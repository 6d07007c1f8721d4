// Licence: MIT, see LICENSE.
//
// In three steps: the format is split into pieces, the arguments are taken in their order (which
// the pieces need not follow), and the pieces are written. Numbers are left to the C library, with
// the argument widened to its longest type.
#include "platform/corefoundation/Formatting.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <new>

#include "platform/text/MacRoman.h"

namespace platform::corefoundation {

namespace {

struct Argument {
  ArgumentType type = ArgumentType::kUnused;
  SInt64 integer = 0;
  long double real = 0;
  const void* pointer = nullptr;
};

using Arguments = std::vector<Argument>;

void require(Arguments& arguments, int index, ArgumentType type) {
  if (index < 0) return;
  const std::size_t slot = static_cast<std::size_t>(index);
  if (slot >= arguments.size()) arguments.resize(slot + 1);
  arguments[slot].type = type;
}

Arguments requiredArguments(const std::vector<FormatPiece>& pieces) {
  Arguments arguments;
  for (const FormatPiece& piece : pieces) {
    require(arguments, piece.width.argument, ArgumentType::kInt);
    require(arguments, piece.precision.argument, ArgumentType::kInt);
    require(arguments, piece.argument, piece.type);
  }
  return arguments;
}

// A position that the format does not mention is taken as an int, as the C library does.
void readArguments(Arguments& arguments, va_list list) {
  for (Argument& argument : arguments) {
    switch (argument.type) {
      case ArgumentType::kUnused:
      case ArgumentType::kInt:
        argument.integer = va_arg(list, int);
        break;
      case ArgumentType::kLong:
        argument.integer = va_arg(list, long);
        break;
      case ArgumentType::kLongLong:
        argument.integer = va_arg(list, long long);
        break;
      case ArgumentType::kSize:
        argument.integer = static_cast<SInt64>(va_arg(list, std::size_t));
        break;
      case ArgumentType::kPointerDifference:
        argument.integer = va_arg(list, std::ptrdiff_t);
        break;
      case ArgumentType::kMaximum:
        argument.integer = va_arg(list, std::intmax_t);
        break;
      case ArgumentType::kDouble:
        argument.real = va_arg(list, double);
        break;
      case ArgumentType::kLongDouble:
        argument.real = va_arg(list, long double);
        break;
      case ArgumentType::kPointer:
        argument.pointer = va_arg(list, const void*);
        break;
    }
  }
}

// Width and precision with their arguments put in.
struct Layout {
  std::string flags;
  int width = 0;
  int precision = -1;  // none

  bool isLeft() const { return flags.find('-') != std::string::npos; }
};

int amountOf(const Amount& amount, const Arguments& arguments) {
  if (amount.argument < 0) return amount.value;
  return static_cast<int>(arguments[static_cast<std::size_t>(amount.argument)].integer);
}

// A negative width means left, a negative precision none.
Layout layoutOf(const FormatPiece& piece, const Arguments& arguments) {
  constexpr int kWidest = 1 << 20;
  Layout layout{piece.flags};
  if (piece.width.given) {
    const int width = std::clamp(amountOf(piece.width, arguments), -kWidest, kWidest);
    if (width < 0) layout.flags += '-';
    layout.width = width < 0 ? -width : width;
  }
  if (piece.precision.given) {
    layout.precision = std::clamp(amountOf(piece.precision, arguments), -1, kWidest);
  }
  return layout;
}

class Writer {
 public:
  void literal(const TextView& text, CFIndex from, CFIndex to) {
    for (CFIndex i = from; i < to; ++i) output.push_back(text[i]);
  }

  void padded(const TextView& text, const Layout& layout) {
    CFIndex length = text.length;
    if (layout.precision >= 0) length = std::min<CFIndex>(length, layout.precision);
    const std::size_t padding =
        static_cast<std::size_t>(std::max<CFIndex>(0, layout.width - length));
    if (!layout.isLeft()) output.insert(output.end(), padding, ' ');
    literal(text, 0, length);
    if (layout.isLeft()) output.insert(output.end(), padding, ' ');
  }

  void paddedASCII(const char* text, const Layout& layout) {
    padded(TextView{bytesOf(text).data(), nullptr, static_cast<CFIndex>(std::strlen(text))},
           layout);
  }

  template <typename Value>
  void number(const Layout& layout, const char* modifier, char conversion, Value value) {
    const std::string pattern = "%" + layout.flags + "*.*" + modifier + conversion;
    const int length =
        std::snprintf(nullptr, 0, pattern.c_str(), layout.width, layout.precision, value);
    if (length < 0) throw std::bad_alloc();
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(text.data(), text.size(), pattern.c_str(), layout.width, layout.precision, value);
    output.insert(output.end(), text.begin(), text.end() - 1);
  }

  std::vector<UniChar> output;
};

SInt64 narrowed(SInt64 value, const std::string& modifier) {
  if (modifier == "hh") return static_cast<SInt8>(value);
  return modifier == "h" ? static_cast<SInt16>(value) : value;
}

UInt64 narrowedUnsigned(const Argument& argument, const std::string& modifier) {
  const UInt64 value = static_cast<UInt64>(argument.integer);
  if (modifier == "hh") return static_cast<UInt8>(value);
  if (modifier == "h") return static_cast<UInt16>(value);
  switch (argument.type) {
    case ArgumentType::kInt:
      return static_cast<unsigned int>(value);
    case ArgumentType::kLong:
      return static_cast<unsigned long>(value);
    case ArgumentType::kPointerDifference:
      return static_cast<std::size_t>(value);
    default:
      return value;
  }
}

// The C library's letter for an integer conversion.
char standardLetter(char conversion) {
  switch (conversion) {
    case 'i':
    case 'D':
      return 'd';
    case 'U':
      return 'u';
    case 'O':
      return 'o';
    default:
      return conversion;
  }
}

void writeInteger(Writer& writer, const FormatPiece& piece, const Argument& argument,
                  const Layout& layout) {
  const char letter = standardLetter(piece.conversion);
  if (letter == 'd') {
    writer.number(layout, "ll", letter, narrowed(argument.integer, piece.lengthModifier));
  } else {
    writer.number(layout, "ll", letter, narrowedUnsigned(argument, piece.lengthModifier));
  }
}

void writePointer(Writer& writer, const void* pointer, const Layout& layout) {
  char text[2 + 2 * sizeof(void*) + 1];
  std::snprintf(text, sizeof text, "0x%jx",
                static_cast<std::uintmax_t>(reinterpret_cast<std::uintptr_t>(pointer)));
  Layout whole = layout;
  whole.precision = -1;
  writer.paddedASCII(text, whole);
}

void writeCharacter(Writer& writer, const FormatPiece& piece, SInt64 value, const Layout& layout) {
  const bool isWide = piece.conversion == 'C' || piece.lengthModifier == "l";
  const UniChar unit = isWide ? static_cast<UniChar>(value)
                              : platform::text::fromMacRoman(static_cast<UInt8>(value));
  Layout whole = layout;
  whole.precision = -1;
  writer.padded(TextView{nullptr, &unit, 1}, whole);
}

// A string with a precision need not end within it.
template <typename Unit>
CFIndex boundedLength(const Unit* text, int precision) {
  CFIndex length = 0;
  while ((precision < 0 || length < precision) && text[length] != 0) ++length;
  return length;
}

void writeText(Writer& writer, const FormatPiece& piece, const void* text, const Layout& layout) {
  if (text == nullptr) {
    writer.paddedASCII("(null)", layout);
  } else if (piece.conversion == 'S' || piece.lengthModifier == "l") {
    const UniChar* units = static_cast<const UniChar*>(text);
    writer.padded(TextView{nullptr, units, boundedLength(units, layout.precision)}, layout);
  } else {
    const UInt8* bytes = static_cast<const UInt8*>(text);
    writer.padded(TextView{bytes, nullptr, boundedLength(bytes, layout.precision)}, layout);
  }
}

void writeObject(Writer& writer, CFTypeRef object, const Layout& layout) {
  if (object == nullptr) return writer.paddedASCII("(null)", layout);
  const Held<CFStringRef> text(objectOf<Object>(object)->copyFormatted());
  const String* string = stringOf(text.get());
  if (string == nullptr) throw std::bad_alloc();
  writer.padded(string->text(), layout);
}

void writeConversion(Writer& writer, const FormatPiece& piece, const Argument& argument,
                     const Layout& layout) {
  switch (piece.conversion) {
    case '@':
      return writeObject(writer, argument.pointer, layout);
    case 's':
    case 'S':
      return writeText(writer, piece, argument.pointer, layout);
    case 'c':
    case 'C':
      return writeCharacter(writer, piece, argument.integer, layout);
    case 'p':
      return writePointer(writer, argument.pointer, layout);
    case 'n':
      return;
    default:
      break;
  }
  if (argument.type == ArgumentType::kDouble) {
    return writer.number(layout, "", piece.conversion, static_cast<double>(argument.real));
  }
  if (argument.type == ArgumentType::kLongDouble) {
    return writer.number(layout, "L", piece.conversion, argument.real);
  }
  writeInteger(writer, piece, argument, layout);
}

}  // namespace

std::vector<UniChar> format(const TextView& format, va_list list) {
  const std::vector<FormatPiece> pieces = parseFormat(format);
  Arguments arguments = requiredArguments(pieces);
  readArguments(arguments, list);
  Writer writer;
  for (const FormatPiece& piece : pieces) {
    writer.literal(format, piece.literalStart, piece.literalEnd);
    if (piece.conversion == '%') writer.output.push_back('%');
    if (piece.argument < 0) continue;
    writeConversion(writer, piece, arguments[static_cast<std::size_t>(piece.argument)],
                    layoutOf(piece, arguments));
  }
  return std::move(writer.output);
}

}  // namespace platform::corefoundation
