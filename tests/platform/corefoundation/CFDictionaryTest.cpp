// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFDictionary.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "tests/platform/corefoundation/CountedValues.h"
#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;
using testing::HasSubstr;

namespace {

using Pairs = std::map<std::uintptr_t, std::uintptr_t>;

Pairs pairsOf(CFDictionaryRef dictionary) {
  const std::size_t count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
  std::vector<const void*> keys(count);
  std::vector<const void*> values(count);
  CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
  Pairs pairs;
  for (std::size_t i = 0; i < count; ++i) pairs[numberIn(keys[i])] = numberIn(values[i]);
  return pairs;
}

void noteEntry(const void* key, const void* each, void* context) {
  (*static_cast<Pairs*>(context))[numberIn(key)] += numberIn(each);
}

// Each test starts with nothing counted and must end with nothing held.
class CFDictionary : public testing::Test {
 protected:
  CFDictionary() { counted = {}; }
  ~CFDictionary() override { EXPECT_EQ(counted.held(), 0); }

  Held<CFDictionaryRef> dictionaryOf(const Pairs& pairs, CFAllocatorRef allocator = nullptr) {
    std::vector<const void*> keys;
    std::vector<const void*> values;
    for (const auto& [key, each] : pairs) {
      keys.push_back(value(key));
      values.push_back(value(each));
    }
    return Held<CFDictionaryRef>(CFDictionaryCreate(allocator, keys.data(), values.data(),
                                                    static_cast<CFIndex>(pairs.size()),
                                                    &kCountedKeys, &kCountedValues));
  }

  Held<CFMutableDictionaryRef> mutableDictionaryOf(const Pairs& pairs, CFIndex capacity = 0) {
    return Held<CFMutableDictionaryRef>(
        CFDictionaryCreateMutableCopy(nullptr, capacity, dictionaryOf(pairs).get()));
  }
};

using CFMutableDictionary = CFDictionary;

Held<CFMutableDictionaryRef> dictionaryOfObjects(
    const CFDictionaryKeyCallBacks* keys = &kCFTypeDictionaryKeyCallBacks) {
  return Held<CFMutableDictionaryRef>(
      CFDictionaryCreateMutable(nullptr, 0, keys, &kCFTypeDictionaryValueCallBacks));
}

TEST_F(CFDictionary, FindsValuesByEqualKeys) {
  const Held<CFDictionaryRef> dictionary = dictionaryOf({{1, 10}, {2, 20}});
  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 2);
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), value(1)), value(10));
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), value(202)), value(20));
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), value(3)), nullptr);
  EXPECT_EQ(CFGetTypeID(dictionary.get()), CFDictionaryGetTypeID());
}

TEST_F(CFDictionary, SaysWhetherAKeyIsThere) {
  const Held<CFDictionaryRef> dictionary = dictionaryOf({{1, 0}});
  const void* found = value(7);
  EXPECT_FALSE(CFDictionaryGetValueIfPresent(dictionary.get(), value(2), &found));
  EXPECT_EQ(found, value(7));
  EXPECT_TRUE(CFDictionaryGetValueIfPresent(dictionary.get(), value(1), &found));
  EXPECT_EQ(found, nullptr);
  EXPECT_TRUE(CFDictionaryGetValueIfPresent(dictionary.get(), value(1), nullptr));
  EXPECT_TRUE(CFDictionaryContainsKey(dictionary.get(), value(101)));
  EXPECT_FALSE(CFDictionaryContainsKey(dictionary.get(), value(2)));
  EXPECT_EQ(CFDictionaryGetCountOfKey(dictionary.get(), value(1)), 1);
  EXPECT_EQ(CFDictionaryGetCountOfKey(dictionary.get(), value(2)), 0);
}

TEST_F(CFDictionary, CountsEqualValues) {
  const Held<CFDictionaryRef> dictionary = dictionaryOf({{1, 5}, {2, 105}, {3, 6}});
  EXPECT_EQ(CFDictionaryGetCountOfValue(dictionary.get(), value(5)), 2);
  EXPECT_TRUE(CFDictionaryContainsValue(dictionary.get(), value(206)));
  EXPECT_FALSE(CFDictionaryContainsValue(dictionary.get(), value(7)));
}

