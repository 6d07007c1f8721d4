// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFNumber.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/StreamTesting.h"
#include "tests/support/PrivateRoot.h"

namespace tests::writeStreams {

namespace {

CFIndex write(const Held<CFWriteStreamRef>& stream, const std::string& text) {
  return CFWriteStreamWrite(stream.get(), startOf(text), static_cast<CFIndex>(text.size()));
}

CFStreamStatus statusOf(const Held<CFWriteStreamRef>& stream) {
  return CFWriteStreamGetStatus(stream.get());
}

std::string written(const Held<CFWriteStreamRef>& stream) {
  const Held data(CFWriteStreamCopyProperty(stream.get(), kCFStreamPropertyDataWritten));
  return bytesIn(static_cast<CFDataRef>(data.get()));
}

Held<CFWriteStreamRef> toMemory(CFAllocatorRef memory = nullptr) {
  return Held<CFWriteStreamRef>(CFWriteStreamCreateWithAllocatedBuffers(nullptr, memory));
}

class FileWriteStream : public ::testing::Test {
 protected:
  Held<CFWriteStreamRef> toFile(const std::filesystem::path& target) const {
    return Held<CFWriteStreamRef>(CFWriteStreamCreateWithFile(nullptr, urlOfFile(target).get()));
  }

  PrivateRoot root;
  const std::filesystem::path path = root.path() / "a";
};

TEST(CFWriteStream, GoesThroughItsStates) {
  const auto stream = toMemory();
  EXPECT_EQ(CFGetTypeID(stream.get()), CFWriteStreamGetTypeID());
  EXPECT_EQ(statusOf(stream), kCFStreamStatusNotOpen);
  EXPECT_FALSE(CFWriteStreamCanAcceptBytes(stream.get()));
  EXPECT_TRUE(CFWriteStreamOpen(stream.get()));
  EXPECT_EQ(statusOf(stream), kCFStreamStatusOpen);
  EXPECT_TRUE(CFWriteStreamCanAcceptBytes(stream.get()));
  CFWriteStreamClose(stream.get());
  EXPECT_EQ(statusOf(stream), kCFStreamStatusClosed);
  EXPECT_FALSE(CFWriteStreamOpen(stream.get()));
}

TEST(CFWriteStream, KeepsWhatIsWrittenToMemory) {
  const auto stream = toMemory();
  CFWriteStreamOpen(stream.get());
  EXPECT_EQ(written(stream), "");
  EXPECT_EQ(write(stream, "abc"), 3);
  EXPECT_EQ(write(stream, ""), 0);
  EXPECT_EQ(write(stream, std::string(100000, 'd')), 100000);
  CFWriteStreamClose(stream.get());
  EXPECT_EQ(written(stream), "abc" + std::string(100000, 'd'));
}

TEST(CFWriteStream, WritesNothingUnlessItIsOpen) {
  const auto stream = toMemory();
  EXPECT_EQ(write(stream, "a"), -1);
  CFWriteStreamOpen(stream.get());
  EXPECT_EQ(CFWriteStreamWrite(stream.get(), nullptr, 1), -1);
  EXPECT_EQ(CFWriteStreamWrite(stream.get(), startOf("a"), -1), -1);
  CFWriteStreamClose(stream.get());
  EXPECT_EQ(write(stream, "a"), -1);
  EXPECT_EQ(written(stream), "");
}

TEST(CFWriteStream, TakesTheMemoryOfItsAllocatorAndGivesItBack) {
  CountingAllocator allocator;
  {
    const auto stream = toMemory(allocator.get());
    CFWriteStreamOpen(stream.get());
    EXPECT_EQ(allocator.blocks(), 0);
    write(stream, "abc");
    EXPECT_EQ(allocator.blocks(), 1);
  }
  EXPECT_EQ(allocator.blocks(), 0);
}

TEST(CFWriteStream, FailsWhenThereIsNoMemory) {
  CountingAllocator allocator;
  const auto stream = toMemory(allocator.get());
  CFWriteStreamOpen(stream.get());
  EXPECT_EQ(write(stream, "abc"), 3);
  allocator.failAfter(0);
  EXPECT_EQ(write(stream, std::string(1000, 'd')), -1);
  EXPECT_EQ(statusOf(stream), kCFStreamStatusError);
  EXPECT_EQ(CFWriteStreamGetError(stream.get()).error, ENOMEM);
  EXPECT_EQ(CFWriteStreamGetError(stream.get()).domain, kCFStreamErrorDomainPOSIX);
  EXPECT_EQ(written(stream), "abc");
}

TEST(CFWriteStream, FillsTheCallersMemory) {
  UInt8 buffer[5] = {0, 0, 0, 0, 'x'};
  const Held stream(CFWriteStreamCreateWithBuffer(nullptr, buffer, 4));
  CFWriteStreamOpen(stream.get());
  EXPECT_EQ(write(stream, "abc"), 3);
  EXPECT_TRUE(CFWriteStreamCanAcceptBytes(stream.get()));
  EXPECT_EQ(write(stream, "def"), 1);
  EXPECT_EQ(statusOf(stream), kCFStreamStatusAtEnd);
  EXPECT_FALSE(CFWriteStreamCanAcceptBytes(stream.get()));
  EXPECT_EQ(write(stream, "g"), 0);
  EXPECT_EQ(written(stream), "abcd");
  EXPECT_EQ(buffer[4], 'x');
}

TEST(CFWriteStream, IsFullAtOnceWithoutRoom) {
  const Held stream(CFWriteStreamCreateWithBuffer(nullptr, nullptr, 0));
  EXPECT_TRUE(CFWriteStreamOpen(stream.get()));
  EXPECT_EQ(write(stream, "a"), 0);
  EXPECT_EQ(written(stream), "");
}

TEST(CFWriteStream, IsNotMadeOfBadArguments) {
  UInt8 byte = 0;
  EXPECT_EQ(CFWriteStreamCreateWithBuffer(nullptr, nullptr, 1), nullptr);
  EXPECT_EQ(CFWriteStreamCreateWithBuffer(nullptr, &byte, -1), nullptr);
  EXPECT_EQ(CFWriteStreamCreateWithFile(nullptr, nullptr), nullptr);
  const Held url(CFURLCreateWithString(nullptr, CFSTR("http://localhost/a"), nullptr));
  EXPECT_EQ(CFWriteStreamCreateWithFile(nullptr, url.get()), nullptr);
}

TEST(CFWriteStream, AnswersNothingForWhatIsNoStream) {
  const auto other = reinterpret_cast<CFWriteStreamRef>(streamOf("a").take());
  const Held<CFTypeRef> owned(other);
  for (const CFWriteStreamRef none : {CFWriteStreamRef{}, other}) {
    EXPECT_FALSE(CFWriteStreamOpen(none));
    CFWriteStreamClose(none);
    EXPECT_EQ(CFWriteStreamGetStatus(none), kCFStreamStatusNotOpen);
    EXPECT_EQ(CFWriteStreamGetError(none).error, 0);
    EXPECT_EQ(CFWriteStreamWrite(none, startOf("a"), 1), -1);
    EXPECT_EQ(CFWriteStreamCopyProperty(none, kCFStreamPropertyDataWritten), nullptr);
    EXPECT_FALSE(CFWriteStreamSetProperty(none, kCFStreamPropertyAppendToFile, kCFBooleanTrue));
  }
}

TEST(CFWriteStream, OfMemoryHasNoOtherProperty) {
  const auto stream = toMemory();
  EXPECT_EQ(CFWriteStreamCopyProperty(stream.get(), kCFStreamPropertyFileCurrentOffset), nullptr);
  EXPECT_EQ(CFWriteStreamCopyProperty(stream.get(), nullptr), nullptr);
  EXPECT_FALSE(
      CFWriteStreamSetProperty(stream.get(), kCFStreamPropertyAppendToFile, kCFBooleanTrue));
}

TEST_F(FileWriteStream, MakesTheFileWhenItIsOpened) {
  const auto stream = toFile(path);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(CFWriteStreamOpen(stream.get()));
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(write(stream, "abc"), 3);
  EXPECT_EQ(contentsOf(path), "abc");
  EXPECT_EQ(CFWriteStreamCopyProperty(stream.get(), kCFStreamPropertyDataWritten), nullptr);
}

TEST_F(FileWriteStream, EmptiesAFileThatIsThere) {
  fillFile(path, "earlier");
  const auto stream = toFile(path);
  CFWriteStreamOpen(stream.get());
  EXPECT_EQ(contentsOf(path), "");
}

TEST_F(FileWriteStream, AddsToTheFileIfItIsToldSoBeforehand) {
  fillFile(path, "earlier");
  const auto stream = toFile(path);
  EXPECT_FALSE(CFWriteStreamSetProperty(stream.get(), kCFStreamPropertyAppendToFile, CFSTR("1")));
  EXPECT_FALSE(CFWriteStreamSetProperty(stream.get(), kCFStreamPropertyAppendToFile, nullptr));
  EXPECT_TRUE(
      CFWriteStreamSetProperty(stream.get(), kCFStreamPropertyAppendToFile, kCFBooleanTrue));
  CFWriteStreamOpen(stream.get());
  EXPECT_FALSE(
      CFWriteStreamSetProperty(stream.get(), kCFStreamPropertyAppendToFile, kCFBooleanFalse));
  EXPECT_EQ(write(stream, " and later"), 10);
  EXPECT_EQ(contentsOf(path), "earlier and later");
}

TEST_F(FileWriteStream, TellsAndSetsItsOffset) {
  const CFStringRef name = kCFStreamPropertyFileCurrentOffset;
  const auto stream = toFile(path);
  EXPECT_EQ(CFWriteStreamCopyProperty(stream.get(), name), nullptr);
  CFWriteStreamOpen(stream.get());
  write(stream, "abcdef");
  EXPECT_TRUE(
      CFEqual(Held(CFWriteStreamCopyProperty(stream.get(), name)).get(), numberOf(6).get()));
  EXPECT_TRUE(CFWriteStreamSetProperty(stream.get(), name, numberOf(2).get()));
  write(stream, "X");
  EXPECT_EQ(contentsOf(path), "abXdef");
}

TEST_F(FileWriteStream, SaysWhyItCannotBeOpened) {
  const auto stream = toFile(root.path() / "none" / "a");
  EXPECT_FALSE(CFWriteStreamOpen(stream.get()));
  EXPECT_EQ(statusOf(stream), kCFStreamStatusError);
  EXPECT_EQ(CFWriteStreamGetError(stream.get()).error, ENOENT);
}

TEST_F(FileWriteStream, SaysThatTheDiskIsFull) {
  const auto stream = toFile("/dev/full");
  ASSERT_TRUE(CFWriteStreamOpen(stream.get()));
  EXPECT_EQ(write(stream, "abc"), -1);
  EXPECT_EQ(statusOf(stream), kCFStreamStatusError);
  EXPECT_EQ(CFWriteStreamGetError(stream.get()).error, ENOSPC);
}

}  // namespace

}  // namespace tests::writeStreams
