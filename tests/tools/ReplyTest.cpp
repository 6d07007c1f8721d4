// Licence: MIT, see LICENSE.
#include "tools/qrl/Reply.h"

#include <AE/AppleEvents.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tools/qrl/Values.h"

namespace {

using testing::ElementsAre;

class Reply : public testing::Test {
 protected:
  Reply() {
    EXPECT_EQ(AECreateAppleEvent(kCoreEventClass, kAEAnswer, nullptr, kAutoGenerateReturnID,
                                 kAnyTransactionID, &event),
              noErr);
  }
  ~Reply() override { AEDisposeDesc(&event); }

  void put(const char* text) {
    qrl::Parameter parameter = qrl::parseParameter(text);
    const std::string& bytes = parameter.value.bytes;
    ASSERT_EQ(AEPutParamPtr(&event, parameter.key, parameter.value.type, bytes.data(),
                            static_cast<Size>(bytes.size())),
              noErr);
  }

  // A list of 1 and a record of "name", under `key`.
  void putNested(AEKeyword key) {
    SInt32 one = 1;
    AEDescList list;
    AERecord record;
    ASSERT_EQ(AECreateList(nullptr, 0, false, &list), noErr);
    ASSERT_EQ(AECreateList(nullptr, 0, true, &record), noErr);
    ASSERT_EQ(AEPutKeyPtr(&record, 'name', typeChar, "x", 1), noErr);
    ASSERT_EQ(AEPutPtr(&list, 0, typeSInt32, &one, sizeof one), noErr);
    ASSERT_EQ(AEPutDesc(&list, 0, &record), noErr);
    ASSERT_EQ(AEPutParamDesc(&event, key, &list), noErr);
    AEDisposeDesc(&record);
    AEDisposeDesc(&list);
  }

  AppleEvent event;
};

TEST_F(Reply, WithoutParametersHasNoLines) {
  EXPECT_THAT(qrl::linesOf(event), ElementsAre());
  EXPECT_EQ(qrl::jsonOf(event).dump(), "[]");
}

TEST_F(Reply, HasOneLineAParameterAsItIsGiven) {
  put("----=TEXT:hello");
  put("numb=long:-5");
  put("byte=ABCD:00ff");
  EXPECT_THAT(qrl::linesOf(event),
              ElementsAre("----=TEXT:hello", "numb=long:-5", "byte=ABCD:00ff"));
}

TEST_F(Reply, LeavesOneParameterOut) {
  put("errn=long:-1708");
  put("errs=TEXT:no");
  EXPECT_THAT(qrl::linesOf(event, keyErrorNumber), ElementsAre("errs=TEXT:no"));
}

TEST_F(Reply, TellsTheItemsOfListsAndRecordsByTheirPlaces) {
  putNested('----');
  EXPECT_THAT(qrl::linesOf(event), ElementsAre("----[1]=long:1", "----[2].name=TEXT:x"));
}

TEST_F(Reply, IsAnArrayInJson) {
  put("numb=long:-5");
  putNested('----');
  EXPECT_EQ(qrl::jsonOf(event).dump(),
            R"([{"key":"numb","type":"long","value":-5},{"key":"----","type":"list","items":)"
            R"([{"type":"long","value":1},)"
            R"({"type":"reco","items":[{"key":"name","type":"TEXT","value":"x"}]}]}])");
}

}  // namespace
