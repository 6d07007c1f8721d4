// Licence: MIT, see LICENSE.
#include "platform/host/Roots.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace platform::host {

namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

/// Empty if the database has no such user.
std::string homeOfUser(uid_t user) {
  std::array<char, 4096> texts{};
  struct passwd entry {};
  struct passwd* found = nullptr;
  if (getpwuid_r(user, &entry, texts.data(), texts.size(), &found) != 0) return {};
  return found == nullptr || found->pw_dir == nullptr ? std::string() : found->pw_dir;
}

}  // namespace

std::string rootPath() {
  std::string root = environment("QRL_ROOT");
  while (!root.empty() && root.back() == '/') root.pop_back();
  return root;
}

std::string userNameSpacePath() {
  const std::string user = std::to_string(geteuid());
  if (const std::string root = rootPath(); !root.empty()) {
    return root + "/run/user/" + user + "/quorvant";
  }
  // One that is not absolute would be another one after each change of the working directory.
  if (const std::string runtime = environment("XDG_RUNTIME_DIR"); runtime.starts_with('/')) {
    return runtime + "/quorvant";
  }
  return geteuid() == 0 ? systemNameSpacePath() : "/tmp/quorvant-" + user;
}

std::string homePath() {
  std::string home = environment("HOME");
  if (home.empty()) home = homeOfUser(geteuid());
  while (!home.empty() && home.back() == '/') home.pop_back();
  if (!home.empty() && home.front() != '/') home.clear();
  home = rootPath() + home;
  return home.empty() ? "/" : home;
}

std::string systemNameSpacePath() { return rootPath() + "/run/quorvant"; }

}  // namespace platform::host
