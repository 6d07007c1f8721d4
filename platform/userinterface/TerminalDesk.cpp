// Licence: MIT, see LICENSE.
#include "platform/userinterface/TerminalDesk.h"

#include <algorithm>
#include <memory>
#include <system_error>
#include <thread>

namespace platform::userinterface {

using host::Terminal;

TerminalDesk& TerminalDesk::shared() {
  static TerminalDesk* desk = new TerminalDesk;
  return *desk;
}

std::uint32_t TerminalDesk::ask(Question question) {
  std::lock_guard lock(mutex);
  if (!serving && !startServing()) return 0;
  const std::uint32_t number = ++lastNumber;
  const Rank rank = question.rank;
  auto place = std::find_if(entries.begin(), entries.end(), [rank](const Entry& entry) {
    return rank == Rank::kAlert || entry.question.rank < rank;
  });
  entries.insert(place, {number, std::move(question)});
  wake->raise();
  return number;
}

bool TerminalDesk::startServing() {
  if (!wake) {
    auto made = host::WakeEvent::make();
    if (!made) return false;
    wake.emplace(std::move(*made));
  }
  auto terminal = Terminal::open();
  if (!terminal) return false;
  try {
    std::thread(&TerminalDesk::serve, this, std::move(*terminal)).detach();
  } catch (const std::system_error&) {
    return false;
  }
  serving = true;
  return true;
}

void TerminalDesk::withdraw(std::uint32_t number) {
  std::lock_guard lock(mutex);
  entries.remove_if([number](const Entry& entry) { return entry.number == number; });
  if (wake) wake->raise();
}

// The lock is held by whoever starts this, until there is a question.
void TerminalDesk::serve(Terminal terminal) {
  for (;;) {
    std::unique_lock lock(mutex);
    if (entries.empty()) {
      serving = false;
      shown = 0;
      return;
    }
    const std::string text = textToShow();
    lock.unlock();
    terminal.write(text);
    const Terminal::Input input = terminal.readLine(*wake);
    lock.lock();
    take(input);
  }
}

std::string TerminalDesk::textToShow() {
  const Entry& top = entries.front();
  if (shown == top.number) return {};
  shown = top.number;
  return top.question.text;
}

void TerminalDesk::take(const Terminal::Input& input) {
  switch (input.outcome) {
    case Terminal::Outcome::kWoken:
      wake->drain();
      return;
    case Terminal::Outcome::kGone:
      for (const Entry& entry : entries) entry.question.answer(std::nullopt);
      entries.clear();
      return;
    case Terminal::Outcome::kLine:
      // The line belongs to what the person saw, which may have been taken down or covered
      // meanwhile.
      if (entries.empty() || entries.front().number != shown) return;
      if (entries.front().question.answer(input.line)) {
        entries.pop_front();
      } else {
        shown = 0;
      }
  }
}

}  // namespace platform::userinterface
