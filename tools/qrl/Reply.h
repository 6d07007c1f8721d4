// Licence: MIT, see LICENSE.
// An answered event's parameters in their written forms.
#ifndef TOOLS_QRL_REPLY_H
#define TOOLS_QRL_REPLY_H

#include <AE/AEDataModel.h>

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace qrl {

/// One line a parameter, KEY=TYPE:VALUE. The items of a list follow as KEY[1]=..., those of a
/// record as KEY.ITEM=..., to any depth. A parameter that has a line of its own elsewhere is left
/// out.
std::vector<std::string> linesOf(const AppleEvent& event, AEKeyword leftOut = 0);

/// An array of {"key": ..., "type": ..., "value": ...}; a list or record has "items" for its value.
nlohmann::ordered_json jsonOf(const AppleEvent& event);

}  // namespace qrl

#endif
