// Licence: MIT, see LICENSE.
// What does it cost to turn MacRoman into UTF-8 and back? Texts of 64 bytes, a name, and of 64 KiB,
// with 2 characters in a hundred beyond ASCII, as in English, and with 30, as in a text that is all
// accents. Peers: the C library's iconv, and the barest loop over a table, which checks nothing.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/Comparison.h"
#include "platform/text/MacRoman.h"

namespace {

using platform::text::fromMacRoman;
using platform::text::kUTF8PerMacRoman;
using platform::text::utf8FromMacRoman;

/// The characters that the C library knows otherwise: the increment and the logo.
constexpr UInt8 kDisputed[] = {0xC6, 0xF0};

std::string randomText(std::size_t size, unsigned int percent) {
  std::mt19937 random(2);
  std::string text(size, '\0');
  for (char& character : text) {
    const bool isHigh = random() % 100 < percent;
    const auto code = static_cast<UInt8>(isHigh ? 0x80 + random() % 0x80 : 0x20 + random() % 0x5F);
    const bool isDisputed = std::ranges::find(kDisputed, code) != std::end(kDisputed);
    character = static_cast<char>(isDisputed ? 0x8E : code);
  }
  return text;
}

/// The way of the C library.
class Converter final {
 public:
  Converter(const char* to, const char* from) : descriptor(iconv_open(to, from)) {
    if (descriptor == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("no such conversion");
  }
  ~Converter() { iconv_close(descriptor); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  std::size_t operator()(const std::string& text, std::string& made) {
    char* from = const_cast<char*>(text.data());
    char* to = made.data();
    std::size_t left = text.size();
    std::size_t room = made.size();
    iconv(descriptor, &from, &left, &to, &room);
    return made.size() - room;
  }

 private:
  iconv_t descriptor;
};

/// The barest loops. Both write a few bytes further than they say.
class Tables final {
 public:
  Tables() {
    for (unsigned int code = 0; code < 256; ++code) {
      const char character = static_cast<char>(code);
      const std::string form = utf8FromMacRoman({&character, 1});
      forms[code].length = form.size();
      form.copy(forms[code].bytes, form.size());
      codes[fromMacRoman(static_cast<UInt8>(code))] = character;
    }
  }

  std::size_t toUTF8(const std::string& text, std::string& made) const {
    char* to = made.data();
    for (const char character : text) {
      const Form& form = forms[static_cast<UInt8>(character)];
      std::memcpy(to, form.bytes, sizeof form.bytes);
      to += form.length;
    }
    return static_cast<std::size_t>(to - made.data());
  }

  std::size_t fromUTF8(const std::string& text, std::string& made) const {
    char* to = made.data();
    for (std::size_t i = 0; i < text.size();) {
      const auto byte = [&text, i](std::size_t at) { return static_cast<UInt8>(text[i + at]); };
      if (byte(0) < 0x80) {
        *to++ = text[i];
        i += 1;
      } else if (byte(0) < 0xE0) {
        *to++ = codes[(byte(0) & 0x1FU) << 6 | (byte(1) & 0x3FU)];
        i += 2;
      } else {
        *to++ = codes[(byte(0) & 0x0FU) << 12 | (byte(1) & 0x3FU) << 6 | (byte(2) & 0x3FU)];
        i += 3;
      }
    }
    return static_cast<std::size_t>(to - made.data());
  }

 private:
  struct Form {
    char bytes[4] = {};
    std::size_t length = 0;
  };

  std::vector<Form> forms = std::vector<Form>(256);
  std::vector<char> codes = std::vector<char>(0x10000);
};

std::size_t ourToUTF8(const std::string& text, std::string& made) {
  return platform::text::macRomanToUTF8(text, made.data(), made.size()).made;
}

std::size_t ourFromUTF8(const std::string& text, std::string& made) {
  return platform::text::macRomanFromUTF8(text, made.data(), made.size()).made;
}

template <typename Convert>
void convert(benchmark::State& state, const std::string& text, const std::string& expected,
             Convert&& way) {
  std::string made(text.size() * kUTF8PerMacRoman + 8, '\0');
  std::size_t length = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(length = way(text, made));
    benchmark::ClobberMemory();
  }
  if (made.substr(0, length) != expected) state.SkipWithError("the text is wrong");
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

enum class Way { kOurs, kIconv, kTable };

std::string textOf(const benchmark::State& state) {
  return randomText(static_cast<std::size_t>(state.range(0)),
                    static_cast<unsigned int>(state.range(1)));
}

void toUTF8(benchmark::State& state, Way way) {
  const std::string text = textOf(state);
  const std::string expected = utf8FromMacRoman(text);
  static const Tables tables;
  if (way == Way::kOurs) {
    convert(state, text, expected, ourToUTF8);
  } else if (way == Way::kIconv) {
    convert(state, text, expected, Converter("UTF-8", "MACINTOSH"));
  } else {
    convert(state, text, expected,
            [](const auto& from, auto& made) { return tables.toUTF8(from, made); });
  }
}

void fromUTF8(benchmark::State& state, Way way) {
  const std::string expected = textOf(state);
  const std::string text = utf8FromMacRoman(expected);
  static const Tables tables;
  if (way == Way::kOurs) {
    convert(state, text, expected, ourFromUTF8);
  } else if (way == Way::kIconv) {
    convert(state, text, expected, Converter("MACINTOSH", "UTF-8"));
  } else {
    convert(state, text, expected,
            [](const auto& from, auto& made) { return tables.fromUTF8(from, made); });
  }
}

constexpr long kName = 64;
constexpr long kLong = 1 << 16;

void everyText(benchmark::internal::Benchmark* family) {
  for (const long size : {kName, kLong}) family->Args({size, 2})->Args({size, 30});
}

BENCHMARK_CAPTURE(toUTF8, ours, Way::kOurs)->Apply(everyText);
BENCHMARK_CAPTURE(toUTF8, iconv, Way::kIconv)->Apply(everyText);
BENCHMARK_CAPTURE(toUTF8, table, Way::kTable)->Apply(everyText);
BENCHMARK_CAPTURE(fromUTF8, ours, Way::kOurs)->Apply(everyText);
BENCHMARK_CAPTURE(fromUTF8, iconv, Way::kIconv)->Apply(everyText);
BENCHMARK_CAPTURE(fromUTF8, table, Way::kTable)->Apply(everyText);

/// Rows of the table for one direction and text.
struct Rows {
  Rows(const std::string& direction, long size, long percent)
      : suffix("/" + std::to_string(size) + "/" + std::to_string(percent)),
        name((direction == "toUTF8" ? "MacRoman to UTF-8, " : "MacRoman from UTF-8, ") +
             std::to_string(size) + " B, " + std::to_string(percent) + " % high : "),
        iconv(name + "iconv", direction + "/ours" + suffix, direction + "/iconv" + suffix,
              bench::speedAtLeast(3)),
        table(name + "table loop", direction + "/ours" + suffix, direction + "/table" + suffix,
              bench::speedAtLeast(0.7)) {}

  const std::string suffix;
  const std::string name;
  const bench::Comparison iconv, table;
};

const Rows kToName2("toUTF8", kName, 2);
const Rows kToName30("toUTF8", kName, 30);
const Rows kToLong2("toUTF8", kLong, 2);
const Rows kToLong30("toUTF8", kLong, 30);
const Rows kFromName2("fromUTF8", kName, 2);
const Rows kFromName30("fromUTF8", kName, 30);
const Rows kFromLong2("fromUTF8", kLong, 2);
const Rows kFromLong30("fromUTF8", kLong, 30);

}  // namespace
