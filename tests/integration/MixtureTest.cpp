// Licence: MIT, see LICENSE.
// A client and a server of two builds, which may differ in word size and byte order.
#include <signal.h>

#include "tests/integration/Programs.h"

namespace {

using tests::kAgentPort;
using tests::mixtures;
using tests::Outcome;
using Words = std::vector<std::string>;

using tests::kEchoPort;

// Numbers whose bytes all differ, so that any confusion of their order shows.
const char* const kParameters[] = {
    "shor=shor:-29041",
    "long=long:-1985229329",
    "comp=comp:-8526495043095935641",
    "magn=magn:4275878552",
    "sing=sing:3.1415927",
    "doub=doub:-2.718281828459045e-100",
    "bool=bool:true",
    "type=type:CmoN",
    "enum=enum:yes ",
    "psn_=psn :16909060:84281096",
    "TEXT=TEXT:any text",
    "ABCD=ABCD:0102030405060708",
};

class Mixture : public tests::Integration, public testing::WithParamInterface<tests::Mixture> {
 protected:
  Outcome send(const Words& words) {
    Words arguments = words;
    arguments.insert(arguments.begin(), "send");
    return qrl(arguments, *GetParam().client);
  }

  // Sends one of each type and looks at what arrives and at what comes back.
  void exchangeEveryType(tests::ChildProcess& server, Words words) {
    std::string all;
    for (const char* parameter : kParameters) {
      words.insert(words.end(), {"--param", parameter});
      all += parameter + std::string("\n");
    }
    Outcome outcome = send(words);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, all);
    for (const char* parameter : kParameters) EXPECT_EQ(server.readLine(), parameter);
    EXPECT_EQ(server.readLine(), "end");
  }
};

INSTANTIATE_TEST_SUITE_P(Of, Mixture, testing::ValuesIn(mixtures()), tests::nameOf);

TEST_P(Mixture, CarriesEveryTypeOverAPort) {
  Child server = startEchoServer(kEchoPort, *GetParam().server);
  exchangeEveryType(*server, {kEchoPort, "TesT", "echo"});
}

TEST_P(Mixture, CarriesEveryTypeAsAHighLevelEvent) {
  Child server = startEchoServer(kEchoPort, *GetParam().server);
  exchangeEveryType(*server, {"--process", serialNumberOf(kEchoPort), "TesT", "echo"});
}

TEST_P(Mixture, CarriesListsAndRecords) {
  Child server = startEchoServer(kEchoPort, *GetParam().server);
  EXPECT_EQ(send({kEchoPort, "TesT", "list"}).output, "----[1]=TEXT:first\n----[2].numb=long:-2\n");
}

TEST_P(Mixture, CarriesErrors) {
  Child agent = startAgent({}, *GetParam().server);
  Outcome outcome = send({kAgentPort, "abcd", "efgh"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "errn -1708 (errAEEventNotHandled)\n");
}

TEST_P(Mixture, GoesTheWholeRoadOfTheAlert) {
  Child agent = startAgent({}, *GetParam().server);
  EXPECT_EQ(send({kAgentPort, "QrlP", "Mcam"}).status, 0);
  EXPECT_EQ(agent->wait(), 0);
}

TEST_P(Mixture, GoesTheWholeRoadOfTheAlertAsAHighLevelEvent) {
  Child agent = startAgent({}, *GetParam().server);
  EXPECT_EQ(send({"--process", serialNumberOf(kAgentPort), "QrlP", "Mcam"}).status, 0);
  EXPECT_EQ(agent->wait(), 0);
}

TEST_P(Mixture, QuitsTheServer) {
  Child agent = startAgent({"-r"}, *GetParam().server);
  EXPECT_EQ(qrl({"quit", kAgentPort}, *GetParam().client).status, 0);
  EXPECT_EQ(agent->wait(), 0);
}

TEST_P(Mixture, LearnsAtOnceThatTheServerWentAway) {
  Child server = startEchoServer(kEchoPort, *GetParam().server);
  Child client = startQrl({"send", kEchoPort, "TesT", "hold"}, *GetParam().client);
  EXPECT_EQ(server->readLine(), "holding");
  server->signal(SIGKILL);
  EXPECT_EQ(client->wait(), 76);
}

TEST_P(Mixture, SeesTheOthersNames) {
  Child server = startEchoServer(kEchoPort, *GetParam().server);
  Outcome outcome = qrl({"ports"}, *GetParam().client);
  EXPECT_EQ(outcome.output, std::string(kEchoPort) + "  " + std::to_string(server->pid()) + "  " +
                                serialNumberOf(kEchoPort) + '\n');
}

}  // namespace
