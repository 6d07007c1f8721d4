// Licence: MIT, see LICENSE.
// Alerts as windows of the desktop, each shown by a helper program that a thread of its own waits
// for. Notices do not go this way yet: they take the next one.
#include <system_error>
#include <thread>
#include <utility>

#include "platform/host/ChildProgram.h"
#include "platform/host/WakeEvent.h"
#include "platform/userinterface/DesktopHelper.h"
#include "platform/userinterface/Presenter.h"

namespace platform::userinterface {
namespace {

class Window final : public Showing {
 public:
  /// The thread may throw std::system_error when there is none to be had.
  Window(host::ChildProgram program, host::WakeEvent event, const DesktopHelper& helper,
         AlertContents alert, Presenter::AlertCompletion completion)
      : closing(std::move(event)),
        waiter([this, running = std::move(program), &helper, alert = std::move(alert),
                completion = std::move(completion)]() mutable {
          auto status = running.wait(closing);
          if (!status && status.error() == host::Error::kWouldBlock) return;
          completion(status ? helper.itemFor(alert, *status) : Presenter::kNotShown);
        }) {}
  ~Window() override {
    closing.raise();
    waiter.join();
  }

 private:
  host::WakeEvent closing;
  std::thread waiter;
};

class DesktopPresenter final : public Presenter {
 public:
  std::unique_ptr<Showing> showAlert(const AlertContents& alert,
                                     AlertCompletion completion) override {
    auto found = findHelper(alert, currentDesktop());
    if (!found) return nullptr;
    std::vector<std::string> command = found->helper->arguments(alert);
    command.insert(command.begin(), found->path);
    auto closing = host::WakeEvent::make();
    auto program = host::ChildProgram::start(command);
    if (!closing || !program) return nullptr;
    try {
      return std::make_unique<Window>(std::move(*program), std::move(*closing), *found->helper,
                                      alert, std::move(completion));
    } catch (const std::system_error&) {
      return nullptr;
    }
  }

  std::unique_ptr<Showing> showNotice(const NoticeContents&, NoticeCompletion) override {
    return nullptr;
  }
};

}  // namespace

Presenter& desktopPresenter() {
  static DesktopPresenter* presenter = new DesktopPresenter;
  return *presenter;
}

}  // namespace platform::userinterface
