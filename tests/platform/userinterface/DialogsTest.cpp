// Licence: MIT, see LICENSE.
// Alerts where nobody is there to answer, and alerts that cannot be shown.
#include <CarbonCore/Resources.h>
#include <HIToolbox/Dialogs.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/resources/ResourceFiles.h"
#include "tests/platform/userinterface/AlertFile.h"
#include "tests/support/LogListener.h"
#include "tests/support/PrivateRoot.h"

namespace {

class AlertWithoutAUser : public testing::Test {
 protected:
  AlertWithoutAUser() {
    setenv("QRL_UI", "none", 1);
    const std::string path = tests::writeAlertFile(root.path());
    EXPECT_EQ(platform::resources::openResourceFile(path, file), 0);
  }
  ~AlertWithoutAUser() override {
    SetResLoad(true);
    CloseResFile(file);
  }

  tests::PrivateRoot root;
  tests::LogListener log{root.path()};
  SInt16 file = kResFileNotOpened;
};

TEST_F(AlertWithoutAUser, IsLoggedOnOneLineAndAnsweredWithItsDefault) {
  EXPECT_EQ(Alert(138, nullptr), 1);
  EXPECT_EQ(log.readLine(), "alert: The title: The text \xC3\xA4h [answered with \"OK\"]");
  EXPECT_TRUE(log.isQuiet());
}

TEST_F(AlertWithoutAUser, HasNoTitleWhenThereIsOneTextOnly) {
  EXPECT_EQ(Alert(139, nullptr), 1);
  EXPECT_EQ(log.readLine(), "alert: A question [answered with \"Yes\"]");
}

TEST_F(AlertWithoutAUser, DoesNotAskTheFilter) {
  auto filter = [](DialogRef, EventRecord*, DialogItemIndex* item) -> Boolean {
    *item = 77;
    return 1;
  };
  EXPECT_EQ(Alert(138, filter), 1);
}

TEST_F(AlertWithoutAUser, FollowsItsStages) {
  EXPECT_EQ(Alert(138, nullptr), 1);
  EXPECT_TRUE(log.readLine());
  EXPECT_EQ(Alert(140, nullptr), -1);  // the first time in a row draws no box
  EXPECT_EQ(Alert(140, nullptr), 2);
  EXPECT_EQ(log.readLine(), "alert: A question [answered with \"No\"]");
  EXPECT_EQ(Alert(140, nullptr), 2);
  EXPECT_TRUE(log.readLine());
  EXPECT_EQ(Alert(140, nullptr), -1);  // nor does the fourth
  EXPECT_EQ(Alert(140, nullptr), -1);  // which is the last stage
  EXPECT_TRUE(log.isQuiet());
}

TEST_F(AlertWithoutAUser, BeginsItsStagesAgainAfterAnotherAlert) {
  EXPECT_EQ(Alert(138, nullptr), 1);
  EXPECT_EQ(Alert(140, nullptr), -1);
  EXPECT_EQ(Alert(140, nullptr), 2);
  EXPECT_EQ(Alert(138, nullptr), 1);
  EXPECT_EQ(Alert(140, nullptr), -1);
}

TEST_F(AlertWithoutAUser, CannotBeShownWhenAResourceIsMissingOrDamaged) {
  for (SInt16 alert : {1, 141, 142, 143}) {
    EXPECT_EQ(Alert(alert, nullptr), -1) << alert;
    EXPECT_TRUE(log.isQuiet()) << alert;
  }
}

TEST_F(AlertWithoutAUser, IsFoundAlsoWhileLoadingIsOff) {
  SetResLoad(false);
  EXPECT_EQ(Alert(138, nullptr), 1);
}

}  // namespace
