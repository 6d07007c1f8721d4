// Licence: MIT, see LICENSE.
// The text form in which the project keeps its resources, to be built into resource files.
//
//   # A comment ends with its line; otherwise lines do not matter.
//   resource 'ALRT' 138 "its name" purgeable preload   name and attributes may be missing
//     rect 60 81 210 431                               top, left, bottom, right
//     int16 138                                        also int8 and int32; 0x... is hexadecimal
//     code 'aevt'                                      four characters
//     pstring "a Pascal string"                        strings that follow each other are one
//     text "just its characters"
//     bytes "00 ff 7e"                                 hexadecimal digits
//     button 104 252 124 322 "OK"                      an item of a dialog; likewise label, a
//     static text
//
// A resource that has items is an item list: their count is put before them. In strings \n is a
// carriage return, \" and \\ are themselves, \xNN is any MacRoman character.
#ifndef PLATFORM_RESOURCES_RESOURCEDESCRIPTION_H
#define PLATFORM_RESOURCES_RESOURCEDESCRIPTION_H

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/resources/ResourceWriter.h"

namespace platform::resources {

struct DescriptionError {
  int line = 0;
  std::string message;
};

/// The resources that a text describes, or the first thing that is wrong with it.
std::variant<std::vector<ResourceContents>, DescriptionError> parseDescription(
    std::string_view text);

}  // namespace platform::resources

#endif
