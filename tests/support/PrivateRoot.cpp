// Licence: MIT, see LICENSE.
#include "tests/support/PrivateRoot.h"

#include <cstdlib>
#include <stdexcept>

namespace tests {

PrivateRoot::PrivateRoot() {
  std::string pattern = (std::filesystem::temp_directory_path() / "qrl-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a private root");
  folder = pattern;
  if (const char* value = std::getenv("QRL_ROOT")) earlier = value;
  setenv("QRL_ROOT", folder.c_str(), 1);
}

PrivateRoot::~PrivateRoot() {
  if (earlier) {
    setenv("QRL_ROOT", earlier->c_str(), 1);
  } else {
    unsetenv("QRL_ROOT");
  }
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

}  // namespace tests
