// Licence: MIT, see LICENSE.
#include "platform/host/SharedMemory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <vector>

namespace tests {
namespace {

using namespace platform::host;

const std::vector<std::byte> kBytes(10'000, std::byte{0x5a});

Descriptor unsealed() { return Descriptor(memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING)); }

TEST(SealedMemory, HoldsTheBytes) {
  const auto memory = makeSealedMemory(kBytes);
  ASSERT_TRUE(memory);
  ASSERT_EQ(kBytes.size(), *sealedSize(*memory));
  std::vector<std::byte> copy(kBytes.size());
  ASSERT_TRUE(readSealedMemory(*memory, copy));
  EXPECT_EQ(kBytes, copy);
}

TEST(SealedMemory, MayBeEmpty) {
  const auto memory = makeSealedMemory({});
  ASSERT_TRUE(memory);
  EXPECT_EQ(0u, *sealedSize(*memory));
}

TEST(SealedMemory, CannotBeChangedAnyMore) {
  const auto memory = makeSealedMemory(kBytes);
  ASSERT_TRUE(memory);
  EXPECT_EQ(-1, pwrite(memory->number(), "x", 1, 0));
  EXPECT_EQ(-1, ftruncate(memory->number(), 1));
  EXPECT_EQ(-1, ftruncate(memory->number(), 20'000));
  EXPECT_EQ(-1, fcntl(memory->number(), F_ADD_SEALS, F_SEAL_FUTURE_WRITE));
}

TEST(SealedMemory, IsNotReadBeyondItsEnd) {
  const auto memory = makeSealedMemory(kBytes);
  ASSERT_TRUE(memory);
  std::vector<std::byte> tooLong(kBytes.size() + 1);
  EXPECT_EQ(Error::kInvalid, readSealedMemory(*memory, tooLong).error());
}

TEST(SealedMemory, MustHaveEverySeal) {
  constexpr int kAll = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
  for (const int missing : {F_SEAL_SHRINK, F_SEAL_GROW, F_SEAL_WRITE, kAll}) {
    const Descriptor memory = unsealed();
    ASSERT_EQ(2, write(memory.number(), "hi", 2));
    ASSERT_EQ(0, fcntl(memory.number(), F_ADD_SEALS, kAll & ~missing));
    EXPECT_EQ(Error::kInvalid, sealedSize(memory).error()) << missing;
  }
}

TEST(SealedMemory, MustNotHaveHoles) {
  const Descriptor memory = unsealed();
  ASSERT_EQ(0, ftruncate(memory.number(), 1 << 20));
  ASSERT_EQ(0, fcntl(memory.number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE));
  EXPECT_EQ(Error::kInvalid, sealedSize(memory).error());
}

TEST(SealedMemory, IsNoOrdinaryFile) {
  const Descriptor null(open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(Error::kInvalid, sealedSize(null).error());
}

}  // namespace
}  // namespace tests
