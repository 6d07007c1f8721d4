// Licence: MIT, see LICENSE.
// Feeds a record file's contents to the reader of process records, and a package's to the reader of
// package information. A record that is accepted must be written back as the same bytes.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "platform/processes/ProcessRecord.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace platform::processes;
  const std::span<const std::byte> bytes(reinterpret_cast<const std::byte*>(data), size);
  if (const auto record = decodeRecord(bytes); record && size <= kMaximumRecordSize) {
    const auto written = encodeRecord(*record);
    const bool cut = written.size() < size;  // a text too long for a record
    if (!cut && !std::equal(written.begin(), written.end(), bytes.begin(), bytes.end())) {
      std::abort();
    }
  }
  ProcessRecord record;
  if (readPackageInfo(bytes, record) != (size >= 8)) std::abort();
  return 0;
}
