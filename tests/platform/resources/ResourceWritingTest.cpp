// Licence: MIT, see LICENSE.
// Writing back under faults, and any contents there and back.
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <random>

#include "platform/resources/AppleDouble.h"
#include "tests/platform/resources/OpenFilesFixture.h"
#include "tests/support/AllocationFailures.h"
#include "tests/support/StressCount.h"

namespace {

using namespace tests;

/// No file grows beyond a size for a while, as if the disk were full.
class FullDisk final {
 public:
  explicit FullDisk(rlim_t size) : signal(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{size, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, signal);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before{};
  void (*signal)(int);
};

class WritingBack : public OpenFilesFixture {
 protected:
  WritingBack() : file(openNew("file", {{'TEXT', 1, 0, "First", bytesOf("one")}})) {}

  std::size_t itemsInFolder() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(top), {}));
  }
  /// The change is still to be written, the file is the old one and alone.
  void expectNothingWritten(const ByteVector& before) const {
    EXPECT_EQ(bytesIn("file"), before);
    EXPECT_EQ(itemsInFolder(), 1U);
    EXPECT_EQ(textOf(Get1Resource('TEXT', 1)), "changed");
    EXPECT_EQ(GetResAttrs(Get1Resource('TEXT', 1)), resChanged);
  }

  SInt16 file;
};

TEST_F(WritingBack, ToAFullDiskLeavesEverythingAsItWas) {
  const ByteVector before = bytesIn("file");
  Handle resource = change('TEXT', 1, "changed");
  for (rlim_t size : {0, 100, 300}) {
    const FullDisk full(size);
    UpdateResFile(file);
    EXPECT_EQ(ResError(), dskFulErr) << size;
    WriteResource(resource);
    EXPECT_EQ(ResError(), dskFulErr) << size;
  }
  expectNothingWritten(before);
  UpdateResFile(file);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(onDisk("file").front(), "TEXT 1 First 0 changed");
}

TEST_F(WritingBack, ToAFolderThatMayNotBeWrittenLeavesEverythingAsItWas) {
  if (geteuid() == 0) GTEST_SKIP() << "root may write anywhere";
  const ByteVector before = bytesIn("file");
  change('TEXT', 1, "changed");
  ASSERT_EQ(chmod(top.c_str(), 0500), 0);
  UpdateResFile(file);
  EXPECT_EQ(ResError(), wrPermErr);
  ASSERT_EQ(chmod(top.c_str(), 0700), 0);
  expectNothingWritten(before);
}

TEST_F(WritingBack, ToAFolderThatIsGoneFails) {
  put("folder/inner", {{'TEXT', 1, 0, "", bytesOf("one")}});
  const SInt16 inner = open("folder/inner");
  change('TEXT', 1, "changed");
  std::filesystem::remove_all(path("folder"));
  UpdateResFile(inner);
  EXPECT_EQ(ResError(), ioErr);
  CloseResFile(inner);
  EXPECT_EQ(ResError(), ioErr);
  EXPECT_EQ(CurResFile(), file);
}

TEST_F(WritingBack, OnClosingClosesAlsoWhereItFails) {
  const ByteVector before = bytesIn("file");
  change('TEXT', 1, "changed");
  const FullDisk full(0);
  CloseResFile(file);
  EXPECT_EQ(ResError(), dskFulErr);
  EXPECT_EQ(CurResFile(), bottom);
  EXPECT_EQ(bytesIn("file"), before);
}

