// Licence: MIT, see LICENSE.
// Programs of a desktop played by scripts of a test's, and the pipes over which they are directed.
#ifndef TESTS_SUPPORT_STANDIN_H
#define TESTS_SUPPORT_STANDIN_H

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace tests {

/// A folder of scripts that stand in for programs; the only one of a PATH, so that no program of
/// the host's gets in.
class StandIns final {
 public:
  explicit StandIns(const std::filesystem::path& root) : top(root / "stand-ins") {
    std::filesystem::create_directory(top);
  }

  const std::filesystem::path& folder() const { return top; }

  /// The script runs in a shell; its words for other programs are whole paths.
  void install(const std::string& name, const std::string& script) const {
    std::ofstream(top / name) << "#!/bin/sh\n" << script;
    std::filesystem::permissions(top / name, std::filesystem::perms::owner_all);
  }

 private:
  std::filesystem::path top;
};

/// A named pipe. Each of its calls waits until the other end is opened.
class Fifo final {
 public:
  explicit Fifo(const std::filesystem::path& path) : name(path) {
    if (mkfifo(name.c_str(), 0600) != 0) throw std::runtime_error("cannot make a named pipe");
  }
  const std::string& path() const { return name; }

  std::string readLine() const {
    std::string line;
    std::ifstream stream(name);
    std::getline(stream, line);
    return line;
  }
  void writeLine(const std::string& line) const { std::ofstream(name) << line << '\n'; }

 private:
  std::string name;
};

inline std::vector<std::string> linesOf(const std::filesystem::path& path) {
  std::ifstream stream(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace tests

#endif
