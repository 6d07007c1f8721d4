// Licence: MIT, see LICENSE.
// The programs with which a desktop shows a window for others: how each is called, and what its
// exit status means.
#ifndef PLATFORM_USERINTERFACE_DESKTOPHELPER_H
#define PLATFORM_USERINTERFACE_DESKTOPHELPER_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/userinterface/Presenter.h"

namespace platform::userinterface {

struct DesktopHelper {
  std::string_view program;
  bool needsX;              // works with DISPLAY alone, not with WAYLAND_DISPLAY
  std::size_t mostButtons;  // that it can show
  /// What follows the program's name to show an alert.
  std::vector<std::string> (*arguments)(const AlertContents& alert);
  /// The item that an exit status stands for; kNotShown where it may mean that no window came up.
  DialogItemIndex (*itemFor)(const AlertContents& alert, int status);
};

struct Desktop {
  bool hasX = false;
  bool hasWayland = false;
  bool isKDE = false;
};

/// The desktop that the environment names.
Desktop currentDesktop();

/// The helpers for alerts in the order of preference; on KDE its own goes first.
const std::vector<DesktopHelper>& desktopHelpers();

/// The first helper that can show the alert on that desktop and is installed, and its path.
struct FoundHelper {
  const DesktopHelper* helper;
  std::string path;
};
std::optional<FoundHelper> findHelper(const AlertContents& alert, Desktop desktop);

/// The program that shows notices until they are dismissed, and how it is called; nothing where it
/// is not installed or there is no desktop. Interrupted, it takes the notice off the screen; its
/// status is 0 once the notice was dismissed.
std::optional<std::vector<std::string>> noticeCommand(const NoticeContents& notice,
                                                      Desktop desktop);

}  // namespace platform::userinterface

#endif
