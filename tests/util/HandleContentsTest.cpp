// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/util/HandleUtils.h>

#include <random>
#include <string>

#include "tests/support/AllocationFailures.h"
#include "tests/util/Destination.h"
#include "tests/util/OwnedHandle.h"

namespace {

using namespace std::string_literals;
using tests::AllocationFailure;
using tests::OwnedHandle;

TEST(Reallocation, ReturnsALockedPurgeableHandleUnlockedAndNotPurgeable) {
  for (const SInt32 size : {0, 2, 6, 50000}) {  // smaller, the same, larger
    const OwnedHandle h("abcdef");
    HLock(h.handle);
    HPurge(h.handle);
    EXPECT_EQ(NFReallocHandle(h.handle, size), noErr);
    EXPECT_EQ(h.state(), 0) << size;
    EXPECT_EQ(GetHandleSize(h.handle), size);
  }
}

TEST(Reallocation, GivesAnEmptyHandleABlock) {
  const OwnedHandle h("abc");
  EmptyHandle(h.handle);
  EXPECT_EQ(NFReallocHandle(h.handle, 12), noErr);
  EXPECT_FALSE(h.isEmpty());
  EXPECT_EQ(GetHandleSize(h.handle), 12);
  EXPECT_EQ(h.state(), 0);
}

TEST(Reallocation, KeepsTheBlockWhenTheSizeIsTheSameOrLess) {
  const OwnedHandle h("abcdef");
  EXPECT_EQ(NFReallocHandle(h.handle, 6), noErr);
  EXPECT_EQ(h.contents(), "abcdef");
  EXPECT_EQ(NFReallocHandle(h.handle, 2), noErr);
  EXPECT_EQ(h.contents(), "ab");
}

TEST(Reallocation, WithClearZeroesTheBlock) {
  for (const SInt32 size : {0, 2, 6, 300}) {
    const OwnedHandle h("abcdef");
    EXPECT_EQ(NFReallocHandleClear(h.handle, size), noErr);
    EXPECT_EQ(h.contents(), std::string(static_cast<std::size_t>(size), '\0'));
  }
}

TEST(Reallocation, ReportsWhatKeepsItFromHappening) {
  for (const auto call : {NFReallocHandle, NFReallocHandleClear}) {
    const OwnedHandle h("abc");
    EXPECT_EQ(call(nullptr, 3), nilHandleErr);
    EXPECT_EQ(call(h.handle, -1), memFullErr);
    {
      const AllocationFailure failure(1);
      EXPECT_EQ(call(h.handle, 50000), memFullErr);
    }
    EXPECT_EQ(h.contents(), "abc");
  }
}

TEST(Reallocation, LeavesAnEmptyHandleEmptyWithoutMemory) {
  const OwnedHandle h("abc");
  EmptyHandle(h.handle);
  EXPECT_EQ(NFReallocHandle(h.handle, -1), memFullErr);
  const AllocationFailure failure(1);
  EXPECT_EQ(NFReallocHandle(h.handle, 3), memFullErr);
  EXPECT_TRUE(h.isEmpty());
}

TEST(Reallocation, OfADeadHandleIsRefused) {
  // A handle of the test's own making, which the Memory Manager does not know.
  char block[] = "abc";
  char* master = block;
  EXPECT_EQ(NFReallocHandle(&master, 9), memWZErr);
  EXPECT_STREQ(block, "abc");
}

TEST(StringHandle, HoldsTheLengthByteAndTheCharacters) {
  OwnedHandle h("something longer");
  auto** string = reinterpret_cast<unsigned char**>(h.handle);
  for (const std::string& text : {""s, "abc"s, std::string(255, 'x')}) {
    EXPECT_EQ(NFSetStringHandle(string, tests::bytesOf(tests::pascal(text))), noErr);
    EXPECT_EQ(h.contents(), tests::pascal(text));
  }
  EXPECT_EQ(NFSetStringHandle(string, nullptr), noErr);
  EXPECT_EQ(h.contents(), "\0"s);
  EXPECT_EQ(NFSetStringHandle(nullptr, tests::bytesOf(tests::pascal("abc"))), nilHandleErr);
}

TEST(PtrToHandle, ReplacesTheContents) {
  const OwnedHandle h("abcdef");
  EXPECT_EQ(NFPtrToHandle(h.handle, "xy", 2), noErr);
  EXPECT_EQ(h.contents(), "xy");
  EXPECT_EQ(NFPtrToHandle(h.handle, "longer than before", 18), noErr);
  EXPECT_EQ(h.contents(), "longer than before");
  EXPECT_EQ(NFPtrToHandle(h.handle, nullptr, 0), noErr);
  EXPECT_EQ(h.contents(), "");
}

TEST(PtrToHandle, ReportsWhatKeepsItFromHappening) {
  const OwnedHandle h("abc");
  EXPECT_EQ(NFPtrToHandle(nullptr, "x", 1), nilHandleErr);
  EXPECT_EQ(NFPtrToHandle(h.handle, nullptr, 1), paramErr);
  EXPECT_EQ(NFPtrToHandle(h.handle, "x", -1), memFullErr);
  {
    const AllocationFailure failure(1);
    EXPECT_EQ(NFPtrToHandle(h.handle, "abcdef", 6), memFullErr);
  }
  EXPECT_EQ(h.contents(), "abc");
}

TEST(PtrAndHand, Appends) {
  const OwnedHandle h("abc");
  EXPECT_EQ(NFPtrAndHand(h.handle, "de", 2), noErr);
  EXPECT_EQ(h.contents(), "abcde");
  EXPECT_EQ(NFPtrAndHand(h.handle, *h.handle, 5), noErr);
  EXPECT_EQ(h.contents(), "abcdeabcde");
  EXPECT_EQ(NFPtrAndHand(nullptr, "de", 2), memWZErr);
  EXPECT_EQ(NFPtrAndHand(h.handle, "de", -2), memFullErr);
  const AllocationFailure failure(1);
  EXPECT_EQ(NFPtrAndHand(h.handle, "de", 2), memFullErr);
}

TEST(Copying, MakesTheDestinationTheSame) {
  for (const std::string& before : {""s, "ab"s, "abcdef"s, "abcdefghij"s}) {
    const OwnedHandle source("uvwxyz");
    const OwnedHandle destination(before);
    EXPECT_EQ(NFCopyHandle(source.handle, destination.handle), noErr);
    EXPECT_EQ(destination.contents(), "uvwxyz");
    EXPECT_EQ(source.contents(), "uvwxyz");
  }
}

TEST(Copying, FillsAnEmptyDestination) {
  const OwnedHandle source("uvwxyz");
  const OwnedHandle destination("abc");
  EmptyHandle(destination.handle);
  EXPECT_EQ(NFCopyHandle(source.handle, destination.handle), noErr);
  EXPECT_EQ(destination.contents(), "uvwxyz");
}

TEST(Copying, OfAnEmptySourceEmptiesTheDestination) {
  const OwnedHandle source("uvwxyz");
  const OwnedHandle destination("abc");
  EmptyHandle(source.handle);
  EXPECT_EQ(NFCopyHandle(source.handle, destination.handle), noErr);
  EXPECT_TRUE(destination.isEmpty());
}

TEST(Copying, ToItselfDoesNothing) {
  const OwnedHandle h("abc");
  HLock(h.handle);
  EXPECT_EQ(NFCopyHandle(h.handle, h.handle), noErr);
  EXPECT_EQ(h.contents(), "abc");
  EXPECT_EQ(h.state(), kHandleLockedMask);
}

TEST(Copying, ReportsWhatKeepsItFromHappening) {
  const OwnedHandle source("uvwxyz");
  const OwnedHandle destination("abc");
  EXPECT_EQ(NFCopyHandle(nullptr, destination.handle), paramErr);
  EXPECT_EQ(NFCopyHandle(source.handle, nullptr), paramErr);
  EXPECT_EQ(NFCopyHandle(nullptr, nullptr), paramErr);
  {
    const AllocationFailure failure(1);
    EXPECT_EQ(NFCopyHandle(source.handle, destination.handle), memFullErr);
  }
  EXPECT_EQ(destination.contents(), "abc");
}

TEST(Cloning, MakesADestination) {
  const OwnedHandle source("uvwxyz");
  OwnedHandle destination;
  EXPECT_EQ(NFCloneHandle(source.handle, destination.handle), noErr);
  ASSERT_NE(destination.handle, nullptr);
  EXPECT_NE(destination.handle, source.handle);
  EXPECT_EQ(destination.contents(), "uvwxyz");
}

TEST(Cloning, UsesTheDestinationThatIsThere) {
  const OwnedHandle source("uvwxyz");
  OwnedHandle destination("abc");
  char** before = destination.handle;
  EXPECT_EQ(NFCloneHandle(source.handle, destination.handle), noErr);
  EXPECT_EQ(destination.handle, before);
  EXPECT_EQ(destination.contents(), "uvwxyz");
}

TEST(Cloning, OfANullSourceDisposesOfTheDestination) {
  char** destination = NewHandle(3);
  EXPECT_EQ(NFCloneHandle(nullptr, destination), noErr);
  EXPECT_EQ(destination, nullptr);
  EXPECT_EQ(NFCloneHandle(nullptr, destination), noErr);
}

TEST(Cloning, OfAnEmptySourceLeavesTheDestinationAlone) {
  const OwnedHandle source("uvwxyz");
  OwnedHandle destination("abc");
  EmptyHandle(source.handle);
  EXPECT_EQ(NFCloneHandle(source.handle, destination.handle), nilHandleErr);
  EXPECT_EQ(destination.contents(), "abc");
}

TEST(Cloning, WithoutMemoryMakesNoDestination) {
  const OwnedHandle source("uvwxyz");
  const auto clone = [&source] {
    char** destination = nullptr;
    const OSErr err = NFCloneHandle(source.handle, destination);
    return std::pair(err, destination);
  };
  const auto check = [](std::pair<OSErr, char**> made, bool failed) {
    EXPECT_EQ(made.first, failed ? OSErr{memFullErr} : OSErr{noErr});
    EXPECT_EQ(made.second == nullptr, failed);
    if (made.second != nullptr) DisposeHandle(made.second);
  };
  EXPECT_EQ(tests::failEachAllocation(clone, check), 3u);
}

TEST(CopyRightJust, AlignsTheSourceWithTheEnd) {
  const struct {
    SInt32 sourceLength, destinationLength;
    const char* after;
  } rows[] = {
      {3, 6, "***abc##"}, {3, 4, "*abc####"},  {3, 3, "abc#####"},   {3, 2, "bc######"},
      {3, 1, "c#######"}, {3, 0, "########"},  {3, -1, "########"},  {0, 3, "***#####"},
      {0, 0, "########"}, {-1, 3, "***#####"}, {-5, -9, "########"},
  };
  for (const auto& row : rows) {
    char destination[] = "########";
    CopyRightJust("abc", row.sourceLength, destination, row.destinationLength, '*');
    EXPECT_STREQ(destination, row.after) << row.sourceLength << " to " << row.destinationLength;
  }
}

TEST(CopyRightJust, WorksWithinOneArea) {
  char area[] = "abc#####";
  CopyRightJust(area, 3, area, 5, '*');
  EXPECT_STREQ(area, "**abc###");
  CopyRightJust(area, 5, area, 2, '*');
  EXPECT_STREQ(area, "bcabc###");
}

/// One of the calls that give a handle contents, chosen at random; `text` becomes what they are.
OSErr callAtRandom(std::mt19937& random, char** h, std::string& text) {
  const std::string data(random() % 300, static_cast<char>('a' + random() % 26));
  const auto size = static_cast<SInt32>(data.size());
  switch (random() % 4) {
    case 0:
      text = data;
      return NFPtrToHandle(h, data.data(), size);
    case 1:
      text += data;
      return NFPtrAndHand(h, data.data(), size);
    case 2:
      text.assign(data.size(), '\0');
      return NFReallocHandleClear(h, size);
    default:
      text.resize(text.size() / 2);
      return NFSetHandleSize(h, static_cast<SInt32>(text.size()));
  }
}

TEST(HandleContents, SurviveAnyRowOfCalls) {
  std::mt19937 random(3);
  const OwnedHandle h("");
  std::string expected;
  for (int i = 0; i < 5000; ++i) {
    ASSERT_EQ(callAtRandom(random, h.handle, expected), noErr);
    ASSERT_EQ(h.contents(), expected);
  }
}

}  // namespace
