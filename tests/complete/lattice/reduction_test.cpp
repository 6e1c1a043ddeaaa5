#include "complete/lattice/reduction.h"

#include "complete/lattice/elimination.h"
#include "support.h"

namespace latbox::complete {
namespace {

// "latbox-all: infinite loop in babai": the block reduction's own LLL computes in double and ended the run
// where lengths differ by 17 digits.
TEST(ReduceBlocks, ABasisThatItCannotTakeStaysABasis) {
  const Integer unit = powerOfTen(38);
  IntegerMatrix rows(5, IntegerVector(7));
  rows[0][2] = rows[1][4] = rows[2][5] = unit;
  rows[2][6] = Integer("70628999872810481049186208104871235846");
  const char* const entries[][7] = {{"81420469960958490472603122256424231941125593177373355136",
                                     "57090679544092690020033309358962830999739591714774574976", "0",
                                     "-14678879266613819723728150837982208103045420397794988864", "0",
                                     "-12230280810027773791359281811482319302178639632767369600",
                                     "17316228096252289622988524886675004541230821312036567872"},
                                    {"-15673574073332958390720286656122465102173837493642967680",
                                     "86432846690519338549285385086197957563251438062847550848", "0",
                                     "-92042751451513720087283539489164764779111397135193652352", "0",
                                     "2624749994399440614801185800194580586926779853781548032",
                                     "-3716249062849965552531161996340854378612821230180948992"}};
  for (std::size_t j = 0; j < 7; ++j)
    for (std::size_t i = 0; i < 2; ++i) rows[3 + i][j] = Integer(entries[i][j]);
  const Integer before = determinant(gram(rows));
  EXPECT_NO_THROW(reduceBlocks(rows, 20));
  EXPECT_EQ(determinant(gram(rows)), before);
}

}  // namespace
}  // namespace latbox::complete
