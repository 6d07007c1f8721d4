// Licence: MIT, see LICENSE.
#ifndef PLATFORM_COREFOUNDATION_CASEFOLDING_H
#define PLATFORM_COREFOUNDATION_CASEFOLDING_H

#include <CarbonCore/MacTypes.h>

namespace platform::corefoundation {

/// What stands for a character and its other cases when case does not count. Unicode's simple
/// folding; characters that UTF-16 writes as a pair stay as they are.
UniChar foldCase(UniChar unit);

}  // namespace platform::corefoundation

#endif
