// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

#include "platform/host/Result.h"

namespace tests {
namespace {

using platform::host::Error;
using platform::host::lastError;
using platform::host::Result;
using platform::host::Status;
using platform::host::success;

TEST(HostErrors, HaveOneMeaningEach) {
  struct {
    int number;
    Error meaning;
  } const cases[] = {
      {ENOENT, Error::kNotFound},        {ECONNREFUSED, Error::kNotFound},
      {EEXIST, Error::kExists},          {EADDRINUSE, Error::kExists},
      {EPERM, Error::kPermission},       {EACCES, Error::kPermission},
      {ELOOP, Error::kPermission},       {EAGAIN, Error::kWouldBlock},
      {EWOULDBLOCK, Error::kWouldBlock}, {ETIMEDOUT, Error::kTimedOut},
      {EPIPE, Error::kDisconnected},     {ECONNRESET, Error::kDisconnected},
      {EMSGSIZE, Error::kTooLarge},      {ENAMETOOLONG, Error::kTooLarge},
      {EMFILE, Error::kNoResources},     {ENFILE, Error::kNoResources},
      {ENOSPC, Error::kNoResources},     {ETOOMANYREFS, Error::kNoResources},
      {ENOMEM, Error::kNoMemory},        {EINVAL, Error::kInvalid},
      {ENOSYS, Error::kUnsupported},     {EIO, Error::kFailed},
  };
  for (const auto& [number, meaning] : cases) {
    errno = number;
    EXPECT_EQ(meaning, lastError()) << number;
  }
}

TEST(HostResults, HoldAValueOrAnError) {
  const Result<int> value = 5;
  ASSERT_TRUE(value);
  EXPECT_EQ(5, *value);
  const Result<int> error = Error::kExists;
  ASSERT_FALSE(error);
  EXPECT_EQ(Error::kExists, error.error());
}

TEST(HostResults, CarryWhatCanOnlyBeMoved) {
  Result<std::unique_ptr<int>> result = std::make_unique<int>(7);
  ASSERT_TRUE(result);
  const std::unique_ptr<int> taken = std::move(*result);
  EXPECT_EQ(7, *taken);
}

TEST(HostResults, MayHoldNothingButSuccess) {
  const Status status = success();
  EXPECT_TRUE(status);
  const Status failure = Error::kTimedOut;
  EXPECT_EQ(Error::kTimedOut, failure.error());
}

}  // namespace
}  // namespace tests
