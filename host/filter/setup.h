// SPDX-License-Identifier: MIT
// One export configuration in the library, for as long as a picture takes.
#pragma once

#include <string>

#include "filter/library.h"

namespace host {

// Where no file can be: the library then takes its own defaults, and looks for no other profile.
inline constexpr const char *kNoProfile = "/dev/null/none";

class Setup {
 public:
  // Creates the setup, from a section of a profile or with the library's defaults.
  explicit Setup(const Library &library, const std::string &profile = kNoProfile,
                 const std::string &section = "");
  ~Setup();
  Setup(const Setup &) = delete;
  Setup &operator=(const Setup &) = delete;

  Handle handle() const { return handle_; }
  // The record as it is now.
  const RasterSetup &record() const { return *record_; }
  // True when the record comes from a profile. Without one it holds the library's defaults, which nobody
  // has chosen; with one whose section is empty it holds zeros.
  bool fromProfile() const { return record_->szProfilePath[0] != '\0' && record_->szDriverName[0] != '\0'; }

  // Sends a setting escape of 4 or 8 bytes; throws a Failure when the library refuses the value.
  void set(int32_t escape, int32_t value, bool save = false);
  void set(int32_t escape, double value, bool save = false);
  // Sends an escape of any kind: 1 when it was done, 0 for one that is not known, -1 for a value refused.
  int32_t tryEscape(int32_t escape, int32_t size, const void *value, bool save);
  // Strips or tiles. Only the profile can say it, and otherwise the record.
  void setLayout(int32_t layout);
  // Makes the record the one that the filter's pipeline goes by.
  void makeCurrent();
  // Hands output over to a stream procedure.
  void setOutput(StreamProc procedure);
  // Makes progress known to the host on roads that do not do it by themselves.
  void setStatus(HostWord *status);
  // Size in pixels and signed depth of what would be written.
  RasterInfoResult query(const RasterPictureInfo &picture);

 private:
  void send(int32_t escape, int32_t size, const void *value, bool save);

  const Library &library_;
  Handle handle_ = 0;
  RasterSetup *record_ = nullptr;
};

// Sends the settings of a plan.
void sendPlan(Setup &setup, const RaxelPlan &plan);

}  // namespace host