TEST_F(CFDictionary, RetainsKeysAndValuesOnceAndReleasesThemWithItself) {
  {
    const Held<CFDictionaryRef> dictionary = dictionaryOf({{1, 10}, {2, 20}});
    EXPECT_EQ(counted.retains, 4);
    EXPECT_EQ(counted.releases, 0);
  }
  EXPECT_EQ(counted.releases, 4);
}

TEST_F(CFDictionary, TakesTheFirstOfEqualKeys) {
  const void* keys[] = {value(1), value(101)};
  const void* values[] = {value(10), value(20)};
  const Held dictionary(
      CFDictionaryCreate(nullptr, keys, values, 2, &kCountedKeys, &kCountedValues));
  EXPECT_EQ(pairsOf(dictionary.get()), (Pairs{{1, 10}}));
  EXPECT_EQ(counted.retains, 2);
}

TEST_F(CFDictionary, WithoutCallBacksComparesAddresses) {
  const void* keys[] = {value(1), value(101), nullptr};
  const void* values[] = {value(10), value(20), value(30)};
  const Held dictionary(CFDictionaryCreate(nullptr, keys, values, 3, nullptr, nullptr));
  EXPECT_EQ(pairsOf(dictionary.get()), (Pairs{{0, 30}, {1, 10}, {101, 20}}));
  EXPECT_FALSE(CFDictionaryContainsKey(dictionary.get(), value(201)));
  EXPECT_THAT(describe(dictionary.get()), HasSubstr("<0x65> = <0x14>"));
}

TEST_F(CFDictionary, IsNotMadeOfBadArguments) {
  const void* one[] = {value(1)};
  CFDictionaryKeyCallBacks unknownKeys = kCountedKeys;
  unknownKeys.version = 1;
  CFDictionaryValueCallBacks unknownValues = kCountedValues;
  unknownValues.version = 1;
  EXPECT_EQ(CFDictionaryCreate(nullptr, nullptr, one, 1, nullptr, nullptr), nullptr);
  EXPECT_EQ(CFDictionaryCreate(nullptr, one, nullptr, 1, nullptr, nullptr), nullptr);
  EXPECT_EQ(CFDictionaryCreate(nullptr, one, one, -1, nullptr, nullptr), nullptr);
  EXPECT_EQ(CFDictionaryCreate(nullptr, one, one, 1, &unknownKeys, nullptr), nullptr);
  EXPECT_EQ(CFDictionaryCreate(nullptr, one, one, 1, nullptr, &unknownValues), nullptr);
  EXPECT_EQ(CFDictionaryCreateMutable(nullptr, -1, nullptr, nullptr), nullptr);
  EXPECT_EQ(CFDictionaryCreateCopy(nullptr, nullptr), nullptr);
  EXPECT_EQ(CFDictionaryCreateMutableCopy(nullptr, 0, nullptr), nullptr);
}

TEST_F(CFDictionary, CopiesHoldKeysAndValuesOnceMore) {
  const Held<CFMutableDictionaryRef> original = mutableDictionaryOf({{1, 10}, {2, 20}});
  const Held copy(CFDictionaryCreateCopy(nullptr, original.get()));
  EXPECT_EQ(counted.references[1], 2);
  EXPECT_EQ(counted.references[20], 2);
  CFDictionaryRemoveAllValues(original.get());
  EXPECT_EQ(pairsOf(copy.get()), (Pairs{{1, 10}, {2, 20}}));
}

TEST_F(CFDictionary, EqualsByItsPairs) {
  const Held<CFDictionaryRef> dictionary = dictionaryOf({{1, 10}, {2, 20}});
  EXPECT_TRUE(CFEqual(dictionary.get(), dictionaryOf({{102, 120}, {201, 110}}).get()));
  EXPECT_EQ(CFHash(dictionary.get()), CFHash(dictionaryOf({{102, 120}, {201, 110}}).get()));
  EXPECT_TRUE(CFEqual(dictionary.get(), mutableDictionaryOf({{1, 10}, {2, 20}}).get()));
  EXPECT_FALSE(CFEqual(dictionary.get(), dictionaryOf({{1, 10}, {2, 21}}).get()));
  EXPECT_FALSE(CFEqual(dictionary.get(), dictionaryOf({{1, 10}, {3, 20}}).get()));
  EXPECT_FALSE(CFEqual(dictionary.get(), dictionaryOf({{1, 10}}).get()));
}

