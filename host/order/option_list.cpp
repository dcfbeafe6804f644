// SPDX-License-Identifier: MIT
#include "order/option_list.h"

#include <sstream>

#include "check/json_text.h"
#include "order/option_table.h"

namespace host {

std::string optionsJson() {
  JsonArray options;
  for (const OptionRow &row : kOptions) {
    JsonObject option;
    option.add("name", row.longName).add("group", row.group).add("help", row.help);
    if (row.shortName) option.add("short", std::string(1, row.shortName));
    if (!row.argument.empty()) option.add("argument", row.argument);
    if (row.completes == Completes::kChoices) {
      std::istringstream words{std::string(row.choices)};
      JsonArray choices;
      for (std::string word; words >> word;) choices.add(word);
      option.addJson("choices", choices.json());
    }
    options.addJson(option.json());
  }
  return JsonObject().add("command", "help").add("exit", 0).addJson("options", options.json()).json();
}

}  // namespace host
