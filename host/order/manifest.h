// SPDX-License-Identifier: MIT
// The manifest of finished pictures: a line of JSON for each, by which a run that was killed goes on, and
// machines that share a folder know what is done.
//
//   {"source":"a.png","target":"out/a.tif","sha256":"...","bytes":1234,"options":{"compress":"lzw"},
//    "seconds":0.123,"sourceSha256":"...","sourceBytes":999,"sourceTime":1700000000123456789}
//
// A picture of several sources has their names as an array, their bytes together, the latest time and the
// digest of one behind the other. Options are those that decide on the file's bytes, as they were written;
// where they name files, a profile or an ICC profile, "optionsSha256" is the digest of these.
#pragma once

#include "order/export_task.h"

namespace host {

struct OptionRow;

// The files that options name: an ICC profile, a palette, a profile that is there.
std::vector<std::string> optionFilesOf(const Options &options);

// Whether an option decides on the bytes of a file, and so belongs to what the manifest says of it.
bool decidesOnBytes(const OptionRow &row);

// Before the first picture: throws a Failure where a line could not be appended, and makes ready what
// processes that are started afterwards would else do each by itself.
void openManifest(const Options &options);

// Exports the task as exportTask does. With the option "manifest" a line is appended by one write when the
// file is in its place; with "resume" nothing is done when the manifest has a line of the same options and
// sources, by size, time and digest, and the target has that line's digest: the report then says so.
void exportRecorded(const Library &library, const Options &options, const Task &task, const Caller &caller,
                    Report &report);

}  // namespace host
