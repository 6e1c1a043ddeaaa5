// A run: from a program's file to its verdict, points, checkpoint and proof.
#pragma once

#include <functional>
#include <string>

#include "complete/proof/prover.h"
#include "complete/run/options.h"
#include "complete/solving/solver.h"

namespace latbox::complete {

// Where a run has its answers from.
struct Answers {
  std::function<Outcome(const Program&, const Task&, Finds&, Journal&)> solve;
  std::function<std::string(const Program&, const proof::Claim&, SearchControl&)> proof;
};

// The search, and a proof that is made anew.
Answers plainAnswers();

// The exit status. Throws BadInput, and other exceptions for failures.
int runProgram(const Options& options, const Answers& answers);

// Throws BadInput, naming the file.
std::string readFile(const std::string& path);
// To standard output. Throws WriteFailure.
void print(const std::string& text);

}  // namespace latbox::complete
