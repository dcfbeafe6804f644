// INI profiles: sections of key=value lines, read and rewritten through the classic calls.
#ifndef RAXEL_PROFILE_H
#define RAXEL_PROFILE_H

#include "raxel/types.h"

RAXEL_BEGIN

RAXEL_EXPORT void IniCleanLine(char *text, uint16_t flags);
RAXEL_EXPORT void IniTrimChar(char *text, char character);
RAXEL_EXPORT int32_t GetPrivateProfileString(const char *section, const char *key, const char *fallback,
                                             char *buffer, int32_t size, const char *file);
RAXEL_EXPORT int32_t GetPrivateProfileInt(const char *section, const char *key, int32_t fallback,
                                          const char *file);
RAXEL_EXPORT int32_t WritePrivateProfileString(const char *section, const char *key, const char *value,
                                               const char *file);
RAXEL_EXPORT int32_t GetProfileString(const char *section, const char *key, const char *fallback,
                                      char *buffer, int32_t size);
RAXEL_EXPORT int32_t GetProfileInt(const char *section, const char *key, int32_t fallback);
RAXEL_EXPORT int32_t WriteProfileString(const char *section, const char *key, const char *value);
RAXEL_EXPORT Handle INIopen(char *name, int32_t room, uint32_t mode);
RAXEL_EXPORT int32_t INIclose(Handle stream);
RAXEL_EXPORT int32_t GetProfileDirectory(char *name, const char *modulePath);

RAXEL_END

#endif
