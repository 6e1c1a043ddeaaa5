#include "model/conversion.h"
#include "lib/exceptions.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/program.h"

namespace latbox {
namespace {

using testing::expectPrecisionException;
using testing::readProgram;
using testing::shown;

Tessik<QQ> exactProgram() {
  Tessik<QQ> p =
      readProgram("[-inf inf] = [5 0.1] [[1 0.5][0.25 3]][[1 2]][7][[3 -1]][-inf][4][0 1][-inf 0][10 inf]");
  p.optFile = "a.opt";
  p.solFile = "a.sol";
  p.ltu() = QQ(-3);
  p.tu = p.writeEnabled = p.finishEnabled = p.prepared = true;
  p.allTargetsFinite = false;
  p.slackCount = 3;
  p.deviationCount = 4;
  p.computeAtu();
  p.fixedComponents.add(2, QQ("1/8"));
  p.swappedComponents.append(1);
  Star<QQ> star(Vector<QQ>("[ 1 0.5 ]"));
  star.secondsUntilDiscovered = 12;
  star.targetValues = Vector<QQ>("[ 1.25 2 ]");
  star.slackNorm = QQ(2);
  star.targetNorm = QQ("-3/4");
  star.parameters = "--verb=2";
  star.version = "2.2.2";
  p.stars.append(star);
  return p;
}

template <class T>
std::string everyMember(const Tessik<T>& p) {
  std::ostringstream out;
  out << setFullPrecision << p.optFile << p.solFile << p.dt << p.kt << shown(p.lrtu) << p.At << p.tu << p.atu
      << p.bg << p.lu << p.ru << p.Ag << p.Au << p.dx << p.lx << p.rx << shown(p.fx)
      << shown(p.fixedComponents) << p.swappedComponents << p.allTargetsFinite << p.slackCount
      << p.deviationCount << p.writeEnabled << p.finishEnabled << p.prepared;
  for (long i = 1; i <= p.stars.MN; ++i) {
    const Star<T>& star = p.stars[i];
    out << star << star.secondsUntilDiscovered << star.targetValues << star.slackNorm << star.targetNorm
        << star.parameters << star.version;
  }
  return out.str();
}

TEST(Conversion, EveryMemberCrossesAndComesBack) {
  const Tessik<QQ> p = exactProgram();
  Tessik<dbl_t> standard;
  standard.convertFrom(p);
  EXPECT_EQ(shown(standard.At), "[ 1 0.5 ][ 0.25 3 ]");
  EXPECT_EQ(shown(standard.kt), "[ 5 0.1 ]");
  EXPECT_EQ(shown(standard.lx), "[ -inf 0 ]");
  EXPECT_EQ(standard.stars[1].secondsUntilDiscovered, 12);
  Tessik<QQ> back;
  back.convertFrom(standard);
  EXPECT_EQ(everyMember(back), everyMember(p));
}

TEST(Conversion, WhatStoodBeforeIsReplaced) {
  Tessik<dbl_t> standard;
  standard.convertFrom(exactProgram());
  standard.convertFrom(readProgram("[][][[1]][1][][][][0][0][1]"));
  EXPECT_EQ(standard.n(), 1);
  EXPECT_EQ(standard.At.M + standard.Au.M + standard.dt.MN + standard.stars.MN, 0);
  EXPECT_EQ(standard.fixedComponents.MN + standard.swappedComponents.MN, 0);
}

TEST(Conversion, AValueThatStandardPrecisionCannotHoldIsRefused) {
  const char* const refused[] = {"1/3", "1234567890123456789", "0.1234567890123456789"};
  for (const char* value : refused) {
    const QQ x(value);
    auto refuse = [](const Tessik<QQ>& p) {
      Tessik<dbl_t> standard;
      expectPrecisionException([&] { standard.convertFrom(p); }, "Precision lost during conversion");
    };
    std::vector<Tessik<QQ>> cases(14, exactProgram());
    cases[0].dt[1] = cases[1].kt[2] = cases[2].ltu() = cases[3].rtu() = cases[4].At[2][1] = x;
    cases[5].atu[1] = cases[6].bg[1] = cases[7].lu[1] = cases[8].ru[1] = cases[9].Ag[1][2] = x;
    cases[10].Au[1][1] = cases[11].lx[2] = cases[12].fixedComponents[1].right = x;
    cases[13].stars[1].targetValues[1] = x;
    for (const Tessik<QQ>& p : cases) refuse(p);
  }
}

TEST(Conversion, ATenthStaysATenth) {
  Tessik<dbl_t> standard;
  standard.convertFrom(readProgram("[][][[0.1]][0.7][][][][0][0][1]"));
  Tessik<QQ> back;
  back.convertFrom(standard);
  EXPECT_EQ(shown(back.Ag), "[ 1/10 ]");
  EXPECT_EQ(shown(back.bg), "[ 7/10 ]");
}

// The way up cannot hold more than 17 digits; a star is compared by the system's tolerance, so a solution
// with a rounded last digit passes.
TEST(Conversion, StarsCrossUpWithinTheTolerance) {
  Tessik<dbl_t> standard;
  Star<dbl_t> star(Vector<dbl_t>("[ 1 2 ]"));
  star[1] = 1.0L / 3;
  standard.stars.append(star);
  Tessik<QQ> exact;
  exact.convertFrom(standard);
  EXPECT_EQ(exact.stars.MN, 1);
  standard.stars[1][1] = 1e17L + 1.0L / 3 * 1e16L;
  standard.stars[1][1] += 1.5L;
  expectPrecisionException([&] { exact.convertFrom(standard); }, "Precision lost during conversion");
}

}  // namespace
}  // namespace latbox
