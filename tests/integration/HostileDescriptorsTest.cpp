// Licence: MIT, see LICENSE.
// A live agent and clients that pass it descriptors that it did not ask for.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "tests/integration/Hostile.h"

namespace {

using tests::kInMemoryFile;
using tests::kToken;
using tests::RawAnswer;
using tests::RawPacket;
using tests::Stranger;
using tests::wholePacket;

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

/// A descriptor of the test's own.
class File final {
 public:
  explicit File(int opened) : number(opened) { EXPECT_GE(number, 0); }
  ~File() { close(number); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  operator int() const { return number; }

 private:
  int number;
};

int makeMemory(const std::string& contents, int seals, unsigned flags = MFD_ALLOW_SEALING) {
  const int memory = memfd_create("test", MFD_CLOEXEC | flags);
  EXPECT_EQ(static_cast<ssize_t>(contents.size()), write(memory, contents.data(), contents.size()));
  EXPECT_TRUE(seals == 0 || fcntl(memory, F_ADD_SEALS, seals) == 0);
  return memory;
}

int makeHollow(off_t size) {
  const int memory = makeMemory("", 0);
  EXPECT_EQ(0, ftruncate(memory, size));
  EXPECT_EQ(0, fcntl(memory, F_ADD_SEALS, kSeals));
  return memory;
}

class HostileDescriptor : public tests::Hostile {
 protected:
  static std::string announcement(std::size_t size) {
    return RawPacket{
        .flags = kInMemoryFile, .reply = kToken, .total = static_cast<std::uint32_t>(size)}
        .bytes();
  }

  void expectRefusal(int passed, std::size_t size) {
    Stranger stranger = connect();
    EXPECT_TRUE(send(stranger, announcement(size), {passed}));
    EXPECT_TRUE(stranger.isCutOff());
  }

  const std::string whole = event();
};

TEST_F(HostileDescriptor, IsNoneWhenItIsASealedMessage) {
  const File memory(makeMemory(whole, kSeals));
  Stranger stranger = connect();
  ASSERT_TRUE(send(stranger, announcement(whole.size()), {memory}));
  EXPECT_TRUE(isNotHandled(stranger.receive().value_or(RawAnswer{})));
  EXPECT_EQ(-1, ftruncate(memory, 0));
  EXPECT_EQ(-1, write(memory, "x", 1));
}

TEST_F(HostileDescriptor, IsRefusedWhenItIsNoMemory) {
  int ends[2];
  ASSERT_EQ(0, pipe2(ends, O_CLOEXEC | O_NONBLOCK));
  const File reading(ends[0]);
  const File writing(ends[1]);
  const File folder(open(root.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const File device(open("/dev/zero", O_RDONLY | O_CLOEXEC));
  const File file(open((root.path() / "file").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(0, ftruncate(file, 100));
  Stranger other = connect();
  for (const int passed :
       {int{reading}, int{writing}, int{folder}, int{device}, int{file}, other.number()}) {
    expectRefusal(passed, 100);
  }
}

TEST_F(HostileDescriptor, IsRefusedWhenItIsNotSealedInFull) {
  for (const int seals : {0, F_SEAL_WRITE, F_SEAL_SHRINK | F_SEAL_GROW, F_SEAL_GROW | F_SEAL_WRITE,
                          F_SEAL_SHRINK | F_SEAL_WRITE}) {
    const File memory(makeMemory(whole, seals));
    expectRefusal(memory, whole.size());
  }
  const File unsealable(makeMemory(whole, 0, 0));
  expectRefusal(unsealable, whole.size());
}

TEST_F(HostileDescriptor, IsRefusedWhenItsSizeIsNotTheClaimed) {
  const File memory(makeMemory(whole, kSeals));
  for (const std::size_t claimed :
       {std::size_t{0}, whole.size() - 1, whole.size() + 1, std::size_t{0x7fffffff}}) {
    expectRefusal(memory, claimed);
  }
}

TEST_F(HostileDescriptor, IsRefusedWhenItIsHollow) {
  const File large(makeHollow(off_t{1} << 30));
  expectRefusal(large, std::size_t{1} << 30);
  const File small(makeHollow(1 << 20));
  expectRefusal(small, 1 << 20);
}

// Whatever size the reader finds: it is not sealed when the reader looks.
TEST_F(HostileDescriptor, IsRefusedWhileItChanges) {
  const File memory(makeMemory(whole, 0));
  std::atomic<bool> done{false};
  std::thread changer([&] {
    while (!done.load()) {
      EXPECT_EQ(0, ftruncate(memory, 0));
      EXPECT_EQ(static_cast<ssize_t>(whole.size()), pwrite(memory, whole.data(), whole.size(), 0));
    }
  });
  for (int i = 0; i < 50; ++i) expectRefusal(memory, whole.size());
  done.store(true);
  changer.join();
}

TEST_F(HostileDescriptor, IsRefusedWhenItIsOneTooMany) {
  const File memory(makeMemory(whole, kSeals));
  for (const std::size_t count : {2u, 253u}) {
    Stranger stranger = connect();
    ASSERT_TRUE(send(stranger, announcement(whole.size()), std::vector<int>(count, memory)));
    EXPECT_TRUE(stranger.isCutOff()) << count;
  }
}

TEST_F(HostileDescriptor, IsRefusedWhenItIsUnannounced) {
  const File memory(makeMemory(whole, kSeals));
  for (const std::size_t count : {1u, 2u, 253u}) {
    Stranger stranger = connect();
    ASSERT_TRUE(
        send(stranger, wholePacket(whole, kToken).bytes(), std::vector<int>(count, memory)));
    EXPECT_TRUE(stranger.isCutOff()) << count;
  }
}

TEST_F(HostileDescriptor, GoesWithItsConnectionWhenManyPacketsBringMany) {
  const File memory(makeMemory(whole, kSeals));
  for (int round = 0; round < 10; ++round) {
    Stranger stranger = connect();
    for (int i = 0; i < 20; ++i) {
      if (!stranger.sendNow(announcement(whole.size()), std::vector<int>(40, memory))) break;
    }
  }
}

}  // namespace
