// Licence: MIT, see LICENSE.
// Bytes as 64 letters. std::bad_alloc is the caller's.
#ifndef PLATFORM_COREFOUNDATION_BASE64_H
#define PLATFORM_COREFOUNDATION_BASE64_H

#include <CoreFoundation/CFBase.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform::corefoundation {

void appendBase64(std::string& to, std::span<const UInt8> bytes);

/// Blanks may be anywhere, the padding may be missing. The offset of the first letter that does not
/// fit, or the text's length if all of it did.
std::size_t parseBase64(std::string_view text, std::vector<UInt8>& bytes);

}  // namespace platform::corefoundation

#endif