TEST_F(CFDictionary, WithOtherCallBacksDiffers) {
  const Held plain(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
  CFDictionarySetValue(plain.get(), value(1), value(10));
  EXPECT_FALSE(CFEqual(plain.get(), dictionaryOf({{1, 10}}).get()));
}

TEST_F(CFDictionary, GivesKeysOrValuesAlone) {
  const Held<CFDictionaryRef> dictionary = dictionaryOf({{1, 10}});
  const void* key = nullptr;
  const void* each = nullptr;
  CFDictionaryGetKeysAndValues(dictionary.get(), &key, nullptr);
  CFDictionaryGetKeysAndValues(dictionary.get(), nullptr, &each);
  EXPECT_EQ(key, value(1));
  EXPECT_EQ(each, value(10));
}

TEST_F(CFDictionary, AppliesAFunctionOnceToEachEntry) {
  Pairs pairs;
  for (std::uintptr_t i = 0; i < 90; ++i) pairs[i] = 1000 + i;
  const Held<CFDictionaryRef> dictionary = dictionaryOf(pairs);
  Pairs seen;
  CFDictionaryApplyFunction(dictionary.get(), noteEntry, &seen);
  CFDictionaryApplyFunction(dictionary.get(), nullptr, &seen);
  EXPECT_EQ(seen, pairs);
}

TEST_F(CFDictionary, AppliesNothingMoreOnceItIsEmptied) {
  const Held<CFMutableDictionaryRef> dictionary = mutableDictionaryOf({{1, 10}, {2, 20}, {3, 30}});
  const int before = counted.releases;
  CFDictionaryApplyFunction(
      dictionary.get(),
      [](const void*, const void*, void* context) {
        CFDictionaryRemoveAllValues(static_cast<CFMutableDictionaryRef>(context));
      },
      dictionary.get());
  EXPECT_EQ(counted.releases - before, 6);
}

TEST_F(CFDictionary, DescribesItsPairs) {
  EXPECT_THAT(describe(dictionaryOf({{7, 8}}).get()),
              HasSubstr("{type = immutable, count = 1, pairs = (\n\tno. 7 = no. 8\n)}"));
}

TEST_F(CFDictionary, TakesOtherObjectsForNoDictionary) {
  const CFDictionaryRef text = reinterpret_cast<CFDictionaryRef>(CFSTR("text"));
  Pairs seen;
  EXPECT_EQ(CFDictionaryGetCount(text), 0);
  EXPECT_EQ(CFDictionaryGetCount(nullptr), 0);
  EXPECT_EQ(CFDictionaryGetValue(text, value(1)), nullptr);
  EXPECT_EQ(CFDictionaryGetCountOfValue(text, value(1)), 0);
  CFDictionaryApplyFunction(text, noteEntry, &seen);
  CFDictionaryGetKeysAndValues(text, nullptr, nullptr);
  EXPECT_TRUE(seen.empty());
}

TEST_F(CFMutableDictionary, AddsOnlyWhatIsNotThere) {
  const Held<CFMutableDictionaryRef> dictionary = mutableDictionaryOf({{1, 10}});
  CFDictionaryAddValue(dictionary.get(), value(101), value(99));
  CFDictionaryAddValue(dictionary.get(), value(2), value(20));
  EXPECT_EQ(pairsOf(dictionary.get()), (Pairs{{1, 10}, {2, 20}}));
  EXPECT_EQ(counted.references[99], 0);
}

TEST_F(CFMutableDictionary, ReplacesOnlyWhatIsThere) {
  const Held<CFMutableDictionaryRef> dictionary = mutableDictionaryOf({{1, 10}});
  CFDictionaryReplaceValue(dictionary.get(), value(101), value(11));
  CFDictionaryReplaceValue(dictionary.get(), value(2), value(20));
  EXPECT_EQ(pairsOf(dictionary.get()), (Pairs{{1, 11}}));
  EXPECT_EQ(counted.references[10], 0);
}

TEST_F(CFMutableDictionary, SetsEitherWayAndKeepsTheKey) {
  const Held<CFMutableDictionaryRef> dictionary = mutableDictionaryOf({{1, 10}});
  CFDictionarySetValue(dictionary.get(), value(101), value(11));
  CFDictionarySetValue(dictionary.get(), value(2), value(20));
  EXPECT_EQ(pairsOf(dictionary.get()), (Pairs{{1, 11}, {2, 20}}));
  EXPECT_EQ(counted.references[101], 0);
  EXPECT_EQ(counted.references[10], 0);
}

TEST_F(CFMutableDictionary, Removes) {
  const Held<CFMutableDictionaryRef> dictionary = mutableDictionaryOf({{1, 10}, {2, 20}});
  CFDictionaryRemoveValue(dictionary.get(), value(3));
  CFDictionaryRemoveValue(dictionary.get(), value(101));
  EXPECT_EQ(pairsOf(dictionary.get()), (Pairs{{2, 20}}));
  EXPECT_EQ(counted.references[1], 0);
  CFDictionaryRemoveAllValues(dictionary.get());
  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 0);
  CFDictionarySetValue(dictionary.get(), value(4), value(40));
  EXPECT_EQ(pairsOf(dictionary.get()), (Pairs{{4, 40}}));
}

