// Licence: MIT, see LICENSE.
// What errors of the host are as results of the File Manager.
#ifndef PLATFORM_FILES_RESULTS_H
#define PLATFORM_FILES_RESULTS_H

#include <CarbonCore/MacTypes.h>

#include "platform/host/Result.h"

namespace platform::files {

/// The result of looking for an item, or of making one.
OSErr resultFor(host::Error error);

}  // namespace platform::files

#endif
