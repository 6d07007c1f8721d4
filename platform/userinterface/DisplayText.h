// Licence: MIT, see LICENSE.
// Texts of resources and records as a person's screen takes them.
#ifndef PLATFORM_USERINTERFACE_DISPLAYTEXT_H
#define PLATFORM_USERINTERFACE_DISPLAYTEXT_H

#include <string>
#include <string_view>

namespace platform::userinterface {

/// MacRoman as UTF-8. Carriage returns become line feeds; other control characters, which could
/// command a terminal, become spaces.
std::string displayText(std::string_view macRoman);

}  // namespace platform::userinterface

#endif
