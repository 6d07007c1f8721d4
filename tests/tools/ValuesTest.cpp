// Licence: MIT, see LICENSE.
#include "tools/qrl/Values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <nlohmann/json.hpp>

#include "tools/qrl/ExitStatus.h"

namespace {

using qrl::Parameter;
using qrl::parseParameter;
using qrl::parseSerialNumber;
using qrl::parseValue;
using qrl::UsageError;
using qrl::Value;

template <typename T>
std::string bytesOf(T value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string complaint(const std::string& parameter) {
  try {
    parseParameter(parameter);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "none";
}

// What is written, what it means in this machine's byte order, and how it is printed again.
struct Written {
  const char* text;
  Value value;
  const char* printed;
  friend void PrintTo(const Written& written, std::ostream* out) { *out << written.text; }
};

class WrittenValue : public testing::TestWithParam<Written> {};

TEST_P(WrittenValue, IsRead) { EXPECT_EQ(parseValue(GetParam().text), GetParam().value); }

TEST_P(WrittenValue, IsPrintedSoThatItReadsTheSame) {
  std::string printed = qrl::formatValue(GetParam().value);
  EXPECT_EQ(printed, GetParam().printed);
  EXPECT_EQ(parseValue(printed), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    WholeNumbers, WrittenValue,
    testing::Values(
        Written{"shor:-32768", {'shor', bytesOf(SInt16{-32768})}, "shor:-32768"},
        Written{"short:32767", {'shor', bytesOf(SInt16{32767})}, "shor:32767"},
        Written{"sint16:5", {'shor', bytesOf(SInt16{5})}, "shor:5"},
        Written{"long:-5", {'long', bytesOf(SInt32{-5})}, "long:-5"},
        Written{"sint32:2147483647", {'long', bytesOf(SInt32{2147483647})}, "long:2147483647"},
        Written{"comp:-9223372036854775808",
                {'comp', bytesOf(std::numeric_limits<SInt64>::min())},
                "comp:-9223372036854775808"},
        Written{"sint64:1", {'comp', bytesOf(SInt64{1})}, "comp:1"},
        Written{"uint32:4294967295", {'magn', bytesOf(UInt32{4294967295})}, "magn:4294967295"},
        Written{"magn:0", {'magn', bytesOf(UInt32{0})}, "magn:0"}));

INSTANTIATE_TEST_SUITE_P(
    OtherNumbers, WrittenValue,
    testing::Values(
        Written{"sing:0.1", {'sing', bytesOf(0.1f)}, "sing:0.1"},
        Written{"float:-2", {'sing', bytesOf(-2.0f)}, "sing:-2"},
        Written{"doub:0.1", {'doub', bytesOf(0.1)}, "doub:0.1"},
        Written{"double:-inf", {'doub', bytesOf(-HUGE_VAL)}, "doub:-inf"},
        Written{"psn :1:4711", {'psn ', bytesOf(UInt32{1}) + bytesOf(UInt32{4711})}, "psn :1:4711"},
        Written{"psn:4711", {'psn ', bytesOf(UInt32{0}) + bytesOf(UInt32{4711})}, "psn :0:4711"}));

INSTANTIATE_TEST_SUITE_P(
    UnsignedNumbers, WrittenValue,
    testing::Values(Written{"ushr:65535", {'ushr', bytesOf(UInt16{65535})}, "ushr:65535"},
                    Written{"uint16:7", {'ushr', bytesOf(UInt16{7})}, "ushr:7"},
                    Written{"uint64:18446744073709551615",
                            {'ucom', bytesOf(std::numeric_limits<UInt64>::max())},
                            "ucom:18446744073709551615"},
                    Written{"pid:4711", {'kpid', bytesOf(SInt32{4711})}, "kpid:4711"},
                    Written{"port:1283", {'port', bytesOf(UInt32{1283})}, "port:1283"},
                    Written{"ldt :-1", {'ldt ', bytesOf(SInt64{-1})}, "ldt :-1"}));

INSTANTIATE_TEST_SUITE_P(
    Arrays, WrittenValue,
    testing::Values(
        Written{"long:1,-2,3",
                {'long', bytesOf(SInt32{1}) + bytesOf(SInt32{-2}) + bytesOf(SInt32{3})},
                "long:1,-2,3"},
        Written{"QDpt:10,-20", {'QDpt', bytesOf(SInt16{10}) + bytesOf(SInt16{-20})}, "QDpt:10,-20"},
        Written{"bool:true,false", {'bool', std::string("\1\0", 2)}, "bool:true,false"},
        Written{"type:CmoN,QrlP",
                {'type', bytesOf(OSType{'CmoN'}) + bytesOf(OSType{'QrlP'})},
                "type:CmoN,QrlP"},
        Written{"type:a,b,", {'type', bytesOf(OSType{'a,b,'})}, "type:a,b,"},
        Written{"type#612c622c51726c50",
                {'type', bytesOf(OSType{'a,b,'}) + bytesOf(OSType{'QrlP'})},
                "type#612c622c51726c50"},
        Written{"psn:1:2,3",
                {'psn ',
                 bytesOf(UInt32{1}) + bytesOf(UInt32{2}) + bytesOf(UInt32{0}) + bytesOf(UInt32{3})},
                "psn :1:2,0:3"},
        Written{"long#", {'long', ""}, "long#"}));

INSTANTIATE_TEST_SUITE_P(
    Texts, WrittenValue,
    testing::Values(
        Written{"utf8:caf\u00e9 \u2603", {'utf8', "caf\u00e9 \u2603"}, "utf8:caf\u00e9 \u2603"},
        Written{"unicode:\u2603", {'utxt', bytesOf(UInt16{0x2603})}, "utxt:\u2603"},
        Written{"sutx:a", {'sutx', bytesOf(UInt16{'a'})}, "sutx:a"},
        Written{"ut16:a", {'ut16', std::string("\0a", 2)}, "ut16:a"},
        Written{"cstr:caf\u00e9", {'cstr', std::string("caf\x8e\0", 5)}, "cstr:caf\u00e9"},
        Written{"pstr:a,b", {'pstr', "\3a,b"}, "pstr:a,b"},
        Written{"encs:a", {'encs', std::string("\0\0\0\0a", 5)}, "encs:a"},
        Written{"utf8:", {'utf8', ""}, "utf8:"}, Written{"cstr#61", {'cstr', "a"}, "cstr#61"},
        Written{"utf8#ff", {'utf8', "\xff"}, "utf8#ff"},
        Written{"utf8#61c285", {'utf8', "a\u0085"}, "utf8#61c285"},
        Written{"utf8#e280ae", {'utf8', "\u202e"}, "utf8#e280ae"},
        Written{"utxt#000a", {'utxt', bytesOf(UInt16{'\n'})}, "utxt#000a"},
        Written{"pstr#056162", {'pstr', "\5ab"}, "pstr#056162"}));

INSTANTIATE_TEST_SUITE_P(
    Codes, WrittenValue,
    testing::Values(Written{"keyw:errn", {'keyw', bytesOf(OSType{'errn'})}, "keyw:errn"},
                    Written{"prop:pnam", {'prop', bytesOf(OSType{'pnam'})}, "prop:pnam"},
                    Written{"sign:Qrl1", {'sign', bytesOf(OSType{'Qrl1'})}, "sign:Qrl1"}));

INSTANTIATE_TEST_SUITE_P(
    NoNumbers, WrittenValue,
    testing::Values(Written{"bool:true", {'bool', std::string(1, 1)}, "bool:true"},
                    Written{"bool:false", {'bool', std::string(1, 0)}, "bool:false"},
                    Written{"bool#02", {'bool', std::string(1, 2)}, "bool#02"},
                    Written{"TEXT:hello", {'TEXT', "hello"}, "TEXT:hello"},
                    Written{"text:a:b=c#d", {'TEXT', "a:b=c#d"}, "TEXT:a:b=c#d"},
                    Written{"TEXT:", {'TEXT', ""}, "TEXT:"},
                    Written{"TEXT:caf\u00e9", {'TEXT', "caf\x8e"}, "TEXT:caf\u00e9"},
                    Written{"TEXT#610d", {'TEXT', "a\r"}, "TEXT#610d"},
                    Written{"type:CmoN", {'type', bytesOf(OSType{'CmoN'})}, "type:CmoN"},
                    Written{"enum:0x00000001", {'enum', bytesOf(OSType{1})}, "enum:0x00000001"}));

INSTANTIATE_TEST_SUITE_P(
    Bytes, WrittenValue,
    testing::Values(Written{"ABCD:00ff10", {'ABCD', std::string("\0\xff\x10", 3)}, "ABCD:00ff10"},
                    Written{"ABCD#0AfF", {'ABCD', "\n\xff"}, "ABCD:0aff"},
                    Written{"null:", {'null', ""}, "null:"},
                    Written{"a:b#:01", {'a:b#', "\1"}, "a:b#:01"},
                    Written{"0x74657874:01", {'text', "\1"}, "0x74657874:01"},
                    Written{"long#0102", {'long', "\1\2"}, "long#0102"},
                    Written{"psn #01", {'psn ', "\1"}, "psn #01"}));

TEST(Values, BytesOfANumberAreInTheOrderOfTheWire) {
  EXPECT_EQ(parseValue("long#fffffffb"), parseValue("long:-5"));
  EXPECT_EQ(parseValue("shor#0102"), parseValue("shor:258"));
  EXPECT_EQ(parseValue("doub#3ff0000000000000"), parseValue("doub:1"));
  EXPECT_EQ(parseValue("psn #0000000100000002"), parseValue("psn:1:2"));
}

TEST(Parameters, HaveAKeyBeforeTheFirstEqualsSignThatEndsACode) {
  Parameter wanted{'a=b=', {'TEXT', "x=y"}};
  EXPECT_EQ(parseParameter("a=b==TEXT:x=y"), wanted);
  EXPECT_EQ(parseParameter("0x613d623d=TEXT:x=y"), wanted);
}

TEST(Parameters, StepIntoListsAndRecords) {
  using To = qrl::Step::To;
  const Parameter item{'list', {'TEXT', "x"}, {{To::kItem, 2}}};
  EXPECT_EQ(parseParameter("list[2]=TEXT:x"), item);
  const Parameter deep{
      'reco', {'TEXT', "="}, {{To::kField, 'a.b['}, {To::kItem, 1}, {To::kField, 1}}};
  EXPECT_EQ(parseParameter("reco.a.b[[1].0x00000001=TEXT:="), deep);
  EXPECT_EQ(qrl::formatStep({To::kItem, 12}), "[12]");
  EXPECT_EQ(qrl::formatStep({To::kField, 'name'}), ".name");
}

struct Complaint {
  const char* parameter;
  const char* text;
  friend void PrintTo(const Complaint& wanted, std::ostream* out) { *out << wanted.parameter; }
};

class BadParameter : public testing::TestWithParam<Complaint> {};

TEST_P(BadParameter, IsRefusedInOneLine) {
  EXPECT_EQ(complaint(GetParam().parameter), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Form, BadParameter,
    testing::Values(Complaint{"", "\"\" is not KEY=TYPE:VALUE"},
                    Complaint{"abcd", "\"abcd\" is not KEY=TYPE:VALUE"},
                    Complaint{"abc=long:1", "\"abc\" is not a four-character code"},
                    Complaint{"abcd=long", "\"long\" is not a type followed by \":\" or \"#\""},
                    Complaint{"abcd=integer:1",
                              "\"integer\" is not a type followed by \":\" or \"#\""},
                    Complaint{"abcd=:1", "\"\" is not a type followed by \":\" or \"#\""}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, BadParameter,
    testing::Values(Complaint{"abcd=long:", "\"\" is not a number of this type"},
                    Complaint{"abcd=long:five", "\"five\" is not a number of this type"},
                    Complaint{"abcd=long:5x", "\"5x\" is not a number of this type"},
                    Complaint{"abcd=long: 5", "\" 5\" is not a number of this type"},
                    Complaint{"abcd=long:1.5", "\"1.5\" is not a number of this type"},
                    Complaint{"abcd=magn:-1", "\"-1\" is not a number of this type"},
                    Complaint{"abcd=short:32768", "32768 does not fit its type"},
                    Complaint{"abcd=long:-2147483649", "-2147483649 does not fit its type"},
                    Complaint{"abcd=magn:4294967296", "4294967296 does not fit its type"},
                    Complaint{"abcd=comp:9223372036854775808",
                              "9223372036854775808 does not fit its type"},
                    Complaint{"abcd=sing:1e39", "1e39 does not fit its type"},
                    Complaint{"abcd=doub:1e309", "1e309 does not fit its type"}));

INSTANTIATE_TEST_SUITE_P(
    Others, BadParameter,
    testing::Values(Complaint{"abcd=bool:yes", "\"yes\" is neither true nor false"},
                    Complaint{"abcd=type:abc", "\"abc\" is not a four-character code"},
                    Complaint{"abcd=TEXT:\u4e2d", "the text has characters that MacRoman lacks"},
                    Complaint{"abcd=TEXT:\xff", "the text has characters that MacRoman lacks"},
                    Complaint{"abcd=ABCD:0", "\"0\" is not bytes in hexadecimal"},
                    Complaint{"abcd=ABCD:zz", "\"zz\" is not bytes in hexadecimal"},
                    Complaint{"abcd=long:1,,2", "\"\" is not a number of this type"},
                    Complaint{"abcd=utf8:\xff", "the text cannot be had as utf8"},
                    Complaint{"abcd=cstr:\u4e2d", "the text cannot be had as cstr"},
                    Complaint{"abcd[0]=long:1", "\"abcd[0]\" is not a four-character code"},
                    Complaint{"abcd.abc=long:1", "\"abcd.abc\" is not a four-character code"},
                    Complaint{"abcd[x]=long:1", "\"abcd[x]\" is not a four-character code"},
                    Complaint{"abcd=psn:1:2:3", "\"2:3\" is not a number of this type"}));

TEST(SerialNumbers, AreTwoWordsOrTheLowOne) {
  EXPECT_EQ(parseSerialNumber("3:4711").highLongOfPSN, 3u);
  EXPECT_EQ(parseSerialNumber("3:4711").lowLongOfPSN, 4711u);
  EXPECT_EQ(parseSerialNumber("4294967295").highLongOfPSN, 0u);
  EXPECT_EQ(parseSerialNumber("4294967295").lowLongOfPSN, 4294967295u);
  EXPECT_THROW(parseSerialNumber("4294967296"), UsageError);
  EXPECT_THROW(parseSerialNumber(""), UsageError);
  EXPECT_THROW(parseSerialNumber("1:"), UsageError);
}

std::string json(const char* text) { return qrl::jsonOf(parseValue(text)).dump(); }

TEST(Json, SaysTypeAndValue) {
  EXPECT_EQ(json("long:-5"), R"({"type":"long","value":-5})");
  EXPECT_EQ(json("comp:9223372036854775807"), R"({"type":"comp","value":9223372036854775807})");
  EXPECT_EQ(json("doub:0.5"), R"({"type":"doub","value":0.5})");
  EXPECT_EQ(json("bool:true"), R"({"type":"bool","value":true})");
  EXPECT_EQ(json("TEXT#6109"), R"({"type":"TEXT","value":"a\t"})");
  EXPECT_EQ(json("type:CmoN"), R"({"type":"type","value":"CmoN"})");
  EXPECT_EQ(json("psn:1:2"), R"({"type":"psn ","value":"1:2"})");
}

TEST(Json, GivesArraysAndEveryText) {
  EXPECT_EQ(json("long:1,-2"), R"({"type":"long","value":[1,-2]})");
  EXPECT_EQ(json("enum:abcd,efgh"), R"({"type":"enum","value":["abcd","efgh"]})");
  EXPECT_EQ(json("utxt:\u2603"), "{\"type\":\"utxt\",\"value\":\"\u2603\"}");
  EXPECT_EQ(json("utf8#610a"), R"({"type":"utf8","value":"a\n"})");
  EXPECT_EQ(json("utf8#ff"), R"({"type":"utf8","hex":"ff"})");
  EXPECT_EQ(json("ucom:18446744073709551615"), R"({"type":"ucom","value":18446744073709551615})");
}

TEST(Json, GivesMereBytesInHexadecimal) {
  EXPECT_EQ(json("ABCD:00ff"), R"({"type":"ABCD","hex":"00ff"})");
  EXPECT_EQ(json("long#0102"), R"({"type":"long","hex":"0102"})");
}

TEST(Json, WritesNumbersThatItLacksAsText) {
  EXPECT_EQ(json("doub:inf"), R"({"type":"doub","value":"inf"})");
  EXPECT_EQ(json("sing:nan"), R"({"type":"sing","value":"nan"})");
}

}  // namespace
