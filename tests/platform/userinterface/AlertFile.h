// Licence: MIT, see LICENSE.
// A resource file with alerts for tests:
//
//   138   a title, a text, and the button "OK"
//   139   a text, and the buttons "Yes" (the default), "No" and, as item 4, "Maybe"
//   140   as 139, with "No" as the default; it draws no box the first and the fourth time in a row
//   141   names an item list that is missing
//   142   is cut off
//   143   has an item list that is cut off
#ifndef TESTS_PLATFORM_USERINTERFACE_ALERTFILE_H
#define TESTS_PLATFORM_USERINTERFACE_ALERTFILE_H

#include <filesystem>
#include <stdexcept>
#include <variant>

#include "platform/resources/ResourceDescription.h"
#include "platform/resources/ResourceWriter.h"
#include "tests/platform/resources/SampleFile.h"

namespace tests {

inline constexpr const char* kAlerts = R"(
  resource 'ALRT' 138 rect 40 40 140 400 int16 138 int16 0x5555
  resource 'DITL' 138 button 0 0 0 0 "OK" label 0 0 0 0 "The title" label 0 0 0 0 "The\ntext \x8Ah"
  resource 'ALRT' 139 rect 40 40 140 400 int16 139 int16 0x4444 int16 0x300A
  resource 'ALRT' 140 rect 40 40 140 400 int16 139 int16 0x0CC8
  resource 'DITL' 139
    button 0 0 0 0 "Yes" button 0 0 0 0 "No" label 0 0 0 0 "A question" button 0 0 0 0 "Maybe"
  resource 'ALRT' 141 rect 40 40 140 400 int16 999 int16 0x4444
  resource 'ALRT' 142 rect 40 40 140 400 int16 138 int8 0
  resource 'ALRT' 143 rect 40 40 140 400 int16 143 int16 0x4444
  resource 'DITL' 143 int16 0 int32 0 rect 0 0 0 0 int8 4 int8 9 text "short"
)";

/// Writes the file and gives its path.
inline std::string writeAlertFile(const std::filesystem::path& folder) {
  using namespace platform::resources;
  auto description = parseDescription(kAlerts);
  auto* contents = std::get_if<std::vector<ResourceContents>>(&description);
  if (contents == nullptr) throw std::runtime_error("the alerts are described wrongly");
  writeFile(folder / "alerts.rsrc", *writeResourceFile(*contents));
  return folder / "alerts.rsrc";
}

}  // namespace tests

#endif
