// Licence: MIT, see LICENSE.
// What qrl prints and how it exits.
#include <gmock/gmock.h>
#include <signal.h>

#include <nlohmann/json.hpp>

#include "tests/integration/Programs.h"
#include "tools/qrl/Help.h"

namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using testing::HasSubstr;
using tests::Outcome;
using Words = std::vector<std::string>;

using tests::kEchoPort;

class Tool : public tests::Integration {};

TEST_F(Tool, HelpsOnStandardOutput) {
  Outcome outcome = qrl({"--help"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, qrl::kHelp);
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(Tool, HelpTellsEveryExitStatus) {
  for (const char* status :
       {"  0  ", "  1  ", "  2  ", "  65  ", "  66  ", "  69  ", "  76  ", "  124  "}) {
    EXPECT_THAT(qrl::kHelp, HasSubstr(status));
  }
}

class BadUse : public Tool, public testing::WithParamInterface<Words> {};

TEST_P(BadUse, GivesOneLineAndExitsWith2) {
  Outcome outcome = qrl(GetParam());
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.output, "");
  EXPECT_THAT(outcome.errors, testing::StartsWith("qrl: "));
  EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
  EXPECT_THAT(outcome.errors, testing::EndsWith("\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Table, BadUse,
    testing::Values(Words{}, Words{"fly"}, Words{"ports", "--fly"}, Words{"send", "-x"},
                    Words{"send", kEchoPort, "TesTs", "echo"},
                    Words{"send", kEchoPort, "TesT", "echo", "--param", "abcd=long:99999999999"},
                    Words{"send", kEchoPort, "TesT", "echo", "--param", "abcd=wrong:1"},
                    Words{"send", kEchoPort, "TesT", "echo", "--param", "two\nlines"},
                    Words{"two\nlines"}, Words{"wait", kEchoPort}));

TEST_F(Tool, ExitsWith69WhenNobodyHasTheName) {
  Outcome outcome = qrl({"send", kEchoPort, "TesT", "echo"});
  EXPECT_EQ(outcome.status, 69);
  EXPECT_EQ(outcome.errors, "qrl: there is no port com.example.echo.1.1\n");
  EXPECT_EQ(qrl({"quit", kEchoPort}).status, 69);
}

TEST_F(Tool, ExitsWith69WhenThereIsNoSuchProcess) {
  Outcome outcome = qrl({"send", "--process", "0:4000000000", "TesT", "echo"});
  EXPECT_EQ(outcome.status, 69);
  EXPECT_EQ(outcome.errors, "qrl: there is no process 0:4000000000\n");
}

TEST_F(Tool, PrintsErrorAndParametersOfAReplyApart) {
  Child server = startEchoServer(kEchoPort);
  Outcome outcome = qrl({"send", kEchoPort, "TesT", "fail"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "errs=TEXT:no luck\n");
  EXPECT_EQ(outcome.errors, "errn -600 (procNotFound)\n");
}

TEST_F(Tool, PrintsAReplyAsJson) {
  Child server = startEchoServer(kEchoPort);
  Outcome outcome = qrl({"send", kEchoPort, "TesT", "fail", "--json"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(json::parse(outcome.output), json::parse(R"({
    "parameters": [{"key": "errs", "type": "TEXT", "value": "no luck"},
                   {"key": "errn", "type": "long", "value": -600}],
    "error": {"code": -600, "name": "procNotFound"}})"));
}

TEST_F(Tool, PrintsTheItemsOfListsAndRecords) {
  Child server = startEchoServer(kEchoPort);
  EXPECT_EQ(qrl({"send", kEchoPort, "TesT", "list"}).output,
            "----[1]=TEXT:first\n----[2].numb=long:-2\n");
}

TEST_F(Tool, ExitsWith124WhenTheAnswerDoesNotComeInTime) {
  Child server = startEchoServer(kEchoPort);
  EXPECT_EQ(qrl({"send", kEchoPort, "TesT", "hold", "--timeout", "0.2"}).status, 124);
  EXPECT_EQ(
      qrl({"send", "--process", serialNumberOf(kEchoPort), "TesT", "hold", "--timeout", "0.2"})
          .status,
      124);
}

TEST_F(Tool, GetsALateAnswersSuccessorNotTheLateAnswer) {
  Child server = startEchoServer(kEchoPort);
  EXPECT_EQ(qrl({"send", kEchoPort, "TesT", "hold", "--timeout", "0.2"}).status, 124);
  EXPECT_EQ(server->readLine(), "holding");
  EXPECT_TRUE(server->writeLine("go on"));
  EXPECT_EQ(qrl({"send", kEchoPort, "TesT", "echo", "--param", "numb=long:7"}).output,
            "numb=long:7\n");
}

TEST_F(Tool, ListsNoPortsWhereThereAreNone) {
  EXPECT_EQ(qrl({"ports"}).output, "");
  EXPECT_EQ(json::parse(qrl({"ports", "--json"}).output), json::array());
}

TEST_F(Tool, ListsNamesWithTheirProcesses) {
  Child server = startEchoServer(kEchoPort);
  const std::string psn = serialNumberOf(kEchoPort);
  const std::string pid = std::to_string(server->pid());
  EXPECT_EQ(json::parse(qrl({"ports", "--json"}).output),
            (json{{{"name", kEchoPort}, {"pid", server->pid()}, {"psn", psn}}}));
  EXPECT_EQ(qrl({"ports"}).output, std::string(kEchoPort) + "  " + pid + "  " + psn + '\n');
}

TEST_F(Tool, DoesNotListADeadProcess) {
  Child server = startEchoServer(kEchoPort);
  server->signal(SIGKILL);
  EXPECT_EQ(server->wait(), -SIGKILL);
  EXPECT_EQ(qrl({"ports"}).output, "");
}

TEST_F(Tool, WaitsForANameToAppear) {
  Child waiting = startQrl({"wait", kEchoPort, "--timeout", "60"});
  Child server = startEchoServer(kEchoPort);
  EXPECT_EQ(waiting->wait(), 0);
}

TEST_F(Tool, WaitsForANameToGo) {
  Child server = startEchoServer(kEchoPort);
  Child waiting = startQrl({"wait", kEchoPort, "--gone", "--timeout", "60"});
  server->signal(SIGKILL);
  EXPECT_EQ(waiting->wait(), 0);
}

TEST_F(Tool, ExitsWith124WhenTheNameDoesNotComeOrGoInTime) {
  EXPECT_EQ(qrl({"wait", kEchoPort, "--timeout", "0.1"}).status, 124);
  EXPECT_EQ(qrl({"wait", kEchoPort, "--timeout", "0"}).status, 124);
  Child server = startEchoServer(kEchoPort);
  EXPECT_EQ(qrl({"wait", kEchoPort, "--timeout", "0"}).status, 0);
  EXPECT_EQ(qrl({"wait", kEchoPort, "--gone", "--timeout", "0.1"}).status, 124);
}

}  // namespace
