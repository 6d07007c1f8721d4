// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFPropertyList.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/PropertyListTesting.h"
#include "tests/support/PrivateRoot.h"

namespace tests::propertyLists {

namespace {

const char* const kTree =
    "<dict><key>text</key><string>a</string><key>data</key><data>AA==</data>"
    "<key>list</key><array><dict/><integer>1</integer><real>0.5</real><true/>"
    "<date>2001-01-01T00:00:00Z</date></array></dict>";
const char* const kShown = "{data=<00>, list=({}, 1, r0.5, true, @0.000), text=\"a\"}";

Held<CFTypeRef> fromStream(const std::string& bytes, CFIndex length, CFPropertyListFormat* format,
                           std::string* error) {
  const auto stream = streamOf(bytes);
  CFReadStreamOpen(stream.get());
  CFStringRef reason = nullptr;
  Held<CFTypeRef> list(CFPropertyListCreateFromStream(nullptr, stream.get(), length,
                                                      kCFPropertyListImmutable, format, &reason));
  *error = textOf(Held<CFStringRef>(reason).get());
  return list;
}

CFTypeRef valueOf(const Held<CFTypeRef>& dictionary, CFStringRef key) {
  return CFDictionaryGetValue(static_cast<CFDictionaryRef>(dictionary.get()), key);
}

void setFlag(CFTypeRef dictionary) {
  CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(const_cast<void*>(dictionary)),
                       CFSTR("flag"), kCFBooleanTrue);
}

// What of a tree like kTree takes a change: "", "c" its containers, "cl" its leaves too.
std::string changeable(const Held<CFTypeRef>& list) {
  const auto change = [&list](const char* key) {
    return const_cast<void*>(valueOf(list, stringOf(key).get()));
  };
  std::string found;
  CFArrayAppendValue(static_cast<CFMutableArrayRef>(change("list")), kCFBooleanTrue);
  setFlag(CFArrayGetValueAtIndex(static_cast<CFArrayRef>(change("list")), 0));
  setFlag(list.get());
  CFStringAppend(static_cast<CFMutableStringRef>(change("text")), CFSTR("b"));
  CFDataAppendBytes(static_cast<CFMutableDataRef>(change("data")), startOf("1"), 1);
  return shown(list.get());
}

const char* const kChangedContainers =
    "{data=<00>, flag=true, list=({flag=true}, 1, r0.5, true, @0.000, true), text=\"a\"}";
const char* const kChangedAll =
    "{data=<0031>, flag=true, list=({flag=true}, 1, r0.5, true, @0.000, true), text=\"ab\"}";

class PropertyListFile : public ::testing::Test {
 protected:
  PrivateRoot root;
  const std::filesystem::path path = root.path() / "list";
};

TEST(CFPropertyList, IsAsMutableAsIsAskedFor) {
  const std::string binary = asBinary(readList(kTree).get());
  for (const std::string& file : {std::string(kTree), binary}) {
    EXPECT_EQ(changeable(readList(file, nullptr, kCFPropertyListImmutable)), kShown);
    EXPECT_EQ(changeable(readList(file, nullptr, kCFPropertyListMutableContainers)),
              kChangedContainers);
    EXPECT_EQ(changeable(readList(file, nullptr, kCFPropertyListMutableContainersAndLeaves)),
              kChangedAll);
  }
}

TEST(CFPropertyList, OfOldStyleTextIsAsMutableAsIsAskedFor) {
  const char* const text = "{ text = a; data = <00>; list = ({}); }";
  EXPECT_EQ(changeable(readList(text, nullptr, kCFPropertyListMutableContainersAndLeaves)),
            "{data=<0031>, flag=true, list=({flag=true}, true), text=\"ab\"}");
  EXPECT_EQ(changeable(readList(text)), "{data=<00>, list=({}), text=\"a\"}");
}

TEST(CFPropertyList, KeepsItsKeysAsTheyAre) {
  const auto list = readList(kTree, nullptr, kCFPropertyListMutableContainersAndLeaves);
  const void* keys[3];
  CFDictionaryGetKeysAndValues(static_cast<CFDictionaryRef>(list.get()), keys, nullptr);
  for (const void* key : keys) {
    CFStringAppend(static_cast<CFMutableStringRef>(const_cast<void*>(key)), CFSTR("x"));
  }
  EXPECT_EQ(shown(list.get()), kShown);
}

TEST(CFPropertyList, IsTheCallersAlone) {
  for (const CFOptionFlags mutability : {0, 1, 2}) {
    EXPECT_EQ(CFGetRetainCount(readList(kTree, nullptr, mutability).get()), 1);
  }
}

TEST(CFPropertyList, TellsItsFormat) {
  const struct {
    std::string bytes;
    CFPropertyListFormat format;
  } cases[] = {{kTree, kCFPropertyListXMLFormat_v1_0},
               {asBinary(kCFBooleanTrue), kCFPropertyListBinaryFormat_v1_0},
               {"{}", kCFPropertyListOpenStepFormat}};
  for (const auto& each : cases) {
    auto format = static_cast<CFPropertyListFormat>(0);
    std::string error;
    EXPECT_TRUE(fromStream(each.bytes, 0, &format, &error));
    EXPECT_EQ(format, each.format);
    EXPECT_EQ(error, "<null>");
  }
}

TEST(CFPropertyList, TakesAsMuchOfAStreamAsItIsTold) {
  std::string error;
  EXPECT_EQ(shown(fromStream("(a) and more", 3, nullptr, &error).get()), "(\"a\")");
  EXPECT_FALSE(fromStream("(a)", 4, nullptr, &error));
  EXPECT_EQ(error, "the stream ends too early");
  EXPECT_FALSE(fromStream("(a)", -1, nullptr, &error));
  EXPECT_EQ(error, "there is no such length");
  const std::string large = "<string>" + std::string(300000, 'x') + "</string>";
  EXPECT_TRUE(fromStream(large, 0, nullptr, &error));
}

TEST(CFPropertyList, LeavesTheFormatAloneIfItCannotBeRead) {
  auto format = static_cast<CFPropertyListFormat>(7);
  std::string error;
  EXPECT_FALSE(fromStream("<foo/>", 0, &format, &error));
  EXPECT_EQ(static_cast<int>(format), 7);
  EXPECT_EQ(error, "line 1, column 1: the element is not known");
}

TEST(CFPropertyList, NeedsAStreamThatIsOpen) {
  CFStringRef reason = nullptr;
  EXPECT_EQ(CFPropertyListCreateFromStream(nullptr, streamOf("{}").get(), 0, 0, nullptr, &reason),
            nullptr);
  EXPECT_EQ(textOf(Held<CFStringRef>(reason).get()), "the stream cannot be read");
  const Held stream(CFWriteStreamCreateWithAllocatedBuffers(nullptr, nullptr));
  EXPECT_EQ(CFPropertyListWriteToStream(kCFBooleanTrue, stream.get(), kCFPropertyListXMLFormat_v1_0,
                                        &reason),
            0);
  EXPECT_EQ(textOf(Held<CFStringRef>(reason).get()), "the stream does not take it");
}

TEST(CFPropertyList, NeedsNoErrorString) {
  EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, dataHolding("<foo/>").get(), 0, nullptr),
            nullptr);
  EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, dataHolding("bplist00").get(), 0, nullptr),
            nullptr);
  EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, nullptr, 0, nullptr), nullptr);
  EXPECT_EQ(CFPropertyListCreateFromStream(nullptr, nullptr, 0, 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(
      CFPropertyListWriteToStream(kCFBooleanTrue, nullptr, kCFPropertyListXMLFormat_v1_0, nullptr),
      0);
}

TEST(CFPropertyList, IsNotWrittenAsOldStyleText) {
  EXPECT_EQ(writtenList(CFSTR("a"), kCFPropertyListOpenStepFormat),
            "<the format is not one to be written>");
}

TEST(CFPropertyList, IsNotWrittenWhereThereIsTooLittleRoom) {
  UInt8 buffer[20];
  const Held stream(CFWriteStreamCreateWithBuffer(nullptr, buffer, 20));
  CFWriteStreamOpen(stream.get());
  EXPECT_EQ(CFPropertyListWriteToStream(kCFBooleanTrue, stream.get(),
                                        kCFPropertyListBinaryFormat_v1_0, nullptr),
            0);
}

TEST_F(PropertyListFile, GoesToAFileAndBack) {
  for (const auto format : {kCFPropertyListXMLFormat_v1_0, kCFPropertyListBinaryFormat_v1_0}) {
    const auto list = readList(kTree);
    const Held output(CFWriteStreamCreateWithFile(nullptr, urlOfFile(path).get()));
    CFWriteStreamOpen(output.get());
    const CFIndex count = CFPropertyListWriteToStream(list.get(), output.get(), format, nullptr);
    EXPECT_EQ(count, static_cast<CFIndex>(std::filesystem::file_size(path)));
    const Held input(CFReadStreamCreateWithFile(nullptr, urlOfFile(path).get()));
    CFReadStreamOpen(input.get());
    const Held read(CFPropertyListCreateFromStream(nullptr, input.get(), 0, 0, nullptr, nullptr));
    EXPECT_TRUE(CFEqual(read.get(), list.get()));
  }
}

TEST_F(PropertyListFile, IsNotReadFromAFolder) {
  const Held input(CFReadStreamCreateWithFile(nullptr, urlOfFile(root.path()).get()));
  CFReadStreamOpen(input.get());
  CFStringRef reason = nullptr;
  EXPECT_EQ(CFPropertyListCreateFromStream(nullptr, input.get(), 0, 0, nullptr, &reason), nullptr);
  EXPECT_EQ(textOf(Held<CFStringRef>(reason).get()), "the stream cannot be read");
}

TEST(CFPropertyList, IsCopiedDownToItsLeaves) {
  const auto original = readList(kTree, nullptr, kCFPropertyListMutableContainersAndLeaves);
  const struct {
    CFOptionFlags mutability;
    const char* changed;
  } cases[] = {{0, kShown}, {1, kChangedContainers}, {2, kChangedAll}};
  for (const auto& each : cases) {
    const Held copy(CFPropertyListCreateDeepCopy(nullptr, original.get(), each.mutability));
    EXPECT_TRUE(CFEqual(copy.get(), original.get()));
    EXPECT_EQ(changeable(copy), each.changed);
    EXPECT_EQ(shown(original.get()), kShown);
  }
}

TEST(CFPropertyList, IsNotCopiedIfItIsNone) {
  EXPECT_EQ(CFPropertyListCreateDeepCopy(nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(CFPropertyListCreateDeepCopy(nullptr, kCFAllocatorSystemDefault, 0), nullptr);
  const Held array(CFArrayCreateMutable(nullptr, 0, nullptr));
  CFArrayAppendValue(array.get(), array.get());
  EXPECT_EQ(CFPropertyListCreateDeepCopy(nullptr, array.get(), 0), nullptr);
}

TEST(CFPropertyList, IsValidForTheFormatsThatCanSayIt) {
  const auto valid = [](CFTypeRef list) {
    std::string formats;
    if (CFPropertyListIsValid(list, kCFPropertyListOpenStepFormat)) formats += "o";
    if (CFPropertyListIsValid(list, kCFPropertyListXMLFormat_v1_0)) formats += "x";
    if (CFPropertyListIsValid(list, kCFPropertyListBinaryFormat_v1_0)) formats += "b";
    return formats;
  };
  EXPECT_EQ(valid(readList("{a = (b, <00>); }").get()), "oxb");
  EXPECT_EQ(valid(readList(kTree).get()), "xb");
  EXPECT_EQ(valid(kCFBooleanTrue), "xb");
  EXPECT_EQ(valid(nullptr), "");
  EXPECT_EQ(valid(kCFAllocatorSystemDefault), "");
  const void* key = kCFBooleanTrue;
  const Held dictionary(CFDictionaryCreate(nullptr, &key, &key, 1, &kCFTypeDictionaryKeyCallBacks,
                                           &kCFTypeDictionaryValueCallBacks));
  EXPECT_EQ(valid(dictionary.get()), "");
  const Held array(CFArrayCreateMutable(nullptr, 0, nullptr));
  CFArrayAppendValue(array.get(), array.get());
  EXPECT_EQ(valid(array.get()), "");
}

// Whichever allocation fails, nothing is left behind and the reason is told.
TEST(CFPropertyList, LeavesNothingBehindWhenThereIsNoMemory) {
  const std::string binary = asBinary(readList(kTree).get());
  for (const std::string& file :
       {std::string(kTree), binary, std::string("{ a = (\"\\n\", b, <00>); }")}) {
    for (const CFOptionFlags mutability : {0, 2}) {
      const auto data = dataHolding(file);
      CountingAllocator allocator;
      for (int allowed = 0;; ++allowed) {
        allocator.failAfter(allowed);
        CFStringRef reason = nullptr;
        const Held list(
            CFPropertyListCreateFromXMLData(allocator.get(), data.get(), mutability, &reason));
        const Held owned(reason);
        if (list) {
          EXPECT_GT(allowed, 5);
          break;
        }
        EXPECT_NE(textOf(reason).find("there is not enough memory"), std::string::npos);
        ASSERT_EQ(allocator.blocks(), 0) << "after " << allowed;
      }
    }
  }
}

TEST(CFPropertyList, GivesUpACopyWhenThereIsNoMemory) {
  const auto list = readList(kTree);
  CountingAllocator allocator;
  int allowed = 0;
  for (;; ++allowed) {
    allocator.failAfter(allowed);
    const Held copy(CFPropertyListCreateDeepCopy(allocator.get(), list.get(), 2));
    if (copy) break;
    ASSERT_EQ(allocator.blocks(), 0) << "after " << allowed;
  }
  EXPECT_GT(allowed, 5);
}

}  // namespace

}  // namespace tests::propertyLists
