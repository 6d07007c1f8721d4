// Licence: MIT, see LICENSE.
#include "platform/host/SystemLog.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <regex>

#include "tests/support/LogListener.h"
#include "tests/support/PrivateRoot.h"

namespace {

using platform::host::LogLevel;

class SystemLog : public testing::Test {
 protected:
  tests::PrivateRoot root;
  tests::LogListener log{root.path()};
};

TEST_F(SystemLog, TakesLinesInTheFormThatItsReadersExpect) {
  platform::host::log(LogLevel::kWarning, "Something is odd");
  auto record = log.readRecord();
  ASSERT_TRUE(record);
  const std::regex form("<12>[A-Z][a-z]{2} [ 1-3][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} [^ ]+\\[" +
                        std::to_string(getpid()) + "\\]: Something is odd");
  EXPECT_TRUE(std::regex_match(*record, form)) << *record;
}

TEST_F(SystemLog, IsToldTheLevel) {
  const std::pair<LogLevel, const char*> levels[] = {{LogLevel::kError, "<11>"},
                                                     {LogLevel::kWarning, "<12>"},
                                                     {LogLevel::kNotice, "<13>"},
                                                     {LogLevel::kInfo, "<14>"}};
  for (const auto& [level, priority] : levels) {
    platform::host::log(level, "x");
    EXPECT_EQ(log.readRecord().value_or("").substr(0, 4), priority);
  }
}

TEST_F(SystemLog, GetsOneLineWhateverTheText) {
  using namespace std::string_view_literals;
  platform::host::log(LogLevel::kInfo, "a\nb\x1B[2J%s\0c\xC3\xA4"sv);
  EXPECT_EQ(log.readLine(), "a b [2J%s c\xC3\xA4");
  EXPECT_TRUE(log.isQuiet());
}

TEST_F(SystemLog, DoesNotHoldAProgramUpWhenNobodyReadsIt) {
  for (int i = 0; i < 2000; ++i) platform::host::log(LogLevel::kInfo, std::string(500, 'x'));
  EXPECT_EQ(log.readLine(), std::string(500, 'x'));
}

}  // namespace
