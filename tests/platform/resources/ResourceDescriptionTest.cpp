// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceDescription.h"

#include <gtest/gtest.h>

#include "tests/platform/resources/SampleFile.h"

namespace {

using namespace platform::resources;
using namespace std::string_view_literals;
using tests::bytesOf;

std::vector<ResourceContents> described(std::string_view text) {
  auto result = parseDescription(text);
  if (auto* error = std::get_if<DescriptionError>(&result)) {
    ADD_FAILURE() << "line " << error->line << ": " << error->message;
    return {};
  }
  return std::get<std::vector<ResourceContents>>(result);
}

TEST(ResourceDescription, NamesTypeIDNameAndAttributes) {
  auto resources =
      described("resource 'ALRT' -138 \"A name\" purgeable preload resource 'x  y' 0x10");
  ASSERT_EQ(resources.size(), 2u);
  EXPECT_EQ(resources[0].type, ResType{'ALRT'});
  EXPECT_EQ(resources[0].id, -138);
  EXPECT_EQ(resources[0].name, "A name");
  EXPECT_EQ(resources[0].attributes, 32 | 4);
  EXPECT_EQ(resources[1].type, ResType{'x  y'});
  EXPECT_EQ(resources[1].id, 16);
  EXPECT_EQ(resources[1].name, "");
  EXPECT_EQ(resources[1].attributes, 0);
}

struct Field {
  const char* name;
  std::string_view text;
  std::string_view bytes;
};

class DescribedField : public testing::TestWithParam<Field> {};

TEST_P(DescribedField, BecomesItsBytes) {
  auto resources = described("resource 'TEST' 1 " + std::string(GetParam().text));
  ASSERT_EQ(resources.size(), 1u);
  EXPECT_EQ(resources[0].data, bytesOf(GetParam().bytes));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, DescribedField,
    testing::Values(
        Field{"Nothing", "", ""}, Field{"Int8", "int8 255 int8 -128 int8 0x0a", "\xFF\x80\x0A"sv},
        Field{"Int16", "int16 65535 int16 -32768", "\xFF\xFF\x80\x00"sv},
        Field{"Int32", "int32 0xfffffffe int32 -1", "\xFF\xFF\xFF\xFE\xFF\xFF\xFF\xFF"sv},
        Field{"Rect", "rect 1 -2 3 258", "\x00\x01\xFF\xFE\x00\x03\x01\x02"sv},
        Field{"Code", "code 'aevt'", "aevt"},
        Field{"PascalString", "pstring \"abc\"",
              "\x03"
              "abc"},
        Field{"EmptyString", "pstring \"\"", "\0"sv}, Field{"Text", "text \"abc\"", "abc"},
        Field{"StringsInARow", "pstring \"ab\"\n  \"cd\" int8 9",
              "\x04"
              "abcd\x09"},
        Field{"Escapes", R"(text "\"\\\'\n\x8A")", "\"\\'\r\x8A"},
        Field{"Bytes", "bytes \"00 ff7E\" bytes \"\"", "\x00\xFF\x7E"sv},
        Field{"Comment", "int8 1 # int8 2\nint8 3#", "\x01\x03"}),
    [](const auto& instance) { return instance.param.name; });

TEST(ResourceDescription, CountsTheItemsOfAList) {
  auto resources = described(
      "resource 'DITL' 1 button 1 2 3 4 \"OK\" label 5 6 7 8 \"abc\""
      "resource 'DITL' 2 button 0 0 0 0 \"\"");
  ASSERT_EQ(resources.size(), 2u);
  EXPECT_EQ(resources[0].data, bytesOf("\x00\x01"
                                       "\x00\x00\x00\x00\x00\x01\x00\x02\x00\x03\x00\x04\x04\x02OK"
                                       "\x00\x00\x00\x00\x00\x05\x00\x06\x00\x07\x00\x08\x88\x03"
                                       "abc\x00"sv));
  EXPECT_EQ(resources[1].data,
            bytesOf("\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x04\x00"sv));
}

struct Mistake {
  const char* name;
  std::string text;
  int line;
  const char* message;
};

class WrongDescription : public testing::TestWithParam<Mistake> {};

TEST_P(WrongDescription, IsRefusedWithItsLine) {
  auto result = parseDescription(GetParam().text);
  const auto* error = std::get_if<DescriptionError>(&result);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->line, GetParam().line);
  EXPECT_EQ(error->message, GetParam().message);
}

const std::string kStart = "resource 'TEST' 1\n";

INSTANTIATE_TEST_SUITE_P(
    Mistakes, WrongDescription,
    testing::Values(
        Mistake{"NoResource", "\nint8 1", 2, "expected 'resource'"},
        Mistake{"ShortType", "resource 'abc' 1", 1, "expected a code of four characters"},
        Mistake{"LongType", "resource 'abcde' 1", 1, "expected a code of four characters"},
        Mistake{"TypeAsWord", "resource ABCD 1", 1, "expected a code of four characters"},
        Mistake{"NoID", "resource 'abcd'", 1, "expected a number"},
        Mistake{"LargeID", "resource 'abcd' 65536", 1, "the number does not fit 16 bits"},
        Mistake{"Twice", kStart + kStart, 2, "the resource is described twice"},
        Mistake{"LongName", "resource 'abcd' 1 \"" + std::string(256, 'n') + "\"", 1,
                "the name is too long"},
        Mistake{"UnknownField", kStart + "int64 1", 2, "unknown field 'int64'"},
        Mistake{"StrayString", kStart + "int8 1 \"x\"", 2, "expected the kind of a field"},
        Mistake{"NoNumber", kStart + "int8\nx", 3, "expected a number"},
        Mistake{"HalfNumber", kStart + "int8 12x", 2, "expected a number"},
        Mistake{"BareSign", kStart + "int8 -", 2, "expected a number"},
        Mistake{"LargeByte", kStart + "int8 256", 2, "the number does not fit 8 bits"},
        Mistake{"SmallByte", kStart + "int8 -129", 2, "the number does not fit 8 bits"},
        Mistake{"LargeWord", kStart + "int32 0x100000000", 2, "the number does not fit 32 bits"},
        Mistake{"HugeNumber", kStart + "int32 99999999999999999999", 2, "expected a number"},
        Mistake{"NoString", kStart + "text 5", 2, "expected a string"},
        Mistake{"LongString", kStart + "pstring \"" + std::string(256, 'x') + "\"", 2,
                "the string is too long"},
        Mistake{"OpenString", kStart + "text \"abc\nint8 1", 2,
                "a string does not end on its line"},
        Mistake{"UnknownEscape", kStart + "text \"\\q\"", 2, "unknown escape in a string"},
        Mistake{"HalfEscape", kStart + "text \"\\x4\"", 2, "unknown escape in a string"},
        Mistake{"Accent", kStart + "text \"\xC3\xA4\"", 2,
                "write characters beyond ASCII as \\xNN"},
        Mistake{"OddDigits", kStart + "bytes \"123\"", 2, "expected pairs of hexadecimal digits"},
        Mistake{"NoDigits", kStart + "bytes \"gg\"", 2, "expected pairs of hexadecimal digits"},
        Mistake{"ItemsBehindFields", kStart + "int8 1 button 0 0 0 0 \"x\"", 2,
                "a list of items holds nothing else"},
        Mistake{"FieldsBehindItems", kStart + "button 0 0 0 0 \"x\"\nint8 1", 3,
                "a list of items holds nothing else"}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
