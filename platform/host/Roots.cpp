// Licence: MIT, see LICENSE.
#include "platform/host/Roots.h"

#include <unistd.h>

#include <cstdlib>

namespace platform::host {

namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
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
  if (const std::string runtime = environment("XDG_RUNTIME_DIR"); !runtime.empty()) {
    return runtime + "/quorvant";
  }
  return geteuid() == 0 ? systemNameSpacePath() : "/tmp/quorvant-" + user;
}

std::string systemNameSpacePath() { return rootPath() + "/run/quorvant"; }

}  // namespace platform::host
