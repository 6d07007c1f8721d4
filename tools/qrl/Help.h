// Licence: MIT, see LICENSE.
#ifndef TOOLS_QRL_HELP_H
#define TOOLS_QRL_HELP_H

namespace qrl {

/// What `qrl --help` prints; the man page says the same at greater length.
extern const char kHelp[];

}  // namespace qrl

#endif
