#include "complete/jobs/join.h"

#include <cstdio>
#include <mutex>
#include <thread>

#include "complete/files/words.h"
#include "complete/jobs/proof_walk.h"
#include "complete/jobs/standing.h"
#include "complete/jobs/taking.h"
#include "complete/lattice/elimination.h"
#include "complete/program/presolve.h"
#include "complete/run/run.h"
#include "complete/solving/closing.h"
#include "complete/tree/parts.h"

namespace latbox::complete::jobs {
namespace {

// Whether the lattice is that of the program: built anew, but for the point and the basis, which are proven
// to generate the same points.
bool isLatticeOf(const IntegerProgram& whole, const BoxLattice& lattice) {
  auto own = unreducedLatticeOf(whole);
  if (!own || own->fixed != lattice.fixed || own->variables != lattice.variables || own->low != lattice.low ||
      own->high != lattice.high || own->equations != lattice.equations || own->sides != lattice.sides)
    return false;
  for (std::size_t i = 0; i < own->equations.size(); ++i)
    if (innerProduct(own->equations[i], lattice.point) != own->sides[i]) return false;
  return takeBasis(*own, lattice.basis);
}

class Joiner {
 public:
  Joiner(const Options& options, const Folder& folder) : options_(options), folder_(folder) {}

  Outcome solve(const Program& program, const Task& task, Finds& finds, Journal& journal) {
    if (folder_.manifest().entries().empty()) return complete::solve(program, task, finds, journal);
    const PieceLattice lattice = folder_.isListing() ? provenLattice() : folder_.lattice();
    const PointReader reader(program, lattice);
    // All are looked at before the first is written.
    const auto reports =
        readReports(folder_, journal.control(),
                    [&](const Entry& entry, const Result& result) { judge(folder_, reader, entry, result); });
    if (!reports) return Outcome::STOPPED;
    all_ = standings(folder_, *reports, complain);
    requireAll(*reports);
    if (!folder_.isListing()) return solveBest(reader, task, finds, journal);
    requireSums();
    finds.begin();
    const bool isListed = each(journal.control(), [&](const Entry& entry, const Result& result) {
      if (entry.share) return;
      if (folder_.wanted().count) return finds.add(result.points);
      finds.listLines(result.lines, result.points);
    });
    if (!isListed) return Outcome::STOPPED;
    return finds.count() > 0 ? Outcome::COMPLETE : Outcome::NONE;
  }

  // Of the shares of its walk, where the folder has them. Requires that it was solved.
  std::string proof(const Program& program, const proof::Claim& claim, SearchControl& control) const {
    if (folder_.manifest().head().proof == "-") return proof::proofOf(program, claim, control);
    const ProofWalk walk = parseProofWalk(folder_.proofText());
    if (!walk.beginning.lattice) return proof::proofOf(walk.beginning.text, std::nullopt);
    proof::WalkCount count;
    for (const Standing& standing : all_) {
      if (!standing.entry->share || !standing.result || standing.result->isOpenShare) continue;
      count.nodes += standing.result->nodes;
      count.points += standing.result->met;
    }
    if (count.points != claim.count.value_or(0))
      throw std::logic_error("the proof does not meet the points that the search has told");
    return proof::proofOf(walk.beginning.text, count);
  }

 private:
  static void complain(const std::string& what) { std::fprintf(stderr, "latbox-all: %s\n", what.c_str()); }

  PieceLattice provenLattice() const {
    PieceLattice lattice = folder_.lattice();
    IntegerProgram whole = integerProgramOf(folder_.program());
    if (!tighten(whole) || !closeByRows(whole) || !isLatticeOf(whole, lattice.box) || !isDual(lattice))
      throw BadFolder(folder_.pathOf("lattice") + ": is not that of the program");
    return lattice;
  }

  void requireAll(const Reports& reports) const {
    constexpr unsigned MOST = 20;
    unsigned missing = 0;
    for (const Standing& standing : all_) {
      const std::string& untruth = reports.at(standing.entry->number).untruth;
      if (standing.result && !untruth.empty())
        throw BadFolder("piece " + std::to_string(standing.entry->number) + ": " + untruth);
      const bool isOpen = standing.state == State::OPEN;
      if (!isOpen && standing.state != State::PARTIAL) continue;
      if (standing.entry->share && options_.proof.empty()) continue;
      const std::string name = "piece " + std::to_string(standing.entry->number);
      if (++missing <= MOST) complain(name + (isOpen ? " has no result" : " is not done to its end"));
    }
    if (missing > MOST) complain("and " + std::to_string(missing - MOST) + " more");
    if (missing > 0)
      throw BadFolder("--jobs=" + options_.jobs + ": " + std::to_string(missing) + " pieces are missing");
  }

