// Licence: MIT, see LICENSE.
// What does a hexadecimal dump cost? Of 16 bytes, a line of a log, and of 64 KiB, a large
// parameter, beside the barest loop that looks two digits up for each byte.
#include <benchmark/benchmark.h>
#include <quorvant/util/ByteDumps.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "bench/support/Comparison.h"

namespace {

std::vector<UInt8> randomBytes(std::size_t size) {
  std::mt19937 random(1);
  std::vector<UInt8> bytes(size);
  std::ranges::generate(bytes, [&random] { return static_cast<UInt8>(random()); });
  return bytes;
}

void writeDigits(const UInt8* bytes, std::size_t count, char* to) {
  for (std::size_t i = 0; i < count; ++i) {
    *to++ = "0123456789ABCDEF"[bytes[i] >> 4];
    *to++ = "0123456789ABCDEF"[bytes[i] & 0xF];
  }
}

void count(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void hexDump(benchmark::State& state) {
  const std::vector<UInt8> bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
  std::string expected(2 * bytes.size(), '\0');
  writeDigits(bytes.data(), bytes.size(), expected.data());
  std::string text(2 * bytes.size(), '\0');
  const int digits = static_cast<int>(text.size());
  for (auto _ : state) {
    benchmark::DoNotOptimize(HexDump(bytes.data(), text.data(), digits, 0));
    benchmark::ClobberMemory();
  }
  if (text != expected) state.SkipWithError("the dump is wrong");
  count(state, bytes.size());
}

void digitTable(benchmark::State& state) {
  const std::vector<UInt8> bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
  std::string text(2 * bytes.size(), '\0');
  for (auto _ : state) {
    writeDigits(bytes.data(), bytes.size(), text.data());
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
  }
  count(state, bytes.size());
}

BENCHMARK(hexDump)->Arg(16)->Arg(1 << 16);
BENCHMARK(digitTable)->Arg(16)->Arg(1 << 16);

const bench::Comparison kLine{"hex dump of 16 B : digit table", "hexDump/16", "digitTable/16",
                              bench::speedAtLeast(0.8)};
const bench::Comparison kLarge{"hex dump of 64 KiB : digit table", "hexDump/65536",
                               "digitTable/65536", bench::speedAtLeast(0.8)};

}  // namespace
