// SPDX-License-Identifier: MIT
// JSON put together as text. Where memory ends on the way there is a text to free, and no tree of values:
// such a tree takes more memory to be freed, and the process ends where there is none.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace host {

// In quotes. What is no UTF-8 is replaced: names of files may be any bytes.
std::string jsonText(std::string_view text);
// The shortest number that is read back as this one.
std::string jsonNumber(double value);
std::string jsonTexts(const std::vector<std::string> &texts);

template <class Value>
std::string jsonOf(const Value &value) {
  if constexpr (std::is_same_v<Value, bool>) {
    return value ? "true" : "false";
  } else if constexpr (std::is_enum_v<Value>) {
    return std::to_string(static_cast<int>(value));
  } else if constexpr (std::is_integral_v<Value>) {
    return std::to_string(value);
  } else if constexpr (std::is_floating_point_v<Value>) {
    return jsonNumber(value);
  } else {
    return jsonText(value);
  }
}

class JsonArray {
 public:
  void addJson(std::string_view json);
  template <class Value>
  void add(const Value &value) {
    addJson(jsonOf(value));
  }
  std::string json() const { return text_ + "]"; }

 private:
  std::string text_ = "[";
};

// Its keys are names of this project's own, and written as they are.
class JsonObject {
 public:
  JsonObject &addJson(std::string_view key, std::string_view json);
  template <class Value>
  JsonObject &add(std::string_view key, const Value &value) {
    return addJson(key, jsonOf(value));
  }
  std::string json() const { return text_ + "}"; }

 private:
  std::string text_ = "{";
};

}  // namespace host
