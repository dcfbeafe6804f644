// SPDX-License-Identifier: MIT
#include "prepare/row_by_row.h"

#include "prepare/colors.h"
#include "prepare/greys.h"

namespace prepare {

bool isRowByRow(uint32_t bits, const RaxelRequest &request, const RaxelPlan &plan) {
  switch (plan.mode) {
    case RAXEL_MODE_RGB:
    case RAXEL_MODE_GREY256:
      return true;
    case RAXEL_MODE_BILEVEL:
      return isTwoColors(bits, request);
    case RAXEL_MODE_COLOR16:
    case RAXEL_MODE_COLOR256:
      return bits <= plan.bits && !request.palette;
    default:
      return false;
  }
}

MakeRow rowMaker(const Source &source, RaxelPlan &plan, uint8_t *table) {
  switch (plan.mode) {
    case RAXEL_MODE_RGB:
      return rgbRows(source);
    case RAXEL_MODE_GREY256:
      return grey256Rows(source, plan, table);
    case RAXEL_MODE_BILEVEL:
      return twoColorRows(source, plan, table);
    default:
      return indexRows(source, plan, table);
  }
}

RowByRow::RowByRow(const RaxelPicture &picture, const RaxelRequest &request, const RaxelServices &services,
                   RaxelPlan &plan, uint8_t *table)
    : source_(picture, request.treatment, &services),
      make_(rowMaker(source_, plan, table)),
      rows_(picture.height) {}

}  // namespace prepare
