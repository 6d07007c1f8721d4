// Licence: MIT, see LICENSE.
// Notices where nobody is there to see them.
#include <CarbonCore/MacErrors.h>
#include <CoreFoundation/CFRunLoop.h>
#include <HIToolbox/Notification.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "tests/support/LogListener.h"
#include "tests/support/PrivateRoot.h"

namespace {

#if __SIZEOF_POINTER__ == 4
static_assert(sizeof(NMRec) == 36);
#endif
static_assert(offsetof(NMRec, qType) == sizeof(void*));
static_assert(offsetof(NMRec, nmPrivate) == sizeof(void*) + 4);
static_assert(offsetof(NMRec, nmIcon) == sizeof(void*) + 12);

std::vector<NMRecPtr> gResponses;

void recordResponse(NMRecPtr record) { gResponses.push_back(record); }

struct Notice {
  explicit Notice(const char* text, NMUPP response = NewNMUPP(recordResponse)) {
    string[0] = static_cast<unsigned char>(std::strlen(text));
    std::memcpy(string + 1, text, string[0]);
    record.qType = nmType;
    record.nmStr = string;
    record.nmResp = response;
  }
  ~Notice() { NMRemove(&record); }

  Str255 string;
  NMRec record{};
};

/// Serves what waits in the main loop.
void runLoop() {
  while (CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 1) == kCFRunLoopRunHandledSource) {
  }
}

class NoticeWithoutAUser : public testing::Test {
 protected:
  NoticeWithoutAUser() {
    setenv("QRL_UI", "none", 1);
    gResponses.clear();
  }
  ~NoticeWithoutAUser() override { runLoop(); }

  tests::PrivateRoot root;
  tests::LogListener log{root.path()};
};

TEST_F(NoticeWithoutAUser, IsLoggedAndItsResponseCalledFromTheMainLoop) {
  Notice notice("Something happened");
  EXPECT_EQ(NMInstall(&notice.record), noErr);
  EXPECT_EQ(log.readLine(), "notice: Something happened");
  EXPECT_TRUE(gResponses.empty());
  runLoop();
  EXPECT_EQ(gResponses, std::vector<NMRecPtr>{&notice.record});
  runLoop();
  EXPECT_EQ(gResponses.size(), 1u);
}

TEST_F(NoticeWithoutAUser, QueuesBehindOthersInOrder) {
  Notice first("one"), second("two"), third("three");
  for (Notice* notice : {&first, &second, &third}) EXPECT_EQ(NMInstall(&notice->record), noErr);
  EXPECT_EQ(log.readLine(), "notice: one");
  EXPECT_EQ(log.readLine(), "notice: two");
  EXPECT_EQ(log.readLine(), "notice: three");
  runLoop();
  EXPECT_EQ(gResponses, (std::vector<NMRecPtr>{&first.record, &second.record, &third.record}));
}

TEST_F(NoticeWithoutAUser, OfAnotherTypeIsRefused) {
  Notice notice("x");
  notice.record.qType = 7;
  EXPECT_EQ(NMInstall(&notice.record), nmTypErr);
  EXPECT_EQ(NMRemove(&notice.record), nmTypErr);
  EXPECT_EQ(NMInstall(nullptr), nmTypErr);
  EXPECT_EQ(NMRemove(nullptr), nmTypErr);
  EXPECT_TRUE(log.isQuiet());
}

TEST_F(NoticeWithoutAUser, ThatIsRemovedGetsNoResponse) {
  Notice kept("kept"), removed("removed");
  NMInstall(&removed.record);
  NMInstall(&kept.record);
  EXPECT_EQ(NMRemove(&removed.record), noErr);
  EXPECT_EQ(NMRemove(&removed.record), qErr);
  runLoop();
  EXPECT_EQ(gResponses, std::vector<NMRecPtr>{&kept.record});
}

TEST_F(NoticeWithoutAUser, StaysInstalledAfterItsResponse) {
  Notice notice("x");
  NMInstall(&notice.record);
  runLoop();
  EXPECT_EQ(NMRemove(&notice.record), noErr);
  EXPECT_EQ(NMRemove(&notice.record), qErr);
}

TEST_F(NoticeWithoutAUser, IsPostedAgainWhenInstalledAgain) {
  Notice notice("again");
  NMInstall(&notice.record);
  EXPECT_EQ(NMInstall(&notice.record), noErr);  // not over yet: no effect
  EXPECT_EQ(log.readLine(), "notice: again");
  EXPECT_TRUE(log.isQuiet());
  runLoop();
  EXPECT_EQ(NMInstall(&notice.record), noErr);
  EXPECT_EQ(log.readLine(), "notice: again");
  runLoop();
  EXPECT_EQ(gResponses.size(), 2u);
}

TEST_F(NoticeWithoutAUser, MayBeRemovedOrInstalledByItsResponse) {
  Notice once("once", [](NMRecPtr record) {
    recordResponse(record);
    EXPECT_EQ(NMRemove(record), noErr);
  });
  NMInstall(&once.record);
  runLoop();
  EXPECT_EQ(NMRemove(&once.record), qErr);
  Notice twice("twice", [](NMRecPtr record) {
    recordResponse(record);
    if (gResponses.size() < 3) NMInstall(record);
  });
  NMInstall(&twice.record);
  runLoop();
  EXPECT_EQ(gResponses.size(), 3u);
}

TEST_F(NoticeWithoutAUser, WithoutAResponseIsOver) {
  Notice notice("quiet", nullptr);
  NMInstall(&notice.record);
  EXPECT_EQ(log.readLine(), "notice: quiet");
  runLoop();
  EXPECT_EQ(NMRemove(&notice.record), noErr);
}

TEST_F(NoticeWithoutAUser, WithTheResponseMinusOneIsRemoved) {
  Notice notice("gone", reinterpret_cast<NMUPP>(static_cast<std::intptr_t>(-1)));
  NMInstall(&notice.record);
  EXPECT_EQ(log.readLine(), "notice: gone");
  runLoop();
  EXPECT_EQ(NMRemove(&notice.record), qErr);
}

TEST_F(NoticeWithoutAUser, WithoutATextShowsNothing) {
  Notice notice("");
  NMInstall(&notice.record);
  Notice null("");
  null.record.nmStr = nullptr;
  NMInstall(&null.record);
  runLoop();
  EXPECT_TRUE(log.isQuiet());
  EXPECT_EQ(gResponses, (std::vector<NMRecPtr>{&notice.record, &null.record}));
}

TEST_F(NoticeWithoutAUser, HasItsTextCopied) {
  Notice notice("before");
  NMInstall(&notice.record);
  std::memcpy(notice.string + 1, "after!", 6);
  EXPECT_EQ(log.readLine(), "notice: before");
}

TEST_F(NoticeWithoutAUser, OfAnotherThreadIsAnsweredOnTheMainLoop) {
  static std::thread::id responder;
  Notice notice("from afar", [](NMRecPtr) { responder = std::this_thread::get_id(); });
  std::thread([&] { NMInstall(&notice.record); }).join();
  runLoop();
  EXPECT_EQ(responder, std::this_thread::get_id());
}

TEST(NMUPP, CallsItsProcedure) {
  gResponses.clear();
  NMUPP procedure = NewNMUPP(recordResponse);
  NMRec record{};
  InvokeNMUPP(&record, procedure);
  DisposeNMUPP(procedure);
  EXPECT_EQ(gResponses, std::vector<NMRecPtr>{&record});
}

}  // namespace
