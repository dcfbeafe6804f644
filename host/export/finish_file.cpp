#include "export/finish_file.h"

#include <cerrno>

#include "failure.h"
#include "filter/one_strip.h"
#include "finish/planned.h"

namespace host {
namespace {

constexpr uint32_t kHeaderBytes = 8;

// What was written: read from the filter's directory, or known, where there is none.
finish::Outcome describe(const finish::File &file, const Sink &sink, const RaxelPlan &plan,
                         finish::FinishedPage &page) {
  if (!isOneCodedStrip(plan)) return finish::readPage(file, sink.base(), page);
  page = finish::singleStripPage(plan, static_cast<uint32_t>(sink.base() + kHeaderBytes),
                                 static_cast<uint32_t>(sink.pageSize() - kHeaderBytes));
  return finish::Outcome::kDone;
}

}  // namespace

void finishPage(Output &output, const RaxelPlan &plan, finish::Chain &chain) {
  finish::File file = output.sink().wholeFile();
  finish::FinishedPage page;
  finish::Outcome outcome = describe(file, output.sink(), plan, page);
  if (outcome == finish::Outcome::kDone) {
    finish::applyPlan(plan, page);
    outcome = finish::writePage(file, page, chain);
  }
  output.checkWritten();  // knows more of a write that failed
  if (outcome != finish::Outcome::kDone)
    throw Failure(RAXEL_HOST_NO_WRITE, output.name() + ": cannot be finished: " + finish::sentence(outcome),
                  outcome == finish::Outcome::kTooLarge ? EFBIG : 0);
}

}  // namespace host
