// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFArray.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <vector>

#include "tests/platform/corefoundation/CountedValues.h"
#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Numbers = std::vector<std::uintptr_t>;

std::vector<const void*> pointersTo(const Numbers& numbers) {
  std::vector<const void*> pointers;
  for (const std::uintptr_t number : numbers) pointers.push_back(value(number));
  return pointers;
}

Numbers numbersOf(CFArrayRef array) {
  std::vector<const void*> pointers(static_cast<std::size_t>(CFArrayGetCount(array)));
  CFArrayGetValues(array, {0, CFArrayGetCount(array)}, pointers.data());
  Numbers numbers;
  for (const void* pointer : pointers) numbers.push_back(numberIn(pointer));
  return numbers;
}

// Each test starts with nothing counted and must end with nothing held.
class CFArray : public testing::Test {
 protected:
  CFArray() { counted = {}; }
  ~CFArray() override { EXPECT_EQ(counted.held(), 0); }

  Held<CFArrayRef> arrayOf(const Numbers& numbers,
                           const CFArrayCallBacks* callBacks = &kCountedArray,
                           CFAllocatorRef allocator = nullptr) {
    std::vector<const void*> pointers = pointersTo(numbers);
    return Held<CFArrayRef>(CFArrayCreate(allocator, pointers.data(),
                                          static_cast<CFIndex>(pointers.size()), callBacks));
  }

  Held<CFMutableArrayRef> mutableArrayOf(const Numbers& numbers, CFIndex capacity = 0) {
    return Held<CFMutableArrayRef>(
        CFArrayCreateMutableCopy(nullptr, capacity, arrayOf(numbers).get()));
  }
};

using CFMutableArray = CFArray;

CFComparisonResult byNumber(const void* a, const void* b, void* context) {
  if (context != nullptr) ++*static_cast<int*>(context);
  if (numberIn(a) / 10 == numberIn(b) / 10) return kCFCompareEqualTo;
  return numberIn(a) < numberIn(b) ? kCFCompareLessThan : kCFCompareGreaterThan;
}

TEST_F(CFArray, HoldsItsValuesInOrder) {
  const Held<CFArrayRef> array = arrayOf({3, 1, 2});
  EXPECT_EQ(CFArrayGetCount(array.get()), 3);
  EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 1), value(1));
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(3, 1, 2));
  EXPECT_EQ(CFGetTypeID(array.get()), CFArrayGetTypeID());
}

TEST_F(CFArray, RetainsEachValueOnceAndReleasesItWithItself) {
  {
    const Held<CFArrayRef> array = arrayOf({1, 2, 2});
    EXPECT_EQ(counted.references[1], 1);
    EXPECT_EQ(counted.references[2], 2);
    EXPECT_EQ(counted.releases, 0);
  }
  EXPECT_EQ(counted.retains, 3);
  EXPECT_EQ(counted.releases, 3);
}

TEST_F(CFArray, PassesItsAllocatorToTheCallBacks) {
  CountingAllocator allocator;
  const Held<CFArrayRef> array = arrayOf({1}, &kCountedArray, allocator.get());
  EXPECT_EQ(counted.allocator, allocator.get());
}

TEST_F(CFArray, WithoutCallBacksTakesValuesAsTheyAre) {
  const Held<CFArrayRef> array = arrayOf({1, 101, 0}, nullptr);
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(1, 101, 0));
  EXPECT_EQ(CFArrayGetCountOfValue(array.get(), {0, 3}, value(1)), 1);
  EXPECT_THAT(describe(array.get()), HasSubstr("1 : <0x65>"));
}

TEST_F(CFArray, ObjectsAreRetainedAndReleased) {
  const Held<CFNumberRef> number = numberOf(5);
  const void* values[] = {number.get(), number.get()};
  const CFArrayRef array = CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks);
  EXPECT_EQ(CFGetRetainCount(number.get()), 3);
  CFRelease(array);
  EXPECT_EQ(CFGetRetainCount(number.get()), 1);
}

TEST_F(CFArray, OfObjectsTakesNoNull) {
  const void* values[] = {CFSTR("a"), nullptr};
  EXPECT_EQ(CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks), nullptr);
  const Held array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  CFArrayAppendValue(array.get(), nullptr);
  EXPECT_EQ(CFArrayGetCount(array.get()), 0);
}

TEST_F(CFArray, IsNotMadeOfBadArguments) {
  const void* values[] = {value(1)};
  CFArrayCallBacks unknown = kCountedArray;
  unknown.version = 1;
  EXPECT_EQ(CFArrayCreate(nullptr, nullptr, 1, nullptr), nullptr);
  EXPECT_EQ(CFArrayCreate(nullptr, values, -1, nullptr), nullptr);
  EXPECT_EQ(CFArrayCreate(nullptr, values, 1, &unknown), nullptr);
  EXPECT_EQ(CFArrayCreateMutable(nullptr, -1, nullptr), nullptr);
  EXPECT_EQ(CFArrayCreateCopy(nullptr, nullptr), nullptr);
  EXPECT_EQ(CFArrayCreateMutableCopy(nullptr, 0, nullptr), nullptr);
}

