// Licence: MIT, see LICENSE.
#include "platform/userinterface/DesktopHelper.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/platform/resources/SampleFile.h"
#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::userinterface;
using Arguments = std::vector<std::string>;

const AlertContents kNotice{"Title", "Text", {{1, "OK"}}, 1, 0};
const AlertContents kQuestion{"Title", "-text", {{1, "Yes"}, {3, "No, never"}}, 3, 0};

const DesktopHelper& helper(const std::string& program) {
  for (const DesktopHelper& candidate : desktopHelpers()) {
    if (program == candidate.program) return candidate;
  }
  throw std::runtime_error("no such helper");
}

TEST(DesktopHelper, IsToldTheAlertOfOneButton) {
  EXPECT_EQ(helper("zenity").arguments(kNotice),
            (Arguments{"--info", "--no-markup", "--title=Title", "--text=Text", "--ok-label=OK"}));
  EXPECT_EQ(helper("kdialog").arguments(kNotice),
            (Arguments{"--title=Title", "--ok-label=OK", "--msgbox=Text"}));
  EXPECT_EQ(
      helper("xmessage").arguments(kNotice),
      (Arguments{"-center", "-title", "Title", "-default", "OK", "-buttons", "OK:101", " Text"}));
}

TEST(DesktopHelper, IsToldTheAlertOfTwoButtons) {
  EXPECT_EQ(helper("zenity").arguments(kQuestion),
            (Arguments{"--question", "--no-markup", "--title=Title", "--text=-text",
                       "--ok-label=Yes", "--cancel-label=No, never", "--default-cancel"}));
  EXPECT_EQ(
      helper("kdialog").arguments(kQuestion),
      (Arguments{"--title=Title", "--yes-label=Yes", "--no-label=No, never", "--yesno=-text"}));
  EXPECT_EQ(helper("xmessage").arguments(kQuestion),
            (Arguments{"-center", "-title", "Title", "-default", "No  never", "-buttons",
                       "Yes:101,No  never:102", " -text"}));
}

TEST(DesktopHelper, TellsTheItemByItsStatus) {
  for (const char* program : {"zenity", "kdialog"}) {
    EXPECT_EQ(helper(program).itemFor(kNotice, 0), 1) << program;
    EXPECT_EQ(helper(program).itemFor(kNotice, 1), Presenter::kNotShown) << program;
    EXPECT_EQ(helper(program).itemFor(kQuestion, 0), 1) << program;
    EXPECT_EQ(helper(program).itemFor(kQuestion, 1), 3) << program;
    EXPECT_EQ(helper(program).itemFor(kQuestion, 255), Presenter::kNotShown) << program;
  }
  EXPECT_EQ(helper("xmessage").itemFor(kQuestion, 101), 1);
  EXPECT_EQ(helper("xmessage").itemFor(kQuestion, 102), 3);
  for (int status : {0, 1, 100, 103}) {
    EXPECT_EQ(helper("xmessage").itemFor(kQuestion, status), Presenter::kNotShown) << status;
  }
}

TEST(DesktopHelper, IsToldATextThatLooksLikeMarkupAsItStands) {
  const AlertContents odd{"<T>", "a <b>b</b> &amp;\nc", {{1, "R&D"}, {2, "_So"}}, 1, 0};
  EXPECT_EQ(helper("zenity").arguments(odd),
            (Arguments{"--question", "--no-markup", "--title=<T>", "--text=a <b>b</b> &amp;\nc",
                       "--ok-label=R&D", "--cancel-label=_So"}));
  EXPECT_EQ(helper("kdialog").arguments(odd),
            (Arguments{"--title=<T>", "--yes-label=R&&D", "--no-label=_So",
                       "--yesno=<qt>a &lt;b&gt;b&lt;/b&gt; &amp;amp;<br>c</qt>"}));
}

TEST(DesktopHelper, ThatDoesNotBreakLinesIsToldThemBroken) {
  AlertContents alert = kNotice;
  const std::string word(19, 'w');
  const std::string accents = "\xC3\xA4\xC3\xA4";
  alert.text = word + " " + word + " " + accents + "\n\nlast " + std::string(50, 'x');
  EXPECT_EQ(helper("xmessage").arguments(alert).back(),
            " " + word + " " + word + "\n " + accents + "\n\n last\n " + std::string(50, 'x'));
  alert.text = word + " " + word.substr(3) + " " + accents;
  EXPECT_EQ(helper("xmessage").arguments(alert).back(), " " + alert.text);
}

