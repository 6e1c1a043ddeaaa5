#include "complete/jobs/standing.h"

#include <algorithm>
#include <set>

#include "complete/files/digest.h"
#include "complete/files/words.h"
#include "complete/jobs/cover.h"
#include "complete/jobs/prefix_text.h"

namespace latbox::complete::jobs {
namespace {

// Whether these shares are that one, each part of it once.
bool makeUp(const std::vector<const Entry*>& children, const Share& share) {
  const unsigned long count = share.count * children.size();
  std::set<unsigned long> rests;
  for (const Entry* child : children) {
    if (!child->share || child->share->count != count || child->share->rest % share.count != share.rest)
      return false;
    rests.insert(child->share->rest);
  }
  return rests.size() == children.size();
}

bool makeUp(const std::vector<const Entry*>& children, const std::vector<Piece>& pieces) {
  std::vector<Piece> all;
  for (const Entry* child : children) {
    if (child->share) return false;
    all.insert(all.end(), child->pieces.begin(), child->pieces.end());
  }
  return isSame(all, pieces);
}

class Standings {
 public:
  Standings(const Folder& folder, const Reports& reports,
            const std::function<void(const std::string&)>& complain)
      : folder_(folder), manifest_(folder.manifest()), reports_(reports), complain_(complain) {}

  std::vector<Standing> result() {
    std::vector<const Entry*> searches;
    std::vector<const Entry*> shares;
    for (const Entry* entry : manifest_.childrenOf(0, ""))
      (entry->share ? shares : searches).push_back(entry);
    // Presolve may have left nothing to be searched; then there are no shares either.
    require(manifest_.entries().empty() || makeUp(searches, std::vector<Piece>{{}}),
            "the pieces are not all of the search");
    require(shares.empty() || makeUp(shares, Share()), "the shares are not all of the proof");
    for (const auto* all : {&searches, &shares}) left_.insert(left_.end(), all->begin(), all->end());
    while (!left_.empty()) {
      const Entry& entry = *left_.back();
      left_.pop_back();
      visit(entry);
    }
    std::sort(standings_.begin(), standings_.end(),
              [](const Standing& a, const Standing& b) { return a.entry->number < b.entry->number; });
    return std::move(standings_);
  }

 private:
  void require(bool holds, const std::string& else_) const {
    if (!holds) throw BadFolder(folder_.pathOf("manifest") + ": " + else_);
  }

  std::optional<Result> resultOf(const Entry& entry) const {
    const Report& report = reports_.at(entry.number);
    if (!report.damage.empty()) complain_(report.damage);
    return report.result;
  }

  void visit(const Entry& entry) {
    std::optional<Result> result = resultOf(entry);
    if (result && result->isDone()) {
      standings_.push_back({&entry, State::DONE, std::move(result)});
      return;
    }
    if (result) {
      const auto children = manifest_.childrenOf(entry.number, sourceOf(&*result));
      if (!children.empty()) {
        require(entry.share ? makeUp(children, *entry.share) : makeUp(children, result->open),
                "the children of piece " + std::to_string(entry.number) + " are not what it has left");
        standings_.push_back({&entry, State::SPLIT, std::move(result)});
        left_.insert(left_.end(), children.begin(), children.end());
        return;
      }
    }
    const auto children = manifest_.childrenOf(entry.number, "");
    if (children.empty()) {
      const State state = result ? State::PARTIAL : State::OPEN;
      standings_.push_back({&entry, state, std::move(result)});
      return;
    }
    require(entry.share ? makeUp(children, *entry.share) : makeUp(children, entry.pieces),
            "the children of piece " + std::to_string(entry.number) + " are not all of it");
    standings_.push_back({&entry, State::SPLIT, std::nullopt});
    left_.insert(left_.end(), children.begin(), children.end());
  }

  const Folder& folder_;
  const Manifest& manifest_;
  const Reports& reports_;
  const std::function<void(const std::string&)>& complain_;
  // To be visited.
  std::vector<const Entry*> left_;
  std::vector<Standing> standings_;
};

}  // namespace

std::string sourceOf(const Result* result) {
  if (!result || result->isDone()) return "";
  std::string text = result->isOpenShare ? "share" : "";
  for (const Piece& piece : result->open) text += textOf(piece) + " ";
  return digestOf(text);
}

std::vector<Standing> standings(const Folder& folder, const Reports& reports,
                                const std::function<void(const std::string&)>& complain) {
  return Standings(folder, reports, complain).result();
}

}  // namespace latbox::complete::jobs
