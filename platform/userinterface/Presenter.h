// Licence: MIT, see LICENSE.
// What stands between an alert or a notice and the person whom it is for. There is one presenter
// for each way to reach a person; each is a file of its own.
#ifndef PLATFORM_USERINTERFACE_PRESENTER_H
#define PLATFORM_USERINTERFACE_PRESENTER_H

#include <HIToolbox/Dialogs.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform::userinterface {

/// All texts are UTF-8, with line feeds between lines and no other control characters.
struct AlertContents {
  struct Button {
    DialogItemIndex item = 0;
    std::string label;
  };
  std::string title;  // may be empty, like the text
  std::string text;
  std::vector<Button> buttons;
  DialogItemIndex defaultItem = kStdOkItemIndex;
  int sounds = 0;
};

struct NoticeContents {
  std::string text;
  bool hasSound = false;
};

/// Something that is up. Destroyed before its completion was called, it is taken down and the
/// completion will not be called any more. Not to be destroyed by its own completion.
class Showing {
 public:
  virtual ~Showing() = default;
  Showing(const Showing&) = delete;
  Showing& operator=(const Showing&) = delete;

 protected:
  Showing() = default;
};

/// Completions are called once at most, on any thread, maybe before the call that shows has
/// returned. They must not call the presenter.
class Presenter {
 public:
  /// The item that was chosen, or kNotShown when it turned out too late that nobody could be
  /// reached.
  using AlertCompletion = std::function<void(DialogItemIndex item)>;
  /// Whether the person has dismissed it; false when it turned out too late that nobody could be
  /// reached.
  using NoticeCompletion = std::function<void(bool wasSeen)>;
  static constexpr DialogItemIndex kNotShown = 0;

  virtual ~Presenter() = default;

  /// Null, and no completion, when this presenter reaches nobody now.
  virtual std::unique_ptr<Showing> showAlert(const AlertContents& alert,
                                             AlertCompletion completion) = 0;
  virtual std::unique_ptr<Showing> showNotice(const NoticeContents& notice,
                                              NoticeCompletion completion) = 0;
};

/// The presenters to try, the best first; the last one always succeeds. QRL_UI says which (read at
/// each call): "none" is the log alone, "terminal" the terminal before it, "desktop" and "auto",
/// which is what anything else means, the desktop before both.
std::vector<Presenter*> presentersToTry();

Presenter& logPresenter();
Presenter& terminalPresenter();
Presenter& desktopPresenter();

}  // namespace platform::userinterface

#endif
