#include "filter/setup.h"

#include "failure.h"
#include "output/hold.h"

namespace host {
namespace {

constexpr int32_t kNoTreatment = 101;

// Stored layout codes.
constexpr uint16_t kStoredTiles = 771, kStoredStrips = 772;

}  // namespace

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
  const Hold hold;
  return library_.escapeSetup(handle_, escape, size, value, nullptr, save ? 1 : 0);
}

void Setup::send(int32_t escape, int32_t size, const void *value, bool save) {
  const int32_t result = tryEscape(escape, size, value, save);
  if (result == 1) return;
  throw Failure(RAXEL_HOST_FILTER_FAILED,
                "setup escape " + std::to_string(escape) +
                    (result == 0 ? " is not handled by this library" : " refuses its value"));
}

void Setup::set(int32_t escape, int32_t value, bool save) {
  send(escape, 4, &value, save);
}
void Setup::set(int32_t escape, double value, bool save) {
  send(escape, 8, &value, save);
}

void Setup::setLayout(int32_t layout) {
  record_->tiff.wLayoutMode = layout == RAXEL_LAYOUT_TILES ? kStoredTiles : kStoredStrips;
}

void Setup::setOutput(StreamProc procedure) {
  send(kOutputProcedure, sizeof(void *), reinterpret_cast<const void *>(procedure), false);
}

void Setup::setStatus(HostWord *status) {
  record_->lpStatus = status;
}

RasterInfoResult Setup::query(const RasterPictureInfo &picture) {
  RasterInfoResult result{};
  library_.escapeSetup(handle_, kGeometry, sizeof picture, &picture, &result, 0);
  return result;
}

void sendPlan(Setup &setup, const RaxelPlan &plan) {
  setup.set(kColorTreatment, kNoTreatment);  // the preparation has treated the colours
  setup.set(kMode, raxelHostModeValue(plan.mode));
  setup.set(kCompression, raxelHostCompressionValue(plan.compression));
  setup.set(kResolutionMode, RAXEL_ESCAPE_USER_RESOLUTION);
  setup.set(kResolutionX, plan.filterDpiX);
  setup.set(kResolutionY, plan.filterDpiY);
  setup.set(kSizeMode, RAXEL_ESCAPE_PICTURE_SIZE);
  setup.setLayout(plan.layout);
}

}  // namespace host
