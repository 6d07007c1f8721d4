// Licence: MIT, see LICENSE.
// Alerts on a desktop whose helper is a script of the test's.
#include <CarbonCore/Resources.h>
#include <HIToolbox/Dialogs.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "platform/resources/ResourceFiles.h"
#include "tests/platform/userinterface/AlertFile.h"
#include "tests/support/LogListener.h"
#include "tests/support/PrivateRoot.h"

namespace {

class AlertOnADesktop : public testing::Test {
 protected:
  AlertOnADesktop() : earlierPath(std::getenv("PATH")) {
    setenv("QRL_UI", "desktop", 1);
    setenv("DISPLAY", ":77", 1);
    const std::string path = tests::writeAlertFile(root.path());
    EXPECT_EQ(platform::resources::openResourceFile(path, file), 0);
  }
  ~AlertOnADesktop() override {
    CloseResFile(file);
    setenv("PATH", earlierPath.c_str(), 1);
    unsetenv("DISPLAY");
    setenv("QRL_UI", "none", 1);
  }

  /// A zenity that does what the script says.
  void installHelper(const std::string& script) {
    const std::filesystem::path program = helper();
    tests::writeFile(program, tests::bytesOf("#!/bin/sh\n" + script));
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    setenv("PATH", program.parent_path().c_str(), 1);
  }

  std::string helper() const { return root.path() / "bin" / "zenity"; }

  tests::PrivateRoot root;
  tests::LogListener log{root.path()};
  std::string earlierPath;
  SInt16 file = kResFileNotOpened;
};

TEST_F(AlertOnADesktop, IsShownByAHelperWhoseStatusIsTheAnswer) {
  const std::string record = root.path() / "arguments";
  installHelper("echo \"$@\" > " + record + "\nexit 0\n");
  EXPECT_EQ(Alert(138, nullptr), 1);
  std::ifstream arguments(record);
  std::string line;
  std::getline(arguments, line);
  EXPECT_EQ(line, "--info --no-markup --title=The title --text=The");
  EXPECT_TRUE(log.isQuiet());
}

TEST_F(AlertOnADesktop, GoesToTheNextPresenterWhenNoWindowComesUp) {
  installHelper("exit 255\n");
  EXPECT_EQ(Alert(138, nullptr), 1);
  EXPECT_EQ(log.readLine(), helper() + " ended with 255 and has shown nothing");
  EXPECT_EQ(log.readLine(), "alert: The title: The text \xC3\xA4h [answered with \"OK\"]");
}

TEST_F(AlertOnADesktop, GoesToTheNextPresenterWhenTheHelperIsKilled) {
  installHelper("kill -KILL $$\n");
  EXPECT_EQ(Alert(138, nullptr), 1);
  EXPECT_EQ(log.readLine(), helper() + " did not end well and has shown nothing");
  EXPECT_EQ(log.readLine(), "alert: The title: The text \xC3\xA4h [answered with \"OK\"]");
}

TEST_F(AlertOnADesktop, GoesToTheNextPresenterWhenNoHelperIsInstalled) {
  setenv("PATH", root.path().c_str(), 1);
  EXPECT_EQ(Alert(138, nullptr), 1);
  EXPECT_EQ(log.readLine(), "alert: The title: The text \xC3\xA4h [answered with \"OK\"]");
}

TEST_F(AlertOnADesktop, GoesToTheNextPresenterWhenTheHelperCannotBeRun) {
  installHelper("");
  tests::writeFile(helper(), tests::bytesOf("#!/no/such/interpreter\n"));
  EXPECT_EQ(Alert(138, nullptr), 1);
  EXPECT_EQ(log.readLine(), helper() + " did not end well and has shown nothing");
  EXPECT_TRUE(log.readLine());
}

TEST_F(AlertOnADesktop, IsTakenDownWhenTheFilterEndsIt) {
  installHelper("exec /bin/sleep 1000\n");
  static int calls;
  calls = 0;
  auto filter = [](DialogRef, EventRecord* event, DialogItemIndex* item) -> Boolean {
    EXPECT_EQ(event->what, nullEvent);
    *item = 7;
    return ++calls == 1;
  };
  EXPECT_EQ(Alert(138, filter), 7);
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(log.isQuiet());
}

}  // namespace