TEST_F(CFArray, CopiesHoldTheValuesOnceMore) {
  const Held<CFMutableArrayRef> original = mutableArrayOf({1, 2});
  const Held copy(CFArrayCreateCopy(nullptr, original.get()));
  EXPECT_EQ(counted.references[1], 2);
  CFArrayRemoveAllValues(original.get());
  EXPECT_THAT(numbersOf(copy.get()), ElementsAre(1, 2));
  EXPECT_TRUE(CFArrayContainsValue(copy.get(), {0, 2}, value(102)));
}

TEST_F(CFArray, EqualsByItsValues) {
  EXPECT_TRUE(CFEqual(arrayOf({1, 2}).get(), arrayOf({101, 202}).get()));
  EXPECT_EQ(CFHash(arrayOf({1, 2}).get()), CFHash(arrayOf({101, 202}).get()));
  EXPECT_FALSE(CFEqual(arrayOf({1, 2}).get(), arrayOf({2, 1}).get()));
  EXPECT_FALSE(CFEqual(arrayOf({1, 2}).get(), arrayOf({1}).get()));
  EXPECT_FALSE(CFEqual(arrayOf({1}).get(), arrayOf({1}, nullptr).get()));
  EXPECT_TRUE(CFEqual(arrayOf({1, 2}).get(), mutableArrayOf({1, 2}).get()));
}

TEST_F(CFArray, FindsValuesInARange) {
  const Held<CFArrayRef> array = arrayOf({1, 2, 101, 3, 201});
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), {0, 5}, value(1)), 0);
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), {1, 4}, value(1)), 2);
  EXPECT_EQ(CFArrayGetLastIndexOfValue(array.get(), {0, 5}, value(1)), 4);
  EXPECT_EQ(CFArrayGetLastIndexOfValue(array.get(), {0, 4}, value(1)), 2);
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), {0, 5}, value(9)), kCFNotFound);
  EXPECT_EQ(CFArrayGetLastIndexOfValue(array.get(), {0, 0}, value(1)), kCFNotFound);
  EXPECT_EQ(CFArrayGetCountOfValue(array.get(), {0, 5}, value(1)), 3);
  EXPECT_TRUE(CFArrayContainsValue(array.get(), {3, 2}, value(1)));
  EXPECT_FALSE(CFArrayContainsValue(array.get(), {3, 1}, value(1)));
}

TEST_F(CFArray, AnswersNothingOutsideItself) {
  const Held<CFArrayRef> array = arrayOf({1, 2});
  EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 2), nullptr);
  EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), -1), nullptr);
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), {1, 2}, value(2)), kCFNotFound);
  EXPECT_EQ(CFArrayGetLastIndexOfValue(array.get(), {-1, 2}, value(1)), kCFNotFound);
  EXPECT_EQ(CFArrayGetCountOfValue(array.get(), {0, 3}, value(1)), 0);
  const void* untouched = value(7);
  CFArrayGetValues(array.get(), {1, 2}, &untouched);
  EXPECT_EQ(untouched, value(7));
}

TEST_F(CFArray, AppliesAFunctionInOrder) {
  const Held<CFArrayRef> array = arrayOf({5, 6, 7});
  Numbers seen;
  const CFArrayApplierFunction note = [](const void* each, void* context) {
    static_cast<Numbers*>(context)->push_back(numberIn(each));
  };
  CFArrayApplyFunction(array.get(), {1, 2}, note, &seen);
  CFArrayApplyFunction(array.get(), {2, 2}, note, &seen);
  CFArrayApplyFunction(array.get(), {0, 1}, nullptr, &seen);
  EXPECT_THAT(seen, ElementsAre(6, 7));
}

TEST_F(CFArray, AppliesNothingBehindItsNewEnd) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({5, 6, 7});
  CFArrayApplyFunction(
      array.get(), {0, 3},
      [](const void*, void* context) {
        CFArrayRemoveAllValues(static_cast<CFMutableArrayRef>(context));
      },
      array.get());
  EXPECT_EQ(counted.releases - 3, 3);
}

TEST_F(CFArray, DescribesItsValues) {
  EXPECT_THAT(describe(arrayOf({7, 8}).get()),
              HasSubstr("{type = immutable, count = 2, values = (\n\t0 : no. 7\n\t1 : no. 8\n)}"));
  EXPECT_THAT(describe(mutableArrayOf({}).get()), HasSubstr("{type = mutable, count = 0"));
}

