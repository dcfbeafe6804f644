// SPDX-License-Identifier: MIT
#include "export/finish_file.h"

#include <cerrno>

#include "failure.h"
#include "filter/one_strip.h"
#include "finish/planned.h"

namespace host {
namespace {

constexpr uint32_t kHeaderBytes = 8;
constexpr uint32_t kHorizontal = 2;  // the Predictor tag's number

// What was written: read from the filter's directory, or known, where there is none.
finish::Outcome describe(const finish::File &file, const Sink &sink, const RaxelPlan &plan,
                         finish::FinishedPage &page) {
  if (!isOneCodedStrip(plan)) return finish::readPage(file, sink.base(), page);
  page = finish::singleStripPage(plan, static_cast<uint32_t>(sink.base() + kHeaderBytes),
                                 static_cast<uint32_t>(sink.pageSize() - kHeaderBytes));
  return finish::Outcome::kDone;
}

void check(const Output &output, finish::Outcome outcome) {
  output.checkWritten();  // knows more of a write that failed
  if (outcome == finish::Outcome::kDone) return;
  throw Failure(RAXEL_HOST_NO_WRITE, output.name() + ": cannot be finished: " + finish::sentence(outcome),
                outcome == finish::Outcome::kTooLarge ? EFBIG : 0);
}

}  // namespace

void finishPage(Output &output, const RaxelHostResult &result, const RaxelMetadata &metadata,
                PageCount &pages) {
  finish::File file = output.sink().wholeFile();
  finish::FinishedPage page;
  finish::Outcome outcome = describe(file, output.sink(), result.plan, page);
  if (outcome == finish::Outcome::kDone) {
    finish::applyPlan(result.plan, page);
    finish::applyMetadata(metadata, page);
    page.predictor = result.predictor == RAXEL_PREDICTOR_HORIZONTAL ? kHorizontal : 1;
    page.isPage = pages.isPaged;
    page.pageNumber = static_cast<uint16_t>(pages.number);
    outcome = finish::writePage(file, page, pages.chain);
  }
  check(output, outcome);
}

void startPage(Output &output, PageCount &pages) {
  if (pages.number + 1 == UINT16_MAX) check(output, finish::Outcome::kTooManyPages);
  ++pages.number;
  output.sink().startPage();
  output.checkWritten();
}

void endPages(Output &output, const PageCount &pages) {
  finish::File file = output.sink().wholeFile();
  check(output, finish::endPages(file, pages.chain));
}

}  // namespace host
