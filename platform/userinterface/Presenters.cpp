// Licence: MIT, see LICENSE.
#include <cstdlib>
#include <string_view>

#include "platform/userinterface/Presenter.h"

namespace platform::userinterface {

std::vector<Presenter*> presentersToTry() {
  const char* setting = std::getenv("QRL_UI");
  const std::string_view choice = setting == nullptr ? "auto" : setting;
  if (choice == "none") return {&logPresenter()};
  if (choice == "terminal") return {&terminalPresenter(), &logPresenter()};
  return {&desktopPresenter(), &terminalPresenter(), &logPresenter()};
}

}  // namespace platform::userinterface
