// Licence: MIT, see LICENSE.
// Alerts and notices as text on the terminal, answered with Return or the number of a button.
#include <charconv>
#include <optional>

#include "platform/userinterface/Presenter.h"
#include "platform/userinterface/TerminalDesk.h"

namespace platform::userinterface {
namespace {

constexpr std::string_view kIndent = "  ";

std::string indented(const std::string& text) {
  std::string result(kIndent);
  for (char character : text) {
    result += character;
    if (character == '\n') result += kIndent;
  }
  return result + "\n";
}

/// The buttons by number, if there are several, and what to press.
std::string promptFor(const AlertContents& alert) {
  if (alert.buttons.size() == 1) {
    return std::string(kIndent) + "[" + alert.buttons[0].label + "] Press Return: ";
  }
  std::string prompt(kIndent);
  for (std::size_t i = 0; i < alert.buttons.size(); ++i) {
    const AlertContents::Button& button = alert.buttons[i];
    prompt += "[" + std::to_string(i + 1) + "] " + button.label;
    prompt += button.item == alert.defaultItem ? " (Return)  " : "  ";
  }
  return prompt + "Your choice: ";
}

std::string screenFor(const AlertContents& alert) {
  std::string screen(static_cast<std::size_t>(alert.sounds), '\a');
  screen += "\n";
  if (!alert.title.empty()) screen += indented(alert.title);
  if (!alert.text.empty()) screen += indented(alert.text);
  return screen + promptFor(alert);
}

/// The button that a line of input means, if it means one. Where there is one only, anything does.
std::optional<DialogItemIndex> choiceOf(const AlertContents& alert, std::string_view line) {
  while (!line.empty() && line.back() == ' ') line.remove_suffix(1);
  while (!line.empty() && line.front() == ' ') line.remove_prefix(1);
  if (line.empty() || alert.buttons.size() <= 1) return alert.defaultItem;
  std::size_t number = 0;
  const char* end = line.data() + line.size();
  const bool isNumber = std::from_chars(line.data(), end, number).ptr == end;
  if (!isNumber || number < 1 || number > alert.buttons.size()) return std::nullopt;
  return alert.buttons[number - 1].item;
}

class AskedQuestion final : public Showing {
 public:
  explicit AskedQuestion(std::uint32_t asked) : number(asked) {}
  ~AskedQuestion() override { TerminalDesk::shared().withdraw(number); }

 private:
  std::uint32_t number;
};

std::unique_ptr<Showing> ask(TerminalDesk::Question question) {
  const std::uint32_t number = TerminalDesk::shared().ask(std::move(question));
  if (number == 0) return nullptr;
  return std::make_unique<AskedQuestion>(number);
}

class TerminalPresenter final : public Presenter {
 public:
  std::unique_ptr<Showing> showAlert(const AlertContents& alert,
                                     AlertCompletion completion) override {
    auto answer = [alert, completion](const std::optional<std::string>& line) {
      const auto choice = line ? choiceOf(alert, *line) : std::optional(kNotShown);
      if (choice) completion(*choice);
      return choice.has_value();
    };
    return ask({TerminalDesk::Rank::kAlert, screenFor(alert), answer});
  }

  std::unique_ptr<Showing> showNotice(const NoticeContents& notice,
                                      NoticeCompletion completion) override {
    auto answer = [completion](const std::optional<std::string>& line) {
      completion(line.has_value());
      return true;
    };
    const std::string sound = notice.hasSound ? "\a\n" : "\n";
    return ask({TerminalDesk::Rank::kNotice,
                sound + indented(notice.text) + std::string(kIndent) + "Press Return: ", answer});
  }
};

}  // namespace

Presenter& terminalPresenter() {
  static TerminalPresenter* presenter = new TerminalPresenter;
  return *presenter;
}

}  // namespace platform::userinterface
