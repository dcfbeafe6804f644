// SPDX-License-Identifier: MIT
// The platform's metafile services. This platform has none: nothing is recorded, so a session opens
// and closes its output and ends with code 300. A platform with metafiles supplies its own five.
#include "raxel/filter.h"

namespace {

// A host word as the signed 32-bit number that it carries.
double coordinate(HostWord word) {
  return static_cast<int32_t>(static_cast<uint32_t>(word));
}

void query(const MetafilePicture &picture, PictureFormat &format) {
  format.dWidth = coordinate(picture.nFrameRight) - coordinate(picture.nFrameLeft);
  format.dHeight = coordinate(picture.nFrameTop) - coordinate(picture.nFrameBottom);
  format.nResolution = static_cast<uint32_t>(picture.nFrameResolution);
  if (format.nResolution != 0) {
    format.dWidth /= format.nResolution;
    format.dHeight /= format.nResolution;
  }
  format.nKind = RAXEL_KIND_METAFILE;
}

template <class Word>
void clear(Word *out) {
  if (out != nullptr) *out = 0;
}

}  // namespace

HostWord InitPlatformMetafileFilter(HostWord value1, HostWord /*value2*/, HostWord * /*status*/,
                                    HostWord *wordA, Handle *setup, HostWord *wordB,
                                    HostWord *itemCallback) {
  clear(wordA);
  clear(setup);
  clear(wordB);
  clear(itemCallback);
  return value1;
}

Handle GetMetaFileHandle() {
  return 0;
}

int32_t DeleteMetaFileHandle() {
  return 0;
}

int32_t TermPlatformMetafileFilter() {
  return 0;
}

// Opening answers no band rows and rendering no pixels: OutputPicture ends with code 27.
HostWord DrawPlatformMetafile(HostWord op, HostWord a, HostWord b, HostWord /*c*/) {
  if (op == RAXEL_DRAW_QUERY && a != 0 && b != 0) {
    query(*reinterpret_cast<const MetafilePicture *>(a), *reinterpret_cast<PictureFormat *>(b));
  }
  return 0;
}