TEST_F(CFArray, TakesOtherObjectsForNoArray) {
  const CFArrayRef text = reinterpret_cast<CFArrayRef>(CFSTR("text"));
  EXPECT_EQ(CFArrayGetCount(text), 0);
  EXPECT_EQ(CFArrayGetCount(nullptr), 0);
  EXPECT_EQ(CFArrayGetValueAtIndex(text, 0), nullptr);
}

TEST_F(CFMutableArray, AppendsAndInserts) {
  const Held array(CFArrayCreateMutable(nullptr, 0, &kCountedArray));
  CFArrayAppendValue(array.get(), value(2));
  CFArrayInsertValueAtIndex(array.get(), 0, value(1));
  CFArrayInsertValueAtIndex(array.get(), 2, value(4));
  CFArrayInsertValueAtIndex(array.get(), 2, value(3));
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(counted.retains, 4);
}

TEST_F(CFMutableArray, SetsInPlaceAndAtItsEnd) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({1, 2});
  CFArraySetValueAtIndex(array.get(), 0, value(9));
  CFArraySetValueAtIndex(array.get(), 2, value(3));
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(9, 2, 3));
  EXPECT_EQ(counted.references[1], 0);
  EXPECT_EQ(counted.references[9], 1);
}

TEST_F(CFMutableArray, RetainsANewValueBeforeItReleasesTheOld) {
  const Held<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  const CFStringRef only = CFStringCreateWithCString(nullptr, "only", kCFStringEncodingASCII);
  CFArrayAppendValue(array.get(), only);
  CFRelease(only);
  CFArraySetValueAtIndex(array.get(), 0, CFArrayGetValueAtIndex(array.get(), 0));
  const void* again = CFArrayGetValueAtIndex(array.get(), 0);
  CFArrayReplaceValues(array.get(), {0, 1}, &again, 1);
  EXPECT_EQ(CFGetRetainCount(CFArrayGetValueAtIndex(array.get(), 0)), 1);
}

TEST_F(CFMutableArray, RemovesValues) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({1, 2, 3});
  CFArrayRemoveValueAtIndex(array.get(), 1);
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(1, 3));
  EXPECT_EQ(counted.references[2], 0);
  CFArrayRemoveAllValues(array.get());
  EXPECT_EQ(CFArrayGetCount(array.get()), 0);
  EXPECT_EQ(counted.held(), 0);
  CFArrayAppendValue(array.get(), value(4));
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(4));
}

TEST_F(CFMutableArray, ReplacesRangesWithMoreOrFewerValues) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({1, 2, 3, 4});
  std::vector<const void*> added = pointersTo({11, 12, 13});
  CFArrayReplaceValues(array.get(), {1, 2}, added.data(), 3);
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(1, 11, 12, 13, 4));
  CFArrayReplaceValues(array.get(), {0, 4}, added.data(), 1);
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(11, 4));
  CFArrayReplaceValues(array.get(), {2, 0}, added.data(), 2);
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(11, 4, 11, 12));
  CFArrayReplaceValues(array.get(), {0, 4}, nullptr, 0);
  EXPECT_EQ(CFArrayGetCount(array.get()), 0);
}

TEST_F(CFMutableArray, AppendsARangeOfAnother) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({1});
  const Held<CFArrayRef> other = arrayOf({5, 6, 7});
  CFArrayAppendArray(array.get(), other.get(), {1, 2});
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(1, 6, 7));
  EXPECT_EQ(counted.references[6], 2);
  CFArrayAppendArray(array.get(), other.get(), {2, 2});
  CFArrayAppendArray(array.get(), nullptr, {0, 0});
  EXPECT_EQ(CFArrayGetCount(array.get()), 3);
}

TEST_F(CFMutableArray, AppendsItself) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({1, 2, 3});
  for (int i = 0; i < 3; ++i) {
    CFArrayAppendArray(array.get(), array.get(), {0, CFArrayGetCount(array.get())});
  }
  EXPECT_EQ(CFArrayGetCount(array.get()), 24);
  EXPECT_EQ(counted.references[3], 8);
}

TEST_F(CFMutableArray, ExchangesValues) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({1, 2, 3});
  CFArrayExchangeValuesAtIndices(array.get(), 0, 2);
  CFArrayExchangeValuesAtIndices(array.get(), 0, 3);
  CFArrayExchangeValuesAtIndices(array.get(), -1, 0);
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(3, 2, 1));
}

TEST_F(CFMutableArray, SortsARangeAndKeepsTheOrderOfEqualValues) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({99, 31, 12, 33, 11, 32, 10, 0});
  int comparisons = 0;
  CFArraySortValues(array.get(), {1, 6}, byNumber, &comparisons);
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(99, 12, 11, 10, 31, 33, 32, 0));
  EXPECT_GT(comparisons, 0);
  EXPECT_EQ(counted.retains, 16);
}

