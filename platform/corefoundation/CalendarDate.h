// Licence: MIT, see LICENSE.
// Points in time as property lists write them: "2001-01-01T00:00:00Z".
#ifndef PLATFORM_COREFOUNDATION_CALENDARDATE_H
#define PLATFORM_COREFOUNDATION_CALENDARDATE_H

#include <CoreFoundation/CFDate.h>

#include <optional>
#include <string>
#include <string_view>

namespace platform::corefoundation {

/// Nothing unless it is exactly that form, and a second that the calendar has.
std::optional<CFAbsoluteTime> parseDate(std::string_view text);
/// The whole second at or before a time. Nothing outside the years 1 to 9999.
std::optional<std::string> formatDate(CFAbsoluteTime at);

}  // namespace platform::corefoundation

#endif
