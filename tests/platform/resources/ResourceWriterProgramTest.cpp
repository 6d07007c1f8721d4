// Licence: MIT, see LICENSE.
// The program of the build that makes resource files.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "platform/resources/ResourceFile.h"
#include "tests/platform/resources/SampleFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace {

using tests::bytesOf;

class ResourceWriterProgram : public testing::Test {
 protected:
  struct Run {
    std::optional<int> status;
    std::string output;
  };
  static Run run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), QRL_RESOURCE_WRITER);
    tests::ChildProcess writer(arguments, {.environment = {}, .mergeErrors = true});
    std::string output = writer.readAll();
    return {writer.wait(), output};
  }

  std::string describe(const std::string& text) {
    tests::writeFile(root.path() / "input.r", bytesOf(text));
    return root.path() / "input.r";
  }

  tests::ByteVector outputBytes() const {
    std::ifstream file(output, std::ios::binary);
    return bytesOf(std::string(std::istreambuf_iterator<char>(file), {}));
  }

  tests::PrivateRoot root;
  std::string output = root.path() / "output.rsrc";
};

TEST_F(ResourceWriterProgram, WritesADescriptionAsAFile) {
  const Run result = run({describe("resource 'TEXT' 5 text \"abc\""), output});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  auto map = platform::resources::parseResourceFile(outputBytes());
  ASSERT_TRUE(map);
  ASSERT_EQ(map->entries.size(), 1u);
  EXPECT_EQ(map->entries[0].id, 5);
}

TEST_F(ResourceWriterProgram, NamesFileAndLineOfAMistakeAndWritesNothing) {
  const std::string input = describe("resource 'TEXT' 5\ntext abc");
  const Run result = run({input, output});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, input + ":2: expected a string\n");
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(ResourceWriterProgram, SaysWhichFileFails) {
  const std::string missing = root.path() / "missing.r";
  Run result = run({missing, output});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, missing + ": cannot be read\n");
  const std::string nowhere = root.path() / "no/such/folder";
  result = run({describe(""), nowhere});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, nowhere + ": cannot be written\n");
}

TEST_F(ResourceWriterProgram, TellsItsUsage) {
  const Run result = run({"one"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output.substr(0, 7), "usage: ");
}

}  // namespace
