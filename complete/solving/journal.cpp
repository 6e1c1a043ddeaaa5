#include "complete/solving/journal.h"

#include <sstream>

namespace latbox::complete {
namespace {

void write(std::ostream& out, const Range& range) {
  for (const std::optional<Integer>* end : {&range.low, &range.high})
    if (*end)
      out << **end << ' ';
    else
      out << "- ";
}

void write(std::ostream& out, const IntegerMatrix& rows) {
  for (const IntegerVector& row : rows) {
    for (const Integer& value : row) out << value << ' ';
    out << ';';
  }
}

// A number of parts, in the place of what is left of a tree.
std::vector<Piece> piecesBehind(unsigned long parts) {
  Choice number;
  number.chosen = parts;
  return {{number}};
}

unsigned long partsBefore(const std::vector<Piece>& pieces) {
  return pieces.size() == 1 && pieces[0].size() == 1 ? pieces[0][0].chosen.get_ui() : 0;
}

std::string keyOf(const BoxLattice& lattice) {
  std::ostringstream out;
  write(out, {lattice.fixed, lattice.point, lattice.low, lattice.high});
  write(out, lattice.basis);
  return digestOf(out.str());
}

}  // namespace

std::string keyOf(const IntegerProgram& program) {
  std::ostringstream out;
  for (const Range& range : program.box) write(out, range);
  for (const Row& row : program.rows) {
    write(out, {row.a});
    write(out, row.range);
  }
  return digestOf(out.str());
}

Journal::Journal(SearchControl& control)
    : Journal(control,
              {[](const Checkpoint&) {}, [] { return FileState(); }, [](const FileState&) {}, [] {}}) {}

Journal::Journal(SearchControl& control, Keeping keeping, Checkpoint past)
    : control_(control),
      keeping_(std::move(keeping)),
      searches_(std::move(past.searches)),
      past_(std::move(past.open)) {}

std::optional<bool> Journal::searchThrough(const std::string& key, const Prepare& prepare, Visitor& visitor,
                                           SearchSettings settings) {
  if (const SearchRecord* record = recorded(key)) {
    if (record->point) visitor.visit(*record->point);
    if (record->end == SearchEnd::EMPTY) return std::nullopt;
    return record->end == SearchEnd::COMPLETE;
  }
  if (past_ && past_->key != key) leavePast();
  beLive();
  if (saved_ && control_.isKeepDue()) save();
  auto lattice = prepare(past_ ? past_->basis : IntegerMatrix());
  if (!lattice) {
    if (past_) leavePast();
    record(key, SearchEnd::EMPTY, visitor);
    return std::nullopt;
  }
  OpenSearch open{key, keyOf(*lattice), lattice->basis, keeping_.fileState(), {}};
  settings.pieces = takeOpen(open);
  return searchLive(std::move(open), *lattice, visitor, std::move(settings));
}

// The next record, if it is of this search.
const SearchRecord* Journal::recorded(const std::string& key) {
  if (live_ || taken_ == searches_.size()) return nullptr;
  if (searches_[taken_].key != key) {
    leavePast();
    return nullptr;
  }
  return &searches_[taken_++];
}

// A run that goes another way than the one before, say after a change of a library, has nothing more to take,
// and what that one had found goes.
void Journal::leavePast() {
  searches_.resize(taken_);
  past_.reset();
  keeping_.rewind({});
}

void Journal::beLive() {
  if (live_) return;
  live_ = true;
  keeping_.goLive();
}

// What was left of this search. Of another lattice the pieces say nothing: it is searched from its beginning,
// and what it had found goes.
std::vector<Piece> Journal::takeOpen(OpenSearch& open) {
  if (!past_) return {};
  OpenSearch past = std::move(*past_);
  past_.reset();
  open.begin = past.begin;
  if (past.lattice == open.lattice) return std::move(past.frontier.pieces);
  keeping_.rewind(past.begin);
  return {};
}

std::optional<bool> Journal::searchLive(OpenSearch open, BoxLattice& lattice, Visitor& visitor,
                                        SearchSettings settings) {
  open.frontier.pieces = settings.pieces;
  control_.keep = [&](const Frontier& left) {
    open_->frontier = left;
    save();
  };
  begin(std::move(open));
  const std::optional<IntegerVector> before = visitor.held();
  const bool complete = search(lattice, visitor, control_, settings);
  if (!complete) open_->frontier = control_.left;
  return end(complete, before, visitor, settings.trial > 0);
}

bool Journal::makeParts(const std::string& key, const MakeParts& make, Visitor& visitor) {
  if (const SearchRecord* record = recorded(key)) {
    if (record->point) visitor.visit(*record->point);
    return record->end == SearchEnd::COMPLETE;
  }
  if (past_ && past_->key != key) leavePast();
  beLive();
  if (saved_ && control_.isKeepDue()) save();
  // The key stands in the place of the lattice too.
  OpenSearch open{key, key, {}, keeping_.fileState(), {}};
  const unsigned long first = partsBefore(takeOpen(open));
  open.frontier.pieces = piecesBehind(first);
  control_.keep = [this](const Frontier&) { save(); };
  begin(std::move(open));
  const std::optional<IntegerVector> before = visitor.held();
  const bool complete = make(first, [&](unsigned long part) {
    open_->frontier.pieces = piecesBehind(part);
    if (control_.isKeepDue()) save();
  });
  return end(complete, before, visitor, false);
}

void Journal::begin(OpenSearch open) {
  open_ = std::move(open);
  if (!saved_) save();
  saved_ = true;
}

// A visitor that has found what it holds is done with this search. A trial is no long one, and must not
// depend on how often a run was stopped: it is begun anew.
bool Journal::end(bool complete, const std::optional<IntegerVector>& before, const Visitor& visitor,
                  bool isTrial) {
  const bool isDone = complete || visitor.held() != before;
  if (!isDone && (control_.stop || visitor.isInterrupted())) {
    if (isTrial) open_.reset();
    return false;
  }
  const std::string key = open_->key;
  open_.reset();
  record(key, complete ? SearchEnd::COMPLETE : SearchEnd::STOPPED, visitor);
  return complete;
}

void Journal::record(const std::string& key, SearchEnd end, const Visitor& visitor) {
  searches_.push_back({key, end, visitor.held()});
  taken_ = searches_.size();
}

void Journal::save() const {
  Checkpoint checkpoint;
  checkpoint.searches = searches_;
  checkpoint.open = open_ ? open_ : past_;
  keeping_.save(std::move(checkpoint));
  control_.lastKeep = std::chrono::steady_clock::now();
}

}  // namespace latbox::complete
