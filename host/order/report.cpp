// SPDX-License-Identifier: MIT
#include "order/report.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace host {
namespace {

using Json = nlohmann::ordered_json;

Json numberOf(double value) {
  const double kept = std::round(value * 1000) / 1000;
  return kept == std::floor(kept) ? Json(static_cast<int64_t>(kept)) : Json(kept);
}

const char *orNull(const char *text) {
  return text ? text : "";
}

}  // namespace

std::string toJson(const Report &report) {
  Json json{{"input", report.input}, {"exit", report.exit}};
  if (!report.output.empty()) json["output"] = report.output;
  if (!report.error.empty()) json["error"] = report.error;
  if (!report.format.empty()) {
    json["picture"] = {{"format", report.format},
                       {"width", report.width},
                       {"height", report.height},
                       {"bits", report.bits},
                       {"colors", report.colors}};
  }
  if (report.planned) {
    const RaxelPlan &p = report.plan;
    json["file"] = {{"width", p.width},
                    {"height", p.height},
                    {"bits", p.bits},
                    {"mode", orNull(raxelHostModeName(p.mode))},
                    {"compression", orNull(raxelHostCompressionName(p.compression))},
                    {"layout", p.layout == RAXEL_LAYOUT_TILES ? "tiles" : "strips"},
                    {"dpi", {numberOf(p.dpiX), numberOf(p.dpiY)}},
                    {"uncompressedBytes", p.uncompressedBytes}};
    if (p.threshold >= 0) json["file"]["threshold"] = p.threshold;
    if (report.differences) json["file"]["predictor"] = "horizontal";
    if (report.bytes != 0) json["file"]["bytes"] = report.bytes;
  }
  if (report.seen) {
    json["file"] = {{"width", report.fileWidth},
                    {"height", report.fileHeight},
                    {"bits", report.fileBits},
                    {"bytes", report.bytes}};
  }
  if (report.isPaged && report.exit == kDone) {
    json["pages"] = Json::array();
    for (const std::string &page : report.pages) json["pages"].push_back(Json::parse(page));
    if (report.bytes != 0) json["bytes"] = report.bytes;
  }
  if (report.exit == kDone) {
    if (report.isDone) json["skipped"] = true;
    json["dryRun"] = report.dryRun;
    json["verified"] = report.verified;
    json["notes"] = report.notes;
    json["details"] = report.details;
    json["seconds"] = {
        {"read", report.readSeconds}, {"prepare", report.prepareSeconds}, {"write", report.writeSeconds}};
  }
  // Names of files may be any bytes.
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string toJsonDocument(const std::vector<std::string> &reports, int exit) {
  std::string all = "{\"command\":\"export\",\"exit\":" + std::to_string(exit) + ",\"results\":[";
  for (size_t i = 0; i < reports.size(); ++i) all += (i ? ",\n" : "\n") + reports[i];
  return all + "\n]}\n";
}

std::string errorJson(int exit, const std::string &message) {
  return Json{{"command", "none"}, {"exit", exit}, {"error", message}}.dump(
             -1, ' ', false, Json::error_handler_t::replace) +
         "\n";
}

std::string versionJson(const std::string &version) {
  return Json{{"command", "version"}, {"exit", 0}, {"version", version}}.dump() + "\n";
}

}  // namespace host
