#include "check/proof/part.h"

#include <map>
#include <sstream>

#include "check/files/scanner.h"

namespace latbox::check::proof {
namespace {

constexpr std::string_view OPENING = "latbox-check-part 1 ";
constexpr std::string_view CLOSING = " sum ";

class Joining {
 public:
  Joining(const Origin& origin, const Proof& proof)
      : origin_(origin), proof_(proof), sum_(proof.searches.size()) {}

  std::vector<Counts> result(std::string_view text) {
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
      ++line_;
      take(line);
    }
    ++line_;
    require(parts_ > 0);
    for (std::uint64_t part = 1; part <= parts_; ++part)
      if (!met_.contains(part)) refuse(part, "is missing");
    return std::move(sum_);
  }

 private:
  void require(bool holds) const {
    if (!holds) throw Unreadable(std::to_string(line_) + ": no line of a part, or damaged");
  }
  [[noreturn]] void refuse(std::uint64_t part, const std::string& fault) const {
    throw Refused(line_, "part " + std::to_string(part) + "/" + std::to_string(parts_) + " " + fault);
  }

  void take(const std::string& line) {
    const std::size_t end = line.rfind(CLOSING);
    require(line.starts_with(OPENING) && end != std::string::npos);
    require(line.substr(end + CLOSING.size()) == digestOf(line.substr(0, end)));
    std::istringstream words(line.substr(OPENING.size(), end - OPENING.size()));
    std::uint64_t part = 0;
    std::uint64_t parts = 0;
    char slash = 0;
    words >> part >> slash >> parts;
    require(!words.fail() && part > 0 && part <= parts);
    if (parts_ == 0) parts_ = parts;
    if (parts != parts_) refuse(part, "stands there as one of " + std::to_string(parts));
    Origin origin;
    std::string word;
    words >> word >> origin.proof >> word >> origin.program;
    if (origin.proof != origin_.proof) refuse(part, "is of another proof");
    if (origin.program != origin_.program) refuse(part, "is for another program");
    const auto [earlier, isNew] = met_.emplace(part, line_);
    if (!isNew) refuse(part, "stands in line " + std::to_string(earlier->second) + " too");
    for (std::size_t i = 0; i < sum_.size(); ++i) {
      Counts counts;
      words >> word >> counts.nodes >> counts.points;
      require(!words.fail() && word == nameOf(proof_.searches[i].goal));
      sum_[i] = {sum_[i].nodes + counts.nodes, sum_[i].points + counts.points};
    }
    require(!(words >> word));
  }

  const Origin& origin_;
  const Proof& proof_;
  std::vector<Counts> sum_;
  std::size_t line_ = 0;
  std::uint64_t parts_ = 0;
  // The line of each part.
  std::map<std::uint64_t, std::size_t> met_;
};

}  // namespace

std::string digestOf(std::string_view text) {
  std::uint64_t digest = 0xcbf29ce484222325;
  for (const char ch : text) digest = (digest ^ static_cast<unsigned char>(ch)) * 0x100000001b3;
  std::string shown;
  for (int shift = 60; shift >= 0; shift -= 4) shown += "0123456789abcdef"[digest >> shift & 15];
  return shown;
}

std::string partLine(const Origin& origin, const Plan& plan, const Proof& proof,
                     const std::vector<Counts>& met) {
  std::ostringstream line;
  line << OPENING << plan.part << '/' << plan.parts << " proof " << origin.proof << " program "
       << origin.program;
  for (std::size_t i = 0; i < met.size(); ++i)
    line << ' ' << nameOf(proof.searches[i].goal) << ' ' << met[i].nodes << ' ' << met[i].points;
  return line.str() + std::string(CLOSING) + digestOf(line.str());
}

std::vector<Counts> joined(std::string_view text, const Origin& origin, const Proof& proof) {
  return Joining(origin, proof).result(text);
}

}  // namespace latbox::check::proof
