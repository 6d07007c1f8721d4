// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>

#include <string>

#include "tests/platform/corefoundation/PropertyListTesting.h"

namespace tests::xmlReading {

namespace {

struct Case {
  std::string body;
  const char* meaning;
};

void check(const std::vector<Case>& cases) {
  for (const Case& each : cases) EXPECT_EQ(meaning(each.body), each.meaning) << each.body;
}

std::string utf16(const std::u16string& text, bool bigEndian) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

}  // namespace

TEST(PropertyListXML, ReadsEveryKindOfNode) {
  check({{xmlOf("<string>a b</string>"), "\"a b\""},
         {xmlOf("<integer>42</integer>"), "42"},
         {xmlOf("<real>1.5</real>"), "r1.5"},
         {xmlOf("<true/>"), "true"},
         {xmlOf("<false></false>"), "false"},
         {xmlOf("<date>2001-01-02T00:00:00Z</date>"), "@86400.000"},
         {xmlOf("<data>\n\tAP8=\n\t</data>"), "<00ff>"},
         {xmlOf("<array><true/>\n<array/></array>"), "(true, ())"},
         {xmlOf("<dict><key>b</key><true/><key>a</key><dict></dict></dict>"), "{a={}, b=true}"}});
}

TEST(PropertyListXML, ReadsEmptyElements) {
  check({{xmlOf("<string/>"), "\"\""},
         {xmlOf("<string></string>"), "\"\""},
         {xmlOf("<data/>"), "<>"},
         {xmlOf("<array/>"), "()"},
         {xmlOf("<dict/>"), "{}"},
         {xmlOf("<dict><key/><string/></dict>"), "{=\"\"}"}});
}

TEST(PropertyListXML, ReadsIntegersOf64Bits) {
  check({{xmlOf("<integer>-1</integer>"), "-1"},
         {xmlOf("<integer> +7\n</integer>"), "7"},
         {xmlOf("<integer>0x1F</integer>"), "31"},
         {xmlOf("<integer>-0X10</integer>"), "-16"},
         {xmlOf("<integer>9223372036854775807</integer>"), "9223372036854775807"},
         {xmlOf("<integer>-9223372036854775808</integer>"), "-9223372036854775808"}});
}

TEST(PropertyListXML, ReadsIntegersInTheNarrowestOfTwoWidths) {
  const auto width = [](const char* text) {
    const auto number = readList(xmlOf(std::string("<integer>") + text + "</integer>"));
    return CFNumberGetType(static_cast<CFNumberRef>(number.get()));
  };
  EXPECT_EQ(width("2147483647"), kCFNumberSInt32Type);
  EXPECT_EQ(width("2147483648"), kCFNumberSInt64Type);
  EXPECT_EQ(width("-2147483648"), kCFNumberSInt32Type);
  EXPECT_EQ(width("-2147483649"), kCFNumberSInt64Type);
}

TEST(PropertyListXML, RefusesOtherIntegers) {
  for (const char* text : {"", "x", "1x", "1.0", "0x", "--1", "+-1", "1 2", "9223372036854775808",
                           "-9223372036854775809", "99999999999999999999999"}) {
    EXPECT_EQ(meaning("<integer>" + std::string(text) + "</integer>"),
              "! line 1, column 1: this is no integer of 64 bits")
        << text;
  }
}

TEST(PropertyListXML, ReadsReals) {
  check({{"<real>-1e-3</real>", "r-0.001"},
         {"<real> +2 </real>", "r2"},
         {"<real>0.10000000000000001</real>", "r0.1"},
         {"<real>nan</real>", "rnan"},
         {"<real>+infinity</real>", "rinf"},
         {"<real>-infinity</real>", "r-inf"},
         {"<real>Infinity</real>", "rinf"},
         {"<real>inf</real>", "rinf"},
         {"<real>-0.0</real>", "r-0"},
         {"<real>5e-324</real>", "r4.94066e-324"}});
}

TEST(PropertyListXML, RefusesOtherReals) {
  for (const char* text : {"", "x", "1x", "+-1", "++1", "1,5", "0x1p3", "1e999"}) {
    EXPECT_EQ(meaning("<real>" + std::string(text) + "</real>"),
              "! line 1, column 1: this is no real number")
        << text;
  }
}

TEST(PropertyListXML, ReadsEntitiesAndSections) {
  check({{"<string>&lt;&gt;&amp;&quot;&apos;</string>", "\"<>&\"'\""},
         {"<string>&#65;&#x42;&#xe9;&#x1F408;</string>", "\"ABé\xf0\x9f\x90\x88\""},
         {"<string>a<![CDATA[<b>&amp;]]]>c</string>", "\"a<b>&amp;]c\""},
         {"<string>a<!-- b -->c<?d?>e</string>", "\"ace\""},
         {"<string><![CDATA[]]></string>", "\"\""},
         {"<dict><key>&amp;</key><data>AA<!-- -->==</data></dict>", "{&=<00>}"},
         {"<integer>&#49;2</integer>", "12"}});
}

TEST(PropertyListXML, RefusesOtherEntities) {
  check({{"<string>&nbsp;</string>", "! line 1, column 9: the entity is not known"},
         {"<string>ab&;</string>", "! line 1, column 11: the entity is not known"},
         {"<string>&amp</string>", "! line 1, column 9: the entity does not end"},
         {"<string>&#xD800;</string>", "! line 1, column 9: there is no such character"},
         {"<string>&#1114112;</string>", "! line 1, column 9: there is no such character"},
         {"<string>&#;</string>", "! line 1, column 9: there is no such character"},
         {"<string>&#-1;</string>", "! line 1, column 9: there is no such character"},
         {"<string>&#x;</string>", "! line 1, column 9: there is no such character"}});
}

TEST(PropertyListXML, SkipsDocumentTypesWithAllThatTheyDeclare) {
  check({{"<!DOCTYPE plist SYSTEM \"a>b\"><true/>", "true"},
         {"<!DOCTYPE plist [<!ENTITY a \"]>\"><!-- ]> \" --><!ELEMENT b (c)>]><true/>", "true"},
         {"<?xml version='1.0'?><!-- a --><!DOCTYPE plist><?b?><true/>", "true"},
         {"<!DOCTYPE plist [<!ENTITY a \"b\">]><string>&a;</string>",
          "! line 1, column 43: the entity is not known"},
         {"<!DOCTYPE plist [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><string>&a;</string>",
          "! line 1, column 67: the entity is not known"},
         {"<!DOCTYPE plist [", "! line 1, column 1: the document type does not end"},
         {"<!DOCTYPE plist \"", "! line 1, column 18: the quoted text does not end"}});
}

TEST(PropertyListXML, SkipsCommentsInstructionsAndAttributes) {
  check({{"<!-- a --><plist version=\"1.0\" a='>'><!-- <b> --><?c <d> ?><true a=\"/\" /></plist>",
          "true"},
         {"<dict ><!-- --><key >a</key ><!-- --><true/></dict >", "{a=true}"},
         {" \n<true/> <!-- a --> \n", "true"}});
}

TEST(PropertyListXML, TakesTheLastOfEqualKeys) {
  check({{"<dict><key>a</key><true/><key>a</key><false/></dict>", "{a=false}"}});
}

TEST(PropertyListXML, KeepsLinesAndBlanksInText) {
  check({{"<string> a\r\n\tb </string>", "\" a\r\n\tb \""}});
}

TEST(PropertyListXML, SaysLineColumnAndReason) {
  check({{xmlOf("<foo/>\n"), "! line 4, column 1: the element is not known"},
         {"<dict>\n  <true/>\n</dict>", "! line 2, column 3: there should be a key here"},
         {"<dict>\r<key>a</key>\r</dict>",
          "! line 3, column 1: there is an end tag where a value should be"},
         {"<dict>\r\n<key>é</key><foo/></dict>", "! line 2, column 13: the element is not known"},
         {"<array><key>a</key></array>",
          "! line 1, column 8: there is a key where a value should be"},
         {"<array>a</array>", "! line 1, column 8: there is text where a tag should be"},
         {"<string>a</array>", "! line 1, column 10: another end tag should be here"},
         {"<string>a<b/></string>", "! line 1, column 10: another end tag should be here"},
         {"<array></dict>", "! line 1, column 8: there is an end tag where a value should be"},
         {"<plist/>", "! line 1, column 1: the property list is empty"},
         {"<plist></plist>", "! line 1, column 8: there is an end tag where a value should be"},
         {"<plist><true/><true/></plist>", "! line 1, column 15: another end tag should be here"},
         {"<true/><true/>", "! line 1, column 8: there is more behind the property list"},
         {"<date>today</date>", "! line 1, column 1: this is no date"},
         {"<date/>", "! line 1, column 1: this is no date"},
         {"<data>*</data>", "! line 1, column 1: the data is not in base 64"},
         {"<true>a</true>", "! line 1, column 7: there is text where a tag should be"}});
}

TEST(PropertyListXML, SaysWhatHasNoEnd) {
  check({{"<plist", "! line 1, column 1: the tag does not end"},
         {"<plist a=\"", "! line 1, column 11: the attribute does not end"},
         {"<dict <", "! line 1, column 7: the tag does not end"},
         {"<array>", "! line 1, column 8: the text ends too early"},
         {"<string>a", "! line 1, column 10: the text ends too early"},
         {"<string>&amp;", "! line 1, column 14: the text ends too early"},
         {"<string>&amp;a", "! line 1, column 15: the text ends too early"},
         {"<!-- ", "! line 1, column 1: the comment does not end"},
         {"<? ", "! line 1, column 1: the processing instruction does not end"},
         {"<string>&lt;<![CDATA[a]]</string>", "! line 1, column 13: the section does not end"},
         {"<array></", "! line 1, column 8: the tag has no name"}});
}

TEST(PropertyListXML, RefusesTextThatIsNotValid) {
  check({{"<string>a\xff</string>", "! line 1, column 9: the text is not valid UTF-8"},
         {"<dict><key>\xc3</key></dict>", "! line 1, column 12: the text is not valid UTF-8"}});
}

TEST(PropertyListXML, ReadsOtherEncodings) {
  const std::u16string text =
      u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><string>é\U0001F408</string>";
  const char* const cat = "\"é\xf0\x9f\x90\x88\"";
  check({{utf16(u'\uFEFF' + text, true), cat},
         {utf16(u'\uFEFF' + text, false), cat},
         {utf16(text, true), cat},
         {utf16(text, false), cat},
         {"\xEF\xBB\xBF<string>é</string>", "\"é\""},
         {"<?xml version='1.0' encoding = 'ISO-8859-1' ?><string>\xe9</string>", "\"é\""},
         {"<?xml version=\"1.0\" encoding=\"MacRoman\"?><true/>",
          "! line 1, column 1: the declared encoding is not known"},
         {"<?xml version=\"1.0\" encoding=\"macintosh\"?><string>\x8e</string>", "\"é\""},
         {"<?xml version=\"1.0\" encoding=\"US-ASCII\"?><string>a</string>", "\"a\""},
         {"<?xml version=\"1.0\"?><string>é</string>", "\"é\""}});
}

TEST(PropertyListXML, RefusesTextThatIsNotValidInItsEncoding) {
  const std::string reason = "! line 1, column 1: the text is not valid in its encoding";
  EXPECT_EQ(meaning("<?xml version='1.0' encoding='ascii'?><string>\xe9</string>"), reason);
  EXPECT_EQ(meaning(utf16(u"\uFEFF<true/>", true) + "\x01"), reason);
  std::u16string half = u"\uFEFF<string>a</string>";
  half[9] = 0xD800;
  EXPECT_EQ(meaning(utf16(half, true)), reason);
}

TEST(PropertyListXML, ReadsAsDeeplyAsItMay) {
  const auto nested = [](std::size_t depth) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) text += i % 2 == 0 ? "<array>" : "<dict><key/>";
    text += "<true/>";
    for (std::size_t i = depth; i > 0; --i) text += i % 2 == 1 ? "</array>" : "</dict>";
    return text;
  };
  EXPECT_EQ(meaning(nested(512)).substr(0, 6), "({=({=");
  EXPECT_EQ(meaning(nested(513)), "! line 1, column 4865: the nesting is too deep");
  EXPECT_EQ(meaning(nested(100000)), "! line 1, column 4865: the nesting is too deep");
}

}  // namespace tests::xmlReading
