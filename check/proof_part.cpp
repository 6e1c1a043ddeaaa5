#include "check/proof_part.h"

#include <map>
#include <sstream>

#include "check/scanner.h"

namespace latbox::check::proof {
namespace {

constexpr const char* OPENING = "latbox-check-part 1 ";
constexpr const char* CLOSING = " sum ";

class Joining {
 public:
  Joining(const Origin& origin, const Proof& proof) : origin_(origin) {
    sum_.nodes.resize(proof.searches.size());
    sum_.points.resize(proof.searches.size());
    for (const Search& search : proof.searches) sum_.goals.push_back(search.goal);
  }

  Met result(std::string_view text) {
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
      ++line_;
      take(line);
    }
    ++line_;
    if (parts_ == 0) damaged("no part at all");
    // Looked for one by one, and found missing before long.
    for (std::uint64_t part = 1; part <= parts_; ++part)
      if (!met_.contains(part)) refuse("part " + nameOf(part) + " is missing");
    return std::move(sum_);
  }

 private:
  [[noreturn]] void damaged(const std::string& reason) const {
    throw Unreadable(std::to_string(line_) + ": " + reason);
  }
  [[noreturn]] void refuse(const std::string& reason) const { throw Refused(line_, reason); }

  std::string nameOf(std::uint64_t part) const { return std::to_string(part) + "/" + std::to_string(parts_); }

  void take(const std::string& line) {
    const std::size_t end = line.rfind(CLOSING);
    if (!line.starts_with(OPENING) || end == std::string::npos) damaged("no line of a part");
    if (line.substr(end + std::string_view(CLOSING).size()) != digestOf(line.substr(0, end)))
      damaged("the line is damaged");
    std::istringstream words(line.substr(0, end).substr(std::string_view(OPENING).size()));
    takeName(words);
    std::string proof;
    std::string program;
    std::string word;
    words >> word >> proof >> word >> program;
    if (proof != origin_.proof) refuse("part " + nameOf(part_) + " of another proof");
    if (program != origin_.program) refuse("part " + nameOf(part_) + " for another program");
    takeCounts(words);
  }

  void takeName(std::istringstream& words) {
    std::uint64_t parts = 0;
    char slash = 0;
    words >> part_ >> slash >> parts;
    if (!words || slash != '/' || part_ == 0 || part_ > parts) damaged("no line of a part");
    if (parts_ == 0) parts_ = parts;
    if (parts != parts_)
      refuse("part " + std::to_string(part_) + "/" + std::to_string(parts) + " among parts of " +
             std::to_string(parts_));
    const auto [earlier, isNew] = met_.emplace(part_, line_);
    if (!isNew)
      refuse("part " + nameOf(part_) + " stands in line " + std::to_string(earlier->second) + " too");
  }

  void takeCounts(std::istringstream& words) {
    for (std::size_t i = 0; i < sum_.goals.size(); ++i) {
      std::string goal;
      std::uint64_t nodes = 0;
      std::uint64_t points = 0;
      words >> goal >> nodes >> points;
      if (!words || goal != check::proof::nameOf(sum_.goals[i])) damaged("no line of a part");
      sum_.nodes[i] += nodes;
      sum_.points[i] += points;
    }
    std::string rest;
    if (words >> rest) damaged("no line of a part");
  }

  const Origin& origin_;
  Met sum_;
  std::size_t line_ = 0;
  std::uint64_t part_ = 0;
  std::uint64_t parts_ = 0;
  // The line of each part.
  std::map<std::uint64_t, std::size_t> met_;
};

}  // namespace

std::string digestOf(std::string_view text) {
  std::uint64_t digest = 0xcbf29ce484222325;
  for (const char ch : text) digest = (digest ^ static_cast<unsigned char>(ch)) * 0x100000001b3;
  constexpr std::string_view DIGITS = "0123456789abcdef";
  std::string shown;
  for (int shift = 60; shift >= 0; shift -= 4) shown += DIGITS[digest >> shift & 15];
  return shown;
}

std::string partLine(const Origin& origin, const Plan& plan, const Met& met) {
  std::string line = OPENING + std::to_string(plan.part) + "/" + std::to_string(plan.parts) + " proof " +
                     origin.proof + " program " + origin.program;
  for (std::size_t i = 0; i < met.goals.size(); ++i)
    line += std::string(" ") + nameOf(met.goals[i]) + " " + met.nodes[i].get_str() + " " +
            met.points[i].get_str();
  return line + CLOSING + digestOf(line);
}

Met joined(std::string_view text, const Origin& origin, const Proof& proof) {
  return Joining(origin, proof).result(text);
}

}  // namespace latbox::check::proof
