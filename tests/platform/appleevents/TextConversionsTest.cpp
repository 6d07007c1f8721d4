// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/appleevents/Conversions.h"
#include "tests/platform/appleevents/Descriptors.h"
#include "tests/support/AllocationFailures.h"

namespace {

using namespace std::string_literals;
using tests::Desc;

Desc makeForm(DescType type, const std::string& bytes) {
  Desc desc;
  EXPECT_EQ(AECreateDesc(type, bytes.data(), static_cast<Size>(bytes.size()), &desc), noErr);
  return desc;
}

/// UTF-16 units in the host's order.
std::string unitsOf(const std::vector<UInt16>& values) {
  return {reinterpret_cast<const char*>(values.data()), 2 * values.size()};
}

struct FormCase {
  DescType from;
  std::string source;
  DescType to;
  std::string expected;
};

const FormCase kForms[] = {
    // What each form has around its text
    {typeChar, "abc", typeCString, "abc\0"s},
    {typeChar, "abc", typePString, "\3abc"},
    {typeChar, "abc", typeEncodedString, "\0\0\0\0abc"s},
    {typeChar, "ab", typeUnicodeText, unitsOf({'a', 'b'})},
    {typeChar, "ab", typeStyledUnicodeText, unitsOf({'a', 'b'})},
    {typeChar, "ab", typeUTF16ExternalRepresentation, "\0a\0b"s},
    {typeChar, "ab", typeUTF8Text, "ab"},
    {typeChar, "", typeCString, "\0"s},
    {typeChar, "", typePString, "\0"s},
    {typeChar, "", typeEncodedString, "\0\0\0\0"s},
    {typeChar, "", typeUTF8Text, ""},
    // A C string ends at its first 0, or with the data
    {typeCString, "ab\0cd"s, typeChar, "ab"},
    {typeCString, "ab", typeChar, "ab"},
    {typeCString, "", typeChar, ""},
    // A Pascal string ends with its length
    {typePString, "\2abcd", typeChar, "ab"},
    {typePString, "\0abcd"s, typeChar, ""},
    // Encoded strings name their encoding: MacRoman, ASCII, ISO Latin 1, UTF-8, UTF-16
    {typeEncodedString, "\0\0\0\0\x8E"s, typeUTF8Text, "\xC3\xA9"},
    {typeEncodedString, "\0\0\x06\0az"s, typeChar, "az"},
    {typeEncodedString, "\0\0\x02\x01\xE9"s, typeChar, "\x8E"},
    {typeEncodedString, "\x08\0\x01\0\xC3\xA9"s, typeChar, "\x8E"},
    {typeEncodedString, "\0\0\x01\0\0a\0\xE9"s, typeChar, "a\x8E"},
    {typeEncodedString,
     "\0\0\x01\0\xFF\xFE"
     "a\0\xE9\0"s,
     typeChar, "a\x8E"},
    // Characters
    {typeChar, "\x8E\xCA\xF0", typeUTF8Text, "\xC3\xA9\xC2\xA0\xEF\xA3\xBF"},
    {typeUTF8Text, "\xC3\xA9", typeChar, "\x8E"},
    {typeUTF8Text, "\xEF\xBB\xBF\xC3\xA9", typeChar, "\x8E"},
    {typeUTF8Text, "\xF0\x9F\x98\x80", typeUnicodeText, unitsOf({0xD83D, 0xDE00})},
    {typeUTF8Text, "\xF0\x9F\x98\x80", typeUTF16ExternalRepresentation, "\xD8\x3D\xDE\x00"s},
    {typeUTF8Text, "\xE2\x98\x83", typeEncodedString, "\x08\0\x01\0\xE2\x98\x83"s},
    {typeUnicodeText, unitsOf({0xD83D, 0xDE00}), typeUTF8Text, "\xF0\x9F\x98\x80"},
    // Byte order marks
    {typeUnicodeText, unitsOf({0xFEFF, 'a'}), typeChar, "a"},
    {typeUnicodeText, unitsOf({0xFFFE, 0x6100}), typeChar, "a"},
    {typeStyledUnicodeText, unitsOf({0xFEFF, 'a'}), typeChar, "a"},
    {typeUTF16ExternalRepresentation, "\0a"s, typeChar, "a"},
    {typeUTF16ExternalRepresentation, "\xFE\xFF\0a"s, typeChar, "a"},
    {typeUTF16ExternalRepresentation,
     "\xFF\xFE"
     "a\0"s,
     typeChar, "a"},
    {typeUnicodeText, unitsOf({0xFEFF}), typeUTF8Text, ""},
    {typeUnicodeText, unitsOf({0xFEFF, 0xFEFF, 'a'}), typeUTF8Text, "a"},
    {typeUTF8Text, "\xEF\xBF\xBE", typeEncodedString, "\x08\0\x01\0\xEF\xBF\xBE"s},
};

TEST(TextConversions, KeepTheCharacters) {
  for (const FormCase& text : kForms) {
    SCOPED_TRACE(&text - kForms);
    const Desc source = makeForm(text.from, text.source);
    Desc result;
    ASSERT_EQ(AECoerceDesc(&source, text.to, &result), noErr);
    EXPECT_EQ(result.type(), text.to);
    EXPECT_EQ(tests::textOf(result), text.expected);
  }
}

const FormCase kRefusedForms[] = {
    {typeChar, std::string(256, 'x'), typePString, ""},
    {typeChar, "a\0b"s, typeCString, ""},
    {typeUTF8Text, "\xE2\x98\x83", typeChar, ""},
    {typeUTF8Text, "\xE2\x98\x83", typeCString, ""},
    {typeUTF8Text, "\xE2\x98\x83", typePString, ""},
    {typeUTF8Text, "\xC3", typeUnicodeText, ""},
    {typeUTF8Text, "\xC0\x80", typeUnicodeText, ""},
    {typeUTF8Text, "\xED\xA0\x80", typeUnicodeText, ""},
    {typeUTF8Text, "\xEF\xBF\xBE", typeUnicodeText, ""},
    {typeUTF8Text, "\xEF\xBF\xBE", typeStyledUnicodeText, ""},
    {typeUTF8Text, "\xEF\xBF\xBE", typeUTF16ExternalRepresentation, ""},
    {typeUnicodeText, "a", typeChar, ""},
    {typeUnicodeText, unitsOf({0xD800}), typeUTF8Text, ""},
    {typeUTF16ExternalRepresentation, "abc", typeChar, ""},
    {typePString, "", typeChar, ""},
    {typePString, "\4abc", typeChar, ""},
    {typeEncodedString, "", typeChar, ""},
    {typeEncodedString, "\0\0\0"s, typeChar, ""},
    {typeEncodedString, "\x7F\0\0\0abc"s, typeChar, ""},
    {typeEncodedString, "\0\0\x06\0\x80"s, typeChar, ""},
    {typeEncodedString, "\0\0\x01\0abc"s, typeChar, ""},
};

TEST(TextConversions, RefuseWhatIsNoTextOrHasNoPlaceInAForm) {
  for (const FormCase& text : kRefusedForms) {
    SCOPED_TRACE(&text - kRefusedForms);
    const Desc source = makeForm(text.from, text.source);
    Desc result;
    EXPECT_EQ(AECoerceDesc(&source, text.to, &result), errAECoercionFail);
    EXPECT_TRUE(result.isNull());
  }
}

TEST(TextConversions, FillAPascalStringToItsLastByte) {
  const Desc source = tests::makeText(std::string(255, 'x'));
  Desc result;
  ASSERT_EQ(AECoerceDesc(&source, typePString, &result), noErr);
  EXPECT_EQ(tests::textOf(result), "\xFF" + std::string(255, 'x'));
}

TEST(TextConversions, TakeABlockAtAnyAddress) {
  const char bytes[] = " \xFE\xFF\0a\0b";
  Desc result;
  ASSERT_EQ(AECoercePtr(typeUTF16ExternalRepresentation, bytes + 1, 6, typeChar, &result), noErr);
  EXPECT_EQ(tests::textOf(result), "ab");
}

TEST(TextConversions, FailWithEachAllocation) {
  const Desc source = tests::makeText("12");
  const std::pair<DescType, std::string> cases[] = {{typeUTF8Text, "12"}, {typeCString, "12\0"s}};
  for (const auto& [type, expected] : cases) {
    const UInt32 allocations = tests::failEachAllocation(
        [&] {
          Desc result;
          return AECoerceDesc(&source, type, &result);
        },
        [](OSErr status, bool failed) {
          EXPECT_EQ(status, failed ? OSErr{memFullErr} : OSErr{noErr});
        });
    EXPECT_EQ(allocations, 4u);
  }
}

TEST(TextConversions, KnowTheirTypes) {
  for (const DescType type :
       {typeChar, typeCString, typePString, typeEncodedString, typeUnicodeText,
        typeStyledUnicodeText, typeUTF16ExternalRepresentation, typeUTF8Text}) {
    EXPECT_TRUE(platform::appleevents::isText(type));
  }
  for (const DescType type : {typeType, typeNull, typeAEList}) {
    EXPECT_FALSE(platform::appleevents::isText(type));
  }
}

}  // namespace