TEST(DesktopHelper, IsToldATextWithoutTagsUnchanged) {
  const AlertContents plain{"T", "a &amp; b", {{1, "OK"}}, 1, 0};
  EXPECT_EQ(helper("kdialog").arguments(plain).back(), "--msgbox=a &amp; b");
}

class InstalledHelpers : public testing::Test {
 protected:
  InstalledHelpers() : earlierPath(std::getenv("PATH")) { setenv("PATH", root.path().c_str(), 1); }
  ~InstalledHelpers() override { setenv("PATH", earlierPath.c_str(), 1); }

  void install(const std::string& name) {
    tests::writeFile(root.path() / name, tests::bytesOf("#!/bin/sh\n"));
    std::filesystem::permissions(root.path() / name, std::filesystem::perms::owner_all);
  }
  static std::string found(const AlertContents& alert, Desktop desktop) {
    auto helper = findHelper(alert, desktop);
    return helper ? std::string(helper->helper->program) : "none";
  }

  tests::PrivateRoot root;
  std::string earlierPath;
};

TEST_F(InstalledHelpers, ArePreferredInTheirOrder) {
  const Desktop desktop{true, false};
  EXPECT_EQ(found(kNotice, desktop), "none");
  install("xmessage");
  EXPECT_EQ(found(kNotice, desktop), "xmessage");
  install("kdialog");
  EXPECT_EQ(found(kNotice, desktop), "kdialog");
  install("zenity");
  EXPECT_EQ(found(kNotice, desktop), "zenity");
  EXPECT_EQ(findHelper(kNotice, desktop)->path, root.path() / "zenity");
}

TEST_F(InstalledHelpers, OfTheDesktopAtHandGoFirst) {
  install("zenity");
  install("kdialog");
  EXPECT_EQ(found(kNotice, {true, false, true}), "kdialog");
  AlertContents three = kQuestion;
  three.buttons.push_back({4, "Maybe"});
  install("xmessage");
  EXPECT_EQ(found(three, {true, false, true}), "xmessage");
}

TEST_F(InstalledHelpers, ShowNoticesUntilTheyAreDismissed) {
  const Desktop desktop{true, false};
  EXPECT_FALSE(noticeCommand({"x", false}, desktop));
  install("notify-send");
  EXPECT_FALSE(noticeCommand({"x", false}, Desktop()));
  const std::string program = root.path() / "notify-send";
  EXPECT_EQ(noticeCommand({"-x <b>\nmore <i> &\n", false}, desktop),
            (Arguments{program, "--wait", "--urgency=critical", "--expire-time=0",
                       "--app-name=test_platform_userinterface", "--", "-x <b>",
                       "more &lt;i&gt; &amp;\n"}));
  EXPECT_EQ((*noticeCommand({"x", true}, desktop))[5], "--hint=string:sound-name:bell");
}

TEST(CurrentDesktop, IsToldByTheEnvironment) {
  const auto desktopOf = [](const char* names) {
    setenv("XDG_CURRENT_DESKTOP", names, 1);
    const bool isKDE = currentDesktop().isKDE;
    unsetenv("XDG_CURRENT_DESKTOP");
    return isKDE;
  };
  EXPECT_TRUE(desktopOf("KDE"));
  EXPECT_TRUE(desktopOf("ubuntu:KDE"));
  EXPECT_FALSE(desktopOf("GNOME"));
  EXPECT_FALSE(desktopOf("notKDE"));
  EXPECT_FALSE(currentDesktop().isKDE);
}

TEST_F(InstalledHelpers, NeedADesktopThatTheyWorkOn) {
  install("xmessage");
  EXPECT_EQ(found(kNotice, {false, false}), "none");
  EXPECT_EQ(found(kNotice, {false, true}), "none");
  install("zenity");
  EXPECT_EQ(found(kNotice, {false, true}), "zenity");
}

TEST_F(InstalledHelpers, AreTakenOnlyForAsManyButtonsAsTheyShow) {
  install("zenity");
  AlertContents three = kQuestion;
  three.buttons.push_back({4, "Maybe"});
  EXPECT_EQ(found(three, {true, false}), "none");
  install("xmessage");
  EXPECT_EQ(found(three, {true, false}), "xmessage");
}

}  // namespace
