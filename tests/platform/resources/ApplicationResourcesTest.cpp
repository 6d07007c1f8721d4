// Licence: MIT, see LICENSE.
// Programs find their own resources: real processes of a small program that lists them.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/resources/ResourceWriter.h"
#include "tests/platform/resources/SampleFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::resources;
using tests::bytesOf;
namespace fs = std::filesystem;

class ApplicationResources : public testing::Test {
 protected:
  fs::path placeProgram(const std::string& where) {
    const fs::path program = root.path() / where;
    fs::create_directories(program.parent_path());
    fs::copy_file(QRL_RESOURCE_LISTER, program);
    return program;
  }

  void placeResources(const std::string& where, ResID id) {
    tests::writeFile(root.path() / where,
                     *writeResourceFile({{'TEXT', id, 0, "", bytesOf("abc")}}));
  }

  static std::string listing(const fs::path& program, const std::string& setting = "") {
    tests::ChildProcess lister({program}, {.environment = {{"QRL_RESOURCE_FILE", setting}}});
    const std::string output = lister.readAll();
    EXPECT_EQ(lister.wait(), 0);
    return output;
  }

  tests::PrivateRoot root;
};

TEST_F(ApplicationResources, AreThoseOfTheBundle) {
  const fs::path program = placeProgram("Lister.app/Contents/MacOS/lister");
  placeResources("Lister.app/Contents/Resources/lister.rsrc", 128);
  EXPECT_EQ(listing(program), "files: application\nTEXT 128 3\n");
}

TEST_F(ApplicationResources, AreFoundThroughALinkToTheProgram) {
  const fs::path program = placeProgram("Lister.app/Contents/MacOS/lister");
  placeResources("Lister.app/Contents/Resources/lister.rsrc", 129);
  fs::create_directories(root.path() / "bin");
  fs::create_symlink(program, root.path() / "bin" / "lister");
  EXPECT_EQ(listing(root.path() / "bin" / "lister"), "files: application\nTEXT 129 3\n");
}

TEST_F(ApplicationResources, AreInTheCompanionOfAProgramWithoutABundle) {
  const fs::path program = placeProgram("bin/lister");
  placeResources("bin/._lister", 130);
  EXPECT_EQ(listing(program), "files: application\nTEXT 130 3\n");
}

TEST_F(ApplicationResources, AreThoseThatTheSettingNames) {
  const fs::path program = placeProgram("Lister.app/Contents/MacOS/lister");
  placeResources("Lister.app/Contents/Resources/lister.rsrc", 128);
  placeResources("elsewhere", 131);
  EXPECT_EQ(listing(program, root.path() / "elsewhere"), "files: application\nTEXT 131 3\n");
}

TEST_F(ApplicationResources, MayBeMissingOrDamaged) {
  const fs::path program = placeProgram("Lister.app/Contents/MacOS/lister");
  EXPECT_EQ(listing(program), "files: none\n");
  tests::writeFile(root.path() / "Lister.app/Contents/Resources/lister.rsrc", bytesOf("damaged"));
  EXPECT_EQ(listing(program), "files: none\n");
}

}  // namespace
