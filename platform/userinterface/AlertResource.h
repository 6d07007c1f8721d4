// Licence: MIT, see LICENSE.
// The forms of 'ALRT' and 'DITL' resources. All numbers are big-endian.
//
//   ALRT   bounds (8), ID of the item list (2), stages (2), and in newer ones a position (2)
//   DITL   number of items less one (2); for each: reserved (4), bounds (8), type (1), size (1),
//   that many
//          bytes, and a byte of padding where the size is odd
//
// A stage is four bits, that of the first time in the lowest: bit 3 says that the second item and
// not the first is the default button, bit 2 that the box is drawn, bits 1 and 0 how often the
// alert sounds.
#ifndef PLATFORM_USERINTERFACE_ALERTRESOURCE_H
#define PLATFORM_USERINTERFACE_ALERTRESOURCE_H

#include <HIToolbox/Dialogs.h>

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace platform::userinterface {

using Bytes = std::span<const std::byte>;

struct AlertStage {
  DialogItemIndex defaultItem = kStdOkItemIndex;
  bool isDrawn = false;
  int sounds = 0;
};

struct AlertTemplate {
  ResID items = 0;
  std::array<AlertStage, 4> stages;  // the first time first
};

struct DialogItem {
  UInt8 type = 0;    // without the bit of disabled items
  std::string text;  // MacRoman; the item's data where it is no text
};

/// Nothing for bytes that are too few.
std::optional<AlertTemplate> parseAlert(Bytes resource);

/// The items in their order, item 1 first. Nothing if the list runs beyond the bytes.
std::optional<std::vector<DialogItem>> parseItems(Bytes resource);

}  // namespace platform::userinterface

#endif
