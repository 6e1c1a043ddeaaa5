#include "complete/jobs/division.h"

#include <algorithm>
#include <filesystem>
#include <mutex>

#include "complete/files/digest.h"
#include "complete/files/points_file.h"
#include "complete/files/words.h"
#include "complete/files/write_failure.h"
#include "complete/jobs/best.h"
#include "complete/jobs/coefficients.h"
#include "complete/jobs/folder.h"
#include "complete/jobs/proof_walk.h"
#include "complete/jobs/splitting.h"
#include "complete/jobs/standing.h"
#include "complete/program/presolve.h"
#include "complete/run/run.h"
#include "complete/solving/closing.h"
#include "complete/solving/preparation.h"
#include "complete/solving/solver.h"

namespace latbox::complete::jobs {
namespace {

int tell(unsigned long count, unsigned long first) {
  std::string text = "split: " + std::to_string(count) + " pieces";
  if (count > 0) text += ", " + std::to_string(first) + " to " + std::to_string(first + count - 1);
  print(text + "\n");
  return 0;
}

int tell(const std::vector<const Entry*>& entries) {
  return tell(entries.size(), entries.empty() ? 0 : entries.front()->number);
}

// A folder that holds what nobody knows stays as it is. One that was begun for this program may be begun
// again, and who manages the pieces may have begun with notes of his own.
void guardFolder(const std::string& path, const std::string& program) {
  if (std::filesystem::exists(path) && !std::filesystem::is_directory(path))
    throw BadInput("--jobs=" + path + ": is there and is no folder");
  if (!std::filesystem::exists(path)) return;
  const std::string copy = pathIn(path, "program.opt");
  const bool isOurs = std::filesystem::is_regular_file(copy) && readFile(copy) == program;
  for (const auto& file : std::filesystem::directory_iterator(path))
    if (!isOurs && file.path().extension() != BESIDE && file.path().filename() != "manager")
      throw BadInput("--jobs=" + path + ": is not empty, and no folder of pieces of this program");
}

// Keeps the first point, and ends the search with it.
class FirstPoint : public Finds {
 public:
  explicit FirstPoint(SearchControl& control) : control_(control) {}

  void begin() override {}
  void list(const Point& x, const Norms& norms) override { replace(x, norms); }
  void replace(const Point& x, const Norms& norms) override {
    const std::lock_guard lock(mutex_);
    best = BestPoint{x, norms};
    control_.stop = true;
  }
  unsigned long count() const override { return best ? 1 : 0; }

  std::optional<BestPoint> best;

