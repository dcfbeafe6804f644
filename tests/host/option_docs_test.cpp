// SPDX-License-Identifier: MIT
#include "command/option_docs.h"

#include <gtest/gtest.h>

#include "command/help.h"
#include "order/option_table.h"

// One list: every option is in the help, in the manual page and in the completion of each shell.
TEST(Texts, AllListTheSameOptions) {
  const std::string help = host::helpText(), manual = host::manualOptions(), bash = host::bashCompletion(),
                    zsh = host::zshCompletion(), fish = host::fishCompletion();
  for (const host::OptionRow &row : host::kOptions) {
    const std::string name(row.longName);
    EXPECT_NE(help.find("--" + name), std::string::npos) << name;
    EXPECT_NE(manual.find("*--" + name + "*"), std::string::npos) << name;
    EXPECT_NE(bash.find("--" + name), std::string::npos) << name;
    EXPECT_NE(zsh.find("--" + name), std::string::npos) << name;
    EXPECT_NE(fish.find("-l " + name + " "), std::string::npos) << name;
    const std::string both = std::string("-") + row.shortName + ", --" + name;
    EXPECT_EQ(help.find(both) != std::string::npos, row.shortName != 0) << name;
  }
}

TEST(Texts, HelpFitsAHundredColumns) {
  const std::string help = host::helpText();
  for (size_t start = 0; start < help.size();) {
    const size_t end = help.find('\n', start);
    EXPECT_LE(end - start, 100u) << help.substr(start, end - start);
    start = end + 1;
  }
}
