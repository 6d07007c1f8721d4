// Licence: MIT, see LICENSE.
#include "tools/qrl/Building.h"

#include <AE/AppleEvents.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/qrl/ExitStatus.h"
#include "tools/qrl/Reply.h"

namespace {

using testing::ElementsAreArray;

class BuiltEvent : public testing::Test {
 protected:
  BuiltEvent() {
    EXPECT_EQ(AECreateAppleEvent(kCoreEventClass, kAEAnswer, nullptr, kAutoGenerateReturnID,
                                 kAnyTransactionID, &event),
              noErr);
  }
  ~BuiltEvent() override { AEDisposeDesc(&event); }

  void put(const std::vector<std::string>& lines) {
    std::vector<qrl::Parameter> parameters;
    for (const std::string& line : lines) parameters.push_back(qrl::parseParameter(line));
    ASSERT_EQ(qrl::putParameters(event, parameters), noErr);
  }

  std::string complaint(const std::vector<std::string>& lines) {
    try {
      put(lines);
    } catch (const qrl::UsageError& error) {
      return error.what();
    }
    return "none";
  }

  AppleEvent event;
};

TEST_F(BuiltEvent, PrintsWhatWasPut) {
  const std::vector<std::string> lines = {"----=TEXT:hello",
                                          "numb=long:1,2,3",
                                          "null=null:",
                                          "list[1]=shor:1",
                                          "list[2]=utf8:\u2603",
                                          "reco.name=TEXT:x",
                                          "reco.deep[1].code=enum:yes ",
                                          "reco.deep[1].none=list:",
                                          "void=reco:"};
  put(lines);
  EXPECT_THAT(qrl::linesOf(event), ElementsAreArray(lines));
}

TEST_F(BuiltEvent, GathersItemsWhereverTheyStand) {
  put({"list[1]=long:1", "text=TEXT:between", "list[2]=long:2"});
  EXPECT_THAT(qrl::linesOf(event),
              ElementsAreArray({"list[1]=long:1", "list[2]=long:2", "text=TEXT:between"}));
}

TEST_F(BuiltEvent, KeepsTheLastOfTwoForOnePlace) {
  put({"numb=long:1", "list[1]=long:1", "numb=TEXT:two", "list[1]=TEXT:two"});
  EXPECT_THAT(qrl::linesOf(event), ElementsAreArray({"numb=TEXT:two", "list[1]=TEXT:two"}));
}

TEST_F(BuiltEvent, FillsAListThatWasSaidToBeEmpty) {
  put({"list=list:", "list[1]=long:1", "reco=record:", "reco.name=TEXT:x"});
  EXPECT_THAT(qrl::linesOf(event), ElementsAreArray({"list[1]=long:1", "reco.name=TEXT:x"}));
}

TEST_F(BuiltEvent, RefusesWhatCannotBePutTogether) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"list[2]=long:1"}, "parameter list: the item before [2] is missing"},
      {{"list[1]=long:1", "list[3]=long:1"}, "parameter list: the item before [3] is missing"},
      {{"list[1]=long:1", "list.name=long:1"},
       "parameter list: .name is given, and something else in its place"},
      {{"list=long:1", "list[1]=long:1"},
       "parameter list: [1] is given, and something else in its place"},
      {{"list[1]=long:1", "list=long:1"},
       "parameter list: a value is given, and items in its place"},
      {{"list=list:00"}, "parameter list: -1702 (errAECorruptData)"},
  };
  for (const auto& [lines, why] : cases) EXPECT_EQ(complaint(lines), why);
}

}  // namespace
