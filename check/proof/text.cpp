#include "check/proof/text.h"

#include <algorithm>
#include <utility>

#include "check/files/scanner.h"

namespace latbox::check::proof {
namespace {

using Words = std::vector<const char*>;

const Words GOALS = {"points", "better", "slack", "equal"};
// So many digits fit a machine word, whichever they are.
constexpr std::size_t WORD_DIGITS = 18;
constexpr std::size_t SHOWN = 40;

std::string quoted(std::string_view word) {
  return "'" + std::string(word.substr(0, SHOWN)) + (word.size() > SHOWN ? "...'" : "'");
}

bool isCount(std::string_view word) {
  return !word.empty() && word.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isNumber(std::string_view word) {
  return isCount(word.substr(word.starts_with('-') ? 1 : 0));
}

// Requires isNumber.
mpz_class valueOf(std::string_view word) {
  const std::string text(word);
  return text.size() <= WORD_DIGITS ? mpz_class(std::stol(text)) : mpz_class(text, 10);
}

// Holds one line, the one that is read next, as words.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) { advance(); }

  Proof read() {
    Proof proof;
    take("latbox-proof");
    take("1");
    endLine();
    proof.verdict = readVerdict();
    proof.pointLine = line_;
    if (proof.verdict.kind == Kind::OPTIMUM) {
      take("point");
      while (hasMore()) proof.point.push_back(takeRational());
      endLine();
    }
    do proof.searches.push_back(readSearch());
    while (is("search"));
    take("end");
    endLine();
    if (!words_.empty()) refuse("text behind the end of the proof");
    return proof;
  }

 private:
  [[noreturn]] void refuse(const std::string& reason) const {
    throw Unreadable(std::to_string(line_) + ": " + reason);
  }

  [[noreturn]] void refuseWord(const std::string& wanted) const {
    if (words_.empty()) refuse("the file ends where " + wanted + " is expected");
    refuse("expected " + wanted + ", found " + (hasMore() ? quoted(words_[at_]) : "the end of the line"));
  }

  void advance() {
    words_.clear();
    at_ = 0;
    ++line_;
    if (rest_.empty()) return;
    const std::size_t size = rest_.find('\n');
    if (size == std::string_view::npos) refuse("the last line has no end");
    for (std::size_t begin = 0; begin < size;) {
      const std::size_t end = std::min(rest_.find_first_of(" \t", begin), size);
      if (end > begin) words_.push_back(rest_.substr(begin, end - begin));
      begin = end + 1;
    }
    rest_.remove_prefix(size + 1);
    if (words_.empty()) refuse("an empty line");
  }

  void endLine() {
    if (words_.empty() || hasMore()) refuseWord("the end of the line");
    advance();
  }

  bool hasMore() const { return at_ < words_.size(); }
  bool is(std::string_view word) const { return hasMore() && words_[at_] == word; }
  bool takeIf(std::string_view word) {
    if (!is(word)) return false;
    ++at_;
    return true;
  }
  void take(const char* word) {
    if (!takeIf(word)) refuseWord(quoted(word));
  }

  // The number of the word that comes next.
  std::size_t takeOneOf(const Words& words) {
    std::string wanted;
    for (std::size_t i = 0; i < words.size(); ++i) {
      if (takeIf(words[i])) return i;
      wanted += (i == 0 ? "" : " or ") + quoted(words[i]);
    }
    refuseWord(wanted);
  }

  mpz_class takeNumber() {
    if (!hasMore() || !isNumber(words_[at_])) refuseWord("a number");
    return valueOf(words_[at_++]);
  }

  mpz_class takeCount() {
    if (!hasMore() || !isCount(words_[at_])) refuseWord("a number that is not negative");
    return valueOf(words_[at_++]);
  }

  mpq_class takeRational() {
    const std::string_view word = hasMore() ? words_[at_] : "";
    const std::size_t slash = word.find('/');
    if (slash == std::string_view::npos) return takeNumber();
    const std::string_view below = word.substr(slash + 1);
    if (!isNumber(word.substr(0, slash)) || !isCount(below)) refuseWord("a rational");
    const mpq_class value(valueOf(word.substr(0, slash)), valueOf(below));
    if (value.get_den() < 2 || gcd(value.get_num(), value.get_den()) != 1)
      refuse(quoted(word) + " is not in lowest terms");
    ++at_;
    return value;
  }

  // The rest of the line.
  Numbers takeNumbers() {
    Numbers numbers{line_, {}};
    while (hasMore()) numbers.values.push_back(takeNumber());
    endLine();
    return numbers;
  }

  Numbers readVector(const char* word) {
    take(word);
    return takeNumbers();
  }

  template <class Read>
  void repeat(const mpz_class& count, Read read) {
    for (mpz_class i = 0; i < count; ++i) read();
  }

  Verdict readVerdict() {
    Verdict verdict;
    verdict.line = line_;
    take("verdict");
    verdict.kind = static_cast<Kind>(takeOneOf({"none", "all", "optimum"}));
    if (verdict.kind == Kind::ALL) verdict.count = takeCount();
    if (verdict.kind == Kind::OPTIMUM) {
      verdict.target = takeRational();
      verdict.slack = takeRational();
      if (hasMore()) verdict.count = takeCount();
    }
    endLine();
    return verdict;
  }

  Search readSearch() {
    Search search;
    search.line = line_;
    take("search");
    search.goal = static_cast<Goal>(takeOneOf(GOALS));
    endLine();
    repeat(readCount("objective"), [&] { search.objective.push_back(readObjectiveRow()); });
    repeat(readCount("derive"), [&] { search.steps.push_back(readStep()); });
    search.contradiction = is("contradiction");
    if (!search.contradiction) readTree(search);
    search.endLine = line_;
    if (search.contradiction) {
      take("contradiction");
    } else {
      take("walk");
      take("nodes");
      search.nodes = takeCount();
      take("points");
      search.points = takeCount();
    }
    endLine();
    return search;
  }

  mpz_class readCount(const char* word) {
    take(word);
    const mpz_class count = takeCount();
    endLine();
    return count;
  }

  ObjectiveRow readObjectiveRow() {
    const auto kind = static_cast<Objective>(takeOneOf({"norm", "distance", "linear"}));
    if (kind == Objective::LINEAR && hasMore()) refuseWord("the end of the line");
    return {kind, takeNumbers()};
  }

  Step readStep() {
    Step step;
    step.line = line_;
    step.rule = static_cast<Rule>(takeOneOf({"upper", "lower", "class"}));
    if (!takeIf("0")) {
      step.form = hasMore() && words_[at_].starts_with('x') ? 'x' : 'r';
      step.number = takeNamed(step.form, "a variable, a row or 0");
    }
    step.divisor = takeNumber();
    if (step.rule == Rule::CLASS) step.modulus = takeNumber();
    while (hasMore()) {
      step.rows.push_back(takeNamed('r', "a row"));
      step.factors.push_back(takeNumber());
    }
    endLine();
    return step;
  }

  mpz_class takeNamed(char letter, const char* wanted) {
    if (!hasMore() || words_[at_].front() != letter || !isCount(words_[at_].substr(1))) refuseWord(wanted);
    return valueOf(words_[at_++].substr(1));
  }

  void readTree(Search& search) {
    search.lattice.line = line_;
    take("lattice");
    for (int i = 0; i < 3; ++i) search.lattice.values.push_back(takeCount());
    endLine();
    search.equations = readRows("equations");
    search.coordinates = readRows("coordinates");
    search.point = readVector("point");
    const mpz_class& rank = search.lattice.values[0];
    repeat(rank, [&] { search.basis.push_back(readVector("basis")); });
    repeat(rank, [&] { search.dual.push_back(readVector("dual")); });
    search.constant = readVector("constant");
    repeat(rank, [&] { search.levels.push_back(readLevel()); });
    std::reverse(search.levels.begin(), search.levels.end());
  }

  Numbers readRows(const char* word) {
    Numbers rows{line_, {}};
    take(word);
    while (hasMore()) rows.values.push_back(takeCount());
    endLine();
    return rows;
  }

  Level readLevel() {
    take("level");
    Level level{takeCount(), takeNumber(), {}, {}};
    const mpz_class sides = takeCount();
    level.main = takeNumbers();
    repeat(sides, [&] { level.sides.push_back(readVector("side")); });
    return level;
  }

  std::string_view rest_;
  std::vector<std::string_view> words_;
  std::size_t at_ = 0;
  std::size_t line_ = 0;
};

}  // namespace

const char* nameOf(Goal goal) {
  return GOALS[static_cast<std::size_t>(goal)];
}

Proof readProof(std::string_view text) {
  return Reader(text).read();
}

}  // namespace latbox::check::proof
