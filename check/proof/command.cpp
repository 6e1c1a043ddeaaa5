#include "check/proof/command.h"

#include <algorithm>
#include <charconv>

#include "check/files/text_file.h"
#include "check/judging/report.h"
#include "check/proof/part.h"
#include "check/proof/proof.h"

namespace latbox::check::proof {
namespace {

constexpr std::uint64_t MOST_THREADS = 1024;
constexpr std::uint64_t MOST_PARTS = 1000000;

std::uint64_t numberWithin(std::string_view text, std::uint64_t most, const std::string& option) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value == 0 || value > most)
    throw Unreadable(option + " needs numbers from 1 to " + std::to_string(most));
  return value;
}

// The line follows the file's name without a blank.
template <class Reading>
auto placed(const std::string& path, Reading reading) {
  try {
    return reading();
  } catch (const Unreadable& unreadable) {
    throw Unreadable(path + ":" + unreadable.what());
  }
}

std::string readNamed(const std::string& path) {
  return named(path, [&path] { return readFile(path); });
}

class Run {
 public:
  Run(const Settings& settings, std::ostream& out) : s_(settings), out_(out) {}

  ExitStatus result() {
    const std::string programText = readNamed(s_.program);
    program_ = named(s_.program, [&] { return readProgram(programText); });
    const std::string proofText = readNamed(s_.proof);
    proof_ = placed(s_.proof, [&] { return readProof(proofText); });
    const Origin origin{digestOf(proofText), digestOf(programText)};
    try {
      return check(origin);
    } catch (const Refused& refused) {
      return refuse(refused.what());
    }
  }

 private:
  ExitStatus refuse(const std::string& reason) {
    out_ << "proof: refused: " << reason << '\n';
    return SOMETHING_WRONG;
  }

  ExitStatus check(const Origin& origin) {
    const std::string partsText = s_.join.empty() ? "" : readNamed(s_.join);
    Plan plan = s_.plan;
    if (!s_.join.empty()) plan.part = 0;
    std::vector<Counts> met = checkSearches(program_, proof_, plan);
    if (s_.isPart) {
      out_ << partLine(origin, plan, proof_, met) << '\n';
      return ALL_WELL;
    }
    if (!s_.join.empty()) {
      try {
        met = placed(s_.join, [&] { return joined(partsText, origin, proof_); });
      } catch (const Refused& refused) {
        return refuse(s_.join + ": " + refused.what());
      }
    }
    requireStated(proof_, met);
    if (!s_.points.empty()) {
      const std::string fault = named(s_.points, [this] { return faultOfPoints(); });
      if (!fault.empty()) return refuse(s_.points + ": " + fault);
    }
    out_ << "proof: " << toText(proof_.verdict) << '\n';
    return ALL_WELL;
  }

  // Lines without a fault or a note state what is exactly true: then those of one point are the same, and so
  // lines are as many as points.
  std::string faultOfPoints() {
    const mpz_class count = listedPoints(proof_.verdict);
    const Norms norms = normsOf(proof_.verdict);
    const auto object = [&](const Solution& solution, Judgement& judgement) {
      for (const std::string& note : judgement.notes) judgement.faults.push_back("not exact: " + note);
      const bool isOptimum = proof_.verdict.kind == Kind::OPTIMUM;
      if (isOptimum && !(solution.targetNorm == norms.target && solution.slackNorm == norms.slack))
        judgement.faults.push_back("its norms are not those of the proof");
    };
    const Report found = report(program_, s_.points, s_.quiet, out_, object);
    if (found.wrong > 0 || found.tornLine > 0) return verdictOf(found);
    if (found.count == count) return "";
    return std::to_string(found.count) + " points, not " + count.get_str();
  }

  const Settings& s_;
  std::ostream& out_;
  Program program_;
  Proof proof_;
};

}  // namespace

void takeThreads(std::string_view value, Settings& settings) {
  settings.plan.threads = numberWithin(value, MOST_THREADS, "--threads=N");
}

void takePart(std::string_view value, Settings& settings) {
  const std::size_t slash = std::min(value.find('/'), value.size());
  const std::string_view behind = value.substr(std::min(slash + 1, value.size()));
  settings.plan.parts = numberWithin(behind, MOST_PARTS, "--part=K/N");
  settings.plan.part = numberWithin(value.substr(0, slash), settings.plan.parts, "--part=K/N");
  settings.isPart = true;
}

ExitStatus runProof(const Settings& settings, std::ostream& out) {
  return Run(settings, out).result();
}

}  // namespace latbox::check::proof
