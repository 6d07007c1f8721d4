// Licence: MIT, see LICENSE.
#include "platform/appleevents/KeyIndex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/appleevents/Descriptors.h"
#include "tests/support/AllocationFailures.h"
#include "tests/support/StressCount.h"

namespace {

using tests::Desc;

constexpr UInt32 kMany = 400;
constexpr OSErr kFound = noErr;
constexpr OSErr kMissing = errAEDescNotFound;

/// A record or an event of many numbers: under each keyword the keyword itself.
class LargeRecords : public testing::TestWithParam<bool> {
 protected:
  LargeRecords() : desc(GetParam() ? tests::makeEvent() : tests::makeRecord()) {
    for (UInt32 key = 1; key <= kMany; ++key) put(key, key);
  }

  void put(AEKeyword key, UInt32 value) {
    ASSERT_EQ(tests::putParameter(desc, key, typeUInt32, value), noErr);
  }
  std::optional<UInt32> find(AEKeyword key) const {
    return tests::parameter<UInt32>(desc, key, typeUInt32);
  }
  void expectAllBut(AEKeyword missing = 0) const {
    for (UInt32 key = 1; key <= kMany; ++key) {
      ASSERT_EQ(find(key), key == missing ? std::nullopt : std::optional(key)) << key;
    }
    ASSERT_EQ(find(kMany + 1), std::nullopt);
  }
  SInt32 count() const {
    SInt32 items = 0;
    EXPECT_EQ(AECountItems(&desc, &items), noErr);
    return items;
  }

