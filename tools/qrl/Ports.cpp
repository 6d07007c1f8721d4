// Licence: MIT, see LICENSE.
#include <HIServices/Processes.h>

#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "platform/mach/NameList.h"
#include "tools/qrl/Commands.h"
#include "tools/qrl/Output.h"

namespace qrl {
namespace {

using platform::mach::NamedPort;

std::optional<std::string> serialNumberOf(const NamedPort& port) {
  ProcessSerialNumber psn;
  if (GetProcessForPID(port.process, &psn) != noErr) return std::nullopt;
  return formatSerialNumber(psn);
}

void printJson(const std::vector<NamedPort>& ports) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const NamedPort& port : ports) {
    nlohmann::ordered_json entry{{"name", port.name}, {"pid", port.process}};
    if (std::optional<std::string> psn = serialNumberOf(port)) entry["psn"] = *psn;
    list.push_back(entry);
  }
  std::cout << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void printTable(const std::vector<NamedPort>& ports) {
  std::size_t widest = 0;
  for (const NamedPort& port : ports) widest = std::max(widest, port.name.size());
  for (const NamedPort& port : ports) {
    std::cout << withoutControls(port.name) << std::string(widest - port.name.size() + 2, ' ')
              << port.process << "  " << serialNumberOf(port).value_or("-") << '\n';
  }
}

}  // namespace

ExitStatus run(const PortsCommand& command) {
  std::vector<NamedPort> ports;
  const kern_return_t result = platform::mach::liveNames(platform::mach::kBootstrapFolder, ports);
  if (command.json) {
    printJson(ports);
  } else {
    printTable(ports);
  }
  return result == KERN_SUCCESS ? kDone : kHostFailed;  // the refusal has its own line
}

}  // namespace qrl
