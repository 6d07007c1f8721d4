// Licence: MIT, see LICENSE.
// AppleDouble files: what Mac OS X writes beside a file ("._name") where the file system keeps
// nothing but data. All numbers are big-endian.
//
//   header   magic (4), version (4), filler (16), number of entries (2)
//   entries  for each: kind (4), offset (4), size (4) of its data in the file
//
// The resource fork is the entry of kind 2; the others (Finder information, dates, comments) are
// not looked at, but kept.
#ifndef PLATFORM_RESOURCES_APPLEDOUBLE_H
#define PLATFORM_RESOURCES_APPLEDOUBLE_H

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "platform/resources/ResourceFile.h"

namespace platform::resources {

/// The resource fork inside an AppleDouble file, a part of the view; nothing if there is none.
std::optional<Bytes> resourceForkOfAppleDouble(Bytes file);

/// A file that has nothing but a resource fork.
std::vector<std::byte> appleDoubleWith(Bytes fork);

/// The file with another resource fork in place of its own, and all else that it has, the data of
/// its entries in their order. Nothing if the file is damaged or would be too large.
std::optional<std::vector<std::byte>> replaceForkOfAppleDouble(Bytes file, Bytes fork);

}  // namespace platform::resources

#endif
