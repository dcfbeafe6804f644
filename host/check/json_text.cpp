// SPDX-License-Identifier: MIT
#include "check/json_text.h"

#include <nlohmann/json.hpp>

namespace host {

std::string jsonText(std::string_view text) {
  using Json = nlohmann::json;
  return Json(std::string(text)).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string jsonNumber(double value) {
  return nlohmann::json(value).dump();
}

std::string jsonTexts(const std::vector<std::string> &texts) {
  JsonArray all;
  for (const std::string &text : texts) all.add(text);
  return all.json();
}

void JsonArray::addJson(std::string_view json) {
  if (text_.size() > 1) text_ += ',';
  text_ += json;
}

JsonObject &JsonObject::addJson(std::string_view key, std::string_view json) {
  if (text_.size() > 1) text_ += ',';
  text_.append("\"").append(key).append("\":").append(json);
  return *this;
}

}  // namespace host
