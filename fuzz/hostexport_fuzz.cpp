// SPDX-License-Identifier: MIT
// raxelHostExport with any job: pictures of any depth, stride and table, requests that make sense and such
// that do not, files of several pages, outputs in memory and through a procedure that fails, hosts that
// stop. A file that comes out shows the picture.
#include <cstring>
#include <limits>
#include <memory>

#include "check/directory.h"
#include "finish/tags.h"
#include "input.h"
#include "raxel/host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using fuzz::oneOf;

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

// One of an enumeration, and now and then none of it.
int32_t choice(fuzz::Input &input, int count) {
  const unsigned byte = input.byte();
  if (byte >= 252) return static_cast<int32_t>(byte) - 253;
  return static_cast<int32_t>(byte % static_cast<unsigned>(count));
}

// A page: a picture in places of exactly its size, and what is wanted of it.
class Page {
 public:
  Page(fuzz::Input &input, bool isLarge, RaxelPicture &picture, RaxelRequest &request)
      : colors_(input.byte() + 1u),
        paletteColors_(input.byte() + 1u),
        table_(ramp(input, colors_)),
        palette_(ramp(input, paletteColors_)),
        rows_(rowsOf(input, isLarge, picture)) {
    picture.rows = input.once(64) ? nullptr : rows_.data();
    picture.table = colors_ % 4 == 0 ? nullptr : table_.data();
    picture.colors = picture.table == nullptr ? 0 : colors_;
    fill(input, request);
  }

 private:
  static std::vector<uint8_t> ramp(fuzz::Input &input, size_t colors) {
    const uint8_t start = input.byte(), step = input.byte();
    std::vector<uint8_t> bytes(3 * colors);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(start + i * step);
    return bytes;
  }

  static std::vector<uint8_t> rowsOf(fuzz::Input &input, bool isLarge, RaxelPicture &picture) {
    picture.bits = oneOf<uint32_t>(input, {1, 2, 4, 8, 24, 1, 8, 24, 0, 3, 16, 32});
    picture.width = input.byte() % (isLarge ? 70u : 26u);
    picture.height = input.byte() % (isLarge ? 50u : 12u);
    const size_t rowBytes = (size_t{picture.width} * picture.bits + 7) / 8;
    picture.stride = rowBytes + (input.once(4) ? input.byte() % 16u : 0u);
    if (input.once(32)) picture.stride = rowBytes / 2;  // refused, and so never read
    // The last row may end with its pixels.
    const size_t count = picture.height == 0 ? 0 : picture.stride * (picture.height - 1) + rowBytes;
    std::vector<uint8_t> pixels = input.bytes(std::min<size_t>(count, input.byte()));
    const size_t given = pixels.size();
    const uint8_t change = input.byte();
    pixels.resize(count);
    for (size_t i = given; i < count && given != 0; ++i)
      pixels[i] = static_cast<uint8_t>(pixels[i - given] + change);
    return pixels;
  }

  void fill(fuzz::Input &input, RaxelRequest &request) {
    request.mode = choice(input, RAXEL_MODES);
    request.compression = choice(input, RAXEL_COMPRESSIONS);
    // Choosing colours, and LZW's tables of megabytes, take longer than all else of a small picture.
    const bool chooses = request.mode == RAXEL_MODE_COLOR16 || request.mode == RAXEL_MODE_COLOR256;
    if (chooses && !input.rarely(13)) request.mode = RAXEL_MODE_COLOR8;
    if (request.compression == RAXEL_COMPRESS_LZW && !input.rarely(17)) {
      request.compression = RAXEL_COMPRESS_PACKBITS;
    }
    request.layout = input.once(4) ? choice(input, RAXEL_LAYOUT_TILES + 1) : int32_t{RAXEL_LAYOUT_STRIPS};
    const double dpi[] = {96, 100, 300, 72.5, 32, 400, 1, 100000, 0, -1, 31, kNotANumber, 1e300, 204};
    request.dpiX = oneOf(input, dpi);
    request.dpiY = input.once(2) ? oneOf(input, dpi) : request.dpiX;
    const unsigned sizes = input.byte();
    if (sizes % 8 == 1) request.inchesX = inches(input, request.dpiX);
    if (sizes % 8 == 2) request.inchesY = inches(input, request.dpiY);
    if (sizes % 8 == 3) {
      request.inchesX = inches(input, request.dpiX);
      request.inchesY = inches(input, request.dpiY);
    }
    if (sizes % 8 == 4) {
      request.pageWidth = input.byte();
      request.pageHeight = input.byte();
    }
    if (input.once(4)) request.treatment = choice(input, RAXEL_TREATMENTS);
    if (input.once(2)) request.dither = choice(input, RAXEL_DITHER_OFF + 1);
    if (input.once(4)) request.quantizer = choice(input, RAXEL_QUANTIZERS);
    if (input.once(4)) request.threshold = choice(input, RAXEL_THRESHOLDS);
    request.thresholdLevel = input.byte();
    if (input.once(4)) {
      request.paletteColors = paletteColors_;
      request.palette = input.once(8) ? nullptr : palette_.data();
    }
    request.finish = input.once(4) ? 0 : 1;
    if (input.once(4)) request.strips = choice(input, RAXEL_STRIPS_ONE + 1);
  }

  // A side of at most some 200 pixels, or one that is refused.
  static double inches(fuzz::Input &input, double dpi) {
    const unsigned byte = input.byte();
    if (byte == 255) return kNotANumber;
    if (byte == 254) return -1;
    if (byte == 253) return 1e300;
    return dpi >= 1 ? byte / dpi : 1;
  }

