#include "complete/proof/prover.h"

#include "small_systems.h"

namespace latbox::complete::proof {
namespace {

using namespace testing;

std::string proofOfText(const std::string& text, const Claim& claim) {
  SearchControl control;
  return proofOf(programOf(text), claim, control);
}

TEST(Prover, WritesAContradiction) {
  EXPECT_EQ(proofOfText("[ ] [ ] [ [ 2 4 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ inf inf ]", {}),
            "latbox-proof 1\n"
            "verdict none\n"
            "search points\n"
            "objective 0\n"
            "derive 1\n"
            "class r1 1 2\n"
            "contradiction\n"
            "end\n");
}

TEST(Prover, WritesATree) {
  EXPECT_EQ(proofOfText(TWELVE, {2, {}}),
            "latbox-proof 1\n"
            "verdict all 2\n"
            "search points\n"
            "objective 0\n"
            "derive 2\n"
            "upper x2 5 r1 1\n"
            "upper x3 7 r1 1\n"
            "lattice 2 1 0\n"
            "equations 1\n"
            "coordinates\n"
            "point 0 1 1\n"
            "basis -3 1 1\n"
            "basis 2 -3 1\n"
            "dual -1 -1 -1\n"
            "dual 1 1 2\n"
            "constant -280 -350 -490\n"
            "level 1 59265 0 1313 -5767 9706\n"
            "level 0 36864 0 -2729 2050 8195\n"
            "walk nodes 7 points 2\n"
            "end\n");
}

TEST(Prover, EverythingFixed) {
  EXPECT_EQ(proofOfText("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 0 1 ] [ 3 1/2 ] [ 3 1/2 ]", {1, {}}),
            "latbox-proof 1\nverdict all 1\nsearch points\nobjective 0\nderive 0\nlattice 0 0 0\nequations\n"
            "coordinates\npoint\nconstant\nwalk nodes 0 points 1\nend\n");
}

TEST(Prover, TellsSearchesOfAnOptimum) {
  // Minimise x1 and bring x2 to 1/2: (0, 0) and (0, 1) have T = S = 1/2.
  const std::string text =
      "[ -inf 1/2 ] [ [ 1 0 ] [ 0 1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 3 3 ]";
  const std::string proof = proofOfText(text, {2, Norms{Rational(1, 2), Rational(1, 2)}});
  std::vector<std::size_t> places;
  for (const char* part : {"verdict optimum 1/2 1/2 2\npoint 0 ", "search better\n", "search slack\n",
                           "search equal\n", "points 2\nend\n"})
    places.push_back(proof.find(part));
  EXPECT_TRUE(std::is_sorted(places.begin(), places.end())) << proof;
  EXPECT_NE(places.back(), std::string::npos) << proof;
}

TEST(Prover, DoesNotWriteWhatIsNotTrue) {
  EXPECT_THROW(proofOfText(TWELVE, {3, {}}), std::logic_error);
  EXPECT_THROW(proofOfText(TWELVE, {}), std::logic_error);
  EXPECT_THROW(proofOfText("[ ] [ ] [ [ 2 4 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 3 3 ]", {1, {}}),
               std::logic_error);
}

TEST(Prover, NamesWhatStaysOpen) {
  try {
    proofOfText("[ ] [ ] [ [ 1 -1 0 ] ] [ 0 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ inf inf 4 ]", {});
    FAIL();
  } catch (const NoProof& e) {
    EXPECT_EQ(std::string(e.what()), "no bounds were derived for x1, x2");
  }
}

TEST(Prover, EndsWhenItIsStopped) {
  SearchControl control;
  control.stop = true;
  EXPECT_THROW(proofOf(programOf(TWELVE), {2, {}}, control), NoProof);
}

}  // namespace
}  // namespace latbox::complete::proof
