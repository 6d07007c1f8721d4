// Licence: MIT, see LICENSE.
// Result codes by the names that the headers give them.
#ifndef TOOLS_QRL_ERRORS_H
#define TOOLS_QRL_ERRORS_H

#include <CarbonCore/MacTypes.h>

#include <string>
#include <string_view>

namespace qrl {

/// Empty for a code without a name here.
std::string_view nameOfError(OSStatus code);

/// "-1708 (errAEEventNotHandled)", or the number alone.
std::string describeError(OSStatus code);

}  // namespace qrl

#endif
