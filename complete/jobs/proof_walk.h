// The walk of a folder's proof, as a text: the proof up to its walk, and what the walk needs beside that.
#pragma once

#include "complete/proof/prover.h"

namespace latbox::complete::jobs {

struct ProofWalk {
  proof::Beginning beginning;
  // As proof::WalkShare has it.
  std::size_t parts = 0;
};

std::string textOf(const ProofWalk& walk);
// Throws BadWords.
ProofWalk parseProofWalk(const std::string& text);

}  // namespace latbox::complete::jobs
