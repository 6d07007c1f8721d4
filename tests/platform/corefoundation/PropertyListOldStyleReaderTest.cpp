// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/corefoundation/PropertyListTesting.h"

namespace tests::oldStyleReading {

using namespace std::string_literals;

namespace {

struct Case {
  std::string text;
  const char* meaning;
};

void check(const std::vector<Case>& cases) {
  for (const Case& each : cases) EXPECT_EQ(meaning(each.text), each.meaning) << each.text;
}

}  // namespace

TEST(PropertyListOldStyle, ReadsEveryKindOfNode) {
  check({{"plain", "\"plain\""},
         {"a_$/:.-Z9", "\"a_$/:.-Z9\""},
         {"\"quoted; text\"", "\"quoted; text\""},
         {"'single \" one'", "\"single \" one\""},
         {"<0fbd77 1c2735AE>", "<0fbd771c2735ae>"},
         {"<da>", "<da>"},
         {"<>", "<>"},
         {"( a, \"b\" , (c) )", "(\"a\", \"b\", (\"c\"))"},
         {"(a,)", "(\"a\")"},
         {"()", "()"},
         {"{ b = c; \"a\" = ( d ); e = <00>; }", "{a=(\"d\"), b=\"c\", e=<00>}"},
         {"{}", "{}"}});
}

TEST(PropertyListOldStyle, SkipsBlanksAndComments) {
  check({{" // one\n/* two \n * */ { /**/ a // x\r = \t b\v\f; } // end", "{a=\"b\"}"},
         {"http://host", "\"http://host\""}});
}

TEST(PropertyListOldStyle, TakesAKeyForItsOwnValue) {
  check({{"{ a; b = c; }", "{a=\"a\", b=\"c\"}"}});
}

TEST(PropertyListOldStyle, ReadsTablesOfStrings) {
  check({{"/* Hello */\n\"a key\" = \"a text\";\nb=c;\nd;", "{a key=\"a text\", b=\"c\", d=\"d\"}"},
         {"a;", "{a=\"a\"}"},
         {"a = { b = c; };", "{a={b=\"c\"}}"},
         {" \n/* nothing */\n", "{}"}});
}

TEST(PropertyListOldStyle, TakesTheLastOfEqualKeys) { check({{"a = b; a = c;", "{a=\"c\"}"}}); }

TEST(PropertyListOldStyle, ReadsEscapes) {
  check({{R"("\"\\\'\/")", "\"\"\\'/\""},
         {R"("\a\b\f\n\r\t\v")", "\"\a\b\f\n\r\t\v\""},
         {"\"a\\\nb\"", "\"a\nb\""},
         {R"("\U00e9\Ud83d\Udc08\U41")",
          "\"é\xf0\x9f\x90\x88"
          "A\""},
         {R"("\Ux")", "\"Ux\""},
         {R"("\101\60\0601")", "\"A001\""},
         {R"("\341\252\377")", "\"Æ\xe2\x80\x9c\xef\xbf\xbd\""},
         {"\"é\\é\"", "\"éé\""}});
}

TEST(PropertyListOldStyle, ReadsOtherEncodings) {
  check({{"\xEF\xBB\xBF{a=\"é\";}", "{a=\"é\"}"},
         {"\xFE\xFF\0{\0a\0=\0\"\0\xe9\0\"\0;\0}"s, "{a=\"é\"}"},
         {"\xFF\xFE{\0a\0;\0}\0"s, "{a=\"a\"}"},
         {"{a=\"\x8e\";}", "{a=\"é\"}"}});
}

TEST(PropertyListOldStyle, SaysLineColumnAndReason) {
  check({{"", "! line 1, column 1: there is nothing"},
         {"{ a = b }", "! line 1, column 9: there should be a semicolon here"},
         {"{\n a b; }", "! line 2, column 4: there should be a semicolon here"},
         {"{ a = ; }", "! line 1, column 7: there should be a value here"},
         {"{ a = b;", "! line 1, column 9: there should be a key or brace here"},
         {"{ (a) = b; }", "! line 1, column 3: there should be a key or brace here"},
         {"(a b)", "! line 1, column 4: there should be a comma or parenthesis here"},
         {"(a,", "! line 1, column 4: the text ends too early"},
         {"(,)", "! line 1, column 2: there should be a value here"},
         {"<0g>", "! line 1, column 3: the data is not hexadecimal"},
         {"<0>", "! line 1, column 3: the data has half a byte"},
         {"<00", "! line 1, column 1: the data does not end"},
         {"\"a", "! line 1, column 1: the quoted text does not end"},
         {"\"a\\", "! line 1, column 1: the quoted text does not end"},
         {"\"a\\\"", "! line 1, column 1: the quoted text does not end"},
         {"/* a", "! line 1, column 1: the comment does not end"},
         {"a b", "! line 1, column 3: there is more behind the property list"},
         {"{} a", "! line 1, column 4: there is more behind the property list"},
         {"a = b", "! line 1, column 6: there should be a semicolon here"},
         {"a = b; }", "! line 1, column 8: there should be a key here"},
         {"\xEF\xBB\xBF\"\xff\"", "! line 1, column 1: the text is not valid UTF-8"},
         {"\xEF\xBB\xBF\"\xff\\n\"", "! line 1, column 1: the text is not valid UTF-8"},
         {"!", "! line 1, column 1: there should be a value here"}});
}

TEST(PropertyListOldStyle, ReadsAsDeeplyAsItMay) {
  const auto nested = [](std::size_t depth) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) text += i % 2 == 0 ? "(" : "{a=";
    text += "b";
    for (std::size_t i = depth; i > 0; --i) text += i % 2 == 1 ? ")" : ";}";
    return text;
  };
  EXPECT_EQ(meaning(nested(512)).substr(0, 8), "({a=({a=");
  EXPECT_EQ(meaning(nested(513)), "! line 1, column 1025: the nesting is too deep");
  EXPECT_EQ(meaning(nested(100000)), "! line 1, column 1025: the nesting is too deep");
}

}  // namespace tests::oldStyleReading
