// SPDX-License-Identifier: MIT
// The pieces of a metafile session that can be looked at one by one.
#pragma once

#include "raxel/filter.h"

namespace entry {

// Sets the writer's fields from a bitmap mode; a code that is none leaves them as they are.
void setWriterFields(TiffWriterState &tiff, int32_t bitmapMode);

// The host's item callback, which a platform's InitPlatformMetafileFilter may supply: (setup handle,
// item, 4, address of a 32-bit value, 0, 0).
using ItemCallback = int32_t (*)(HostWord setup, HostWord item, HostWord size, HostWord value, HostWord,
                                 HostWord);

// Tells the host five settings in the order 1, 2, 6, 5, 3. Item 5 goes out under the handle that the
// initialisation record now holds, and is the record's nLineMode itself: what the host stores there
// stays. A host that destroys the setup meanwhile is told no more.
void tellItems(ItemCallback tell, Handle setup, Handle recordSetup, RasterSetup &settings);

// Renders a recorded metafile into the session's open output. 300 without a metafile, and when the
// host asks to stop before it is rendered.
int32_t renderMetafile(Handle metafile, RasterSetup &settings);

}  // namespace entry
