// SPDX-License-Identifier: MIT
#include "filter/metadata.h"

#include <cstring>
#include <optional>

#include "failure.h"

namespace host {
namespace {

// Of an ICC profile (ICC.1, section 7.2): its header, which begins with the size of the whole, and in it
// the colour space and the signature.
constexpr size_t kProfileHeader = 128, kSpaceAt = 16, kSignatureAt = 36;

bool beginsAsProfile(std::span<const uint8_t> bytes) {
  return bytes.size() >= kProfileHeader && std::memcmp(bytes.data() + kSignatureAt, "acsp", 4) == 0;
}

constexpr Wanted kProfile{"ICC profile", "an ICC profile in it", "is no ICC profile", beginsAsProfile,
                          uint64_t{16} << 20};

bool isProfile(const std::vector<uint8_t> &icc) {
  if (!beginsAsProfile(icc)) return false;
  const uint32_t size = uint32_t{icc[0]} << 24 | uint32_t{icc[1]} << 16 | uint32_t{icc[2]} << 8 | icc[3];
  return size >= kProfileHeader && size <= icc.size();
}

// The colour space that a profile is for, as its four letters without spaces.
std::string spaceOf(const std::vector<uint8_t> &icc) {
  std::string space(icc.begin() + kSpaceAt, icc.begin() + kSpaceAt + 4);
  space.resize(space.find_last_not_of(' ') + 1);
  return space;
}

bool isGreyMode(int32_t mode) {
  return mode == RAXEL_MODE_GREY16 || mode == RAXEL_MODE_GREY256;
}

// Why a profile does not belong into the file; empty when it does.
std::string misfit(const std::vector<uint8_t> &icc, const Picture &picture, const RaxelRequest &request) {
  if (!isProfile(icc)) return "it is damaged";
  if (request.treatment != RAXEL_TREAT_NONE) return "the colours are changed";
  if (request.mode == RAXEL_MODE_GREY16 && picture.view.bits > 4) return "the greys are reduced";
  const std::string space = spaceOf(icc);
  if (request.mode == RAXEL_MODE_RGB && space == "RGB") return "";
  if (isGreyMode(request.mode) && space == "GRAY") return "";
  return "it is for " + space + ", and the mode is " + raxelHostModeName(request.mode);
}

const char *text(const std::optional<std::string> &given, const std::string &own) {
  return (given ? *given : own).c_str();
}

std::string listed(const std::vector<std::string> &things) {
  std::string list;
  for (const std::string &thing : things) list += (list.empty() ? "" : ", ") + thing;
  return list;
}

}  // namespace

std::vector<uint8_t> givenProfile(const Options &options) {
  if (options.icc == Options::kKeepProfile || options.icc == Options::kDropProfile) return {};
  const Input input(options.icc, kProfile);
  std::vector<uint8_t> icc(input.bytes().begin(), input.bytes().end());
  if (icc.size() > kProfile.longest || !isProfile(icc))
    throw Failure(kNoInput, input.name() + ": " + kProfile.unlike);
  return icc;
}

RaxelMetadata metadataFor(const Options &options, const std::vector<uint8_t> &profile,
                          const Picture &picture, const RaxelRequest &request,
                          std::vector<std::string> &notes) {
  const Metadata &own = picture.metadata;
  RaxelMetadata out{};
  out.size = sizeof out;
  out.description = text(options.description, own.description);
  out.artist = text(options.artist, own.artist);
  out.copyright = text(options.copyright, own.copyright);
  out.dateTime = options.date.c_str();
  std::vector<std::string> dropped = own.dropped;
  const std::vector<uint8_t> &icc = profile.empty() ? own.icc : profile;
  if (options.icc != Options::kDropProfile && !icc.empty()) {
    const std::string why = misfit(icc, picture, request);
    if (!why.empty() && !profile.empty()) throw Failure(kUsage, "--icc " + options.icc + ": " + why);
    if (why.empty()) {
      out.icc = icc.data();
      out.iccBytes = icc.size();
    } else {
      dropped.push_back("the ICC profile (" + why + ")");
    }
  }
  if (!dropped.empty()) notes.push_back("not carried over: " + listed(dropped));
  return out;
}

}  // namespace host
