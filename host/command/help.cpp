// SPDX-License-Identifier: MIT
#include "command/help.h"

#include <sstream>

#include "order/option_list.h"
#include "order/option_table.h"

namespace host {
namespace {

constexpr size_t kColumn = 26, kWidth = 100;

std::string names(const OptionRow &row) {
  std::string text;
  if (row.shortName) {
    text.append(1, '-').append(1, row.shortName).append(", ");
  } else {
    text.append(4, ' ');
  }
  text.append("--").append(row.longName);
  if (!row.argument.empty()) text.append(1, ' ').append(row.argument);
  return text;
}

// Words from the help column on, wrapped at the page's width.
void wrap(const std::string &text, std::string &out) {
  std::istringstream words(text);
  std::string word;
  size_t at = kColumn;
  bool first = true;
  while (words >> word) {
    if (!first && at + 1 + word.size() > kWidth) {
      out.append(1, '\n').append(kColumn, ' ');
      at = kColumn;
    } else if (!first) {
      out += ' ';
      ++at;
    }
    out += word;
    at += word.size();
    first = false;
  }
  out += '\n';
}

std::string helpOf(const OptionRow &row) {
  std::string help(row.help);
  if (row.completes == Completes::kChoices) help += " (" + std::string(row.choices) + ")";
  return help;
}

}  // namespace

std::string helpText() {
  std::string out =
      "Writes pictures as TIFF files, through the raxel export filter.\n\n"
      "Usage: raxel-export [OPTION]... INPUT OUTPUT\n"
      "       raxel-export [OPTION]... -d DIR INPUT...\n"
      "       raxel-export --inspect FILE...\n"
      "       raxel-export --list\n\n"
      "INPUT is a PNG, JPEG, PNM, BMP, GIF, TIFF, WebP or JPEG 2000 picture, or - for standard input.\n";
  std::string_view group;
  for (const OptionRow &row : kOptions) {
    if (row.group != group) out.append(1, '\n').append(group = row.group).append(":\n");
    const std::string named = names(row);
    out.append(2, ' ').append(named);
    const size_t at = named.size() + 2;
    if (at + 2 > kColumn) {
      out.append(1, '\n').append(kColumn, ' ');
    } else {
      out.append(kColumn - at, ' ');
    }
    wrap(helpOf(row), out);
  }
  out.append("  -h, --help").append(kColumn - 12, ' ').append("Print this help and stop\n");
  out +=
      "\nExit codes: 0 done, 64 usage, 66 input, 70 library, 73 cannot create, 74 cannot write or\n"
      "verify, 130 stopped. Until the new file is whole, the old one stays as it is.\n";
  return out;
}

std::string helpJson() {
  return optionsJson() + "\n";
}

}  // namespace host
