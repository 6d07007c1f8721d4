// Licence: MIT, see LICENSE.
#include "platform/corefoundation/Base64.h"

#include <gtest/gtest.h>

namespace tests::base64 {

using platform::corefoundation::appendBase64;
using platform::corefoundation::parseBase64;

namespace {

std::string encoded(const std::string& text) {
  std::string made;
  appendBase64(made, {reinterpret_cast<const UInt8*>(text.data()), text.size()});
  return made;
}

std::string decoded(const std::string& text) {
  std::vector<UInt8> bytes;
  const std::size_t end = parseBase64(text, bytes);
  return end == text.size() ? std::string(bytes.begin(), bytes.end())
                            : "fault at " + std::to_string(end);
}

}  // namespace

TEST(Base64, WritesThreeBytesAsFourLetters) {
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("f"), "Zg==");
  EXPECT_EQ(encoded("fo"), "Zm8=");
  EXPECT_EQ(encoded("foo"), "Zm9v");
  EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
  EXPECT_EQ(encoded("\xff\xef\xbe"), "/+++");
}

TEST(Base64, ReadsWhatItWrites) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  for (std::size_t length = 0; length <= all.size(); ++length) {
    EXPECT_EQ(decoded(encoded(all.substr(0, length))), all.substr(0, length));
  }
}

TEST(Base64, ReadsOverBlanksAndWithoutPadding) {
  EXPECT_EQ(decoded(" Zm9\n\tvYg\r\n= = "), "foob");
  EXPECT_EQ(decoded("Zm9vYg"), "foob");
  EXPECT_EQ(decoded("Zm9vYmE"), "fooba");
}

TEST(Base64, SaysWhereItIsWrong) {
  EXPECT_EQ(decoded("Zm9*"), "fault at 3");
  EXPECT_EQ(decoded("Zg==Zg=="), "fault at 4");
  EXPECT_EQ(decoded("="), "fault at 0");
  EXPECT_EQ(decoded("Z==="), "fault at 1");
  EXPECT_EQ(decoded("Zg==="), "fault at 4");
  EXPECT_EQ(decoded("Zm9vY"), "fault at 4");
  EXPECT_EQ(decoded("Zm9v\xc3\xa9"), "fault at 4");
}

}  // namespace tests::base64
