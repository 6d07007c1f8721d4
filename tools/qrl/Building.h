// Licence: MIT, see LICENSE.
// From written parameters to an event's.
#ifndef TOOLS_QRL_BUILDING_H
#define TOOLS_QRL_BUILDING_H

#include <AE/AEDataModel.h>

#include <vector>

#include "tools/qrl/Values.h"

namespace qrl {

/// Puts parameters into an event, with lists and records made of those that step into them. Of two
/// for one place the last counts. memFullErr; throws UsageError for what cannot be put together.
OSErr putParameters(AppleEvent& event, const std::vector<Parameter>& parameters);

}  // namespace qrl

#endif
