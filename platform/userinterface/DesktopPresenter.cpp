// Licence: MIT, see LICENSE.
// Alerts and notices as windows of the desktop, each shown by a helper program. A thread of its own
// starts the helper and waits for it, since the host ends a helper with the thread that started it.
#include <system_error>
#include <thread>
#include <utility>

#include "platform/host/ChildProgram.h"
#include "platform/host/SystemLog.h"
#include "platform/host/WakeEvent.h"
#include "platform/userinterface/DesktopHelper.h"
#include "platform/userinterface/Presenter.h"

namespace platform::userinterface {
namespace {

using host::ChildProgram;

class Window final : public Showing {
 public:
  /// Given the helper's exit status, or why there is none, tells whether that is the person's
  /// answer.
  using Answer = std::function<bool(const host::Result<int>& status)>;

  /// The thread may throw std::system_error when there is none to be had.
  Window(host::WakeEvent event, std::vector<std::string> command, ChildProgram::Ending ending,
         Answer answer)
      : closing(std::move(event)),
        waiter([this, command = std::move(command), ending, answer = std::move(answer)] {
          host::Result<int> status = host::Error::kFailed;
          if (auto program = ChildProgram::start(command, ending)) {
            status = program->wait(closing);
            if (!status && status.error() == host::Error::kWouldBlock) return;
          } else {
            status = program.error();
          }
          if (!answer(status)) tellOfFailure(command.front(), status);
        }) {}
  ~Window() override {
    closing.raise();
    waiter.join();
  }

 private:
  static void tellOfFailure(const std::string& program, const host::Result<int>& status) {
    const std::string end = status ? "ended with " + std::to_string(*status) : "did not end well";
    host::log(host::LogLevel::kWarning, program + " " + end + " and has shown nothing");
  }

  host::WakeEvent closing;
  std::thread waiter;
};

std::unique_ptr<Showing> openWindow(std::vector<std::string> command, ChildProgram::Ending ending,
                                    Window::Answer answer) {
  auto closing = host::WakeEvent::make();
  if (!closing) return nullptr;
  try {
    return std::make_unique<Window>(std::move(*closing), std::move(command), ending,
                                    std::move(answer));
  } catch (const std::system_error&) {
    return nullptr;
  }
}

class DesktopPresenter final : public Presenter {
 public:
  std::unique_ptr<Showing> showAlert(const AlertContents& alert,
                                     AlertCompletion completion) override {
    auto found = findHelper(alert, currentDesktop());
    if (!found) return nullptr;
    std::vector<std::string> command = found->helper->arguments(alert);
    command.insert(command.begin(), found->path);
    return openWindow(std::move(command), ChildProgram::Ending::kTerminate,
                      [alert, helper = found->helper,
                       completion = std::move(completion)](const host::Result<int>& status) {
                        const auto item = status ? helper->itemFor(alert, *status) : kNotShown;
                        completion(item);
                        return item != kNotShown;
                      });
  }

  std::unique_ptr<Showing> showNotice(const NoticeContents& notice,
                                      NoticeCompletion completion) override {
    auto command = noticeCommand(notice, currentDesktop());
    if (!command) return nullptr;
    return openWindow(std::move(*command), ChildProgram::Ending::kInterrupt,
                      [completion = std::move(completion)](const host::Result<int>& status) {
                        const bool wasSeen = status && *status == 0;
                        completion(wasSeen);
                        return wasSeen;
                      });
  }
};

}  // namespace

Presenter& desktopPresenter() {
  static DesktopPresenter* presenter = new DesktopPresenter;
  return *presenter;
}

}  // namespace platform::userinterface
