#include "check/proof_text.h"

#include <algorithm>
#include <array>
#include <utility>

#include "check/scanner.h"

namespace latbox::check::proof {
namespace {

constexpr std::array<const char*, 4> GOALS = {"points", "better", "slack", "equal"};
// So many digits fit a machine word, whichever they are.
constexpr std::size_t WORD_DIGITS = 18;
constexpr std::size_t SHOWN = 40;

bool isBlank(char ch) {
  return ch == ' ' || ch == '\t';
}

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

// Requires isCount.
std::size_t sizeOf(std::string_view word) {
  const mpz_class value = valueOf(word);
  return value.fits_ulong_p() ? value.get_ui() : NO_SUCH;
}

// Holds one line, the one that is read next, as words.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) { advance(); }

  Proof read() {
    take("latbox-proof");
    take("1");
    endLine();
    Proof proof;
    proof.verdict = readVerdict();
    if (proof.verdict.kind == Kind::OPTIMUM) readPoint(proof);
    do {
      proof.searches.push_back(readSearch());
    } while (is("search"));
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
    const std::string found = at_ == words_.size() ? "the end of the line" : quoted(words_[at_]);
    refuse("expected " + wanted + ", found " + found);
  }

  void advance() {
    words_.clear();
    at_ = 0;
    ++line_;
    if (rest_.empty()) return;
    const std::size_t end = rest_.find('\n');
    if (end == std::string_view::npos) refuse("the last line has no end");
    split(rest_.substr(0, end));
    rest_.remove_prefix(end + 1);
    if (words_.empty()) refuse("an empty line");
  }

  void split(std::string_view line) {
    for (std::size_t begin = 0; begin < line.size();) {
      std::size_t end = begin;
      while (end < line.size() && !isBlank(line[end])) ++end;
      if (end > begin) words_.push_back(line.substr(begin, end - begin));
      begin = end + 1;
    }
  }