TEST_F(CFMutableArray, SortsManyValues) {
  Numbers numbers;
  for (std::uintptr_t i = 0; i < 1000; ++i) numbers.push_back(i * 7919 % 1000 * 10);
  const Held<CFMutableArrayRef> array = mutableArrayOf(numbers);
  CFArraySortValues(array.get(), {0, 1000}, byNumber, nullptr);
  const Numbers sorted = numbersOf(array.get());
  for (std::size_t i = 0; i < 1000; ++i) EXPECT_EQ(sorted[i], i * 10);
}

TEST_F(CFMutableArray, SurvivesAnOrderThatContradictsItself) {
  const Held<CFMutableArrayRef> array = mutableArrayOf(Numbers(100, 5));
  CFArraySortValues(
      array.get(), {0, 100}, [](const void*, const void*, void*) { return kCFCompareLessThan; },
      nullptr);
  EXPECT_EQ(numbersOf(array.get()), Numbers(100, 5));
}

TEST_F(CFMutableArray, TakesNoMoreThanItsCapacity) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({1, 2}, 3);
  std::vector<const void*> added = pointersTo({7, 8, 9});
  CFArrayReplaceValues(array.get(), {0, 1}, added.data(), 3);
  CFArrayAppendArray(array.get(), array.get(), {0, 2});
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(1, 2));
  CFArrayAppendValue(array.get(), value(3));
  CFArrayAppendValue(array.get(), value(4));
  CFArrayInsertValueAtIndex(array.get(), 0, value(4));
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(1, 2, 3));
  EXPECT_FALSE(mutableArrayOf({1, 2, 3, 4}, 3));
}

TEST_F(CFMutableArray, StaysAsItIsForBadArguments) {
  const Held<CFMutableArrayRef> array = mutableArrayOf({1, 2});
  const void* added = value(3);
  CFArrayInsertValueAtIndex(array.get(), 3, added);
  CFArrayInsertValueAtIndex(array.get(), -1, added);
  CFArraySetValueAtIndex(array.get(), 3, added);
  CFArraySetValueAtIndex(array.get(), -1, added);
  CFArrayRemoveValueAtIndex(array.get(), 2);
  CFArrayReplaceValues(array.get(), {1, 2}, &added, 1);
  CFArrayReplaceValues(array.get(), {0, 1}, &added, -1);
  CFArrayReplaceValues(array.get(), {0, 1}, nullptr, 1);
  CFArraySortValues(array.get(), {0, 3}, byNumber, nullptr);
  CFArraySortValues(array.get(), {0, 2}, nullptr, nullptr);
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(1, 2));
}

TEST_F(CFMutableArray, ImmutableArraysDoNotChange) {
  const Held<CFArrayRef> array = arrayOf({2, 1});
  const CFMutableArrayRef forced = const_cast<CFMutableArrayRef>(array.get());
  CFArrayAppendValue(forced, value(3));
  CFArraySetValueAtIndex(forced, 0, value(3));
  CFArrayRemoveValueAtIndex(forced, 0);
  CFArrayRemoveAllValues(forced);
  CFArrayAppendArray(forced, array.get(), {0, 2});
  CFArrayReplaceValues(forced, {0, 2}, nullptr, 0);
  CFArrayExchangeValuesAtIndices(forced, 0, 1);
  CFArraySortValues(forced, {0, 2}, byNumber, nullptr);
  EXPECT_THAT(numbersOf(array.get()), ElementsAre(2, 1));
}

// Every allocation of making and changing arrays fails once.
TEST_F(CFMutableArray, StaysWholeWhenMemoryEndsAnywhere) {
  CountingAllocator allocator;
  std::vector<const void*> added = pointersTo({1, 2, 3, 4, 5, 6, 7, 8, 9});
  int failures = 0;
  for (int successes = 0; successes < 10; ++successes) {
    allocator.failAfter(successes);
    const Held array(CFArrayCreateMutable(allocator.get(), 0, &kCountedArray));
    CFArrayAppendValue(array.get(), value(11));
    CFArrayReplaceValues(array.get(), {0, 0}, added.data(), 9);
    CFArrayAppendArray(array.get(), array.get(), {0, CFArrayGetCount(array.get())});
    const Held copy(CFArrayCreateCopy(allocator.get(), array.get()));
    failures += !copy;
    EXPECT_EQ(counted.held(), CFArrayGetCount(array.get()) + CFArrayGetCount(copy.get()));
  }
  EXPECT_EQ(allocator.blocks(), 0);
  EXPECT_GT(failures, 3);
  EXPECT_LT(failures, 10);
}

}  // namespace
