// Licence: MIT, see LICENSE.
// What the person reads.
#ifndef TOOLS_QRL_OUTPUT_H
#define TOOLS_QRL_OUTPUT_H

#include <string>

#include "tools/qrl/ExitStatus.h"

namespace qrl {

/// The text on one line, and without what a terminal would take for orders: others chose it.
std::string withoutControls(std::string text);

/// Writes "qrl: " and the text as one line on standard error, and answers with the status.
ExitStatus fail(ExitStatus status, const std::string& text);

}  // namespace qrl

#endif
