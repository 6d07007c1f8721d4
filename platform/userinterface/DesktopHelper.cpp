// Licence: MIT, see LICENSE.
#include "platform/userinterface/DesktopHelper.h"

#include <cstdlib>

#include "platform/host/ProgramPath.h"

namespace platform::userinterface {
namespace {

using Arguments = std::vector<std::string>;

// Statuses of buttons begin here, clear of those that tell of errors.
constexpr int kFirstButtonStatus = 101;

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

Arguments kdialogArguments(const AlertContents& alert) {
  if (alert.buttons.size() == 1) {
    return {"--title=" + alert.title, "--ok-label=" + alert.buttons[0].label,
            "--msgbox=" + bodyOf(alert)};
  }
  return {"--title=" + alert.title, "--yes-label=" + alert.buttons[0].label,
          "--no-label=" + alert.buttons[1].label, "--yesno=" + bodyOf(alert)};
}

/// A label without the characters that separate labels.
std::string plainLabel(std::string label) {
  for (char& character : label) {
    if (character == ',' || character == ':' || character == '\\') character = ' ';
  }
  return label;
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
  // A text that begins like an option must not be one.
  arguments.insert(arguments.end(), {"-buttons", buttons, " " + bodyOf(alert)});
  return arguments;
}

DialogItemIndex itemForButtonStatus(const AlertContents& alert, int status) {
  if (status < kFirstButtonStatus) return Presenter::kNotShown;
  return itemOfButton(alert, static_cast<std::size_t>(status - kFirstButtonStatus));
}

}  // namespace

Desktop currentDesktop() { return {isSet("DISPLAY"), isSet("WAYLAND_DISPLAY")}; }

const std::vector<DesktopHelper>& desktopHelpers() {
  // Not a plain array, so that it outlives whoever asks late.
  static const auto* helpers = new std::vector<DesktopHelper>{
      {"zenity", false, 2, zenityArguments, itemForYesOrNo},
      {"kdialog", false, 2, kdialogArguments, itemForYesOrNo},
      {"xmessage", true, 100, xmessageArguments, itemForButtonStatus}};
  return *helpers;
}

std::optional<FoundHelper> findHelper(const AlertContents& alert, Desktop desktop) {
  if (alert.buttons.empty()) return std::nullopt;
  for (const DesktopHelper& helper : desktopHelpers()) {
    const bool works = desktop.hasX || (desktop.hasWayland && !helper.needsX);
    if (!works || alert.buttons.size() > helper.mostButtons) continue;
    if (auto path = host::findProgram(helper.program)) return FoundHelper{&helper, *path};
  }
  return std::nullopt;
}

}  // namespace platform::userinterface
