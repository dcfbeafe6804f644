// SPDX-License-Identifier: MIT
// Sets an environment variable for one test and puts the old value back after it.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

class Environment {
 public:
  Environment(const char *name, const char *value) : name_(name) {
    if (const char *old = std::getenv(name)) old_ = old;
    if (value == nullptr) {
      ::unsetenv(name);
    } else {
      ::setenv(name, value, 1);
    }
  }
  ~Environment() {
    if (old_) {
      ::setenv(name_.c_str(), old_->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }
  Environment(const Environment &) = delete;
  Environment &operator=(const Environment &) = delete;

 private:
  std::string name_;
  std::optional<std::string> old_;
};

}  // namespace support
