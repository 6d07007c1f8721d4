// Licence: MIT, see LICENSE.
// Names of items: the host's bytes, which are mostly UTF-8, and what the File Manager shows for
// them.
//
// In an FSSpec a name is MacRoman of at most 31 characters. A host name that fits appears as it is,
// with ':' as '/', which Mac names may have and host names may not. Any other appears shortened:
//
//   as much of it as there is room for, with "_" for what MacRoman lacks
//   "#" and eight hexadecimal digits, the sum of its bytes
//   its extension, if that is short and MacRoman
//
// The way back is to look for the item whose name is shown so. Host names that look shortened
// themselves are shortened too, so that no two items of a folder are shown alike but by a sum in
// four thousand million.
#ifndef PLATFORM_FILES_NAMES_H
#define PLATFORM_FILES_NAMES_H

#include <CarbonCore/Files.h>

#include <optional>
#include <string>
#include <string_view>

namespace platform::files {

/// The longest name in an FSSpec.
constexpr std::size_t kLongestName = 31;

/// FNV-1a over the bytes of a host name.
UInt32 sumOf(std::string_view hostName);

/// What is shown in an FSSpec for a host name.
std::string macNameOf(std::string_view hostName);

/// Whether a name has the form of a shortened one.
bool looksShortened(std::string_view macName);

/// The host name that a name stands for when it is not a shortened one; nothing for one that no
/// item can have: empty, with a ':' or a NUL in it, "." or "..", too long for the host.
std::optional<std::string> hostNameOf(std::string_view macName);

/// A host name in UTF-16; bytes that are not UTF-8 appear as "%" and two hexadecimal digits.
HFSUniStr255 unicodeNameOf(std::string_view hostName);

}  // namespace platform::files

#endif