  Desc desc;
};

TEST_P(LargeRecords, FindEveryKeyword) {
  EXPECT_EQ(count(), SInt32{kMany});
  expectAllBut();
}

TEST_P(LargeRecords, ReplaceWithoutAddingItems) {
  expectAllBut();
  for (UInt32 key = 1; key <= kMany; ++key) put(key, key + 1000);
  EXPECT_EQ(count(), SInt32{kMany});
  for (UInt32 key = 1; key <= kMany; ++key) ASSERT_EQ(find(key), key + 1000);
}

TEST_P(LargeRecords, FindWhatMovedWhenAnItemGrew) {
  expectAllBut();
  ASSERT_EQ(AEPutKeyPtr(&desc, 5, typeChar, "much longer than it was", 23), noErr);
  for (UInt32 key = 6; key <= kMany; ++key) ASSERT_EQ(find(key), key);
  ASSERT_EQ(AEPutKeyPtr(&desc, 5, typeChar, "5", 1), noErr);
  expectAllBut();
}

TEST_P(LargeRecords, ForgetWhatIsDeleted) {
  for (const AEKeyword key : {UInt32{1}, kMany / 2, kMany}) {
    expectAllBut();
    ASSERT_EQ(AEDeleteKeyDesc(&desc, key), noErr);
    expectAllBut(key);
    EXPECT_EQ(AEDeleteKeyDesc(&desc, key), errAEDescNotFound);
    put(key, key);
  }
}

TEST_P(LargeRecords, KeepTheirOrder) {
  ASSERT_EQ(AEDeleteItem(&desc, 1), noErr);
  put(1, 1);
  AEKeyword key = 0;
  UInt32 value = 0;
  ASSERT_EQ(AEGetNthPtr(&desc, kMany, typeUInt32, &key, nullptr, &value, 4, nullptr), noErr);
  EXPECT_EQ(key, 1u);
  ASSERT_EQ(AEGetNthPtr(&desc, 1, typeUInt32, &key, nullptr, &value, 4, nullptr), noErr);
  EXPECT_EQ(key, 2u);
}

TEST_P(LargeRecords, DoWithoutMemoryForAnIndex) {
  const tests::AllocationFailure failure(1, platform::memory::FailureRun::kAllFollowing);
  expectAllBut();
}

TEST_P(LargeRecords, CopyWithTheirKeywords) {
  expectAllBut();
  Desc copy;
  ASSERT_EQ(AEDuplicateDesc(&desc, &copy), noErr);
  ASSERT_EQ(AEDeleteKeyDesc(&copy, 1), noErr);
  expectAllBut();
  EXPECT_EQ(tests::parameter<UInt32>(copy, 2, typeUInt32), 2u);
}

TEST_P(LargeRecords, AreReadByManyThreads) {
  std::vector<std::jthread> readers;
  std::atomic<UInt32> wrong{0};
  for (int reader = 0; reader < 4; ++reader) {
    readers.emplace_back([&] {
      for (int round = 0; round < tests::stressCount(20); ++round) {
        for (UInt32 key = 1; key <= kMany; ++key) wrong += find(key) != key;
      }
    });
  }
  readers.clear();
  EXPECT_EQ(wrong, 0u);
}

/// Whatever is done to a record and to a map in parallel, they hold the same.
TEST_P(LargeRecords, AgreeWithAMapAfterAnyChanges) {
  std::map<AEKeyword, std::string> expected;
  for (UInt32 key = 1; key <= kMany; ++key) {
    expected[key] = std::string(reinterpret_cast<const char*>(&key), sizeof key);
  }
  std::mt19937 numbers(40);
  for (int round = 0; round < tests::stressCount(5000); ++round) {
    const AEKeyword key = numbers() % (2 * kMany) + 1;
    if (numbers() % 3 == 0) {
      EXPECT_EQ(AEDeleteKeyDesc(&desc, key), expected.erase(key) == 1 ? kFound : kMissing);
    } else {
      const std::string text(numbers() % 9, static_cast<char>('a' + numbers() % 26));
      ASSERT_EQ(AEPutKeyPtr(&desc, key, typeUInt32, text.data(), static_cast<Size>(text.size())),
                noErr);
      expected[key] = text;
    }
    const AEKeyword probe = numbers() % (2 * kMany) + 1;
    Desc found;
    const OSErr status = AEGetKeyDesc(&desc, probe, typeWildCard, &found);
    ASSERT_EQ(status, expected.contains(probe) ? kFound : kMissing);
    if (status == noErr) {
      ASSERT_EQ(tests::textOf(found), expected[probe]);
    }
  }
  EXPECT_EQ(count(), static_cast<SInt32>(expected.size()));
}

INSTANTIATE_TEST_SUITE_P(On, LargeRecords, testing::Bool(),
                         [](const auto& isEvent) { return isEvent.param ? "AnEvent" : "ARecord"; });

/// Of many more keywords than a mask has bits, a few at a time, read in any order.
TEST(SmallRecords, AgreeWithAMapAfterAnyChanges) {
  std::minstd_rand random(7);
  Desc desc = tests::makeRecord();
  std::map<AEKeyword, std::string> expected;
  for (int step = 0; step < tests::stressCount(20000); ++step) {
    const AEKeyword key = 1 + random() % 200;
    if (expected.size() > random() % 30) {
      const AEKeyword gone = expected.lower_bound(key) == expected.end()
                                 ? expected.begin()->first
                                 : expected.lower_bound(key)->first;
      ASSERT_EQ(AEDeleteKeyDesc(&desc, gone), kFound);
      expected.erase(gone);
    } else {
      const std::string text(random() % 9, 'x');
      ASSERT_EQ(AEPutKeyPtr(&desc, key, typeChar, text.data(), static_cast<Size>(text.size())),
                noErr);
      expected[key] = text;
    }
    for (AEKeyword wanted = key; wanted < key + 5; ++wanted) {
      Size size = -1;
      const bool there = expected.contains(wanted);
      ASSERT_EQ(AESizeOfKeyDesc(&desc, wanted, nullptr, &size), there ? kFound : kMissing);
      ASSERT_EQ(size, there ? static_cast<Size>(expected[wanted].size()) : -1);
    }
  }
}

TEST(SmallRecords, AreReadInTheirOrderAgainstItAndTwice) {
  Desc desc = tests::makeEvent();
  for (UInt32 key = 1; key <= 10; ++key) {
    ASSERT_EQ(tests::putParameter(desc, key, typeUInt32, key * 3), noErr);
  }
  for (int round = 0; round < 2; ++round) {
    for (UInt32 key = 1; key <= 10; ++key) {
      ASSERT_EQ(tests::parameter<UInt32>(desc, key, typeUInt32), key * 3);
    }
  }
  for (UInt32 key = 10; key >= 1; --key) {
    ASSERT_EQ(tests::parameter<UInt32>(desc, key, typeUInt32), key * 3);
    ASSERT_EQ(tests::parameter<UInt32>(desc, key, typeUInt32), key * 3);
  }
}

TEST(SmallRecordsOfBytes, FindTheFirstOfTwoItemsUnderOneKeyword) {
  const auto text = std::string("\0\0\0\3", 4) + "one TEXT" + std::string("\0\0\0\1a\0\0\0", 8) +
                    "one TEXT" + std::string("\0\0\0\2bb\0\0", 8) + "two TEXT" +
                    std::string("\0\0\0\0", 4);
  Desc desc;
  ASSERT_EQ(AECreateDesc(typeAERecord, text.data(), static_cast<Size>(text.size()), &desc), noErr);
  for (int round = 0; round < 3; ++round) {
    Size size = 0;
    ASSERT_EQ(AESizeOfKeyDesc(&desc, 'one ', nullptr, &size), noErr);
    EXPECT_EQ(size, 1);
  }
  ASSERT_EQ(AEPutKeyPtr(&desc, 'new ', typeChar, "c", 1), noErr);
  ASSERT_EQ(AEDeleteKeyDesc(&desc, 'one '), noErr);
  EXPECT_EQ(AESizeOfKeyDesc(&desc, 'one ', nullptr, nullptr), kMissing);
  EXPECT_EQ(AESizeOfKeyDesc(&desc, 'two ', nullptr, nullptr), kFound);
}

TEST(LargeEvents, FindParametersThatAnAttributeMoved) {
  Desc event = tests::makeEvent();
  for (UInt32 key = 1; key <= kMany; ++key) {
    ASSERT_EQ(tests::putParameter(event, key, typeUInt32, key), noErr);
  }
  ASSERT_EQ(AEPutAttributePtr(&event, 'mine', typeChar, "attribute", 9), noErr);
  for (UInt32 key = 1; key <= kMany; ++key) {
    ASSERT_EQ(tests::parameter<UInt32>(event, key, typeUInt32), key);
  }
}

// Bytes from elsewhere may hold a keyword twice.
TEST(LargeRecordsOfBytes, FindTheFirstOfTwoItemsUnderOneKeyword) {
  Desc desc = tests::makeRecord();
  for (UInt32 key = 1; key <= kMany; ++key) {
    ASSERT_EQ(tests::putParameter(desc, key, typeUInt32, key), noErr);
  }
  const std::vector<std::byte> bytes = tests::bytesOf(desc);
  std::vector<std::byte> twice = bytes;
  twice.insert(twice.end(), bytes.begin() + 4, bytes.end());
  twice[2] = static_cast<std::byte>(2 * kMany >> 8);
  twice[3] = static_cast<std::byte>(2 * kMany & 0xFF);
  twice.back() = std::byte{0x77};  // the second of the last keyword
  Desc both;
  ASSERT_EQ(AECreateDesc(typeAERecord, twice.data(), static_cast<Size>(twice.size()), &both),
            noErr);
  for (int round = 0; round < 10; ++round) {
    for (UInt32 key = 1; key <= kMany; ++key) {
      ASSERT_EQ(tests::parameter<UInt32>(both, key, typeUInt32), key);
    }
  }
  ASSERT_EQ(AEDeleteKeyDesc(&both, kMany), noErr);
  EXPECT_EQ(tests::parameter<UInt32>(both, kMany, typeUInt32), std::nullopt);
}

// A list's items all have one keyword, and are found by their index.
TEST(LargeLists, FindItemsByIndexAfterReplacingOne) {
  Desc list = tests::makeList();
  for (SInt32 i = 1; i <= 100; ++i) ASSERT_EQ(AEPutPtr(&list, 0, typeSInt32, &i, sizeof i), noErr);
  for (SInt32 i = 1; i <= 100; ++i) {
    SInt32 value = -i;
    ASSERT_EQ(AEPutPtr(&list, i, typeSInt32, &value, sizeof value), noErr);
    ASSERT_EQ(AEGetNthPtr(&list, i, typeSInt32, nullptr, nullptr, &value, 4, nullptr), noErr);
    ASSERT_EQ(value, -i);
  }
  ASSERT_EQ(AEDeleteItem(&list, 50), noErr);
  SInt32 value = 0;
  ASSERT_EQ(AEGetNthPtr(&list, 50, typeSInt32, nullptr, nullptr, &value, 4, nullptr), noErr);
  EXPECT_EQ(value, -51);
}

}  // namespace