TEST_F(CFMutableDictionary, RetainsANewValueBeforeItReleasesTheOld) {
  const Held<CFMutableDictionaryRef> dictionary = dictionaryOfObjects();
  CFDictionarySetValue(dictionary.get(), CFSTR("key"), stringOf("only").get());
  const void* only = CFDictionaryGetValue(dictionary.get(), CFSTR("key"));
  CFDictionarySetValue(dictionary.get(), CFSTR("key"), only);
  EXPECT_EQ(CFGetRetainCount(only), 1);
  EXPECT_EQ(textOf(static_cast<CFStringRef>(only)), "only");
}

TEST_F(CFMutableDictionary, TakesNoMoreThanItsCapacity) {
  const Held<CFMutableDictionaryRef> dictionary = mutableDictionaryOf({{1, 10}}, 2);
  CFDictionarySetValue(dictionary.get(), value(2), value(20));
  CFDictionarySetValue(dictionary.get(), value(3), value(30));
  CFDictionaryAddValue(dictionary.get(), value(4), value(40));
  CFDictionarySetValue(dictionary.get(), value(1), value(11));
  EXPECT_EQ(pairsOf(dictionary.get()), (Pairs{{1, 11}, {2, 20}}));
  EXPECT_FALSE(mutableDictionaryOf({{1, 1}, {2, 2}, {3, 3}}, 2));
}

TEST_F(CFMutableDictionary, ImmutableDictionariesDoNotChange) {
  const Held<CFDictionaryRef> dictionary = dictionaryOf({{1, 10}});
  const CFMutableDictionaryRef forced = const_cast<CFMutableDictionaryRef>(dictionary.get());
  CFDictionaryAddValue(forced, value(2), value(20));
  CFDictionarySetValue(forced, value(1), value(20));
  CFDictionaryReplaceValue(forced, value(1), value(20));
  CFDictionaryRemoveValue(forced, value(1));
  CFDictionaryRemoveAllValues(forced);
  EXPECT_EQ(pairsOf(dictionary.get()), (Pairs{{1, 10}}));
}

TEST_F(CFMutableDictionary, OfObjectsRetainsAndReleasesThem) {
  const Held<CFNumberRef> key = numberOf(1);
  const Held<CFStringRef> text = stringOf("value");
  {
    const Held<CFMutableDictionaryRef> dictionary = dictionaryOfObjects();
    CFDictionarySetValue(dictionary.get(), key.get(), text.get());
    EXPECT_EQ(CFGetRetainCount(key.get()), 2);
    EXPECT_EQ(CFGetRetainCount(text.get()), 2);
    const double one = 1.0;
    const Held same(CFNumberCreate(nullptr, kCFNumberDoubleType, &one));
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), same.get()), text.get());
  }
  EXPECT_EQ(CFGetRetainCount(key.get()), 1);
  EXPECT_EQ(CFGetRetainCount(text.get()), 1);
}

TEST_F(CFMutableDictionary, OfObjectsTakesNoNull) {
  for (const CFDictionaryKeyCallBacks* keys :
       {&kCFTypeDictionaryKeyCallBacks, &kCFCopyStringDictionaryKeyCallBacks}) {
    const Held<CFMutableDictionaryRef> dictionary = dictionaryOfObjects(keys);
    CFDictionarySetValue(dictionary.get(), nullptr, CFSTR("value"));
    CFDictionarySetValue(dictionary.get(), CFSTR("key"), nullptr);
    CFDictionaryAddValue(dictionary.get(), nullptr, nullptr);
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 0);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), nullptr), nullptr);
    CFDictionaryRemoveValue(dictionary.get(), nullptr);
    CFDictionarySetValue(dictionary.get(), CFSTR("key"), CFSTR("value"));
    CFDictionarySetValue(dictionary.get(), CFSTR("key"), nullptr);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("key")), CFSTR("value"));
  }
}

