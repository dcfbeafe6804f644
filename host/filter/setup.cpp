// SPDX-License-Identifier: MIT
#include "filter/setup.h"

#include <optional>

#include "failure.h"
#include "output/hold.h"

namespace host {

Setup::Setup(const Library &library, const std::string &profile, const std::string &section)
    : library_(library), handle_(library.createSetup(0, profile.c_str(), section.c_str(), nullptr)) {
  if (handle_ == 0) throw Failure(RAXEL_HOST_FILTER_FAILED, library.path + ": cannot create a setup");
  record_ = static_cast<RasterSetup *>(library.services.GlobalLock(handle_));
}

Setup::~Setup() {
  library_.services.GlobalUnlock(handle_);
  library_.destroySetup(handle_);
}

int32_t Setup::tryEscape(int32_t escape, int32_t size, const void *value, bool save) {
  // A profile being rewritten is not left half done, nor are its temporary files left behind.
  std::optional<Hold> hold;
  if (save) hold.emplace();
  return library_.escapeSetup(handle_, escape, size, value, nullptr, save ? 1 : 0);
}

void Setup::send(int32_t escape, int32_t size, const void *value, bool save) {
  const int32_t result = tryEscape(escape, size, value, save);
  if (result == RAXEL_ESCAPE_DONE) return;
  throw Failure(
      RAXEL_HOST_FILTER_FAILED,
      "setup escape " + std::to_string(escape) +
          (result == RAXEL_ESCAPE_UNKNOWN ? " is not handled by this library" : " refuses its value"));
}

void Setup::set(int32_t escape, int32_t value, bool save) {
  send(escape, 4, &value, save);
}
void Setup::set(int32_t escape, double value, bool save) {
  send(escape, 8, &value, save);
}

void Setup::setLayout(int32_t layout) {
  record_->tiff.wLayoutMode =
      layout == RAXEL_LAYOUT_TILES ? RAXEL_STORED_LAYOUT_TILES : RAXEL_STORED_LAYOUT_STRIPS;
}

void Setup::makeCurrent() {
  *library_.settings = record_;
}

void Setup::setOutput(StreamProc procedure) {
  send(RAXEL_ESCAPE_SET_OUTPUT_PROC, sizeof(void *), reinterpret_cast<const void *>(procedure), false);
}

void Setup::setStatus(HostWord *status) {
  record_->lpStatus = status;
}

RasterInfoResult Setup::query(const RasterPictureInfo &picture) {
  RasterInfoResult result{};
  library_.escapeSetup(handle_, RAXEL_ESCAPE_GET_RASTER_INFO, sizeof picture, &picture, &result, 0);
  return result;
}

void sendPlan(Setup &setup, const RaxelPlan &plan) {
  setup.set(RAXEL_ESCAPE_SET_COLOR_MODE, RAXEL_ASK_COLORS);  // the preparation has treated the colours
  setup.set(RAXEL_ESCAPE_SET_BITMAP_MODE, raxelHostModeValue(plan.mode));
  setup.set(RAXEL_ESCAPE_SET_COMPRESSION, raxelHostCompressionValue(plan.compression));
  setup.set(RAXEL_ESCAPE_SET_RESOLUTION_MODE, RAXEL_ASK_RESOLUTION_USER);
  setup.set(RAXEL_ESCAPE_SET_X_RESOLUTION, plan.filterDpiX);
  setup.set(RAXEL_ESCAPE_SET_Y_RESOLUTION, plan.filterDpiY);
  setup.set(RAXEL_ESCAPE_SET_SIZE_MODE, RAXEL_ASK_SIZE_PICTURE);
  setup.setLayout(plan.layout);
}

}  // namespace host
