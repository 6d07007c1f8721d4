// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/StreamTesting.h"
#include "tests/support/PrivateRoot.h"

namespace tests::readStreams {

namespace {

const std::string kText = "0123456789";

CFStreamStatus statusOf(const Held<CFReadStreamRef>& stream) {
  return CFReadStreamGetStatus(stream.get());
}

class FileReadStream : public ::testing::Test {
 protected:
  Held<CFReadStreamRef> streamOfFile(const char* name) const {
    return Held<CFReadStreamRef>(
        CFReadStreamCreateWithFile(nullptr, urlOfFile(root.path() / name).get()));
  }
  Held<CFReadStreamRef> openedText() const {
    fillFile(root.path() / "a", kText);
    Held<CFReadStreamRef> stream = streamOfFile("a");
    EXPECT_TRUE(CFReadStreamOpen(stream.get()));
    return stream;
  }

  PrivateRoot root;
};

TEST(CFReadStream, GoesThroughItsStates) {
  const auto stream = streamOf(kText);
  EXPECT_EQ(CFGetTypeID(stream.get()), CFReadStreamGetTypeID());
  EXPECT_EQ(statusOf(stream), kCFStreamStatusNotOpen);
  EXPECT_TRUE(CFReadStreamOpen(stream.get()));
  EXPECT_EQ(statusOf(stream), kCFStreamStatusOpen);
  EXPECT_EQ(readAll(stream.get(), 3), kText);
  EXPECT_EQ(statusOf(stream), kCFStreamStatusAtEnd);
  CFReadStreamClose(stream.get());
  EXPECT_EQ(statusOf(stream), kCFStreamStatusClosed);
  EXPECT_FALSE(CFReadStreamOpen(stream.get()));
  EXPECT_EQ(statusOf(stream), kCFStreamStatusClosed);
}

TEST(CFReadStream, IsAtItsEndWithItsLastByte) {
  const auto stream = streamOf(kText);
  CFReadStreamOpen(stream.get());
  UInt8 buffer[10];
  EXPECT_TRUE(CFReadStreamHasBytesAvailable(stream.get()));
  EXPECT_EQ(CFReadStreamRead(stream.get(), buffer, 9), 9);
  EXPECT_EQ(statusOf(stream), kCFStreamStatusOpen);
  EXPECT_EQ(CFReadStreamRead(stream.get(), buffer, 10), 1);
  EXPECT_EQ(statusOf(stream), kCFStreamStatusAtEnd);
  EXPECT_FALSE(CFReadStreamHasBytesAvailable(stream.get()));
  EXPECT_EQ(CFReadStreamRead(stream.get(), buffer, 10), 0);
}

TEST(CFReadStream, OfNoBytesIsAtItsEndAtOnce) {
  const auto stream = streamOf("");
  EXPECT_TRUE(CFReadStreamOpen(stream.get()));
  EXPECT_EQ(statusOf(stream), kCFStreamStatusAtEnd);
  EXPECT_EQ(readAll(stream.get(), 3), "");
}

TEST(CFReadStream, LendsItsOwnMemory) {
  const auto stream = streamOf(kText);
  CFReadStreamOpen(stream.get());
  CFIndex count = -1;
  EXPECT_EQ(CFReadStreamGetBuffer(stream.get(), 4, &count), startOf(kText));
  EXPECT_EQ(count, 4);
  EXPECT_EQ(CFReadStreamGetBuffer(stream.get(), 0, &count), startOf(kText) + 4);
  EXPECT_EQ(count, 6);
  EXPECT_EQ(CFReadStreamGetBuffer(stream.get(), 0, &count), nullptr);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(CFReadStreamGetBuffer(stream.get(), -1, nullptr), nullptr);
}

TEST(CFReadStream, ReadsNothingUnlessItIsOpen) {
  const auto stream = streamOf(kText);
  UInt8 byte = 'x';
  EXPECT_EQ(CFReadStreamRead(stream.get(), &byte, 1), -1);
  EXPECT_FALSE(CFReadStreamHasBytesAvailable(stream.get()));
  CFReadStreamOpen(stream.get());
  EXPECT_EQ(CFReadStreamRead(stream.get(), nullptr, 1), -1);
  EXPECT_EQ(CFReadStreamRead(stream.get(), &byte, 0), -1);
  CFReadStreamClose(stream.get());
  EXPECT_EQ(CFReadStreamRead(stream.get(), &byte, 1), -1);
  EXPECT_EQ(byte, 'x');
}

TEST(CFReadStream, GivesItsBytesToTheirDeallocator) {
  CountingAllocator allocator;
  auto* bytes = static_cast<UInt8*>(CFAllocatorAllocate(allocator.get(), 3, 0));
  std::memcpy(bytes, "abc", 3);
  const CFReadStreamRef stream =
      CFReadStreamCreateWithBytesNoCopy(nullptr, bytes, 3, allocator.get());
  CFReadStreamOpen(stream);
  EXPECT_EQ(readAll(stream, 2), "abc");
  EXPECT_EQ(allocator.blocks(), 1);
  CFRelease(stream);
  EXPECT_EQ(allocator.blocks(), 0);
}

TEST(CFReadStream, IsNotMadeOfBadArguments) {
  EXPECT_EQ(CFReadStreamCreateWithBytesNoCopy(nullptr, nullptr, 1, kCFAllocatorNull), nullptr);
  EXPECT_EQ(CFReadStreamCreateWithBytesNoCopy(nullptr, startOf(kText), -1, kCFAllocatorNull),
            nullptr);
  EXPECT_EQ(CFReadStreamCreateWithFile(nullptr, nullptr), nullptr);
  for (const CFStringRef text : {CFSTR("http://localhost/a"), CFSTR("file://elsewhere/a")}) {
    const Held url(CFURLCreateWithString(nullptr, text, nullptr));
    EXPECT_EQ(CFReadStreamCreateWithFile(nullptr, url.get()), nullptr);
  }
}

TEST(CFReadStream, AnswersNothingForWhatIsNoStream) {
  const auto text =
      reinterpret_cast<CFReadStreamRef>(const_cast<void*>(static_cast<const void*>(CFSTR("text"))));
  for (const CFReadStreamRef none : {CFReadStreamRef{}, text}) {
    UInt8 byte = 0;
    EXPECT_FALSE(CFReadStreamOpen(none));
    CFReadStreamClose(none);
    EXPECT_EQ(CFReadStreamGetStatus(none), kCFStreamStatusNotOpen);
    EXPECT_EQ(CFReadStreamGetError(none).error, 0);
    EXPECT_EQ(CFReadStreamRead(none, &byte, 1), -1);
    EXPECT_EQ(CFReadStreamGetBuffer(none, 0, nullptr), nullptr);
    EXPECT_EQ(CFReadStreamCopyProperty(none, kCFStreamPropertyFileCurrentOffset), nullptr);
    EXPECT_FALSE(CFReadStreamSetProperty(none, kCFStreamPropertyFileCurrentOffset, nullptr));
  }
}

TEST(CFReadStream, OfMemoryHasNoProperties) {
  const auto stream = streamOf(kText);
  CFReadStreamOpen(stream.get());
  EXPECT_EQ(CFReadStreamCopyProperty(stream.get(), kCFStreamPropertyFileCurrentOffset), nullptr);
  EXPECT_FALSE(
      CFReadStreamSetProperty(stream.get(), kCFStreamPropertyFileCurrentOffset, numberOf(1).get()));
}

TEST_F(FileReadStream, ReadsToTheEnd) {
  const auto stream = openedText();
  UInt8 buffer[10];
  EXPECT_EQ(CFReadStreamRead(stream.get(), buffer, 10), 10);
  EXPECT_EQ(statusOf(stream), kCFStreamStatusOpen);
  EXPECT_EQ(CFReadStreamRead(stream.get(), buffer, 10), 0);
  EXPECT_EQ(statusOf(stream), kCFStreamStatusAtEnd);
  CFReadStreamClose(stream.get());
  EXPECT_EQ(statusOf(stream), kCFStreamStatusClosed);
}

TEST_F(FileReadStream, LendsNoMemory) {
  const auto stream = openedText();
  CFIndex count = -1;
  EXPECT_EQ(CFReadStreamGetBuffer(stream.get(), 4, &count), nullptr);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(readAll(stream.get(), 4), kText);
}

TEST_F(FileReadStream, TellsAndSetsItsOffset) {
  const auto stream = openedText();
  EXPECT_EQ(readAll(stream.get(), 4), kText);
  const CFStringRef name = kCFStreamPropertyFileCurrentOffset;
  EXPECT_TRUE(
      CFEqual(Held(CFReadStreamCopyProperty(stream.get(), name)).get(), numberOf(10).get()));
  EXPECT_TRUE(CFReadStreamSetProperty(stream.get(), name, numberOf(7).get()));
  EXPECT_EQ(statusOf(stream), kCFStreamStatusOpen);
  EXPECT_EQ(readAll(stream.get(), 4), "789");
  EXPECT_FALSE(CFReadStreamSetProperty(stream.get(), name, numberOf(-1).get()));
  EXPECT_FALSE(CFReadStreamSetProperty(stream.get(), name, CFSTR("1")));
  EXPECT_FALSE(CFReadStreamSetProperty(stream.get(), name, nullptr));
  EXPECT_FALSE(CFReadStreamSetProperty(stream.get(), nullptr, numberOf(1).get()));
  EXPECT_EQ(CFReadStreamCopyProperty(stream.get(), kCFStreamPropertyDataWritten), nullptr);
}

TEST_F(FileReadStream, SaysWhyItCannotBeOpened) {
  const auto stream = streamOfFile("none");
  EXPECT_FALSE(CFReadStreamOpen(stream.get()));
  EXPECT_EQ(statusOf(stream), kCFStreamStatusError);
  EXPECT_EQ(CFReadStreamGetError(stream.get()).domain, kCFStreamErrorDomainPOSIX);
  EXPECT_EQ(CFReadStreamGetError(stream.get()).error, ENOENT);
  EXPECT_FALSE(CFReadStreamOpen(stream.get()));
  CFReadStreamClose(stream.get());
  EXPECT_EQ(statusOf(stream), kCFStreamStatusError);
}

TEST_F(FileReadStream, SaysWhyItCannotBeRead) {
  const auto stream = streamOfFile(".");
  EXPECT_TRUE(CFReadStreamOpen(stream.get()));
  EXPECT_EQ(readAll(stream.get(), 1), "<failed>");
  EXPECT_EQ(CFReadStreamGetError(stream.get()).error, EISDIR);
  EXPECT_EQ(readAll(stream.get(), 1), "<failed>");
  EXPECT_EQ(CFReadStreamCopyProperty(stream.get(), kCFStreamPropertyFileCurrentOffset), nullptr);
}

TEST_F(FileReadStream, TakesARelativeURL) {
  fillFile(root.path() / "a", kText);
  const Held folder(CFURLCreateWithFileSystemPath(nullptr, stringOf(root.path().c_str()).get(),
                                                  kCFURLPOSIXPathStyle, true));
  const Held url(CFURLCreateWithString(nullptr, CFSTR("a"), folder.get()));
  const Held stream(CFReadStreamCreateWithFile(nullptr, url.get()));
  EXPECT_TRUE(CFReadStreamOpen(stream.get()));
  EXPECT_EQ(readAll(stream.get(), 100), kText);
}

}  // namespace

}  // namespace tests::readStreams
