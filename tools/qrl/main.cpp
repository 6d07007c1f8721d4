// Licence: MIT, see LICENSE.
// qrl: looks into a running system from the command line.
#include <exception>
#include <string>
#include <variant>
#include <vector>

#include "tools/qrl/Commands.h"
#include "tools/qrl/Output.h"

int main(int argc, char** argv) try {
  std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  qrl::Command command = qrl::parseCommandLine(arguments);
  return std::visit([](const auto& chosen) { return qrl::run(chosen); }, command);
} catch (const qrl::UsageError& error) {
  return qrl::fail(qrl::kUsage, error.what());
} catch (const std::exception& error) {
  return qrl::fail(qrl::kHostFailed, error.what());
}