  uint32_t colors_, paletteColors_;
  fuzz::Exact table_, palette_, rows_;
};

// Whether a page is refused or has no more pixels than that.
bool isModest(const RaxelPicture &picture, const RaxelRequest &request, uint64_t mostPixels) {
  RaxelPlan plan;
  return raxelHostPlan(&picture, &request, &plan) != RAXEL_HOST_OK ||
         uint64_t{plan.width} * plan.height <= mostPixels;
}

// The program around the export.
struct Program {
  fuzz::Input &input;
  bool isLarge;
  uint64_t mostPixels;
  unsigned untilStop = 0, untilRefusal = 0, pages = 1;
  std::vector<std::unique_ptr<Page>> shown;
  std::vector<uint8_t> written;

  static int32_t progress(void *context, int32_t stage, double part, uint64_t) {
    auto &self = *static_cast<Program *>(context);
    fuzz::require(stage == RAXEL_STAGE_PREPARING || stage == RAXEL_STAGE_WRITING, "a stage that there is");
    fuzz::require(part >= 0 && part <= 1, "a part of it");
    return self.untilStop > 0 && --self.untilStop == 0 ? 1 : 0;
  }
  static int32_t write(void *context, const void *bytes, uint64_t count) {
    auto &self = *static_cast<Program *>(context);
    if (self.untilRefusal > 0 && --self.untilRefusal == 0) return 28;
    const auto *from = static_cast<const uint8_t *>(bytes);
    self.written.insert(self.written.end(), from, from + count);
    return 0;
  }
  static int32_t nextPage(void *context, uint32_t page, const RaxelHostResult *before,
                          RaxelPicture *picture, RaxelRequest *request) {
    auto &self = *static_cast<Program *>(context);
    fuzz::require(page == self.shown.size() && before != nullptr, "the next page");
    if (page >= self.pages) return self.input.once(16) ? 7 : 0;
    self.shown.push_back(std::make_unique<Page>(self.input, self.isLarge, *picture, *request));
    return isModest(*picture, *request, self.mostPixels) ? 1 : 0;
  }
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  RaxelHostJob job;
  raxelHostJobDefaults(&job, sizeof job);
  const unsigned what = input.byte();
  // Large pages take long, and are tried now and then, the largest rarely.
  const bool isLarge = input.rarely(64);
  Program program{input, isLarge, input.rarely(2048) ? 200000u : isLarge ? 24000u : 1500u, 0, 0, 1, {}, {}};
  job.context = &program;
  job.flags = RAXEL_HOST_VERIFY;
  if (what % 16 == 1) job.flags |= RAXEL_HOST_DRY_RUN;
  if (what % 16 == 2) job.flags = 0;
  if (what % 4 == 3) job.write = &Program::write;
  if (what / 16 == 1) program.untilRefusal = 1;
  if (what / 16 == 2) program.untilStop = input.byte() % 8 + 1;
  if (what / 16 < 4) job.progress = &Program::progress;
  if (what / 16 == 5) {
    program.pages = input.byte() % 4 + 1;
    job.nextPage = &Program::nextPage;
  }
  job.road = what / 16 == 6 ? choice(input, RAXEL_ROADS) : int32_t{RAXEL_ROAD_CELL};
  job.predictor = choice(input, RAXEL_PREDICTORS);
  RaxelMetadata metadata{};
  const std::vector<uint8_t> icc(130, 'p');
  if (what / 16 == 7) {
    metadata.size = sizeof metadata;
    metadata.description = "a description";
    metadata.copyright = "";
    metadata.icc = icc.data();
    metadata.iccBytes = icc.size();
    job.metadata = &metadata;
  }
  program.shown.push_back(std::make_unique<Page>(input, program.isLarge, job.picture, job.request));
  if (!isModest(job.picture, job.request, program.mostPixels)) return 0;

  RaxelHostResult result{};
  result.size = sizeof result;
  const int code = raxelHostExport(&job, &result);
  fuzz::require(code == result.code && code >= 0 && code < RAXEL_HOST_CODES, "a code that there is");
  fuzz::require(code != RAXEL_HOST_NO_FILTER, "the filter lies beside the program");
  fuzz::require(code != RAXEL_HOST_NOT_VERIFIED, "the file shows the picture");
  fuzz::require((code == RAXEL_HOST_OK) == (result.message[0] == '\0'), "a failure says why");
  if (code != RAXEL_HOST_OK) {
    fuzz::require(result.memory == nullptr && result.bytes == 0, "nothing is kept of a failure");
  } else if ((job.flags & RAXEL_HOST_DRY_RUN) == 0) {
    const std::vector<uint8_t> file =
        job.write != nullptr ? program.written
                             : std::vector<uint8_t>(result.memory, result.memory + result.bytes);
    fuzz::require(file.size() == result.bytes, "as many bytes as told");
    const host::Directory directory = host::readDirectory(file);
    fuzz::require(!directory.entries.empty() && directory.cut.empty(), "a TIFF file that is whole");
    if (job.nextPage == nullptr) {
      fuzz::require(directory.value(finish::kImageWidth, 0) == result.plan.width &&
                        directory.value(finish::kImageLength, 0) == result.plan.height,
                    "of the planned size");
      fuzz::require(job.request.finish == 0 || directory.faults.empty(),
                    "a finished directory has no fault");
    }
  }
  raxelHostFree(result.memory);
  return 0;
}
