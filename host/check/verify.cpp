// SPDX-License-Identifier: MIT
#include "check/verify.h"

#include <cmath>

#include "check/libtiff.h"
#include "failure.h"
#include "finish/planned.h"
#include "prepare/plan.h"
#include "prepare/swap.h"

namespace host {
namespace {

class Complaint {
 public:
  explicit Complaint(const std::string &name) : name_(name) {}
  [[noreturn]] void say(const std::string &what) const {
    throw Failure(RAXEL_HOST_NOT_VERIFIED,
                  name_ + ": the check failed: " + what + "; the file is not kept");
  }
  void same(const char *what, double wanted, double got) const {
    if (wanted == got) return;
    say(std::string(what) + " is " + std::to_string(got) + " instead of " + std::to_string(wanted));
  }

 private:
  const std::string &name_;
};

// A resolution as libtiff tells it: the file's fraction as a float.
double told(double dpi) {
  const finish::Rational r = finish::rationalOf(dpi);
  return static_cast<double>(static_cast<float>(static_cast<double>(r.above) / r.below));
}

std::string reasonOf(const TiffReader &reader) {
  return reader.errors().empty() ? "" : " (" + reader.errors().front() + ")";
}

}  // namespace

Meant::Meant(const RaxelPlan &plan, const uint8_t *pixels, const uint8_t *table)
    : plan_(plan), pixels_(pixels, pixels + plan.bytes), table_(table, table + 3 * plan.colors) {}

Meant::Meant(const RaxelPlan &plan, const prepare::RowByRow &rows, const uint8_t *table)
    : plan_(plan), rows_(&rows), pixels_(plan.stride), table_(table, table + 3 * plan.colors) {}

void Meant::rowOf(uint32_t y, std::vector<uint8_t> &out) {
  const size_t at = rows_ ? 0 : size_t{plan_.stride} * (plan_.height - 1 - y);
  if (rows_) rows_->make(y, pixels_.data());
  const uint8_t *in = pixels_.data() + at;
  if (plan_.bits == 24) return prepare::swapRedBlue(in, out.data(), plan_.width);
  const uint8_t flip = prepare::isFax(plan_.compression) ? 0xFF : 0;
  for (size_t i = 0; i < out.size(); ++i) out[i] = static_cast<uint8_t>(in[i] ^ flip);
}

void Meant::compare(std::span<const uint8_t> file, const std::string &name, uint32_t directory) {
  const Complaint complaint(name);
  TiffReader reader(file, directory);
  if (!reader.isOpen()) complaint.say("it cannot be opened" + reasonOf(reader));
  complaint.same("the width", plan_.width, reader.number(TIFFTAG_IMAGEWIDTH, true, 0));
  complaint.same("the height", plan_.height, reader.number(TIFFTAG_IMAGELENGTH, true, 0));
  const bool rgb = plan_.bits == 24;
  complaint.same("the number of channels", rgb ? 3 : 1, reader.number(TIFFTAG_SAMPLESPERPIXEL, false, 0));
  complaint.same("the depth", rgb ? 8 : plan_.bits, reader.number(TIFFTAG_BITSPERSAMPLE, false, 0));
  complaint.same("the compression", finish::compressionTag(plan_.compression),
                 reader.number(TIFFTAG_COMPRESSION, false, 0));
  complaint.same("the kind of colours",
                 rgb                                ? PHOTOMETRIC_RGB
                 : prepare::hasColorMap(plan_.mode) ? PHOTOMETRIC_PALETTE
                 : finish::isMinIsWhite(plan_)      ? PHOTOMETRIC_MINISWHITE
                                                    : PHOTOMETRIC_MINISBLACK,
                 reader.number(TIFFTAG_PHOTOMETRIC, false, 99));
  complaint.same("the resolution across", told(plan_.dpiX), reader.real(TIFFTAG_XRESOLUTION));
  complaint.same("the resolution down", told(plan_.dpiY), reader.real(TIFFTAG_YRESOLUTION));
  if (prepare::hasColorMap(plan_.mode) && reader.colorMap(plan_.bits) != table_)
    complaint.say("the colour map differs");

  const uint64_t bytes = prepare::rowBytes(plan_);
  complaint.same("the row's size", static_cast<double>(bytes), static_cast<double>(reader.rowBytes()));
  std::vector<uint8_t> meant(static_cast<size_t>(bytes)), got(meant.size());
  const uint32_t used = static_cast<uint32_t>(uint64_t{plan_.width} * plan_.bits % 8);
  const unsigned mask = used == 0 ? 0xFF : 0xFF00u >> used & 0xFF;
  for (uint32_t y = 0; y < plan_.height; ++y) {
    rowOf(y, meant);
    if (!reader.readRow(y, got.data()))
      complaint.say("row " + std::to_string(y) + " cannot be decoded" + reasonOf(reader));
    for (size_t i = 0; i < meant.size(); ++i) {
      const unsigned counts = i + 1 == meant.size() ? mask : 0xFF;
      if (((meant[i] ^ got[i]) & counts) == 0) continue;
      complaint.say("row " + std::to_string(y) + " differs from column " +
                    std::to_string(i * 8 / plan_.bits) + " on");
    }
  }
}

}  // namespace host