TEST_F(CFMutableDictionary, CopiesStringsThatBecomeKeys) {
  const Held<CFMutableDictionaryRef> dictionary =
      dictionaryOfObjects(&kCFCopyStringDictionaryKeyCallBacks);
  const Held key(CFStringCreateMutableCopy(nullptr, 0, CFSTR("key")));
  CFDictionarySetValue(dictionary.get(), key.get(), kCFBooleanTrue);
  CFStringAppend(key.get(), CFSTR(" that changed"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("key")), kCFBooleanTrue);
  EXPECT_EQ(CFGetRetainCount(key.get()), 1);
  CFDictionarySetValue(dictionary.get(), numberOf(1).get(), kCFBooleanTrue);
  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
}

TEST_F(CFMutableDictionary, MergesWithTheApplierThatSets) {
  const Held<CFMutableDictionaryRef> target = mutableDictionaryOf({{1, 10}, {2, 20}});
  const CFDictionaryApplierFunction set = [](const void* key, const void* each, void* context) {
    CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(context), key, each);
  };
  CFDictionaryApplyFunction(dictionaryOf({{2, 21}, {3, 30}}).get(), set, target.get());
  EXPECT_EQ(pairsOf(target.get()), (Pairs{{1, 10}, {2, 21}, {3, 30}}));
  CFDictionaryApplyFunction(target.get(), set, target.get());
  EXPECT_EQ(CFDictionaryGetCount(target.get()), 3);
}

TEST_F(CFMutableDictionary, FollowsAMapThroughManyChanges) {
  const Held dictionary(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
  Pairs expected;
  std::uintptr_t random = 12345;
  for (int i = 0; i < 20000; ++i) {
    random = (random * 1103515245 + 12345) & 0x7FFFFFFF;
    const std::uintptr_t key = (random >> 8) % 300;
    if ((random >> 4) % 3 == 0) {
      CFDictionaryRemoveValue(dictionary.get(), value(key));
      expected.erase(key);
    } else {
      CFDictionarySetValue(dictionary.get(), value(key), value(random));
      expected[key] = random;
    }
  }
  EXPECT_EQ(pairsOf(dictionary.get()), expected);
  for (std::uintptr_t key = 0; key < 300; ++key) {
    EXPECT_EQ(CFDictionaryContainsKey(dictionary.get(), value(key)), expected.count(key) == 1);
  }
}

TEST_F(CFMutableDictionary, WorksWhenAllHashesAreTheSame) {
  CFDictionaryKeyCallBacks callBacks = {};
  callBacks.hash = [](const void*) -> CFHashCode { return 7; };
  const Held dictionary(CFDictionaryCreateMutable(nullptr, 0, &callBacks, nullptr));
  for (std::uintptr_t i = 0; i < 50; ++i) {
    CFDictionarySetValue(dictionary.get(), value(i), value(i));
  }
  for (std::uintptr_t i = 0; i < 50; i += 2) CFDictionaryRemoveValue(dictionary.get(), value(i));
  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 25);
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), value(49)), value(49));
  EXPECT_FALSE(CFDictionaryContainsKey(dictionary.get(), value(48)));
}

// Every allocation of making, filling and copying fails once.
TEST_F(CFMutableDictionary, StaysWholeWhenMemoryEndsAnywhere) {
  CountingAllocator allocator;
  int failures = 0;
  for (int successes = 0; successes < 8; ++successes) {
    allocator.failAfter(successes);
    const Held dictionary(
        CFDictionaryCreateMutable(allocator.get(), 0, &kCountedKeys, &kCountedValues));
    for (std::uintptr_t i = 1; i < 10; ++i) {
      CFDictionarySetValue(dictionary.get(), value(i), value(i));
    }
    const Held copy(CFDictionaryCreateCopy(allocator.get(), dictionary.get()));
    failures += !copy;
    EXPECT_EQ(counted.held(),
              2 * (CFDictionaryGetCount(dictionary.get()) + CFDictionaryGetCount(copy.get())));
  }
  EXPECT_EQ(allocator.blocks(), 0);
  EXPECT_GT(failures, 2);
  EXPECT_LT(failures, 8);
}

}  // namespace
