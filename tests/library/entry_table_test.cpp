// SPDX-License-Identifier: MIT
// A host's first steps: the table, the names in it, the version, the working entries.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>

#include "library/library.h"

namespace {

TEST(EntryTable, EveryRowLeadsToAnExportedName) {
  FilterLoadRecord record{};
  LOADED(fltLoadPointers)(&record);
  ASSERT_EQ(record.count, 9);
  for (int row = 0; row < record.count; ++row) {
    // The names of two rows are the host's words for symbols that are called otherwise.
    std::string name = record.table[row].name;
    if (name == "EscapeSetup") name = "xEscapeSetup";
    if (name == "szDLLName") name = "export_szDLLName";
    EXPECT_NE(library::address(name.c_str()), nullptr) << name;
  }
}

TEST(EntryTable, AllRoadsGiveTheSameVersion) {
  EXPECT_EQ(LOADED(KVLGetFilterVersion)(), 0x02000005u);
  uint32_t version = 0;
  EXPECT_EQ(LOADED(dd_entry)(RAXEL_ENTRY_VERSION, &version, 0), 0);
  EXPECT_EQ(version, 0x02000005u);
  version = 0;
  EXPECT_EQ(LOADED(RASTER_dd_entry)(RAXEL_ENTRY_VERSION, &version, 0), 0);
  EXPECT_EQ(version, 0x02000005u);
}

// A whole address goes out, on machines of 64 bits as well.
TEST(EntryTable, RedirectsLeadToTheWorkingEntries) {
  void *entry = nullptr;
  LOADED(dd_entry)(RAXEL_ENTRY_ADDRESS, &entry, 0);
  EXPECT_EQ(entry, library::address("dd_entry32"));
  LOADED(RASTER_dd_entry)(RAXEL_ENTRY_ADDRESS, &entry, 0);
  EXPECT_EQ(entry, library::address("RASTER_dd_entry32"));
}

// Whether this process may write to the memory at an address; some machines' linkers put constants
// beside the code, so the other permissions differ. False when nothing is there.
bool writable(const void *where) {
  const auto address = reinterpret_cast<uintptr_t>(where);
  std::ifstream maps("/proc/self/maps");
  uintptr_t begin = 0, end = 0;
  std::string permissions, rest;  // "r--p", "rw-p" and so on
  char dash = 0;
  while (maps >> std::hex >> begin >> dash >> end >> permissions && std::getline(maps, rest))
    if (begin <= address && address < end) return permissions[1] == 'w';
  ADD_FAILURE() << "no memory there";
  return false;
}

TEST(ExportedTables, AreConstants) {
  for (const char *name :
       {"ColorDirect", "BOUNDARY_CHK", "MonoTable", "must_have_colors", "white", "black", "twoD"})
    EXPECT_FALSE(writable(library::address(name))) << name;
  EXPECT_TRUE(writable(library::address("GDPSupport")));
}

}  // namespace
