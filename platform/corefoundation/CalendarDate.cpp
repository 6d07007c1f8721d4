// Licence: MIT, see LICENSE.
#include "platform/corefoundation/CalendarDate.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace platform::corefoundation {

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days kEpoch = std::chrono::year(2001) / 1 / 1;
constexpr sys_days kFirstDay = std::chrono::year(1) / 1 / 1;
constexpr sys_days kBehindLastDay = std::chrono::year(10000) / 1 / 1;
constexpr int kSecondsPerDay = 86400;

constexpr std::string_view kPattern = "0000-00-00T00:00:00Z";

constexpr bool isDecimal(char c) { return c >= '0' && c <= '9'; }

bool hasPattern(std::string_view text) {
  if (text.size() != kPattern.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kPattern[i] == '0' ? !isDecimal(text[i]) : text[i] != kPattern[i]) return false;
  }
  return true;
}

int number(std::string_view digits) {
  int value = 0;
  for (const char digit : digits) value = 10 * value + (digit - '0');
  return value;
}

}  // namespace

std::optional<CFAbsoluteTime> parseDate(std::string_view text) {
  if (!hasPattern(text)) return std::nullopt;
  const year_month_day day(std::chrono::year(number(text.substr(0, 4))),
                           std::chrono::month(static_cast<unsigned>(number(text.substr(5, 2)))),
                           std::chrono::day(static_cast<unsigned>(number(text.substr(8, 2)))));
  const int hour = number(text.substr(11, 2));
  const int minute = number(text.substr(14, 2));
  const int second = number(text.substr(17, 2));
  if (!day.ok() || sys_days(day) < kFirstDay || hour > 23 || minute > 59 || second > 59) {
    return std::nullopt;
  }
  const double days = static_cast<double>((sys_days(day) - kEpoch).count());
  return days * kSecondsPerDay + (hour * 60 + minute) * 60 + second;
}

std::optional<std::string> formatDate(CFAbsoluteTime at) {
  const double whole = std::floor(at);
  const double days = std::floor(whole / kSecondsPerDay);
  const double first = static_cast<double>((kFirstDay - kEpoch).count());
  const double behind = static_cast<double>((kBehindLastDay - kEpoch).count());
  if (!(days >= first && days < behind)) return std::nullopt;
  const year_month_day day(kEpoch + std::chrono::days(static_cast<int>(days)));
  const int seconds = static_cast<int>(whole - days * kSecondsPerDay);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                static_cast<unsigned>(day.day()), seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text.data();
}

}  // namespace platform::corefoundation
