// Proofs as latbox-check reads them, on small programs: the first byte chooses the program. What is believed
// must be what trying all points says.
#include <algorithm>
#include <array>
#include <optional>

#include "check/proof/proof.h"
#include "refusal.h"

namespace latbox::fuzzing {
namespace {

using namespace check;

constexpr std::array<const char*, 4> PROGRAMS = {
    "[ ] [ ] [ [ 1 1 1 ] ] [ 2 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 1 1 1 ]",
    "[ -inf 3/2 ] [ [ 1 0 ] [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 1 1 ]",
    "[ 1 ] [ [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 1 1 ]",
    "[ ] [ ] [ [ 4 8 1 ] ] [ 10 ] [ [ 1 0 0 ] ] [ -inf ] [ 5 ] [ 0 0 0 ] [ 0 0 3 ] [ 9 9 5 ]"};
// A proof may state any number, and the walk takes it at its word.
constexpr long NODES = 20000;

// The norms of all points.
std::vector<proof::Norms> tried(const Program& program) {
  std::vector<proof::Norms> found;
  std::vector<Rational> x;
  for (const Number& low : program.lx) x.push_back(low.value());
  for (;;) {
    if (const auto norms = proof::normsOf(program, x)) found.push_back(*norms);
    std::size_t j = 0;
    while (j < x.size() && Number(x[j]) == program.rx[j]) {
      x[j] = program.lx[j].value();
      ++j;
    }
    if (j == x.size()) return found;
    x[j] += 1;
  }
}

bool isTrue(const Program& program, const proof::Verdict& verdict) {
  const std::vector<proof::Norms> points = tried(program);
  if (verdict.kind != proof::Kind::OPTIMUM) return proof::listedPoints(verdict) == points.size();
  const proof::Norms best = proof::normsOf(verdict);
  const auto number = [&](proof::Goal goal) {
    return std::count_if(points.begin(), points.end(),
                         [&](const proof::Norms& norms) { return proof::counts(goal, norms, best); });
  };
  const auto equal = number(proof::Goal::EQUAL);
  return number(proof::Goal::BETTER) == 0 && number(proof::Goal::SLACK) == 0 && equal > 0 &&
         (!verdict.count || *verdict.count == equal);
}

void check(const Program& program, std::string_view text) {
  try {
    proof::Proof proof = proof::readProof(text);
    for (proof::Search& search : proof.searches) search.nodes = std::min<mpz_class>(search.nodes, NODES);
    const auto met = proof::checkSearches(program, proof, {});
    requireStated(proof, met);
    require(isTrue(program, proof.verdict), "the verdict that was proven");
    // Divided, and in the other kind of numbers, it is the same.
    requireStated(proof, proof::checkSearches(program, proof, {2, 1, 1, true}));
  } catch (const Unreadable&) {
  } catch (const proof::Refused&) {
  }
}

}  // namespace
}  // namespace latbox::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace latbox::fuzzing;
  if (size == 0) return 0;
  const auto program = latbox::check::readProgram(PROGRAMS[bytes[0] % PROGRAMS.size()]);
  check(program, {reinterpret_cast<const char*>(bytes + 1), size - 1});
  return 0;
}
