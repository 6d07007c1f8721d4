// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/platform/corefoundation/PropertyListTesting.h"

namespace tests::xmlWriting {

namespace {

template <typename T>
Held<CFTypeRef> number(CFNumberType type, T value) {
  return Held<CFTypeRef>(CFNumberCreate(nullptr, type, &value));
}

Held<CFTypeRef> real(double value) { return number(kCFNumberFloat64Type, value); }

std::string bodyOf(CFPropertyListRef list) {
  const std::string text = asXML(list);
  const std::string begin = xmlOf("").substr(0, xmlOf("").size() - 9);
  if (text.substr(0, begin.size()) != begin || text.size() < begin.size() + 9) return text;
  EXPECT_EQ(text.substr(text.size() - 9), "</plist>\n");
  return text.substr(begin.size(), text.size() - begin.size() - 9);
}

std::string rewritten(const std::string& body) { return bodyOf(readList(body).get()); }

}  // namespace

TEST(PropertyListXMLWriter, WritesTheWholeFile) {
  EXPECT_EQ(asXML(CFSTR("a")), xmlOf("<string>a</string>\n"));
  const Held data(CFPropertyListCreateXMLData(nullptr, CFSTR("a")));
  EXPECT_EQ(bytesIn(data.get()), xmlOf("<string>a</string>\n"));
}

TEST(PropertyListXMLWriter, IndentsWithTabsAndOrdersByKey) {
  EXPECT_EQ(rewritten("<dict><key>b</key><array><integer>1</integer><dict/></array>"
                      "<key>a</key><dict><key>c</key><true/></dict></dict>"),
            "<dict>\n\t<key>a</key>\n\t<dict>\n\t\t<key>c</key>\n\t\t<true/>\n\t</dict>\n"
            "\t<key>b</key>\n\t<array>\n\t\t<integer>1</integer>\n\t\t<dict/>\n\t</array>\n"
            "</dict>\n");
}

TEST(PropertyListXMLWriter, WritesEmptyNodes) {
  EXPECT_EQ(rewritten("<array><dict/><array/><string/><data/></array>"),
            "<array>\n\t<dict/>\n\t<array/>\n\t<string></string>\n\t<data>\n\t</data>\n</array>\n");
}

TEST(PropertyListXMLWriter, EscapesWhatItMust) {
  EXPECT_EQ(bodyOf(stringOf("a<b>&\"'é\xf0\x9f\x90\x88").get()),
            "<string>a&lt;b&gt;&amp;\"'é\xf0\x9f\x90\x88</string>\n");
  EXPECT_EQ(rewritten("<dict><key>&lt;</key><true/></dict>"),
            "<dict>\n\t<key>&lt;</key>\n\t<true/>\n</dict>\n");
}

TEST(PropertyListXMLWriter, WritesMacRomanText) {
  EXPECT_EQ(bodyOf(stringOf("caf\x8e", kCFStringEncodingMacRoman).get()),
            "<string>café</string>\n");
}

TEST(PropertyListXMLWriter, WritesNumbers) {
  EXPECT_EQ(bodyOf(number<SInt64>(kCFNumberSInt64Type, std::numeric_limits<SInt64>::min()).get()),
            "<integer>-9223372036854775808</integer>\n");
  EXPECT_EQ(bodyOf(number<SInt8>(kCFNumberSInt8Type, -1).get()), "<integer>-1</integer>\n");
  EXPECT_EQ(bodyOf(number<Float32>(kCFNumberFloat32Type, 0.1F).get()),
            "<real>0.10000000149011612</real>\n");
  const struct {
    double value;
    const char* text;
  } cases[] = {{0.5, "0.5"},
               {1, "1"},
               {0, "0.0"},
               {-0.0, "-0.0"},
               {0.1, "0.10000000000000001"},
               {1e100, "1e+100"},
               {-1e-7, "-9.9999999999999995e-08"},
               {std::numeric_limits<double>::quiet_NaN(), "nan"},
               {std::numeric_limits<double>::infinity(), "+infinity"},
               {-std::numeric_limits<double>::infinity(), "-infinity"}};
  for (const auto& each : cases) {
    EXPECT_EQ(bodyOf(real(each.value).get()), "<real>" + std::string(each.text) + "</real>\n");
  }
}

TEST(PropertyListXMLWriter, WritesBooleansAndDates) {
  EXPECT_EQ(bodyOf(kCFBooleanTrue), "<true/>\n");
  EXPECT_EQ(bodyOf(kCFBooleanFalse), "<false/>\n");
  const Held date(CFDateCreate(nullptr, 86399.75));
  EXPECT_EQ(bodyOf(date.get()), "<date>2001-01-01T23:59:59Z</date>\n");
}

TEST(PropertyListXMLWriter, BreaksDataIntoLines) {
  const std::string line57(57, '\0');
  const std::string a76(76, 'A');
  EXPECT_EQ(bodyOf(dataHolding(line57).get()), "<data>\n" + a76 + "\n</data>\n");
  EXPECT_EQ(bodyOf(dataHolding(line57 + "\xff").get()), "<data>\n" + a76 + "\n/w==\n</data>\n");
  EXPECT_EQ(rewritten("<array><data>" + a76 + "</data></array>"),
            "<array>\n\t<data>\n\t" + std::string(68, 'A') + "\n\tAAAAAAAA\n\t</data>\n</array>\n");
}

TEST(PropertyListXMLWriter, IndentsDataNoDeeperThanEightTabs) {
  std::string body = "<data>" + std::string(16, 'A') + "</data>";
  for (int i = 0; i < 9; ++i) body = "<array>" + body + "</array>";
  const std::string tabs(8, '\t');
  EXPECT_NE(rewritten(body).find("\n\t" + tabs + "<data>\n" + tabs + "AAAAAAAAAAAA\n" + tabs +
                                 "AAAA\n" + tabs + "</data>\n"),
            std::string::npos);
}

TEST(PropertyListXMLWriter, RefusesWhatXMLCannotSay) {
  const Held late(CFDateCreate(nullptr, 1e15));
  EXPECT_EQ(asXML(late.get()), "<a date is outside the years 1 to 9999>");
  EXPECT_EQ(asXML(stringOf({'a', 0xD800}).get()), "<a text has half a character>");
  EXPECT_EQ(asXML(nullptr), "<an object is none of a property list>");
  EXPECT_EQ(asXML(kCFAllocatorDefault), "<an object is none of a property list>");
  EXPECT_EQ(asXML(kCFAllocatorSystemDefault), "<an object is none of a property list>");
  EXPECT_EQ(CFPropertyListCreateXMLData(nullptr, late.get()), nullptr);
  EXPECT_EQ(CFPropertyListCreateXMLData(nullptr, nullptr), nullptr);
}

TEST(PropertyListXMLWriter, RefusesKeysThatAreNotText) {
  const void* key = kCFBooleanTrue;
  const Held dictionary(CFDictionaryCreate(nullptr, &key, &key, 1, &kCFTypeDictionaryKeyCallBacks,
                                           &kCFTypeDictionaryValueCallBacks));
  EXPECT_EQ(asXML(dictionary.get()), "<a key is not text>");
  EXPECT_EQ(asBinary(dictionary.get()), "<a key is not text>");
}

}  // namespace tests::xmlWriting