  // The walk of the proof meets the points of the search, or somebody has told an untruth.
  void requireSums() const {
    const bool isProof = !options_.proof.empty() && folder_.manifest().head().proof != "-";
    if (isProof) folder_.proofText();
    unsigned long points = 0;
    unsigned long met = 0;
    bool isShared = false;
    for (const Standing& standing : all_) {
      isShared = isShared || standing.entry->share;
      if (!standing.result) continue;
      if (__builtin_add_overflow(points, standing.result->points, &points) ||
          __builtin_add_overflow(met, standing.result->met, &met))
        throw BadFolder("piece " + std::to_string(standing.entry->number) +
                        ": more points than can be counted");
    }
    if (isProof && isShared && met != points)
      throw BadFolder("--jobs=" + options_.jobs + ": the proof's pieces have met " + std::to_string(met) +
                      " points, and those of the search " + std::to_string(points) +
                      ": one of them is untrue");
  }

  // The target norm is proven; what is left is done as the undivided run does it.
  Outcome solveBest(const PointReader& reader, Task task, Finds& finds, Journal& journal) const {
    const Program& program = folder_.program();
    std::optional<BestPoint> best = bestIn(folder_.pathOf("best"), program);
    std::mutex mutex;
    const bool isRead = each(journal.control(), [&](const Entry&, const Result& result) {
      const auto found = bestOf(reader, result, program);
      const std::lock_guard lock(mutex);
      best = betterOf(best, found);
    });
    if (!isRead) throw BadFolder("--jobs=" + options_.jobs + ": the join was stopped");
    requireBounds(best);
    if (!best) {
      finds.begin();
      return Outcome::NONE;
    }
    task.start = best->x;
    task.isLeast = true;
    return complete::solve(program, task, finds, journal);
  }

  // Nobody has left out a point that is better than the best.
  void requireBounds(const std::optional<BestPoint>& best) const {
    for (const Standing& standing : all_) {
      if (!standing.result || !standing.result->bound) continue;
      if (best && parseRational(*standing.result->bound) >= best->norms.target) continue;
      throw BadFolder("piece " + std::to_string(standing.entry->number) + ": is complete below " +
                      *standing.result->bound + " alone, and no such point is known");
    }
  }

  // Of all results that count, as they were judged. False: it was stopped.
  template <class Use>
  bool each(const SearchControl& control, const Use& use) const {
    Parts parts;
    parts.end = all_.size();
    parts.make = [&](unsigned long i) {
      if (!all_[i].result) return true;
      const Entry& entry = *all_[i].entry;
      const std::string path = folder_.resultPath(entry.number);
      try {
        const Result result = folder_.resultIn(path, entry);
        if (result.seal != all_[i].result->seal) throw BadWords(path + ": was changed meanwhile");
        use(entry, result);
      } catch (const BadWords& e) {
        throw BadFolder("piece " + std::to_string(entry.number) + ": " + e.what());
      }
      return true;
    };
    parts.tell = [](unsigned long) {};
    return goThrough(parts, control);
  }

  const Options& options_;
  const Folder& folder_;
  // Once it is solved.
  std::vector<Standing> all_;
};

}  // namespace

int join(const Options& options) {
  const Folder folder(options.jobs);
  Joiner joiner(options, folder);
  Options run = options;
  run.file = folder.pathOf("program.opt");
  run.all = folder.wanted().all;
  run.ties = folder.wanted().ties;
  run.count = folder.wanted().count;
  run.resume = false;
  Answers answers = plainAnswers();
  answers.proof = [&](const Program& program, const proof::Claim& claim, SearchControl& control) {
    return joiner.proof(program, claim, control);
  };
  answers.solve = [&](const Program& program, const Task& task, Finds& finds, Journal& journal) {
    return joiner.solve(program, task, finds, journal);
  };
  return runProgram(run, answers);
}

}  // namespace latbox::complete::jobs
