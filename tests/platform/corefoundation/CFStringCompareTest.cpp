// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFString.h>
#include <gtest/gtest.h>

#include "platform/corefoundation/CaseFolding.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;
using platform::corefoundation::foldCase;

namespace {

struct Row {
  const char* a;
  const char* b;
  CFOptionFlags options;
  CFComparisonResult result;
};

constexpr CFOptionFlags kPlain = 0;

void expectOrder(const Row& row) {
  const Held<CFStringRef> a = stringOf(row.a);
  const Held<CFStringRef> b = stringOf(row.b);
  EXPECT_EQ(CFStringCompare(a.get(), b.get(), row.options), row.result) << row.a << ", " << row.b;
  EXPECT_EQ(CFStringCompare(b.get(), a.get(), row.options), -row.result) << row.b << ", " << row.a;
}

}  // namespace

TEST(CFStringCompare, ComparesByUnits) {
  for (const Row& row : {Row{"", "", kPlain, kCFCompareEqualTo},
                         {"", "a", kPlain, kCFCompareLessThan},
                         {"abc", "abc", kPlain, kCFCompareEqualTo},
                         {"abc", "abd", kPlain, kCFCompareLessThan},
                         {"ab", "abc", kPlain, kCFCompareLessThan},
                         {"B", "a", kPlain, kCFCompareLessThan},
                         {"a10", "a9", kPlain, kCFCompareLessThan},
                         {"z", "\u00e9", kPlain, kCFCompareLessThan},
                         {"\u20ac", "\u00e9", kPlain, kCFCompareGreaterThan}}) {
    expectOrder(row);
  }
}

TEST(CFStringCompare, LooksThroughTheStorage) {
  const Held<CFStringRef> narrow = stringOf("\x8e", kCFStringEncodingMacRoman);
  const Held<CFStringRef> wide = stringOf("\u00e9");
  EXPECT_EQ(CFStringCompare(narrow.get(), wide.get(), 0), kCFCompareEqualTo);
}

TEST(CFStringCompare, ForgetsCaseWhenAsked) {
  constexpr CFOptionFlags kFold = kCFCompareCaseInsensitive;
  for (const Row& row : {Row{"ABC", "abc", kFold, kCFCompareEqualTo},
                         {"B", "a", kFold, kCFCompareGreaterThan},
                         {"\u00c9t\u00c9", "\u00e9T\u00e9", kFold, kCFCompareEqualTo},
                         {"\u0394\u0416", "\u03b4\u0436", kFold, kCFCompareEqualTo},
                         {"\u03c2", "\u03a3", kFold, kCFCompareEqualTo},
                         {"\u0130", "i", kFold, kCFCompareGreaterThan},
                         {"[", "A", kFold, kCFCompareLessThan}}) {
    expectOrder(row);
  }
}

TEST(CFStringCompare, ComparesNumbersByValueWhenAsked) {
  constexpr CFOptionFlags kCount = kCFCompareNumerically;
  for (const Row& row :
       {Row{"a9", "a10", kCount, kCFCompareLessThan},
        {"a2b", "a10a", kCount, kCFCompareLessThan},
        {"007", "7", kCount, kCFCompareEqualTo},
        {"007a", "7b", kCount, kCFCompareLessThan},
        {"a0", "a", kCount, kCFCompareGreaterThan},
        {"99999999999999999999998", "99999999999999999999999", kCount, kCFCompareLessThan},
        {"1.10.3", "1.9.3", kCount, kCFCompareGreaterThan},
        {"x12", "x12", kCount, kCFCompareEqualTo},
        {"A9", "a10", kCount | kCFCompareCaseInsensitive, kCFCompareLessThan}}) {
    expectOrder(row);
  }
}

TEST(CFStringCompare, PutsNullBeforeAnyText) {
  EXPECT_EQ(CFStringCompare(nullptr, CFSTR(""), 0), kCFCompareLessThan);
  EXPECT_EQ(CFStringCompare(CFSTR(""), nullptr, 0), kCFCompareGreaterThan);
  EXPECT_EQ(CFStringCompare(nullptr, nullptr, 0), kCFCompareEqualTo);
}

TEST(CaseFolding, FoldsEachCaseToOne) {
  const struct {
    UniChar unit;
    UniChar folded;
  } rows[] = {{'A', 'a'},       {'Z', 'z'},       {'@', '@'},       {'[', '['},
              {'a', 'a'},       {0x00D7, 0x00D7}, {0x00DE, 0x00FE}, {0x0100, 0x0101},
              {0x0101, 0x0101}, {0x012E, 0x012F}, {0x0178, 0x00FF}, {0x017F, 's'},
              {0x03A9, 0x03C9}, {0x0410, 0x0430}, {0x0531, 0x0561}, {0x1E9E, 0x00DF},
              {0x212A, 'k'},    {0x2C00, 0x2C30}, {0xFF21, 0xFF41}, {0xFFFF, 0xFFFF}};
  for (const auto& row : rows) EXPECT_EQ(foldCase(row.unit), row.folded) << row.unit;
}

TEST(CaseFolding, FoldsNothingTwice) {
  int changed = 0;
  for (UInt32 unit = 0; unit <= 0xFFFF; ++unit) {
    const UniChar once = foldCase(static_cast<UniChar>(unit));
    EXPECT_EQ(foldCase(once), once) << unit;
    changed += once != unit;
  }
  EXPECT_GT(changed, 1000);
}
