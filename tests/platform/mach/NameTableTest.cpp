// Licence: MIT, see LICENSE.
#include "platform/mach/NameTable.h"

#include <gtest/gtest.h>

#include <set>

#include "platform/mach/NameSpace.h"

namespace tests {
namespace {

using platform::mach::Entry;
using platform::mach::kBootstrapPort;
using platform::mach::kTaskPort;
using platform::mach::NameTable;

Entry entry(mach_port_urefs_t rights) { return Entry{.sendRights = rights}; }

TEST(NameTable, FindsWhatWasAdded) {
  NameTable table;
  const mach_port_name_t first = table.add(entry(1));
  const mach_port_name_t second = table.add(entry(2));
  ASSERT_NE(nullptr, table.find(first));
  ASSERT_NE(nullptr, table.find(second));
  EXPECT_EQ(1u, table.find(first)->sendRights);
  EXPECT_EQ(2u, table.find(second)->sendRights);
}

TEST(NameTable, FindsNothingElse) {
  NameTable table;
  const mach_port_name_t name = table.add(entry(1));
  for (const mach_port_name_t other :
       {MACH_PORT_NULL, MACH_PORT_DEAD, kTaskPort, kBootstrapPort, name + 1, name + 0x100}) {
    EXPECT_EQ(nullptr, table.find(other)) << other;
  }
}

TEST(NameTable, HandsOutWhatItRemoves) {
  NameTable table;
  const mach_port_name_t name = table.add(entry(5));
  EXPECT_EQ(5u, table.remove(name).sendRights);
  EXPECT_EQ(nullptr, table.find(name));
}

TEST(NameTable, GivesAFreedPlaceADifferentName) {
  NameTable table;
  std::set<mach_port_name_t> names;
  for (int round = 0; round < 256; ++round) {
    const mach_port_name_t name = table.add(entry(1));
    EXPECT_TRUE(MACH_PORT_VALID(name));
    EXPECT_TRUE(names.insert(name).second);
    table.remove(name);
  }
}

}  // namespace
}  // namespace tests
