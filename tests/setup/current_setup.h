// Leaves the library's idea of the current setup, and the environment, as a test found them.
#pragma once

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "raxel/settings.h"

namespace setup_test {

// A variable of the environment with another value, or none, for as long as this lives.
class Environment {
 public:
  Environment(const char *name, const char *value) : name_(name) {
    if (const char *before = std::getenv(name)) before_ = before;
    value == nullptr ? ::unsetenv(name) : ::setenv(name, value, 1);
  }
  ~Environment() { before_ ? ::setenv(name_, before_->c_str(), 1) : ::unsetenv(name_); }
  Environment(const Environment &) = delete;
  Environment &operator=(const Environment &) = delete;

 private:
  const char *name_;
  std::optional<std::string> before_;
};

// The setup globals, saved and put back. Starts with none of them set.
class Globals {
 public:
  Globals() {
    hRaster = hSetup = 0;
    lpRaster = lpSetup = nullptr;
    std::memset(export_szDLLName, 0, sizeof export_szDLLName);
    std::strcpy(szFilter, "raxel");
    SetDisplayInfo(0, 0, 0, 0);
    SetPrinterInfo(0, 0, 0, 0);
  }
  ~Globals() {
    hRaster = hSetup = 0;
    lpRaster = lpSetup = nullptr;
    std::memset(export_szDLLName, 0, sizeof export_szDLLName);
    std::strcpy(szFilter, "raxel");
    SetDisplayInfo(0, 0, 0, 0);
    SetPrinterInfo(0, 0, 0, 0);
  }
  Globals(const Globals &) = delete;
  Globals &operator=(const Globals &) = delete;

 private:
  Environment display_{"DISPLAYINFO", nullptr};
  Environment profiles_{"INIDIR", nullptr};
};

}  // namespace setup_test