TEST_F(WritingBack, KeepsTheModeOfTheFile) {
  ASSERT_EQ(chmod(path("file").c_str(), 0640), 0);
  change('TEXT', 1, "changed");
  CloseResFile(file);
  struct stat status {};
  ASSERT_EQ(stat(path("file").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST_F(WritingBack, GoesThroughALinkToTheFile) {
  CloseResFile(file);
  std::filesystem::create_symlink("file", path("link"));
  file = open("link");
  change('TEXT', 1, "changed");
  CloseResFile(file);
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_EQ(onDisk("file").front(), "TEXT 1 First 0 changed");
}

TEST_F(WritingBack, KeepsTheReservedBytesOfTheHeader) {
  ByteVector bytes = bytesIn("file");
  for (std::size_t i = 16; i < 256; ++i) bytes[i] = static_cast<std::byte>(i);
  CloseResFile(file);
  put("file", bytes);
  file = open("file");
  change('TEXT', 1, "changed");
  CloseResFile(file);
  const ByteVector after = bytesIn("file");
  EXPECT_EQ(ByteVector(after.begin() + 16, after.begin() + 256),
            ByteVector(bytes.begin() + 16, bytes.begin() + 256));
  EXPECT_EQ(onDisk("file").front(), "TEXT 1 First 0 changed");
}

TEST_F(WritingBack, GoesToTheCompanionThatTheResourcesCameFrom) {
  const ByteVector fork = *platform::resources::writeResourceFile({{'TEXT', 1, 0, "", {}}});
  put("text", bytesOf("This is only text."));
  put("._text", platform::resources::appleDoubleWith(fork));
  const SInt16 text = open("text");
  change('TEXT', 1, "changed");
  CloseResFile(text);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(bytesIn("text"), bytesOf("This is only text."));
  const ByteVector companion = bytesIn("._text");
  const auto inside = platform::resources::resourceForkOfAppleDouble(companion);
  ASSERT_TRUE(inside);
  put("inside", ByteVector(inside->begin(), inside->end()));
  EXPECT_EQ(onDisk("inside").front(), "TEXT 1  0 changed");
}

TEST_F(WritingBack, RefusesACompanionThatWasDamagedMeanwhile) {
  put("text", bytesOf("This is only text."));
  put("._text", platform::resources::appleDoubleWith(
                    *platform::resources::writeResourceFile({{'TEXT', 1, 0, "", {}}})));
  const SInt16 text = open("text");
  change('TEXT', 1, "changed");
  put("._text", bytesOf("something else"));
  UpdateResFile(text);
  EXPECT_EQ(ResError(), mapReadErr);
  EXPECT_EQ(bytesIn("._text"), bytesOf("something else"));
}

TEST_F(WritingBack, RefusesMoreThanTheFormatHasRoomFor) {
  const ByteVector before = bytesIn("file");
  constexpr Size kTooMuch = 17 * 1024 * 1024;
  AddResource(NewHandleClear(kTooMuch), 'BIG ', 1, nullptr);
  AddResource(NewHandleClear(1), 'BIG ', 2, nullptr);
  UpdateResFile(file);
  EXPECT_EQ(ResError(), dskFulErr);
  EXPECT_EQ(bytesIn("file"), before);
}

TEST_F(WritingBack, GivesTheSameBytesOnEveryMachine) {
  using namespace std::string_view_literals;
  change('TEXT', 1, "new");
  AddResource(blockOf("\x01\x02"), 'DATA', -2, nullptr);
  SetResAttrs(Get1Resource('DATA', -2), resPurgeable);
  CloseResFile(file);
  ASSERT_EQ(ResError(), noErr);
  const auto header = "\x00\x00\x01\x00\x00\x00\x01\x0D\x00\x00\x00\x0D\x00\x00\x00\x4C"sv;
  ByteVector expected = bytesOf(header);
  expected.resize(256);
  const auto append = [&expected](std::string_view text) {
    const ByteVector bytes = bytesOf(text);
    expected.insert(expected.end(), bytes.begin(), bytes.end());
  };
  append("\x00\x00\x00\x03new\x00\x00\x00\x02\x01\x02"sv);
  append(header);
  append("\x00\x00\x00\x00\x00\x00\x00\x00\x00\x1C\x00\x46"sv);
  append("\x00\x01TEXT\x00\x00\x00\x12"sv);
  append("DATA\x00\x00\x00\x1E"sv);
  append("\x00\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"sv);
  append("\xFF\xFE\xFF\xFF\x20\x00\x00\x07\x00\x00\x00\x00"sv);
  append(
      "\x05"
      "First"sv);
  EXPECT_EQ(bytesIn("file"), expected);
}

TEST_F(WritingBack, SurvivesEachAllocationFailing) {
  UInt32 failures = failEachAllocation(
      [&] {
        UpdateResFile(file);
        return ResError();
      },
      [&](OSErr result, bool failed) {
        EXPECT_EQ(result, failed ? OSErr{memFullErr} : OSErr{noErr});
      });
  EXPECT_EQ(failures, 0U);  // nothing to write
  change('TEXT', 1, "changed");
  const ByteVector before = bytesIn("file");
  failures = failEachAllocation(
      [&] {
        UpdateResFile(file);
        return ResError();
      },
      [&](OSErr result, bool failed) {
        EXPECT_EQ(result, failed ? OSErr{memFullErr} : OSErr{noErr});
        if (failed) expectNothingWritten(before);
      });
  EXPECT_GE(failures, 5U);
  EXPECT_EQ(onDisk("file").front(), "TEXT 1 First 0 changed");
}

TEST_F(WritingBack, OpensAndAddsWithEachAllocationFailing) {
  CloseResFile(file);
  const FSSpec spec = specOf("file");
  failEachAllocation([&] { return file = FSpOpenResFile(&spec, fsCurPerm); },
                     [&](SInt16 opened, bool failed) {
                       EXPECT_EQ(opened == kResFileNotOpened, failed);
                       EXPECT_EQ(ResError(), failed ? OSErr{memFullErr} : OSErr{noErr});
                     });
  Handle block = blockOf("new");
  failEachAllocation(
      [&] {
        AddResource(block, 'NEW ', 1,
                    pascalName("\x1E"
                               "A name that is not a short one."));
        return ResError();
      },
      [&](OSErr result, bool failed) {
        EXPECT_EQ(result, failed ? OSErr{memFullErr} : OSErr{noErr});
        EXPECT_EQ(Count1Resources('NEW '), failed ? 0 : 1);
      });
}

TEST_F(WritingBack, LoadsWithEachAllocationFailing) {
  failEachAllocation([&] { return Get1Resource('TEXT', 1); },
                     [&](Handle resource, bool failed) {
                       EXPECT_EQ(resource == nullptr, failed);
                       EXPECT_EQ(ResError(), failed ? OSErr{memFullErr} : OSErr{noErr});
                     });
  EXPECT_EQ(textOf(Get1Resource('TEXT', 1)), "one");
}

// ---- Any contents there and back
// ------------------------------------------------------------------

using Key = std::pair<ResType, ResID>;
struct Kept {
  std::string name;
  UInt8 attributes;
  ByteVector data;
  bool operator==(const Kept&) const = default;
};

class RandomContents : public WritingBack {
 protected:
  std::string anyText(std::size_t most) {
    std::string text(random() % (most + 1), '\0');
    for (char& byte : text) byte = static_cast<char>(random());
    return text;
  }
  Key anyKey() {
    static constexpr ResType kTypes[] = {'TEXT', 'STR ', 0, 0xFFFFFFFF, 0x80FF0061};
    return {kTypes[random() % std::size(kTypes)], static_cast<ResID>(random() % 40 - 20)};
  }
  void put(const Key& key) {
    if (expected.contains(key)) return;
    const std::string name = anyText(40);
    const std::string text = anyText(random() % 20 == 0 ? 70000 : 300);
    const std::string pascal = static_cast<char>(name.size()) + name;
    Handle block = blockOf(text);
    AddResource(block, key.first, key.second, pascalName(pascal.c_str()));
    ASSERT_EQ(ResError(), noErr);
    const auto attributes = static_cast<UInt8>(random() % 128 & ~(resProtected | resChanged));
    SetResAttrs(block, attributes);
    expected[key] = {name, attributes, bytesOf(text)};
  }
  void alter(const Key& key) {
    if (!expected.contains(key)) return;
    const std::string text = anyText(500);
    Handle resource = Get1Resource(key.first, key.second);
    ASSERT_NE(resource, nullptr);
    HUnlock(resource);
    HNoPurge(resource);
    change(key.first, key.second, text);
    expected[key].data = bytesOf(text);
  }
  void remove(const Key& key) {
    if (!expected.contains(key)) return;
    Handle resource = Get1Resource(key.first, key.second);
    RemoveResource(resource);
    ASSERT_EQ(ResError(), noErr);
    DisposeHandle(resource);
    expected.erase(key);
  }
  std::map<Key, Kept> read() const {
    const ByteVector bytes = bytesIn("random");
    const auto map = platform::resources::parseResourceFile(bytes);
    std::map<Key, Kept> result;
    EXPECT_TRUE(map);
    for (const auto& entry : map->entries) {
      const auto data = std::span(bytes).subspan(entry.dataOffset, entry.dataSize);
      result[{entry.type, entry.id}] = {entry.name, entry.attributes,
                                        ByteVector(data.begin(), data.end())};
    }
    EXPECT_EQ(result.size(), map->entries.size());
    return result;
  }

  std::mt19937 random{11};
  std::map<Key, Kept> expected;
};

TEST_F(RandomContents, AreReadAsTheyWereWritten) {
  SInt16 current = openNew("random", Contents{});
  for (int i = 0; i < stressCount(2000); ++i) {
    const Key key = anyKey();
    switch (random() % 8) {
      case 0:
        remove(key);
        break;
      case 1:
      case 2:
        alter(key);
        break;
      case 3:
        UpdateResFile(current);
        ASSERT_EQ(ResError(), noErr);
        ASSERT_EQ(read(), expected);
        break;
      case 4:
        CloseResFile(current);
        ASSERT_EQ(ResError(), noErr);
        current = open("random");
        break;
      default:
        put(key);
    }
    if (HasFatalFailure()) return;
  }
  CloseResFile(current);
  EXPECT_EQ(read(), expected);
}

}  // namespace
