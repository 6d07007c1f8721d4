// Licence: MIT, see LICENSE.
// What `qrl resources` prints of a file, and of files that are none.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "platform/resources/AppleDouble.h"
#include "platform/resources/ResourceWriter.h"
#include "tests/integration/Programs.h"
#include "tests/platform/resources/SampleFile.h"

namespace {

using nlohmann::json;
using tests::bytesOf;
using tests::Outcome;

class ResourcesTool : public tests::Integration {
 protected:
  std::string put(const std::string& name, const tests::ByteVector& bytes) {
    tests::writeFile(root.path() / name, bytes);
    return root.path() / name;
  }
  std::string putResources() {
    return put("file", *platform::resources::writeResourceFile(
                           {{'TEXT', 128, 0x24, "caf\x8E", bytesOf("one\rtwo")},
                            {'TEXT', -5, 0, "", {}},
                            {'DATA', 1, 0x10, "", bytesOf("\1\2A")}}));
  }
  void expectFailure(const Outcome& outcome, int status, const std::string& line) {
    EXPECT_EQ(outcome.status, status);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrl: " + line + "\n");
  }
};

TEST_F(ResourcesTool, ListsAFile) {
  const Outcome outcome = qrl({"resources", putResources()});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(outcome.output,
            "TEXT     128         7  purgeable,preload  \"caf\u00e9\"\n"
            "TEXT      -5         0  -\n"
            "DATA       1         3  locked\n");
}

TEST_F(ResourcesTool, ListsAType) {
  EXPECT_EQ(qrl({"resources", putResources(), "DATA"}).output, "DATA       1         3  locked\n");
  const Outcome none = qrl({"resources", putResources(), "NONE"});
  EXPECT_EQ(none.status, 0);
  EXPECT_EQ(none.output, "");
}

TEST_F(ResourcesTool, ShowsAResourceAsWhatItIs) {
  const std::string file = putResources();
  EXPECT_EQ(qrl({"resources", file, "TEXT", "128"}).output, "one\ntwo\n");
  const std::string dump = "00000000  01 02 41" + std::string(41, ' ') + "..A\n";
  EXPECT_EQ(qrl({"resources", file, "DATA", "1"}).output, dump);
  const Outcome empty = qrl({"resources", file, "TEXT", "--", "-5"});
  EXPECT_EQ(empty.output, "");
  EXPECT_EQ(empty.status, 0) << empty.errors;
}

TEST_F(ResourcesTool, ShowsResourcesAsTold) {
  const std::string file = putResources();
  EXPECT_EQ(qrl({"resources", file, "DATA", "--text"}).output,
            "DATA       1         3  locked\n  A\n");
  EXPECT_EQ(qrl({"resources", file, "TEXT", "128", "--hex"}).output,
            "00000000  6f 6e 65 0d 74 77 6f" + std::string(29, ' ') + "one.two\n");
}

TEST_F(ResourcesTool, PrintsJson) {
  const std::string file = putResources();
  const json list = json::parse(qrl({"resources", file, "--json"}).output);
  EXPECT_EQ(list, json::parse(R"([
    {"type": "TEXT", "id": 128, "name": "café", "size": 7, "attributes": ["purgeable", "preload"]},
    {"type": "TEXT", "id": -5, "size": 0, "attributes": []},
    {"type": "DATA", "id": 1, "size": 3, "attributes": ["locked"]}])"));
  const json one = json::parse(qrl({"resources", file, "DATA", "1", "--json"}).output);
  EXPECT_EQ(one[0]["hex"], "010241");
  const json text = json::parse(qrl({"resources", file, "TEXT", "--text", "--json"}).output);
  EXPECT_EQ(text[0]["text"], "one\rtwo");
}

TEST_F(ResourcesTool, PrintsTheSameOnEveryMachine) {
  const std::string file = putResources();
  const Outcome here = qrl({"resources", file, "--hex", "--json"});
  for (const tests::Mixture& mixture : tests::mixtures()) {
    const Outcome there = qrl({"resources", file, "--hex", "--json"}, *mixture.client);
    EXPECT_EQ(there.status, 0) << mixture;
    EXPECT_EQ(there.output, here.output) << mixture;
  }
}

TEST_F(ResourcesTool, ReadsCompanions) {
  const std::string file = put("text", bytesOf("This is only text."));
  put("._text", platform::resources::appleDoubleWith(tests::sample::file()));
  const Outcome outcome = qrl({"resources", file, "TEXT", "128"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "abc\n");
}

TEST_F(ResourcesTool, RefusesBadFilesWithOneLine) {
  const std::string missing = root.path() / "missing";
  expectFailure(qrl({"resources", missing}), 66, "there is no file " + missing);
  const std::string empty = put("empty", {});
  expectFailure(qrl({"resources", empty}), 65, "the file " + empty + " is empty");
  const std::string text = put("text", bytesOf("This is only text."));
  const std::string noResources = " has no resources, or they are damaged";
  expectFailure(qrl({"resources", text}), 65, text + noResources);
  const std::string folder = root.path();
  expectFailure(qrl({"resources", folder}), 65, folder + noResources);
  tests::ByteVector damaged = tests::sample::file();
  damaged.pop_back();
  const std::string cut = put("cut", damaged);
  expectFailure(qrl({"resources", cut, "--json"}), 65, cut + noResources);
}

TEST_F(ResourcesTool, RefusesAFileThatMayNotBeRead) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  const std::string file = putResources();
  ASSERT_EQ(chmod(file.c_str(), 0), 0);
  expectFailure(qrl({"resources", file}), 66, "the file " + file + " may not be read");
}

TEST_F(ResourcesTool, ExitsWith69WhenThereIsNoSuchResource) {
  const std::string file = putResources();
  expectFailure(qrl({"resources", file, "TEXT", "1"}), 69, file + " has no resource TEXT 1");
}

}  // namespace
