// Licence: MIT, see LICENSE.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/qrl/Commands.h"
#include "tools/qrl/Help.h"

namespace {

using qrl::Parameter;
using qrl::parseCommandLine;
using testing::ElementsAre;
using testing::EndsWith;

using Arguments = std::vector<std::string>;

template <typename Command>
Command parsed(const Arguments& arguments) {
  return std::get<Command>(parseCommandLine(arguments));
}

TEST(CommandLine, ListsPorts) {
  EXPECT_FALSE(parsed<qrl::PortsCommand>({"ports"}).json);
  EXPECT_TRUE(parsed<qrl::PortsCommand>({"ports", "--json"}).json);
}

TEST(CommandLine, SendsToAPort) {
  auto send = parsed<qrl::SendCommand>({"send", "com.example.1.1", "QrlP", "Mcam"});
  EXPECT_EQ(send.port, "com.example.1.1");
  EXPECT_FALSE(send.process.has_value());
  EXPECT_EQ(send.eventClass, OSType{'QrlP'});
  EXPECT_EQ(send.eventID, OSType{'Mcam'});
  EXPECT_TRUE(send.parameters.empty());
  EXPECT_TRUE(send.wantsReply);
  EXPECT_EQ(send.timeout.count(), 60);
  EXPECT_FALSE(send.json);
}

TEST(CommandLine, SendsToAProcess) {
  auto send = parsed<qrl::SendCommand>({"send", "--process", "1:77", "aevt", "quit"});
  ASSERT_TRUE(send.process.has_value());
  EXPECT_EQ(send.process->highLongOfPSN, 1u);
  EXPECT_EQ(send.process->lowLongOfPSN, 77u);
  EXPECT_EQ(send.port, "");
  EXPECT_EQ(send.eventID, OSType{'quit'});
}

TEST(CommandLine, TakesParametersInTheirOrder) {
  auto send = parsed<qrl::SendCommand>({"send", "--param", "----=TEXT:-x", "p", "abcd", "efgh",
                                        "--param=numb=long:-5", "--no-reply", "--json", "--timeout",
                                        "2.5"});
  EXPECT_EQ(send.port, "p");
  EXPECT_THAT(send.parameters, ElementsAre(Parameter{'----', qrl::parseValue("TEXT:-x")},
                                           Parameter{'numb', qrl::parseValue("long:-5")}));
  EXPECT_FALSE(send.wantsReply);
  EXPECT_TRUE(send.json);
  EXPECT_EQ(send.timeout.count(), 2.5);
}

TEST(CommandLine, TakesCodesThatBeginWithADashBehindTwoDashes) {
  auto send = parsed<qrl::SendCommand>({"send", "--", "p", "-abc", "----"});
  EXPECT_EQ(send.eventClass, OSType{'-abc'});
  EXPECT_EQ(send.eventID, OSType{'----'});
}

TEST(CommandLine, QuitsAPort) {
  EXPECT_EQ(parsed<qrl::QuitCommand>({"quit", "p"}).port, "p");
  EXPECT_EQ(parsed<qrl::QuitCommand>({"quit", "p", "--timeout", "3"}).timeout.count(), 3);
}

TEST(CommandLine, WaitsForANameToComeOrToGo) {
  auto come = parsed<qrl::WaitCommand>({"wait", "p", "--timeout", "0"});
  EXPECT_EQ(come.name, "p");
  EXPECT_FALSE(come.gone);
  EXPECT_EQ(come.timeout.count(), 0);
  EXPECT_TRUE(parsed<qrl::WaitCommand>({"wait", "p", "--gone", "--timeout", "1"}).gone);
}

TEST(CommandLine, ReadsResources) {
  using Form = qrl::ResourcesCommand::Form;
  const auto list = parsed<qrl::ResourcesCommand>({"resources", "file"});
  EXPECT_EQ(list.file, "file");
  EXPECT_FALSE(list.type || list.id || list.json);
  EXPECT_EQ(list.form, Form::kList);
  const auto one = parsed<qrl::ResourcesCommand>(
      {"resources", "--hex", "--json", "file", "TEXT", "--", "-32768"});
  EXPECT_EQ(one.type, OSType{'TEXT'});
  EXPECT_EQ(one.id, -32768);
  EXPECT_EQ(one.form, Form::kHexadecimal);
  EXPECT_TRUE(one.json);
  EXPECT_EQ(parsed<qrl::ResourcesCommand>({"resources", "file", "--text"}).form, Form::kText);
}

TEST(CommandLine, TakesNamesOf127CharactersAndNoLonger) {
  std::string longest(127, 'n');
  EXPECT_EQ(parsed<qrl::QuitCommand>({"quit", longest}).port, longest);
  EXPECT_THROW(parseCommandLine({"quit", longest + 'n'}), qrl::UsageError);
  EXPECT_THROW(parseCommandLine({"quit", ""}), qrl::UsageError);
  EXPECT_THROW(parseCommandLine({"send", "", "abcd", "efgh"}), qrl::UsageError);
}

TEST(CommandLine, HelpsWhereverItIsAsked) {
  EXPECT_EQ(parsed<qrl::HelpCommand>({"--help"}).text, qrl::kHelp);
  EXPECT_EQ(parsed<qrl::HelpCommand>({"-h"}).text, qrl::kHelp);
  EXPECT_EQ(parsed<qrl::HelpCommand>({"send", "--help"}).text, qrl::kHelp);
  EXPECT_EQ(parsed<qrl::HelpCommand>({"--version"}).text, "qrl 1.1.0\n");
}

class BadCommandLine : public testing::TestWithParam<Arguments> {};

TEST_P(BadCommandLine, IsRefusedWithAReason) {
  try {
    parseCommandLine(GetParam());
    FAIL() << "accepted";
  } catch (const qrl::UsageError& error) {
    EXPECT_STRNE(error.what(), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Commands, BadCommandLine,
                         testing::Values(Arguments{}, Arguments{"fly"}, Arguments{"--fly"},
                                         Arguments{"ports", "extra"}, Arguments{"ports", "--fly"},
                                         Arguments{"ports", "quit", "p"}, Arguments{"quit"},
                                         Arguments{"quit", "p", "q"}, Arguments{"wait", "p"},
                                         Arguments{"wait", "--timeout", "1"},
                                         Arguments{"two\nlines"}));

INSTANTIATE_TEST_SUITE_P(
    Send, BadCommandLine,
    testing::Values(Arguments{"send"}, Arguments{"send", "p", "abcd"},
                    Arguments{"send", "p", "abcd", "efgh", "ijkl"},
                    Arguments{"send", "p", "abcde", "efgh"}, Arguments{"send", "p", "abcd", "ef"},
                    Arguments{"send", "--process", "1", "p", "abcd", "efgh"},
                    Arguments{"send", "--process", "x", "abcd", "efgh"},
                    Arguments{"send", "--process", "", "abcd", "efgh"},
                    Arguments{"send", "p", "abcd", "efgh", "--param"},
                    Arguments{"send", "p", "abcd", "efgh", "--param", "abcd=long:x"},
                    Arguments{"send", "p", "abcd", "efgh", "--param", ""}));

INSTANTIATE_TEST_SUITE_P(Resources, BadCommandLine,
                         testing::Values(Arguments{"resources"},
                                         Arguments{"resources", "f", "TEXTS"},
                                         Arguments{"resources", "f", "TEXT", "x"},
                                         Arguments{"resources", "f", "TEXT", "32768"},
                                         Arguments{"resources", "f", "TEXT", "1", "more"},
                                         Arguments{"resources", "f", "--hex", "--text"}));

INSTANTIATE_TEST_SUITE_P(Timeouts, BadCommandLine,
                         testing::Values(Arguments{"quit", "p", "--timeout", "soon"},
                                         Arguments{"quit", "p", "--timeout", "-1"},
                                         Arguments{"quit", "p", "--timeout", "1s"},
                                         Arguments{"quit", "p", "--timeout", "nan"},
                                         Arguments{"quit", "p", "--timeout", "inf"},
                                         Arguments{"quit", "p", "--timeout", "1000001"},
                                         Arguments{"quit", "p", "--timeout", ""},
                                         Arguments{"quit", "p", "--timeout"}));

TEST(CommandLine, PointsToTheHelp) {
  try {
    parseCommandLine({"ports", "--fly"});
    FAIL() << "accepted";
  } catch (const qrl::UsageError& error) {
    EXPECT_THAT(error.what(), EndsWith("--fly (see qrl --help)"));
  }
}

}  // namespace
