// Licence: MIT, see LICENSE.
#include "platform/files/Results.h"

#include <CarbonCore/MacErrors.h>

namespace platform::files {

OSErr resultFor(host::Error error) {
  switch (error) {
    case host::Error::kNotFound:
      return fnfErr;
    case host::Error::kExists:
      return dupFNErr;
    case host::Error::kPermission:
      return afpAccessDenied;
    case host::Error::kTooLarge:
      return bdNamErr;
    case host::Error::kNoResources:
      return dskFulErr;
    case host::Error::kNoMemory:
      return memFullErr;
    default:
      return ioErr;
  }
}

}  // namespace platform::files
