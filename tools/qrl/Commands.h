// Licence: MIT, see LICENSE.
// What qrl can do. A command writes its findings to standard output, one line on standard error
// when it fails, and answers with the exit status.
#ifndef TOOLS_QRL_COMMANDS_H
#define TOOLS_QRL_COMMANDS_H

#include <CarbonCore/MacTypes.h>

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/qrl/ExitStatus.h"
#include "tools/qrl/Values.h"

namespace qrl {

using Seconds = std::chrono::duration<double>;

struct HelpCommand {
  std::string text;
};

struct PortsCommand {
  bool json = false;
};

struct SendCommand {
  std::string port;                            // empty where a process is given
  std::optional<ProcessSerialNumber> process;  // the high-level-event path
  OSType eventClass = 0;
  OSType eventID = 0;
  std::vector<Parameter> parameters;
  bool wantsReply = true;
  Seconds timeout{60};
  bool json = false;
};

struct QuitCommand {
  std::string port;
  Seconds timeout{60};
};

struct WaitCommand {
  std::string name;
  bool gone = false;
  Seconds timeout{0};
};

struct ResourcesCommand {
  enum class Form { kList, kText, kHexadecimal };
  std::string file;
  std::optional<OSType> type;
  std::optional<SInt16> id;  // with a type only
  Form form = Form::kList;
  bool json = false;
};

using Command = std::variant<HelpCommand, PortsCommand, SendCommand, QuitCommand, WaitCommand,
                             ResourcesCommand>;

ExitStatus run(const HelpCommand& command);
ExitStatus run(const PortsCommand& command);
ExitStatus run(const SendCommand& command);
ExitStatus run(const QuitCommand& command);
ExitStatus run(const WaitCommand& command);
ExitStatus run(const ResourcesCommand& command);

/// Reads the arguments behind the program's name. Throws UsageError.
Command parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace qrl

#endif
