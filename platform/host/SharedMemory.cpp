// Licence: MIT, see LICENSE.
#include "platform/host/SharedMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <limits>

#include "platform/host/Retry.h"

namespace platform::host {

namespace {

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
constexpr std::int64_t kBlock = 512;  // the unit of st_blocks

}  // namespace

Result<Descriptor> makeSealedMemory(std::span<const std::byte> bytes) {
  Descriptor memory(memfd_create("quorvant-message", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!memory) return lastError();
  for (std::span<const std::byte> rest = bytes; !rest.empty();) {
    const ssize_t count = retry([&] { return write(memory.number(), rest.data(), rest.size()); });
    if (count == -1) return lastError();
    rest = rest.subspan(static_cast<std::size_t>(count));
  }
  if (fcntl(memory.number(), F_ADD_SEALS, kSeals | F_SEAL_SEAL) == -1) return lastError();
  return memory;
}

Result<std::size_t> sealedSize(const Descriptor& memory) {
  const int seals = fcntl(memory.number(), F_GET_SEALS);
  if (seals == -1 || (seals & kSeals) != kSeals) return Error::kInvalid;
  struct stat state {};
  if (fstat(memory.number(), &state) == -1) return lastError();
  const std::int64_t size = state.st_size;
  if (size > std::int64_t{state.st_blocks} * kBlock) return Error::kInvalid;
  if (size > std::numeric_limits<std::int32_t>::max()) return Error::kTooLarge;
  return static_cast<std::size_t>(size);
}

Status readSealedMemory(const Descriptor& memory, std::span<std::byte> buffer) {
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ssize_t count = retry([&] {
      return pread(memory.number(), buffer.data() + done, buffer.size() - done,
                   static_cast<off_t>(done));
    });
    if (count == -1) return lastError();
    if (count == 0) return Error::kInvalid;
    done += static_cast<std::size_t>(count);
  }
  return success();
}

}  // namespace platform::host
