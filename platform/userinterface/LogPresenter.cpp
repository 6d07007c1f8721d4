// Licence: MIT, see LICENSE.
// With nobody to ask, the system log is told, and the answer is what a person in a hurry would
// give.
#include "platform/host/SystemLog.h"
#include "platform/userinterface/Presenter.h"

namespace platform::userinterface {
namespace {

std::string labelOf(const AlertContents& alert, DialogItemIndex item) {
  for (const AlertContents::Button& button : alert.buttons) {
    if (button.item == item) return "\"" + button.label + "\"";
  }
  return "item " + std::to_string(item);
}

class Done final : public Showing {};

class LogPresenter final : public Presenter {
 public:
  std::unique_ptr<Showing> showAlert(const AlertContents& alert,
                                     AlertCompletion completion) override {
    std::string line = "alert: " + alert.title;
    if (!alert.title.empty() && !alert.text.empty()) line += ": ";
    line += alert.text + " [answered with " + labelOf(alert, alert.defaultItem) + "]";
    host::log(host::LogLevel::kNotice, line);
    completion(alert.defaultItem);
    return std::make_unique<Done>();
  }

  std::unique_ptr<Showing> showNotice(const NoticeContents& notice,
                                      NoticeCompletion completion) override {
    host::log(host::LogLevel::kNotice, "notice: " + notice.text);
    completion(true);
    return std::make_unique<Done>();
  }
};

}  // namespace

Presenter& logPresenter() {
  static LogPresenter* presenter = new LogPresenter;
  return *presenter;
}

}  // namespace platform::userinterface
