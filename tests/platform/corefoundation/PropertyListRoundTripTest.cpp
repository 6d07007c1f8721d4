// Licence: MIT, see LICENSE.
// Property lists of all kinds there and back, and files with every possible damage.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "tests/platform/corefoundation/PropertyListFixtures.h"
#include "tests/platform/corefoundation/PropertyListTesting.h"
#include "tests/support/StressCount.h"

namespace tests::roundTrips {

namespace {

// Makes trees of every kind of node. Dates have whole seconds, so that both formats can say them.
class RandomLists final {
 public:
  explicit RandomLists(unsigned seed) : random(seed) {}

  Held<CFTypeRef> list(int depth) {
    switch (below(depth > 0 ? 9 : 7)) {
      case 0:
        return Held<CFTypeRef>(text().take());
      case 1:
        return number<SInt64>(kCFNumberSInt64Type, static_cast<SInt64>(random()) >> below(64));
      case 2:
        return number<Float64>(kCFNumberFloat64Type, real());
      case 3:
        return number<Float32>(kCFNumberFloat32Type, static_cast<Float32>(real()));
      case 4:
        return Held<CFTypeRef>(below(2) == 0 ? kCFBooleanTrue : kCFBooleanFalse);
      case 5:
        return Held<CFTypeRef>(CFDateCreate(nullptr, std::floor(real() * 1e8)));
      case 6:
        return Held<CFTypeRef>(dataHolding(bytes()).take());
      case 7:
        return array(depth);
      default:
        return dictionary(depth);
    }
  }

 private:
  unsigned below(unsigned end) { return static_cast<unsigned>(random() % end); }
  double real() { return std::uniform_real_distribution<double>(-100, 100)(random); }

  template <typename T>
  static Held<CFTypeRef> number(CFNumberType type, T value) {
    return Held<CFTypeRef>(CFNumberCreate(nullptr, type, &value));
  }
  std::string bytes() {
    std::string made(below(100), '\0');
    for (char& byte : made) byte = static_cast<char>(below(256));
    return made;
  }
  Held<CFStringRef> text() {
    const UniChar ends[] = {0x80, 0x100, 0x800, 0xD800};
    const UniChar end = ends[below(4)];
    std::vector<UniChar> units(below(30));
    for (UniChar& unit : units) unit = static_cast<UniChar>(below(end));
    return stringOf(units);
  }
  Held<CFTypeRef> array(int depth) {
    Held made(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    for (unsigned i = below(8); i > 0; --i) CFArrayAppendValue(made.get(), list(depth - 1).get());
    return Held<CFTypeRef>(made.take());
  }
  Held<CFTypeRef> dictionary(int depth) {
    Held made(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                        &kCFTypeDictionaryValueCallBacks));
    for (unsigned i = below(8); i > 0; --i) {
      CFDictionarySetValue(made.get(), text().get(), list(depth - 1).get());
    }
    return Held<CFTypeRef>(made.take());
  }

  std::mt19937_64 random;
};

// Whatever the bytes are: a property list that can be walked and written, or a reason.
void expectListOrReason(const std::string& bytes) {
  std::string error;
  const Held<CFTypeRef> list = readList(bytes, &error, kCFPropertyListMutableContainersAndLeaves);
  if (!list) {
    ASSERT_EQ(error.substr(0, 5) == "line " || error.substr(0, 7) == "offset ", true) << error;
    return;
  }
  ASSERT_EQ(error, "<null>");
  const Held<CFTypeRef> again = readList(asBinary(list.get()));
  ASSERT_TRUE(CFEqual(list.get(), again.get())) << shown(list.get());
}

void damageEveryByte(const std::string& file) {
  for (std::size_t i = 0; i < file.size(); ++i) {
    for (const int change : {0x01, 0x10, 0x80, 0xFF}) {
      std::string damaged = file;
      damaged[i] = static_cast<char>(damaged[i] ^ change);
      expectListOrReason(damaged);
    }
    std::string shorter = file;
    expectListOrReason(shorter.erase(i, 1));
    expectListOrReason(file.substr(0, i));
  }
}

const std::string kSmall =
    "<plist><dict><key>a&amp;</key><array><string>b</string><integer>-7</integer><true/>"
    "<data>AAEC</data><real>0.5</real><date>2004-02-29T00:00:00Z</date><dict/></array></dict>"
    "</plist>";

}  // namespace

TEST(PropertyListRoundTrip, KeepsRandomTreesInBothFormats) {
  for (int i = 0; i < stressCount(1000); ++i) {
    const auto list = RandomLists(static_cast<unsigned>(i)).list(5);
    const std::string xml = asXML(list.get());
    const std::string binary = asBinary(list.get());
    const auto fromXML = readList(xml);
    const auto fromBinary = readList(binary, nullptr, kCFPropertyListMutableContainersAndLeaves);
    ASSERT_TRUE(CFEqual(fromXML.get(), list.get())) << "tree " << i << '\n' << xml;
    ASSERT_TRUE(CFEqual(fromBinary.get(), list.get())) << "tree " << i << '\n' << xml;
    ASSERT_EQ(asXML(fromBinary.get()), xml) << "tree " << i;
    ASSERT_EQ(asBinary(fromBinary.get()), binary) << "tree " << i;
  }
}

TEST(PropertyListRoundTrip, ReadsWhatAnotherProgramWrites) {
  EXPECT_EQ(meaning(kForeignXML), kForeignMeaning);
  EXPECT_EQ(meaning(kForeignBinary), kForeignMeaning);
}

TEST(PropertyListRoundTrip, WritesTheSameBytesAsAnotherProgram) {
  EXPECT_EQ(asBinary(readList(kForeignXML).get()), kForeignBinary);
  EXPECT_EQ(asXML(readList(kForeignXMLWithoutReals).get()), kForeignXMLWithoutReals);
}

TEST(PropertyListRoundTrip, SurvivesEveryDamageToXML) { damageEveryByte(kSmall); }

TEST(PropertyListRoundTrip, SurvivesEveryDamageToBinary) {
  damageEveryByte(asBinary(readList(kSmall).get()));
}

TEST(PropertyListRoundTrip, SurvivesEveryDamageToOldStyleText) {
  damageEveryByte("/* a */ { b = (c, \"d\\n\\101\\U00e9\", <00ff>, {}); 'e f' = g; h; } // i");
}

// The first letters of the binary form alone are a word of old-style text.
TEST(PropertyListRoundTrip, TakesNoPartOfAFileForTheWhole) {
  const struct {
    std::string file;
    std::size_t shortest;
  } cases[] = {{kSmall, 0},
               {asBinary(readList(kSmall).get()), std::string("bplist").size()},
               {"{ b = (c, \"d\\n\"); }", 0}};
  for (const auto& each : cases) {
    for (std::size_t length = each.shortest; length < each.file.size(); ++length) {
      ASSERT_EQ(meaning(each.file.substr(0, length)).substr(0, 2), "! ") << length;
    }
  }
}

}  // namespace tests::roundTrips