  void endLine() {
    if (hasMore()) refuseWord("the end of the line");
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

  mpz_class takeNumber() {
    if (!hasMore() || !isNumber(words_[at_])) refuseWord("a number");
    return valueOf(words_[at_++]);
  }
  std::string_view takeCountWord() {
    if (!hasMore() || !isCount(words_[at_])) refuseWord("a number that is not negative");
    return words_[at_++];
  }
  mpz_class takeCount() { return valueOf(takeCountWord()); }
  std::size_t takeSize() { return sizeOf(takeCountWord()); }

  mpq_class takeRational() {
    if (!hasMore()) refuseWord("a rational");
    const std::string_view word = words_[at_];
    const std::size_t slash = word.find('/');
    if (slash == std::string_view::npos) return mpq_class(takeNumber());
    const std::string_view above = word.substr(0, slash);
    const std::string_view below = word.substr(slash + 1);
    if (!isNumber(above) || !isCount(below)) refuseWord("a rational");
    const mpq_class value(valueOf(above), valueOf(below));
    if (value.get_den() < 2 || gcd(value.get_num(), value.get_den()) != 1)
      refuse(quoted(word) + " is not in lowest terms");
    ++at_;
    return value;
  }

  Integers takeNumbers() {
    Integers numbers;
    while (hasMore()) numbers.push_back(takeNumber());
    return numbers;
  }

  Verdict readVerdict() {
    Verdict verdict;
    verdict.line = line_;
    take("verdict");
    if (takeIf("all")) {
      verdict.kind = Kind::ALL;
      verdict.count = takeCount();
    } else if (takeIf("optimum")) {
      verdict.kind = Kind::OPTIMUM;
      verdict.targetNorm = takeRational();
      verdict.slackNorm = takeRational();
      if (hasMore()) verdict.count = takeCount();
    } else if (!takeIf("none")) {
      refuseWord("'none', 'all' or 'optimum'");
    }
    endLine();
    return verdict;
  }

  void readPoint(Proof& proof) {
    proof.pointLine = line_;
    take("point");
    while (hasMore()) proof.point.push_back(takeRational());
    endLine();
  }

  Search readSearch() {
    Search search;
    search.line = line_;
    take("search");
    search.goal = takeGoal();
    endLine();
    readMany("objective", [&] { search.objective.push_back(readObjectiveRow()); });
    readMany("derive", [&] { search.steps.push_back(readStep()); });
    search.contradiction = takeIf("contradiction");
    if (!search.contradiction) readTree(search);
    search.endLine = line_;
    if (!search.contradiction) readWalk(search);
    endLine();
    return search;
  }

  Goal takeGoal() {
    const auto* goal =
        std::find_if(GOALS.begin(), GOALS.end(), [this](const char* name) { return is(name); });
    if (goal == GOALS.end()) refuseWord("'points', 'better', 'slack' or 'equal'");
    ++at_;
    return static_cast<Goal>(goal - GOALS.begin());
  }

  // A line with a number, and so many lines behind it.
  template <class Read>
  void readMany(const char* word, Read read) {
    take(word);
    const std::size_t count = takeSize();
    endLine();
    for (std::size_t i = 0; i < count; ++i) read();
  }

  ObjectiveRow readObjectiveRow() {
    ObjectiveRow row;
    row.line = line_;
    if (takeIf("norm"))
      row.kind = Objective::NORM;
    else if (takeIf("distance"))
      row.kind = Objective::DISTANCE;
    else if (!takeIf("linear"))
      refuseWord("'norm', 'distance' or 'linear'");
    if (row.kind != Objective::LINEAR) row.signs = takeNumbers();
    endLine();
    return row;
  }

  Step readStep() {
    Step step;
    step.line = line_;
    if (takeIf("class"))
      step.rule = Rule::CLASS;
    else if (takeIf("lower"))
      step.rule = Rule::LOWER;
    else if (!takeIf("upper"))
      refuseWord("'upper', 'lower' or 'class'");
    takeForm(step);
    step.divisor = takeNumber();
    if (step.rule == Rule::CLASS) step.modulus = takeNumber();
    while (hasMore()) {
      const std::size_t row = takeNamed('r', "a row");
      step.terms.push_back({row, takeNumber()});
    }
    endLine();
    return step;
  }

  void takeForm(Step& step) {
    if (takeIf("0")) return;
    step.form = hasMore() && words_[at_].starts_with('x') ? 'x' : 'r';
    step.number = takeNamed(step.form, "a variable, a row or 0");
  }

  std::size_t takeNamed(char letter, const char* wanted) {
    if (!hasMore() || words_[at_].front() != letter || !isCount(words_[at_].substr(1))) refuseWord(wanted);
    return sizeOf(words_[at_++].substr(1));
  }

  void readTree(Search& search) {
    Lattice& lattice = search.lattice;
    lattice.line = line_;
    take("lattice");
    const std::size_t rank = takeSize();
    lattice.equations.announced = takeSize();
    lattice.coordinates.announced = takeSize();
    endLine();
    readRows("equations", lattice.equations);
    readRows("coordinates", lattice.coordinates);
    lattice.point = readVector("point");
    for (std::size_t i = 0; i < rank; ++i) lattice.basis.push_back(readVector("basis"));
    for (std::size_t i = 0; i < rank; ++i) lattice.dual.push_back(readVector("dual"));
    search.constant = readVector("constant");
    for (std::size_t i = 0; i < rank; ++i) search.levels.push_back(readLevel());
    std::reverse(search.levels.begin(), search.levels.end());
  }

  void readRows(const char* word, Rows& rows) {
    rows.line = line_;
    take(word);
    while (hasMore()) rows.numbers.push_back(takeSize());
    endLine();
  }

  Numbers readVector(const char* word) {
    Numbers vector{line_, {}};
    take(word);
    vector.values = takeNumbers();
    endLine();
    return vector;
  }

  Level readLevel() {
    Level level;
    level.line = line_;
    take("level");
    level.number = takeSize();
    level.divisor = takeNumber();
    const std::size_t sides = takeSize();
    level.main = takeNumbers();
    endLine();
    for (std::size_t i = 0; i < sides; ++i) level.sides.push_back(readVector("side"));
    return level;
  }

  void readWalk(Search& search) {
    take("walk");
    take("nodes");
    search.nodes = takeCount();
    take("points");
    search.points = takeCount();
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
