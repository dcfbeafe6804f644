// One export configuration in the library, for as long as a picture takes.
#pragma once

#include <optional>
#include <string>

#include "command/options.h"
#include "filter/library.h"
#include "pictures/picture.h"

namespace host {

// Setup escapes.
enum Escape : int32_t {
  kColorTreatment = 1,
  kMode = 9,
  kCompression = 10,
  kResolutionX = 11,
  kResolutionY = 12,
  kWidth = 13,
  kHeight = 14,
  kResolutionMode = 18,
  kSizeMode = 19,
  kUserData = 25,
  kGeometry = 56,
  kOutputProcedure = 81,
};

// A section that --save is to make: there is none of this name in the profile, or one without a driver.
struct NewSection {
  std::string profile, name;
};

class Setup {
 public:
  // Creates the setup, from the profile when one is given, and sends the escapes of --set. With a section
  // that is yet to be made it holds the library's defaults.
  Setup(const Library &library, const Options &options);
  ~Setup();
  Setup(const Setup &) = delete;
  Setup &operator=(const Setup &) = delete;

  Handle handle() const { return handle_; }
  // The record as it is now.
  const RasterSetup &record() const { return *record_; }
  // True when the record comes from a profile. Without one it holds the library's defaults, which nobody
  // has chosen; with one whose section is empty it holds zeros.
  bool fromProfile() const { return record_->szProfilePath[0] != '\0' && record_->szDriverName[0] != '\0'; }

  const std::optional<NewSection> &newSection() const { return newSection_; }

  // Sends a setting escape of 4 or 8 bytes; throws a Failure when the library refuses the value.
  void set(int32_t escape, int32_t value, bool save = false);
  void set(int32_t escape, double value, bool save = false);
  // Sends an escape as it was written; throws a Failure that says what is wrong with it.
  void sendEscape(const SetEscape &escape, bool save);
  // Strips or tiles. Only the profile can say it, and otherwise the record.
  void setLayout(int32_t layout);
  // Hands output over to a stream procedure.
  void setOutput(StreamProc procedure);
  // Makes progress known to the host on roads that do not do it by themselves.
  void setStatus(HostWord *status);
  // Size in pixels and signed depth of what would be written (escape 56).
  RasterInfoResult query(const RasterPictureInfo &picture);

 private:
  void create(const char *profile, const char *section);
  void destroy();
  void checkProfile(const Options &options);
  void send(int32_t escape, int32_t size, const void *value, bool save);

  const Library &library_;
  Handle handle_ = 0;
  RasterSetup *record_ = nullptr;
  std::optional<NewSection> newSection_;
};

// What is to be done with a picture: the command line first, then the profile or the escapes given, then
// the picture itself. Notes tell of values that had to be changed.
RaxelRequest requestFor(const Options &options, const Setup &setup, const Picture &picture,
                        std::vector<std::string> &notes);

// Sends the settings of a plan.
void sendPlan(Setup &setup, const RaxelPlan &plan);

// Sends the sides of a box in inches that are given.
void sendSize(Setup &setup, const SizeBox &box, bool save);

// Sends the settings that the command line gives, and no others; stores them in the profile if `save`.
void sendGiven(Setup &setup, const Options &options, bool save);

}  // namespace host
