// Licence: MIT, see LICENSE.
// What is in a resource, for a person.
#ifndef TOOLS_QRL_RESOURCETEXT_H
#define TOOLS_QRL_RESOURCETEXT_H

#include <CarbonCore/MacTypes.h>

#include <string>
#include <string_view>
#include <vector>

namespace qrl {

/// The attributes by name, such as "purgeable"; bits without a name are left out.
std::vector<std::string> attributeWords(SInt16 attributes);

/// Whether bytes are text: nothing but characters, tabs and ends of lines.
bool isText(std::string_view bytes);

/// MacRoman as lines of UTF-8, each with its end; what a terminal would take for orders is a space.
std::string textLines(std::string_view bytes);

/// Sixteen bytes a line: the place, the bytes, and the characters that ASCII has of them.
std::string hexDump(std::string_view bytes);

}  // namespace qrl

#endif
