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

constexpr char kServer[] = "com.example.echo.1.1";

class Tool : public tests::Integration {};

TEST_F(Tool, HelpsOnStandardOutput) {
  Outcome outcome = qrl({"--help"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, qrl::kHelp);
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(Tool, HelpTellsEveryExitStatus) {
  for (const char* status : {"  0  ", "  1  ", "  2  ", "  69  ", "  76  ", "  124  "}) {
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
                    Words{"send", kServer, "TesTs", "echo"},
                    Words{"send", kServer, "TesT", "echo", "--param", "abcd=long:99999999999"},
                    Words{"send", kServer, "TesT", "echo", "--param", "abcd=wrong:1"},
                    Words{"send", kServer, "TesT", "echo", "--param", "two\nlines"},
                    Words{"two\nlines"}, Words{"wait", kServer}));

TEST_F(Tool, ExitsWith69WhenNobodyHasTheName) {
  Outcome outcome = qrl({"send", kServer, "TesT", "echo"});
  EXPECT_EQ(outcome.status, 69);
  EXPECT_EQ(outcome.errors, "qrl: there is no port com.example.echo.1.1\n");
  EXPECT_EQ(qrl({"quit", kServer}).status, 69);
}

TEST_F(Tool, ExitsWith69WhenThereIsNoSuchProcess) {
  Outcome outcome = qrl({"send", "--process", "0:4000000000", "TesT", "echo"});
  EXPECT_EQ(outcome.status, 69);
  EXPECT_EQ(outcome.errors, "qrl: there is no process 0:4000000000\n");
}

TEST_F(Tool, PrintsErrorAndParametersOfAReplyApart) {
  Child server = startEchoServer(kServer);
  Outcome outcome = qrl({"send", kServer, "TesT", "fail"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "errs=TEXT:no luck\n");
  EXPECT_EQ(outcome.errors, "errn -600 (procNotFound)\n");
}

TEST_F(Tool, PrintsAReplyAsJson) {
  Child server = startEchoServer(kServer);
  Outcome outcome = qrl({"send", kServer, "TesT", "fail", "--json"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(json::parse(outcome.output), json::parse(R"({
    "parameters": [{"key": "errs", "type": "TEXT", "value": "no luck"},
                   {"key": "errn", "type": "long", "value": -600}],
    "error": {"code": -600, "name": "procNotFound"}})"));
}

TEST_F(Tool, PrintsTheItemsOfListsAndRecords) {
  Child server = startEchoServer(kServer);
  EXPECT_EQ(qrl({"send", kServer, "TesT", "list"}).output,
            "----[1]=TEXT:first\n----[2].numb=long:-2\n");
}

TEST_F(Tool, ExitsWith124WhenTheAnswerDoesNotComeInTime) {
  Child server = startEchoServer(kServer);
  EXPECT_EQ(qrl({"send", kServer, "TesT", "hold", "--timeout", "0.2"}).status, 124);
  EXPECT_EQ(qrl({"send", "--process", serialNumberOf(kServer), "TesT", "hold", "--timeout", "0.2"})
                .status,
            124);
}

TEST_F(Tool, GetsALateAnswersSuccessorNotTheLateAnswer) {
  Child server = startEchoServer(kServer);
  EXPECT_EQ(qrl({"send", kServer, "TesT", "hold", "--timeout", "0.2"}).status, 124);
  EXPECT_EQ(server->readLine(), "holding");
  EXPECT_TRUE(server->writeLine("go on"));
  EXPECT_EQ(qrl({"send", kServer, "TesT", "echo", "--param", "numb=long:7"}).output,
            "numb=long:7\n");
}

TEST_F(Tool, ListsNoPortsWhereThereAreNone) {
  EXPECT_EQ(qrl({"ports"}).output, "");
  EXPECT_EQ(json::parse(qrl({"ports", "--json"}).output), json::array());
}

TEST_F(Tool, ListsNamesWithTheirProcesses) {
  Child server = startEchoServer(kServer);
  const std::string psn = serialNumberOf(kServer);
  const std::string pid = std::to_string(server->pid());
  EXPECT_EQ(json::parse(qrl({"ports", "--json"}).output),
            (json{{{"name", kServer}, {"pid", server->pid()}, {"psn", psn}}}));
  EXPECT_EQ(qrl({"ports"}).output, std::string(kServer) + "  " + pid + "  " + psn + '\n');
}

TEST_F(Tool, DoesNotListADeadProcess) {
  Child server = startEchoServer(kServer);
  server->signal(SIGKILL);
  EXPECT_EQ(server->wait(), -SIGKILL);
  EXPECT_EQ(qrl({"ports"}).output, "");
}

TEST_F(Tool, WaitsForANameToAppear) {
  Child waiting = startQrl({"wait", kServer, "--timeout", "60"});
  Child server = startEchoServer(kServer);
  EXPECT_EQ(waiting->wait(), 0);
}

TEST_F(Tool, WaitsForANameToGo) {
  Child server = startEchoServer(kServer);
  Child waiting = startQrl({"wait", kServer, "--gone", "--timeout", "60"});
  server->signal(SIGKILL);
  EXPECT_EQ(waiting->wait(), 0);
}

TEST_F(Tool, ExitsWith124WhenTheNameDoesNotComeOrGoInTime) {
  EXPECT_EQ(qrl({"wait", kServer, "--timeout", "0.1"}).status, 124);
  EXPECT_EQ(qrl({"wait", kServer, "--timeout", "0"}).status, 124);
  Child server = startEchoServer(kServer);
  EXPECT_EQ(qrl({"wait", kServer, "--timeout", "0"}).status, 0);
  EXPECT_EQ(qrl({"wait", kServer, "--gone", "--timeout", "0.1"}).status, 124);
}

}  // namespace
