// Licence: MIT, see LICENSE.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <iostream>

#include "tools/qrl/Codes.h"
#include "tools/qrl/Commands.h"
#include "tools/qrl/Help.h"

namespace qrl {
namespace {

constexpr std::size_t kLongestName = 127;
constexpr double kLongestWait = 1e6;

std::string parseName(const std::string& text) {
  if (text.empty() || text.size() > kLongestName) {
    throw UsageError("a name has 1 to 127 characters");
  }
  return text;
}

Seconds parseSeconds(const std::string& text) {
  double seconds = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  bool isNumber = error == std::errc() && end == text.data() + text.size();
  if (!isNumber || !(seconds >= 0 && seconds <= kLongestWait)) {
    throw UsageError('"' + text + "\" is not a number of seconds between 0 and 1000000");
  }
  return Seconds(seconds);
}

// The words as they stand on the command line, before they are read.
struct Words {
  std::string name;
  std::vector<std::string> codes;
  std::optional<std::string> process;
  std::vector<std::string> parameters;
  std::optional<std::string> timeout;
  bool json = false;
  bool noReply = false;
  bool gone = false;
  std::optional<std::string> type;
  std::optional<std::string> id;
  bool hexadecimal = false;
  bool text = false;
};

void describePorts(CLI::App& app, Words& words) { app.add_flag("--json", words.json); }

void describeSend(CLI::App& app, Words& words) {
  app.add_option("words", words.codes)->required()->expected(2, 3);
  app.add_option("--process", words.process);
  app.add_option("--param", words.parameters)->allow_extra_args(false);
  app.add_option("--timeout", words.timeout);
  app.add_flag("--no-reply", words.noReply);
  app.add_flag("--json", words.json);
}

void describeQuit(CLI::App& app, Words& words) {
  app.add_option("PORT", words.name)->required();
  app.add_option("--timeout", words.timeout);
}

void describeWait(CLI::App& app, Words& words) {
  app.add_option("NAME", words.name)->required();
  app.add_flag("--gone", words.gone);
  app.add_option("--timeout", words.timeout)->required();
}

void describeResources(CLI::App& app, Words& words) {
  app.add_option("FILE", words.name)->required();
  app.add_option("TYPE", words.type);
  app.add_option("ID", words.id);
  auto* hexadecimal = app.add_flag("--hex", words.hexadecimal);
  app.add_flag("--text", words.text)->excludes(hexadecimal);
  app.add_flag("--json", words.json);
}

SendCommand readSend(const Words& words) {
  SendCommand command;
  std::vector<std::string> codes = words.codes;
  if (words.process) {
    command.process = parseSerialNumber(*words.process);
  } else if (codes.size() == 3) {
    command.port = parseName(codes.front());
    codes.erase(codes.begin());
  }
  if (codes.size() != 2 || (command.port.empty() && !command.process)) {
    throw UsageError("send wants PORT CLASS ID, or --process PSN CLASS ID");
  }
  command.eventClass = parseCode(codes[0]);
  command.eventID = parseCode(codes[1]);
  for (const std::string& text : words.parameters) {
    command.parameters.push_back(parseParameter(text));
  }
  if (words.timeout) command.timeout = parseSeconds(*words.timeout);
  command.wantsReply = !words.noReply;
  command.json = words.json;
  return command;
}

QuitCommand readQuit(const Words& words) {
  QuitCommand command{parseName(words.name)};
  if (words.timeout) command.timeout = parseSeconds(*words.timeout);
  return command;
}

WaitCommand readWait(const Words& words) {
  return {parseName(words.name), words.gone, parseSeconds(*words.timeout)};
}

SInt16 parseResourceID(const std::string& text) {
  SInt16 id = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw UsageError('"' + text + "\" is not a number between -32768 and 32767");
  }
  return id;
}

ResourcesCommand readResources(const Words& words) {
  using Form = ResourcesCommand::Form;
  ResourcesCommand command;
  command.file = words.name;
  if (words.type) command.type = parseCode(*words.type);
  if (words.id) command.id = parseResourceID(*words.id);
  if (words.text) command.form = Form::kText;
  if (words.hexadecimal) command.form = Form::kHexadecimal;
  command.json = words.json;
  return command;
}

}  // namespace

Command parseCommandLine(const std::vector<std::string>& arguments) {
  CLI::App app("", "qrl");
  app.require_subcommand(1);
  app.set_version_flag("--version", "qrl " QRL_VERSION);
  Words words;
  CLI::App& ports = *app.add_subcommand("ports");
  CLI::App& send = *app.add_subcommand("send");
  CLI::App& quit = *app.add_subcommand("quit");
  CLI::App& wait = *app.add_subcommand("wait");
  CLI::App& resources = *app.add_subcommand("resources");
  describePorts(ports, words);
  describeSend(send, words);
  describeQuit(quit, words);
  describeWait(wait, words);
  describeResources(resources, words);
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForVersion& version) {
    return HelpCommand{std::string(version.what()) + '\n'};
  } catch (const CLI::Success&) {
    return HelpCommand{kHelp};
  } catch (const CLI::Error& error) {
    throw UsageError(error.what() + std::string(" (see qrl --help)"));
  }
  if (send) return readSend(words);
  if (quit) return readQuit(words);
  if (wait) return readWait(words);
  if (resources) return readResources(words);
  return PortsCommand{words.json};
}

}  // namespace qrl
