// SPDX-License-Identifier: MIT
// libraxelhost: a picture as it was read becomes a TIFF file that shows it.
//
// The filter writes what it is given: rows from the bottom up, blue before red, sizes in inches,
// fax codes with black and white exchanged. It can also reduce colours, scale and dither, but by
// rules that rarely give the picture that went in. This library does that work ahead of the
// filter, so that the written file shows the picture in every reader, and nothing is converted
// inside. It needs no part of the filter at link time.
//
// The whole road is one call, which looks for the filter, writes beside the old file and puts the
// new one in its place when it is whole:
//
//   RaxelHostJob job;
//   RaxelHostResult result = {sizeof result};
//   raxelHostJobDefaults(&job, sizeof job);
//   job.picture = ...;                        // what was read: rows from the top down
//   job.request.compression = RAXEL_COMPRESS_LZW;
//   job.path = "picture.tif";
//   if (raxelHostExport(&job, &result) != RAXEL_HOST_OK) puts(result.message);
//
// A host that calls the filter itself uses the stages before that:
//
//   raxelHostPlan(&picture, &request, &plan)     sizes, or a refusal
//   ... allocate plan.bytes of zero-filled handle memory, lock it ...
//   raxelHostPrepare(&picture, &request, &services, &plan, pixels, table)
//   ... send the escapes of the plan, fill the picture record, call ExportCellData ...
#ifndef RAXEL_HOST_H
#define RAXEL_HOST_H

#include "raxel/host_export.h"
#include "raxel/host_names.h"
#include "raxel/host_order.h"
#include "raxel/host_picture.h"

#endif
