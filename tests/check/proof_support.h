// What the tests of proofs share: a small program and its proof.
#pragma once

#include "check/proof/proof.h"
#include "support.h"

namespace latbox::check::proof::testing {

using check::testing::replaced;

// Two of three.
inline constexpr const char* OPT = "[ ] [ ] [ [ 1 1 1 ] ] [ 2 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 1 1 1 ]";

inline constexpr const char* PROOF = R"(latbox-proof 1
verdict all 3
search points
objective 0
derive 0
lattice 2 1 0
equations 1
coordinates
point 1 1 0
basis 1 -1 0
basis 0 1 -1
dual 1 0 0
dual 1 1 0
constant 1 1 1
level 1 6 0 1 1 -2
level 0 2 0 1 -1 0
walk nodes 7 points 3
end
)";

// "all 3", or "refused: " and the reason, or "unreadable: " and it.
inline std::string verdict(const std::string& opt, const std::string& text, const Plan& plan = {}) {
  try {
    const Proof proof = readProof(text);
    requireStated(proof, checkSearches(readProgram(opt), proof, plan));
    return toText(proof.verdict);
  } catch (const Refused& refused) {
    return std::string("refused: ") + refused.what();
  } catch (const Unreadable& unreadable) {
    return std::string("unreadable: ") + unreadable.what();
  }
}

// Of the sample with one place changed.
inline std::string changed(const std::string& old, const std::string& with) {
  return verdict(OPT, replaced(PROOF, old, with));
}

}  // namespace latbox::check::proof::testing
