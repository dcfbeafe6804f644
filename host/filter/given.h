// SPDX-License-Identifier: MIT
// The settings that a command line gives, on their way into a setup.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "filter/setup.h"
#include "order/options.h"
#include "pictures/palette.h"
#include "pictures/picture.h"

namespace host {

// A section that --save is to make: there is none of this name in the profile, or one without a driver.
struct NewSection {
  std::string profile, name;
};

// The setup of a command line: from the profile when one is given, and with the escapes of --set. With a
// section that is yet to be made it holds the library's defaults.
struct Given {
  std::optional<NewSection> newSection;
  Setup setup;

  // Throws a Failure when there is no such profile or section as is asked for.
  Given(const Library &library, const Options &options);
};

// Sends an escape as it was written; throws a Failure that says what is wrong with it.
void sendEscape(Setup &setup, const SetEscape &escape, bool save);

// What is to be done with a picture: the command line first, then the profile or the escapes given, then
// the picture itself. The palette is that of the command line, empty for none, and is borrowed. Notes tell
// of values that had to be changed.
RaxelRequest requestFor(const Options &options, const Palette &palette, const Setup &setup,
                        const Picture &picture, std::vector<std::string> &notes);

// Sends the sides of a box in inches that are given.
void sendSize(Setup &setup, const SizeBox &box, bool save);

// Sends the settings that the command line gives, and no others; stores them in the profile if `save`.
void sendGiven(Setup &setup, const Options &options, bool save);

}  // namespace host
