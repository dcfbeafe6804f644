// SPDX-License-Identifier: MIT
// Plain exported data for the host. The library reads only the session's common block.
#include "raxel/filter.h"

Handle hCommon = 0;
SessionCommon *lpCommon = nullptr;
uint16_t FilterVersion = 1;
uint16_t FilterID = 18;
int32_t NUM_GDSF_CHARSETS = 0;
uint8_t GDSF_CHARSETLIST[34] = {};
char DebugStr[80] = {};
double zero = 0.0;
double one = 1.0;
