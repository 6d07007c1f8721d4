// Licence: MIT, see LICENSE.
#include "platform/userinterface/DesktopHelper.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "platform/host/ProgramPath.h"

namespace platform::userinterface {
namespace {

using Arguments = std::vector<std::string>;

// Statuses of buttons begin here, clear of those that tell of errors.
constexpr int kFirstButtonStatus = 101;

constexpr std::string_view kKDEHelper = "kdialog";

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

std::string bodyOf(const AlertContents& alert) {
  return alert.text.empty() ? alert.title : alert.text;
}

DialogItemIndex itemOfButton(const AlertContents& alert, std::size_t index) {
  return index < alert.buttons.size() ? alert.buttons[index].item : Presenter::kNotShown;
}

/// For helpers that exit with 0 for the first button and 1 for the second one. A window of one
/// button has no second one: 1 then says that it was closed or never came up.
DialogItemIndex itemForYesOrNo(const AlertContents& alert, int status) {
  if (status != 0 && status != 1) return Presenter::kNotShown;
  return itemOfButton(alert, static_cast<std::size_t>(status));
}

Arguments zenityArguments(const AlertContents& alert) {
  Arguments arguments{alert.buttons.size() > 1 ? "--question" : "--info", "--no-markup",
                      "--title=" + alert.title, "--text=" + bodyOf(alert),
                      "--ok-label=" + alert.buttons[0].label};
  if (alert.buttons.size() > 1) {
    arguments.push_back("--cancel-label=" + alert.buttons[1].label);
    if (alert.defaultItem == alert.buttons[1].item) arguments.push_back("--default-cancel");
  }
  return arguments;
}

/// A text for those who read markup in it, so that they show it as it stands.
std::string escaped(const std::string& text, const char* lineBreak) {
  std::string result;
  for (const char character : text) {
    switch (character) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '\n':
        result += lineBreak;
        break;
      default:
        result += character;
    }
  }
  return result;
}

/// kdialog takes a text for markup if it looks like that.
std::string kdialogText(const std::string& text) {
  if (text.find('<') == std::string::npos) return text;
  return "<qt>" + escaped(text, "<br>") + "</qt>";
}

/// Where '&' marks the letter to press, two of them are one that is shown.
std::string kdialogLabel(const std::string& label) {
  std::string result;
  for (const char character : label) result.append(character == '&' ? 2 : 1, character);
  return result;
}

Arguments kdialogArguments(const AlertContents& alert) {
  const std::string text = kdialogText(bodyOf(alert));
  const std::string first = kdialogLabel(alert.buttons[0].label);
  if (alert.buttons.size() == 1) {
    return {"--title=" + alert.title, "--ok-label=" + first, "--msgbox=" + text};
  }
  return {"--title=" + alert.title, "--yes-label=" + first,
          "--no-label=" + kdialogLabel(alert.buttons[1].label), "--yesno=" + text};
}

/// A label without the characters that separate labels.
std::string plainLabel(std::string label) {
  for (char& character : label) {
    if (character == ',' || character == ':' || character == '\\') character = ' ';
  }
  return label;
}

/// A text for a program that does not break lines: broken between words, and with a margin, so that
/// one that begins like an option is none.
std::string xmessageText(const std::string& text) {
  constexpr std::ptrdiff_t kColumns = 40;
  std::istringstream lines(text);
  std::string result;
  for (std::string line; std::getline(lines, line);) {
    if (!result.empty()) result += '\n';
    std::ptrdiff_t column = 0;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      const auto width = std::ranges::count_if(word, [](char c) { return (c & 0xC0) != 0x80; });
      if (column > 0 && column + 1 + width > kColumns) {
        result += '\n';
        column = 0;
      }
      result += ' ' + word;
      column += 1 + width;
    }
  }
  return result;
}

Arguments xmessageArguments(const AlertContents& alert) {
  std::string buttons;
  Arguments arguments{"-center", "-title", alert.title};
  for (std::size_t i = 0; i < alert.buttons.size(); ++i) {
    const AlertContents::Button& button = alert.buttons[i];
    const std::string label = plainLabel(button.label);
    if (i > 0) buttons += ",";
    buttons += label + ":" + std::to_string(kFirstButtonStatus + static_cast<int>(i));
    if (button.item == alert.defaultItem) arguments.insert(arguments.end(), {"-default", label});
  }
  arguments.insert(arguments.end(), {"-buttons", buttons, xmessageText(bodyOf(alert))});
  return arguments;
}

DialogItemIndex itemForButtonStatus(const AlertContents& alert, int status) {
  if (status < kFirstButtonStatus) return Presenter::kNotShown;
  return itemOfButton(alert, static_cast<std::size_t>(status - kFirstButtonStatus));
}

}  // namespace

Desktop currentDesktop() {
  const char* names = std::getenv("XDG_CURRENT_DESKTOP");  // separated by colons
  const std::string listed = ":" + std::string(names == nullptr ? "" : names) + ":";
  return {isSet("DISPLAY"), isSet("WAYLAND_DISPLAY"), listed.find(":KDE:") != std::string::npos};
}

const std::vector<DesktopHelper>& desktopHelpers() {
  // Not a plain array, so that it outlives whoever asks late.
  static const auto* helpers = new std::vector<DesktopHelper>{
      {"zenity", false, 2, zenityArguments, itemForYesOrNo},
      {kKDEHelper, false, 2, kdialogArguments, itemForYesOrNo},
      {"xmessage", true, 100, xmessageArguments, itemForButtonStatus}};
  return *helpers;
}

std::optional<FoundHelper> findHelper(const AlertContents& alert, Desktop desktop) {
  if (alert.buttons.empty()) return std::nullopt;
  std::vector<const DesktopHelper*> candidates;
  for (const DesktopHelper& helper : desktopHelpers()) candidates.push_back(&helper);
  std::stable_partition(candidates.begin(), candidates.end(),
                        [desktop](const DesktopHelper* helper) {
                          return desktop.isKDE && helper->program == kKDEHelper;
                        });
  for (const DesktopHelper* helper : candidates) {
    const bool works = desktop.hasX || (desktop.hasWayland && !helper->needsX);
    if (!works || alert.buttons.size() > helper->mostButtons) continue;
    if (auto path = host::findProgram(std::string(helper->program)))
      return FoundHelper{helper, *path};
  }
  return std::nullopt;
}

std::optional<Arguments> noticeCommand(const NoticeContents& notice, Desktop desktop) {
  if (!desktop.hasX && !desktop.hasWayland) return std::nullopt;
  const auto program = host::findProgram("notify-send");
  if (!program) return std::nullopt;
  const auto name = std::filesystem::path(host::programPath()).filename().string();
  // Whoever shows the notice may read markup in what follows the first line.
  const std::size_t firstLine = std::min(notice.text.find('\n'), notice.text.size());
  const std::string rest = notice.text.substr(std::min(firstLine + 1, notice.text.size()));
  Arguments command{*program, "--wait", "--urgency=critical", "--expire-time=0",
                    "--app-name=" + name};
  if (notice.hasSound) command.emplace_back("--hint=string:sound-name:bell");
  command.insert(command.end(), {"--", notice.text.substr(0, firstLine), escaped(rest, "\n")});
  return command;
}

}  // namespace platform::userinterface
