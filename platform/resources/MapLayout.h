// Licence: MIT, see LICENSE.
// Sizes of the structures in a classic resource file's map.
#ifndef PLATFORM_RESOURCES_MAPLAYOUT_H
#define PLATFORM_RESOURCES_MAPLAYOUT_H

#include <cstddef>

namespace platform::resources {

inline constexpr std::size_t kMapHeaderSize = 28;
inline constexpr std::size_t kTypeSize = 8;        // an entry of the type list
inline constexpr std::size_t kReferenceSize = 12;  // an entry of a reference list

}  // namespace platform::resources

#endif
