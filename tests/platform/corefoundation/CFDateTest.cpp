// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFDate.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

namespace {

Held<CFDateRef> dateOf(CFAbsoluteTime time) { return Held<CFDateRef>(CFDateCreate(nullptr, time)); }

double secondsSince1970() {
  using namespace std::chrono;
  return duration<double>(system_clock::now().time_since_epoch()).count();
}

}  // namespace

TEST(CFDate, CountsFromTheStartOf2001) {
  using namespace std::chrono;
  const sys_days start = 2001y / January / 1;
  EXPECT_EQ(kCFAbsoluteTimeIntervalSince1970,
            duration<double>(start - sys_days(1970y / January / 1)).count());
  EXPECT_EQ(kCFAbsoluteTimeIntervalSince1904,
            duration<double>(start - sys_days(1904y / January / 1)).count());
}

TEST(CFDate, NowIsTheWallClocksTime) {
  const double before = secondsSince1970();
  const double now = CFAbsoluteTimeGetCurrent() + kCFAbsoluteTimeIntervalSince1970;
  const double after = secondsSince1970();
  EXPECT_GE(now, before - 0.001);
  EXPECT_LE(now, after + 0.001);
}

TEST(CFDate, GivesItsTimeBack) {
  EXPECT_EQ(CFDateGetAbsoluteTime(dateOf(12.5).get()), 12.5);
  EXPECT_EQ(CFDateGetAbsoluteTime(dateOf(-1e9).get()), -1e9);
  EXPECT_EQ(CFGetTypeID(dateOf(0).get()), CFDateGetTypeID());
}

TEST(CFDate, GivesTheTimeBetweenTwo) {
  EXPECT_EQ(CFDateGetTimeIntervalSinceDate(dateOf(30).get(), dateOf(10).get()), 20);
  EXPECT_EQ(CFDateGetTimeIntervalSinceDate(dateOf(10).get(), dateOf(30).get()), -20);
}

TEST(CFDate, IsOrderedByTime) {
  EXPECT_EQ(CFDateCompare(dateOf(1).get(), dateOf(2).get(), nullptr), kCFCompareLessThan);
  EXPECT_EQ(CFDateCompare(dateOf(2).get(), dateOf(1).get(), nullptr), kCFCompareGreaterThan);
  EXPECT_EQ(CFDateCompare(dateOf(2).get(), dateOf(2).get(), nullptr), kCFCompareEqualTo);
}

TEST(CFDate, EqualsAndHashesByTime) {
  EXPECT_TRUE(CFEqual(dateOf(5).get(), dateOf(5).get()));
  EXPECT_EQ(CFHash(dateOf(5).get()), CFHash(dateOf(5).get()));
  EXPECT_EQ(CFHash(dateOf(0.0).get()), CFHash(dateOf(-0.0).get()));
  EXPECT_FALSE(CFEqual(dateOf(5).get(), dateOf(6).get()));
}

TEST(CFDate, TakesOtherObjectsForTheStart) {
  EXPECT_EQ(CFDateGetAbsoluteTime(nullptr), 0);
  EXPECT_EQ(CFDateGetAbsoluteTime(reinterpret_cast<CFDateRef>(CFSTR("now"))), 0);
}

TEST(CFDate, IsNullWhenThereIsNoMemory) {
  CountingAllocator allocator;
  allocator.failAfter(0);
  EXPECT_EQ(CFDateCreate(allocator.get(), 0), nullptr);
}

TEST(CFDate, DescribesItsTime) {
  EXPECT_THAT(describe(dateOf(12.5).get()), testing::HasSubstr("{time = 12.500000}"));
}
