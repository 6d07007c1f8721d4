// Licence: MIT, see LICENSE.
#include <cerrno>

#include "platform/host/Result.h"

namespace platform::host {

namespace {

struct Meaning {
  int number;
  Error error;
};

// The only place where the host's error numbers have a meaning.
constexpr Meaning kMeanings[] = {
    {ENOENT, Error::kNotFound},
    {ENOTDIR, Error::kNotFound},
    {ESRCH, Error::kNotFound},
    {ECONNREFUSED, Error::kNotFound},
    {ENXIO, Error::kNotFound},
    {EEXIST, Error::kExists},
    {EADDRINUSE, Error::kExists},
    {EPERM, Error::kPermission},
    {EACCES, Error::kPermission},
    {EROFS, Error::kPermission},
    {ELOOP, Error::kPermission},
    {EAGAIN, Error::kWouldBlock},
    {EINPROGRESS, Error::kWouldBlock},
    {ETIMEDOUT, Error::kTimedOut},
    {EPIPE, Error::kDisconnected},
    {ECONNRESET, Error::kDisconnected},
    {ENOTCONN, Error::kDisconnected},
    {ECONNABORTED, Error::kDisconnected},
    {EMSGSIZE, Error::kTooLarge},
    {EFBIG, Error::kTooLarge},
    {ENAMETOOLONG, Error::kTooLarge},
    {EMFILE, Error::kNoResources},
    {ENFILE, Error::kNoResources},
    {ENOSPC, Error::kNoResources},
    {EDQUOT, Error::kNoResources},
    {ENOBUFS, Error::kNoResources},
    {ETOOMANYREFS, Error::kNoResources},
    {EMLINK, Error::kNoResources},
    {ENOMEM, Error::kNoMemory},
    {EINVAL, Error::kInvalid},
    {EBADF, Error::kInvalid},
    {ENOTSOCK, Error::kInvalid},
    {EPROTOTYPE, Error::kInvalid},
    {EISDIR, Error::kInvalid},
    {ENOSYS, Error::kUnsupported},
    {EOPNOTSUPP, Error::kUnsupported},
};

}  // namespace

Error lastError() {
  const int number = errno;
  for (const Meaning& meaning : kMeanings) {
    if (meaning.number == number) return meaning.error;
  }
  return Error::kFailed;
}

}  // namespace platform::host
