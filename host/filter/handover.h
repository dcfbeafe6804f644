// SPDX-License-Identifier: MIT
// Handing a prepared picture to the library.
#pragma once

#include "filter/library.h"
#include "filter/setup.h"
#include "output/stream.h"
#include "prepare/row_by_row.h"
#include "prepare/services.h"
#include "raxel/host.h"

namespace host {

// A picture ready to go: in handle memory, or made by rows.
struct Handover {
  // Of the whole picture, or a band of it.
  const prepare::HandleMemory &pixels;
  const prepare::HandleMemory &table;
  uint16_t bits, width, height;
  // The picture's size, in units of which an inch has so many.
  int32_t extentX, extentY;
  uint16_t unitsPerInch;
  // What makes the rows of a band; null when the pixels are there.
  const prepare::RowByRow *rows = nullptr;
};

// Exports in one call. The result is the library's; whether the picture is complete, the stream knows.
uint32_t exportCells(const Library &library, const Setup &setup, const Handover &picture, const char *name,
                     OutputStream &stream);

// Throws the Failure that keeps an incomplete picture from taking the place of the output of this name.
void checkComplete(const OutputStream &stream, uint32_t result, const std::string &output,
                   const Library &library);

}  // namespace host
