// SPDX-License-Identifier: MIT
// The preparation with somebody to ask on the way whether it is still wanted.
#pragma once

#include "prepare/source.h"

namespace prepare {

// As raxelHostPrepare; RAXEL_HOST_STOPPED when the interrupt was wanted.
int preparePicture(const RaxelPicture &picture, const RaxelRequest &request, const RaxelServices *services,
                   RaxelPlan &plan, uint8_t *pixels, uint8_t *table, const Interrupt &interrupt);

}  // namespace prepare
