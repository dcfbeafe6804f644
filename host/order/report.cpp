// SPDX-License-Identifier: MIT
#include "order/report.h"

#include <cmath>

#include "check/json_text.h"

namespace host {
namespace {

std::string thousandths(double value) {
  const double kept = std::round(value * 1000) / 1000;
  return kept == std::floor(kept) ? jsonOf(static_cast<int64_t>(kept)) : jsonOf(kept);
}

const char *orNull(const char *text) {
  return text ? text : "";
}

std::string pictureOf(const Report &report) {
  JsonObject json;
  json.add("format", report.format).add("width", report.width).add("height", report.height);
  json.add("bits", report.bits).add("colors", report.colors);
  return json.json();
}

std::string plannedFileOf(const Report &report) {
  const RaxelPlan &p = report.plan;
  JsonArray dpi;
  dpi.addJson(thousandths(p.dpiX));
  dpi.addJson(thousandths(p.dpiY));
  JsonObject json;
  json.add("width", p.width).add("height", p.height).add("bits", p.bits);
  json.add("mode", orNull(raxelHostModeName(p.mode)));
  json.add("compression", orNull(raxelHostCompressionName(p.compression)));
  json.add("layout", p.layout == RAXEL_LAYOUT_TILES ? "tiles" : "strips");
  json.addJson("dpi", dpi.json());
  json.add("uncompressedBytes", p.uncompressedBytes);
  if (p.threshold >= 0) json.add("threshold", p.threshold);
  if (report.differences) json.add("predictor", "horizontal");
  if (report.bytes != 0) json.add("bytes", report.bytes);
  return json.json();
}

std::string seenFileOf(const Report &report) {
  JsonObject json;
  json.add("width", report.fileWidth).add("height", report.fileHeight).add("bits", report.fileBits);
  return json.add("bytes", report.bytes).json();
}

}  // namespace

std::string toJson(const Report &report) {
  JsonObject json;
  json.add("input", report.input).add("exit", report.exit);
  if (!report.output.empty()) json.add("output", report.output);
  if (!report.error.empty()) json.add("error", report.error);
  if (!report.format.empty()) json.addJson("picture", pictureOf(report));
  if (report.seen) {
    json.addJson("file", seenFileOf(report));
  } else if (report.planned) {
    json.addJson("file", plannedFileOf(report));
  }
  if (report.isPaged && report.exit == kDone) {
    JsonArray pages;
    for (const std::string &page : report.pages) pages.addJson(page);
    json.addJson("pages", pages.json());
    if (report.bytes != 0) json.add("bytes", report.bytes);
  }
  if (report.exit == kDone) {
    if (report.isDone) json.add("skipped", true);
    json.add("dryRun", report.dryRun).add("verified", report.verified);
    json.addJson("notes", jsonTexts(report.notes)).addJson("details", jsonTexts(report.details));
    JsonObject seconds;
    seconds.add("read", report.readSeconds).add("prepare", report.prepareSeconds);
    json.addJson("seconds", seconds.add("write", report.writeSeconds).json());
  }
  return json.json();
}

std::string toJsonDocument(const std::vector<std::string> &reports, int exit) {
  std::string all = "{\"command\":\"export\",\"exit\":" + std::to_string(exit) + ",\"results\":[";
  for (size_t i = 0; i < reports.size(); ++i) all += (i ? ",\n" : "\n") + reports[i];
  return all + "\n]}\n";
}

std::string errorJson(int exit, const std::string &message) {
  return JsonObject().add("command", "none").add("exit", exit).add("error", message).json() + "\n";
}

std::string versionJson(const std::string &version) {
  return JsonObject().add("command", "version").add("exit", 0).add("version", version).json() + "\n";
}

}  // namespace host
