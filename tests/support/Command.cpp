// Licence: MIT, see LICENSE.
#include "tests/support/Command.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>

namespace tests {

std::vector<std::string> withRunner(const ChildProcess::Command& command, Runner runner) {
  std::vector<std::string> words;
  const char* prefix = std::getenv("QRL_RUNNER");
  if (runner == Runner::kOfThisBuild && prefix != nullptr) {
    std::istringstream parts(prefix);
    for (std::string word; parts >> word;) words.push_back(word);
  }
  words.insert(words.end(), command.begin(), command.end());
  return words;
}

std::vector<std::string> environmentWith(const ChildOptions& options) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    const std::string name = text.substr(0, text.find('='));
    bool replaced = false;
    for (const auto& [key, value] : options.environment) replaced = replaced || key == name;
    if (!replaced) variables.push_back(text);
  }
  for (const auto& [key, value] : options.environment) variables.push_back(key + "=" + value);
  return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace tests
