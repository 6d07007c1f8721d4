// Licence: MIT, see LICENSE.
// What a test's program is started with.
#ifndef TESTS_SUPPORT_COMMAND_H
#define TESTS_SUPPORT_COMMAND_H

#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace tests {

/// The command with the emulator's before it where the runner asks for it.
std::vector<std::string> withRunner(const ChildProcess::Command& command, Runner runner);

/// The test's own environment with the options' variables added or replaced.
std::vector<std::string> environmentWith(const ChildOptions& options);

/// Pointers to the words and a null, as the host's calls take them. Valid as long as the words are.
std::vector<char*> pointersTo(std::vector<std::string>& words);

}  // namespace tests

#endif
