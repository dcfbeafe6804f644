// SPDX-License-Identifier: MIT
// INI profiles: text files of sections and key=value lines, read and rewritten through the classic
// calls.
//
//   [TIF Export]            ; a section's name, in brackets by convention
//   Color Mode=104          ; the key ends directly before the "="
//
// Lines end in LF, CR LF or CR, and the last one may end without; longer ones are read in pieces of
// 256 bytes. A semicolon starts a comment anywhere. Names of sections and keys compare without regard
// to the case of ASCII letters. All texts are the caller's and end at a zero byte.
//
// A profile is looked for under its name as given, and then in the folder that the environment
// variable INIDIR names. No call reports an error: a profile that cannot be read holds the defaults,
// and a write that cannot be done changes nothing.
#ifndef RAXEL_PROFILE_H
#define RAXEL_PROFILE_H

#include "raxel/types.h"

RAXEL_BEGIN

// Cleans a line in place: every CR and LF goes, every square bracket unless flag 1 is set, and every
// double quote unless flag 4 is set (two in a row then stand for one). Then the text is cut at its
// first semicolon and stripped of spaces at both ends.
RAXEL_EXPORT void IniCleanLine(char *text, uint16_t flags);

// Strips a character from both ends in place: all of them, but of double quotes only one at each end.
RAXEL_EXPORT void IniTrimChar(char *text, char character);

// Reads a key's value.
//   section   name, with or without brackets; null or empty gives 0
//   key       null lists the names of all keys instead, each with a zero byte behind it
//   fallback  what the buffer holds when there is no value; null gives 0
//   buffer    `size` bytes, cleared first; a size below 1 holds nothing, and null asks for the length:
//             that of the default, or of the value up to `size`
// Returns the bytes placed in the buffer. A value is laid over the default without a terminator: a
// stored 8 over the default 6.67 reads as 8.67, and a value that fills the buffer is not terminated.
// For a list the result is the length of all names together; a list that does not fit ends in two
// zero bytes, as far as it has two, and the result is size - 1.
RAXEL_EXPORT int32_t GetPrivateProfileString(const char *section, const char *key, const char *fallback,
                                             char *buffer, int32_t size, const char *file);

// Reads a key's value as a number modulo 2^32: hexadecimal digits behind "0x" or "0X", otherwise the
// decimal digits at its start, 0 when there are none ("-5" is 0). Returns `fallback` for a value that
// is absent or empty. The first 32 characters of the value count.
RAXEL_EXPORT int32_t GetPrivateProfileInt(const char *section, const char *key, int32_t fallback,
                                          const char *file);

// Writes a key's value: replaces every line of the key in the section, or adds one at the section's
// end, or appends the section to the file. A null value takes the key's lines out (and the section's
// header with the last line), a null key the whole section. Always returns 0.
//
// The profile is replaced as a whole, by renaming a finished copy over it: it is the old or the new
// one at every moment, and keeps its permissions, its line endings and, when it is reached through a
// link, its place. A profile that does not exist is created under the name as given; one that exists
// but cannot be read, and anything but a plain file, is left alone. A null section, a null file name
// and an empty one do nothing.
RAXEL_EXPORT int32_t WritePrivateProfileString(const char *section, const char *key, const char *value,
                                               const char *file);

// The same on the profile "KVL.INI".
RAXEL_EXPORT int32_t GetProfileString(const char *section, const char *key, const char *fallback,
                                      char *buffer, int32_t size);
RAXEL_EXPORT int32_t GetProfileInt(const char *section, const char *key, int32_t fallback);
RAXEL_EXPORT int32_t WriteProfileString(const char *section, const char *key, const char *value);

// Opens a profile with a mode of raxel/stream.h, under its name or else under INIDIR. In the second
// case the full path replaces the name when `room` is above 0, cut to `room` bytes with its zero byte.
// Returns a stream handle, or 0.
RAXEL_EXPORT Handle INIopen(char *name, int32_t room, uint32_t mode);

// Closes a stream, and returns what kvlClose does; 0 for the null handle.
RAXEL_EXPORT int32_t INIclose(Handle stream);

// Finds a profile for a settings record: under INIDIR first, then under its name.
//   name        room for 144 bytes; holds the path afterwards when the profile was found
//   modulePath  where the name is empty, the profile is called like this file, with ".ini"; may be null
// Returns 0 when it was found, 1 when not; the name then stays as it was. A path of more than 143
// characters is not found.
RAXEL_EXPORT int32_t GetProfileDirectory(char *name, const char *modulePath);

RAXEL_END

#endif
