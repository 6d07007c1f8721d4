// Licence: MIT, see LICENSE.
#include "platform/userinterface/DisplayText.h"

#include <gtest/gtest.h>

namespace {

using platform::userinterface::displayText;

TEST(DisplayText, IsUTF8) {
  EXPECT_EQ(displayText("plain ~ text"), "plain ~ text");
  EXPECT_EQ(displayText("\x8A\xA5\xDB"),
            "\xC3\xA4\xE2\x80\xA2\xE2\x82\xAC");  // a umlaut, bullet, euro
  EXPECT_EQ(displayText(""), "");
}

TEST(DisplayText, HasLineFeedsBetweenLines) { EXPECT_EQ(displayText("a\rb\nc"), "a\nb\nc"); }

TEST(DisplayText, HasNoCharactersThatCommandATerminal) {
  using namespace std::string_view_literals;
  EXPECT_EQ(displayText("\x1B[2J\x07\t\x7F\x00|"sv), " [2J    |");
}

}  // namespace
