// Licence: MIT, see LICENSE.
// Bytes handed to another process as a sealed memory file: nobody can change or shorten them any
// more, so that the receiver reads what it measured.
#ifndef PLATFORM_HOST_SHAREDMEMORY_H
#define PLATFORM_HOST_SHAREDMEMORY_H

#include <cstddef>
#include <span>

#include "platform/host/Descriptor.h"
#include "platform/host/Result.h"

namespace platform::host {

/// A sealed memory file with these bytes.
Result<Descriptor> makeSealedMemory(std::span<const std::byte> bytes);

/// The size of a memory file that somebody passed to us. kInvalid unless it is sealed against
/// writing, growing and shrinking and really holds that many bytes, with no holes to make us
/// allocate what nobody sent.
Result<std::size_t> sealedSize(const Descriptor& memory);

/// Reads a sealed memory file from its start. kInvalid if it is shorter than the buffer.
Status readSealedMemory(const Descriptor& memory, std::span<std::byte> buffer);

}  // namespace platform::host

#endif
