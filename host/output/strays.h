// SPDX-License-Identifier: MIT
// Temporaries beside their outputs: how they are called, locked, and removed when nobody owns them.
#pragma once

#include <string>
#include <vector>

namespace host {

inline constexpr int kSlots = 10;  // names that exports to one file try one after the other

// A path up to and with its last slash; empty when it has none.
std::string folderOf(const std::string &path);
// The name of a temporary: the file's own, hidden, cut where the system's limit could be passed.
std::string slotName(const std::string &path, int slot);
// One for when all of those are taken: the same with a number that nobody foresees.
std::string randomName(const std::string &path);
// The file that a chain of links ends in, there or not; the path itself when it is no link. Empty for a
// chain without an end.
std::string followLinks(std::string path);

enum class Lock {
  kOurs,
  kTheirs,  // somebody else holds it, or it no longer has that name
  kNone,    // the disk has no locks, as some of a network: nobody knows whose it is
};

// Locks an open temporary.
Lock lockTemporary(int fd, const std::string &name);

// Removes what killed exports to the same file have left.
void removeStrays(const std::string &path);
// The same for all files in the folders of these outputs: once a run, since it reads the folders.
void sweepFolders(const std::vector<std::string> &outputs);

}  // namespace host
