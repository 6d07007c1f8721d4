// Licence: MIT, see LICENSE.
// A root of its own for a test: everything that the platform would touch lies below a fresh folder,
// which is removed with the object, also when the test fails.
#ifndef TESTS_SUPPORT_PRIVATEROOT_H
#define TESTS_SUPPORT_PRIVATEROOT_H

#include <filesystem>
#include <optional>
#include <string>

namespace tests {

class PrivateRoot final {
 public:
  /// Makes the folder and points QRL_ROOT at it.
  PrivateRoot();
  /// Gives QRL_ROOT its earlier value back and removes the folder.
  ~PrivateRoot();
  PrivateRoot(const PrivateRoot&) = delete;
  PrivateRoot& operator=(const PrivateRoot&) = delete;

  const std::filesystem::path& path() const { return folder; }

 private:
  std::filesystem::path folder;
  std::optional<std::string> earlier;
};

}  // namespace tests

#endif
