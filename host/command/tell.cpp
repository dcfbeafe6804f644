// SPDX-License-Identifier: MIT
#include "command/tell.h"

#include <cstdio>

namespace host {
namespace {

// A resolution as the file has it, in thousandths.
std::string decimal(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.3f", value);
  std::string out = text;
  out.erase(out.find_last_not_of('0') + 1);
  if (out.back() == '.') out.pop_back();
  return out;
}

std::string geometry(const Report &report) {
  const RaxelPlan &p = report.plan;
  char text[200];
  if (report.seen) {
    std::snprintf(text, sizeof text, "%u by %u pixels of %u bits", report.fileWidth, report.fileHeight,
                  report.fileBits);
    return text;
  }
  std::snprintf(text, sizeof text, "%u by %u pixels, %s, %s%s%s, %s by %s dots an inch", p.width, p.height,
                raxelHostModeName(p.mode), raxelHostCompressionName(p.compression),
                report.differences ? " of differences" : "",
                p.layout == RAXEL_LAYOUT_TILES ? " in tiles" : "", decimal(p.dpiX).c_str(),
                decimal(p.dpiY).c_str());
  return text;
}

// What --dry-run tells.
std::string outlook(const Report &report) {
  if (report.seen) return geometry(report) + "; " + std::to_string(report.bytes) + " bytes";
  return geometry(report) + "; " + std::to_string(report.plan.uncompressedBytes) + " bytes uncompressed";
}

void tellNotes(const Report &report, const Options &options) {
  if (!options.quiet) {
    for (const std::string &note : report.notes) say(report.input + ": note: " + note);
  }
  if (options.verbose) {
    for (const std::string &detail : report.details) say(report.input + ": " + detail);
  }
}

}  // namespace

std::string printable(std::string_view text) {
  std::string out;
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      out += c;
      continue;
    }
    char code[8];
    std::snprintf(code, sizeof code, "\\x%02X", unsigned{byte});
    out += code;
  }
  return out;
}

void say(const std::string &text) {
  std::fprintf(stderr, "raxel-export: %s\n", printable(text).c_str());
}

bool reportsOnStderr(const Options &options) {
  return options.json && !options.dryRun && !options.outputs.empty() && options.outputs.front() == "-";
}

void tell(const Report &report, const Options &options) {
  if (reportsOnStderr(options)) return;
  if (report.exit != kDone) return say(report.error);
  tellNotes(report, options);
  if (report.dryRun && !options.json && !report.isPaged) {
    std::printf("%s: %s\n", printable(report.input).c_str(), outlook(report).c_str());
  }
  if (options.verbose && !report.dryRun && !report.isDone) {
    char times[120];
    std::snprintf(times, sizeof times, "%llu bytes%s; read %.3f s, prepared %.3f s, written %.3f s",
                  static_cast<unsigned long long>(report.bytes), report.verified ? ", verified" : "",
                  report.readSeconds, report.prepareSeconds, report.writeSeconds);
    const std::string what =
        report.isPaged ? std::to_string(report.pageCount) + (report.pageCount == 1 ? " page" : " pages")
                       : geometry(report);
    say(report.output + ": " + what + "; " + times);
  }
}

void tellPage(const Report &page, const Options &options) {
  if (reportsOnStderr(options)) return;
  tellNotes(page, options);
  if (page.dryRun) {
    if (!options.json) std::printf("%s: %s\n", printable(page.input).c_str(), outlook(page).c_str());
  } else if (options.verbose) {
    say(page.input + ": " + geometry(page));
  }
}

}  // namespace host
