#include "check/judging/repetitions.h"

#include <algorithm>
#include <vector>

namespace latbox::check {
namespace {

Digest chained(Digest before, const Vector& numbers) {
  before = latbox::check::chained(before, numbers.size());
  for (const Number& number : numbers) before = latbox::check::chained(before, number.digest());
  return before;
}

}  // namespace

// The last steps are the finaliser of SplitMix64 (Steele, Lea, Flood: Fast splittable pseudorandom number
// generators, 2014): every bit of the sum reaches every bit of the result.
Digest chained(Digest before, std::uint64_t next) {
  Digest mixed = before * 0x9e3779b97f4a7c15 + next + 1;
  mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
  mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
  return mixed ^ (mixed >> 31);
}

Digest digestOf(const Solution& solution) {
  return chained(chained(0, solution.x), solution.targets);
}

bool sayTheSame(const Solution& a, const Solution& b) {
  return a.x == b.x && a.targets == b.targets;
}

Repetitions::Repetitions(Digests digests, const Reader& read) {
  std::deque<Entry>& entries = digests.entries_;
  // They are taken from the back, where memory is given back: so the earliest one of a digest stands last.
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return a.digest != b.digest ? a.digest > b.digest : a.offset > b.offset;
  });
  while (!entries.empty()) settleLastDigest(entries, read);
  const auto byOffset = [](const auto& a, const auto& b) { return a.offset < b.offset; };
  std::sort(repeated_.begin(), repeated_.end(), byOffset);
  std::sort(firsts_.begin(), firsts_.end(), byOffset);
}

void Repetitions::settleLastDigest(std::deque<Entry>& entries, const Reader& read) {
  struct Kept {
    std::uint64_t offset;
    Solution solution;
    bool isRepeated = false;
  };
  const auto takeLast = [&entries] {
    const Entry last = entries.back();
    entries.pop_back();
    return last;
  };
  const auto [digest, earliest] = takeLast();
  const auto another = [&entries, digest = digest] {
    return !entries.empty() && entries.back().digest == digest;
  };
  // Nearly always it stays empty, and nearly always else it gets one element.
  std::vector<Kept> different;
  if (another()) different.push_back({earliest, read(earliest)});
  while (another()) {
    const std::uint64_t offset = takeLast().offset;
    Solution solution = read(offset);
    const auto same = std::find_if(different.begin(), different.end(),
                                   [&](const Kept& kept) { return sayTheSame(kept.solution, solution); });
    if (same == different.end()) {
      different.push_back({offset, std::move(solution)});
      continue;
    }
    repeated_.push_back({offset, same->offset});
    if (!same->isRepeated) firsts_.push_back({same->offset, 0});
    same->isRepeated = true;
  }
}

std::size_t Repetitions::earlier(std::uint64_t offset, std::size_t number) {
  if (nextFirst_ < firsts_.size() && firsts_[nextFirst_].offset == offset)
    firsts_[nextFirst_++].number = number;
  if (nextRepeated_ == repeated_.size() || repeated_[nextRepeated_].offset != offset) return 0;
  const std::uint64_t first = repeated_[nextRepeated_++].first;
  const auto found = std::lower_bound(firsts_.begin(), firsts_.end(), first,
                                      [](const First& a, std::uint64_t wanted) { return a.offset < wanted; });
  return found->number;
}

}  // namespace latbox::check
