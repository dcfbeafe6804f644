// Small string and number helpers, the same in every locale.
#ifndef RAXEL_TEXT_H
#define RAXEL_TEXT_H

#include "raxel/types.h"

RAXEL_BEGIN

RAXEL_EXPORT char *strupr(char *text);
RAXEL_EXPORT char *strlower(char *text);
RAXEL_EXPORT char *strlwr(char *text);
RAXEL_EXPORT int32_t stricmp(const char *a, const char *b);
RAXEL_EXPORT int32_t strnicmp(const char *a, const char *b, int32_t n);
RAXEL_EXPORT double dabs(double x);
RAXEL_EXPORT int32_t roundd(double x);
RAXEL_EXPORT int32_t feqi(int32_t a, int32_t b, int32_t tolerance);

RAXEL_END

#endif