 private:
  SearchControl& control_;
  std::mutex mutex_;
};

// With a point the rows of its norm make the tree smaller, and may be what gives variables their bounds.
// Nothing: there is no point.
std::optional<BestPoint> firstPointOf(const Program& program) {
  SearchControl control;
  Journal journal(control);
  FirstPoint first(control);
  solve(program, Task(), first, journal);
  return first.best;
}

struct Searched {
  // Nothing: the join does without pieces.
  std::optional<PieceLattice> lattice;
  std::optional<BestPoint> best;
};

Searched searchedOf(const Program& program, bool isListing) {
  Searched searched;
  IntegerProgram whole = integerProgramOf(program);
  if (!tighten(whole) || !closeByRows(whole)) return searched;
  if (!isListing && !openVariables(whole).empty()) {
    searched.best = firstPointOf(program);
    if (!searched.best) return searched;
    const Objective objective(program);
    for (Row& row : objective.rows(objective.valueOf(searched.best->norms)))
      whole.rows.push_back(std::move(row));
    if (!tighten(whole) || !closeByRows(whole) || !openVariables(whole).empty()) return searched;
  }
  requireBounds(whole);
  auto prepared = preparedLatticeOf(whole);
  if (!prepared) return searched;
  settle(prepared->lattice);
  searched.lattice = withDual(std::move(prepared->lattice));
  return searched;
}

std::vector<Entry> entriesOf(BoxLattice& lattice, const std::vector<Piece>& pieces, unsigned long count,
                             unsigned long parent, const std::string& source) {
  std::vector<Entry> entries;
  for (Portion& portion : split(lattice, pieces, count)) {
    Entry& entry = entries.emplace_back();
    entry.parent = parent;
    entry.source = source;
    entry.nodes = portion.nodes;
    entry.pieces = std::move(portion.pieces);
  }
  return entries;
}

// Of a piece that holds nothing there is one child, which is done at once, so that somebody does it.
std::vector<Entry> childrenOf(const Folder& folder, const Entry& parent, const std::vector<Piece>& pieces,
                              unsigned long count, const std::string& source) {
  BoxLattice box = folder.lattice().box;
  std::vector<Entry> entries = entriesOf(box, pieces, count, parent.number, source);
  if (!entries.empty()) return entries;
  Entry& entry = entries.emplace_back();
  entry.parent = parent.number;
  entry.source = source;
  entry.pieces = pieces;
  return entries;
}

// A share in so many, dealt out in turn.
std::vector<Entry> sharesOf(const Entry& entry, unsigned long count, const std::string& source) {
  constexpr unsigned long MOST = 1ul << 40;
  if (entry.share->count > MOST / count)
    throw BadInput("--job=" + std::to_string(entry.number) + ": there are no parts so small of its share");
  std::vector<Entry> entries;
  for (unsigned long i = 0; i < count; ++i) {
    Entry& child = entries.emplace_back();
    child.parent = entry.number;
    child.source = source;
    child.nodes = entry.nodes / static_cast<double>(count);
    child.share = Share{entry.share->rest + i * entry.share->count, entry.share->count * count};
  }
  return entries;
}

// The lattice and the cuts of the proof; `shares` are those of its walk.
std::string proofTextOf(const Program& program, unsigned long count, std::vector<Entry>& shares) {
  SearchControl control;
  // So many of the walk's own parts that shares can be split again.
  constexpr std::size_t LEAST = 20'000;
  constexpr std::size_t EACH = 20;
  ProofWalk walk{proof::beginningOf(program, control), std::max(LEAST, EACH * count)};
  if (walk.beginning.lattice) {
    Entry whole;
    whole.share = Share();
    whole.nodes = walk.beginning.lattice->nodes;
    // As pieces of a search: what is smaller is not worth a share.
    constexpr double SMALL = 50;
    if (whole.nodes < SMALL * static_cast<double>(count))
      count = std::max(1ul, static_cast<unsigned long>(whole.nodes / SMALL));
    shares = sharesOf(whole, count, "");
  }
  return textOf(walk);
}

Wanted wantedOf(const Options& options) {
  return {options.all, options.ties, options.count, options.proof == "1"};
}

void requireSame(const Folder& folder, const Options& options, const std::string& program) {
  if (folder.manifest().head().program != digestOf(program) || folder.wanted() != wantedOf(options))
    throw BadInput("--jobs=" + options.jobs + ": holds pieces of another program, or of other options");
}

}  // namespace

int begin(const Options& options) {
  const std::string text = readFile(options.file);
  const Program program = readProgram(text, options.file);
  const std::string manifestPath = pathIn(options.jobs, "manifest");
  if (!std::filesystem::exists(manifestPath)) {
    guardFolder(options.jobs, text);
    std::filesystem::create_directories(options.jobs);
  }
  const FolderLock lock(options.jobs);
  if (std::filesystem::exists(manifestPath)) {
    const Folder folder(options.jobs);
    requireSame(folder, options, text);
    return tell(folder.manifest().childrenOf(0, ""));
  }
  replaceFile(pathIn(options.jobs, "program.opt"), text, true);
  auto [lattice, best] = searchedOf(program, options.all || program.targets.empty());
  const std::string latticeText = lattice ? textOf(*lattice) : "";
  Head head = {wantedOf(options), digestOf(text), digestOf(latticeText), "-",
               lattice ? lattice->box.rank() : 0};
  std::vector<Entry> shares;
  if (lattice && head.wanted.proof && (options.all || program.targets.empty())) {
    const std::string proofText = proofTextOf(program, options.split, shares);
    replaceFile(pathIn(options.jobs, "proof"), proofText, true);
    head.proof = digestOf(proofText);
  }
  Manifest manifest(std::move(head));
  if (lattice)
    for (Entry& entry : entriesOf(lattice->box, {{}}, options.split, 0, ""))
      manifest.append(std::move(entry));
  for (Entry& entry : shares) manifest.append(std::move(entry));
  replaceFile(pathIn(options.jobs, "lattice"), latticeText, true);
  if (best) replaceFile(pathIn(options.jobs, "best"), lineOf(program, best->x, best->norms, 0, ""), true);
  replaceFile(manifestPath, textOf(manifest), true);
  return tell(manifest.childrenOf(0, ""));
}

int divide(const Options& options) {
  const FolderLock lock(options.jobs);
  Folder folder(options.jobs);
  const Entry entry = folder.entry(options.job);
  std::optional<Result> result;
  if (folder.hasResult(entry)) {
    try {
      result = folder.resultIn(folder.resultPath(entry.number), entry);
    } catch (const BadWords& e) {
      throw BadFolder(e.what());
    }
    if (result->isDone()) throw BadInput("--job=" + std::to_string(options.job) + ": this piece is done");
  }
  // Where all of it was split before, what the result leaves is done by those children.
  for (const std::string& source : {sourceOf(result ? &*result : nullptr), std::string()})
    if (const auto children = folder.manifest().childrenOf(entry.number, source); !children.empty())
      return tell(children);
  const std::string source = sourceOf(result ? &*result : nullptr);
  folder.append(entry.share
                    ? sharesOf(entry, options.split, source)
                    : childrenOf(folder, entry, result ? result->open : entry.pieces, options.split, source));
  return tell(folder.manifest().childrenOf(entry.number, source));
}

}  // namespace latbox::complete::jobs
