// The two conversions between the precisions.
#include "driver/ladder.h"

#include <cassert>
#include <string>
#include <utility>

#include "model/conversion.h"

namespace latbox {
namespace {

// Makes the other side the live one. The conversion of a large lattice takes its time, and a setting of the
// console that came meanwhile has changed the side that is left: the parameters cross once more, before the
// flag is set, and behind it if they have changed in between.
template <class From, class To>
void changeSide(YLattice<dbl_t>& y, const From& from, To& to) {
  const std::string text = from.params.text();
  to.params.convertFrom(from.params);
  y.extendedActive = !y.extendedActive;
  if (from.params.text() != text) to.params.convertFrom(from.params);
}

}  // namespace

// The flag is set last: an exception on the way leaves standard precision live, and the half-written other
// side is overwritten by the next attempt.
void switchToExtended(YLattice<dbl_t>& y) {
  if (y.extendedActive) return;
  progressLine(y.standard.verb() > 1, "Switching to extended precision");
  y.extended.convertFrom(y.standard);
  statisticsExtended() = statisticsStandard();
  changeSide(y, y.standard, y.extended);
}

void useStandardPrecision(YLattice<dbl_t>& y) {
  if (!y.extendedActive) return;
  y.standard.convertFrom(y.extended);
  statisticsStandard() = statisticsExtended();
  changeSide(y, y.extended, y.standard);
  progressLine(y.standard.verb() > 1, "Using standard precision");
}

StandardStep::StandardStep(YLattice<dbl_t>& y) : y_(y), before_(statisticsStandard().findCounts()) {
  assert(!y_.extendedActive && y_.extended.search.pending.empty());
  y_.standardBackup = y_.standard;
  y_.standard.search.journal.clear();
}

void StandardStep::takeBack() {
  assert(!y_.extendedActive);
  y_.standard.copyFrom(y_.standardBackup, true);
  statisticsStandard().setFindCounts(before_);
  ++y_.output->resultsVersion;
  finds_ = std::exchange(y_.standard.search.journal, {});
  auto& pending = y_.extended.search.pending;
  for (const Star<dbl_t>& find : finds_) pending.push_back(convertedStar<QQ>(find));
  y_.output->held = !pending.empty();
}

void StandardStep::settleInStandard() {
  y_.extended.search.pending.clear();
  y_.standard.search.pending = std::exchange(finds_, {});
  settleFinds(y_.standard);
}

void tryStandardPrecision(YLattice<dbl_t>& y) {
  try {
    useStandardPrecision(y);
  } catch (const PrecisionException&) {
    // Some value of the state needs the exact type still; the next step tries again.
  }
}

}  // namespace latbox
