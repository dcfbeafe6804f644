// SPDX-License-Identifier: MIT
// Which settings record a running export works on.
//
// Host callbacks run in the middle of an export, and what they call may move lpRaster to another
// record or destroy the one in use. An export keeps its record in a SettingsInUse and looks at it
// after every callback; DestroySetup tells all of them which record goes.
#pragma once

namespace runtime {

class SettingsInUse {
 public:
  explicit SettingsInUse(const void *record) : record_(record), outer_(innermost) { innermost = this; }
  ~SettingsInUse() { innermost = outer_; }
  SettingsInUse(const SettingsInUse &) = delete;
  SettingsInUse &operator=(const SettingsInUse &) = delete;

  bool destroyed() const { return destroyed_; }

  // Called with a record that is about to be freed.
  static void forget(const void *record) {
    for (SettingsInUse *use = innermost; use != nullptr; use = use->outer_) {
      if (use->record_ == record) use->destroyed_ = true;
    }
  }

 private:
  static inline SettingsInUse *innermost = nullptr;  // exports nest when a callback starts another

  const void *record_;
  SettingsInUse *outer_;
  bool destroyed_ = false;
};

}  // namespace runtime
