// SPDX-License-Identifier: MIT
#include "order/option_list.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "order/option_table.h"

namespace host {

std::string optionsJson() {
  using Json = nlohmann::ordered_json;
  Json options = Json::array();
  for (const OptionRow &row : kOptions) {
    Json option{{"name", row.longName}, {"group", row.group}, {"help", row.help}};
    if (row.shortName) option["short"] = std::string(1, row.shortName);
    if (!row.argument.empty()) option["argument"] = row.argument;
    if (row.completes == Completes::kChoices) {
      std::istringstream words{std::string(row.choices)};
      option["choices"] = Json::array();
      for (std::string word; words >> word;) option["choices"].push_back(word);
    }
    options.push_back(option);
  }
  return Json{{"command", "help"}, {"exit", 0}, {"options", options}}.dump();
}

}  // namespace host
