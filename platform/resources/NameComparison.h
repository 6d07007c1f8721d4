// Licence: MIT, see LICENSE.
// Comparing resource names.
#ifndef PLATFORM_RESOURCES_NAMECOMPARISON_H
#define PLATFORM_RESOURCES_NAMECOMPARISON_H

#include <string_view>

namespace platform::resources {

/// Whether two MacRoman texts are the same but for capital and small letters; accents count.
bool namesAreEqual(std::string_view a, std::string_view b);

}  // namespace platform::resources

#endif
