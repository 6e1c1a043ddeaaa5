#include "complete/program/opt_reader.h"

#include <algorithm>

namespace latbox::complete {
namespace {

constexpr unsigned long MOST_DIGITS = 10000;
constexpr std::string_view BLANKS = " \t\r\n";

struct Item {
  std::size_t position = 0;
  std::vector<Number> elements;
};

struct MatrixItem {
  std::size_t position = 0;
  Matrix rows;
};

std::string count(std::size_t number) {
  return std::to_string(number);
}

std::string quoted(std::string_view word) {
  constexpr std::size_t SHOWN = 40;
  return word.size() <= SHOWN ? "'" + std::string(word) + "'"
                              : "'" + std::string(word.substr(0, SHOWN)) + "...'";
}

// Brackets and numbers of a text, and the places of what is wrong.
class Tokens {
 public:
  Tokens(std::string_view text, const std::string& name) : text_(text), name_(name) {}

  // Blanks, tabs, line ends and comments.
  std::size_t skip() {
    while (at_ < text_.size()) {
      const std::size_t before = at_;
      at_ = std::min(text_.find_first_not_of(BLANKS, at_), text_.size());
      skipComment();
      if (at_ == before) break;
    }
    return at_;
  }

  bool takeIf(char wanted) {
    if (skip() == text_.size() || text_[at_] != wanted) return false;
    ++at_;
    return true;
  }

  Item vector(const std::string& name) {
    Item item;
    item.position = open(name);
    while (!close(name)) item.elements.push_back(number());
    return item;
  }

  MatrixItem matrix(const std::string& name) {
    MatrixItem item;
    item.position = open(name);
    while (!close(name)) addRow(item, name);
    // Rows without elements make no matrix.
    if (!item.rows.empty() && item.rows.front().empty()) item.rows.clear();
    return item;
  }

  [[noreturn]] void refuse(std::size_t position, const std::string& message) const {
    const std::string_view before = text_.substr(0, position);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t end = before.rfind('\n');
    const std::size_t column = end == std::string_view::npos ? position + 1 : position - end;
    throw BadInput(name_ + ":" + std::to_string(line) + ":" + count(column) + ": " + message);
  }

 private:
  void skipComment() {
    const std::string_view mark = text_.substr(std::min(at_, text_.size()), 2);
    if (mark != "//" && mark != "/*") return;
    const std::string_view end = mark == "//" ? "\n" : "*/";
    const std::size_t found = text_.find(end, at_ + 2);
    if (found == std::string_view::npos && mark == "/*") refuse(at_, "the comment has no end");
    at_ = found == std::string_view::npos ? text_.size() : found + end.size();
  }

  std::string found() const {
    if (at_ >= text_.size()) return "the end";
    const char next = text_[at_];
    return next > ' ' && next <= '~' ? quoted(text_.substr(at_, 1)) : "a byte that is no text";
  }

  std::size_t open(const std::string& name) {
    const std::size_t position = skip();
    if (!takeIf('[')) refuse(position, "expected '[' to begin " + name + ", found " + found());
    return position;
  }

  bool close(const std::string& name) {
    if (takeIf(']')) return true;
    if (skip() == text_.size()) refuse(at_, "expected ']' to end " + name + ", found the end");
    return false;
  }

  void addRow(MatrixItem& item, const std::string& name) {
    const std::string row = "row " + count(item.rows.size() + 1) + " of " + name;
    const Item elements = vector(row);
    item.rows.emplace_back();
    for (const Number& element : elements.elements) {
      if (!element.finite()) refuse(elements.position, "an infinity in " + row);
      item.rows.back().push_back(element.value);
    }
    const std::size_t width = item.rows.front().size();
    if (item.rows.back().size() != width)
      refuse(elements.position,
             row + " has " + count(item.rows.back().size()) + " elements, not " + count(width));
  }

  // A word ends at a blank or a bracket.
  Number number() {
    const std::size_t begin = at_;
    at_ = std::min(text_.find_first_of(" \t\r\n[]|", at_), text_.size());
    const std::string_view word = text_.substr(begin, at_ - begin);
    if (word.empty()) refuse(begin, "expected a number, found " + found());
    if (isInfinity(begin, "inf")) return {1, 0};
    if (isInfinity(begin, "-inf")) return {-1, 0};
    try {
      return {0, parseRational(word)};
    } catch (const BadNumber& bad) {
      refuse(begin, quoted(word) + " " + bad.what());
    }
  }

  // A comment may follow an infinity at once; a slash behind a digit belongs to the number.
  bool isInfinity(std::size_t begin, std::string_view infinity) {
    const std::string_view rest = text_.substr(begin);
    const std::size_t size = infinity.size();
    if (!rest.starts_with(infinity)) return false;
    if (rest.size() > size && std::string_view(" \t\r\n[]|/").find(rest[size]) == std::string_view::npos)
      return false;
    at_ = begin + size;
    return true;
  }

  std::string_view text_;
  std::string name_;
  std::size_t at_ = 0;
};

class Reader {
 public:
  Reader(std::string_view text, const std::string& name) : tokens_(text, name) {}

  Program read() {
    readTargets();
    readEquations();
    readInequations();
    readVariables();
    requireColumns();
    return std::move(program_);
  }

 private:
  void readTargets() {
    program_.wanted = tokens_.vector("dt").elements;
    if (tokens_.takeIf('=')) sized("kt", program_.wanted.size(), "dt");
    at_ = tokens_.matrix("At");
    if (at_.rows.size() != program_.wanted.size())
      differ(at_.position, "At", at_.rows.size(), "dt", program_.wanted.size());
    program_.targets = at_.rows;
  }

  void readEquations() {
    ag_ = tokens_.matrix("Ag");
    program_.equations = ag_.rows;
    const Item sides = sized("bg", ag_.rows.size(), "Ag");
    for (const Number& side : sides.elements) {
      if (!side.finite()) tokens_.refuse(sides.position, "an infinity in bg");
      program_.sides.push_back(side.value);
    }
  }

  void readInequations() {
    au_ = tokens_.matrix("Au");
    program_.inequations = au_.rows;
    program_.lowerSides = sized("lu", au_.rows.size(), "Au").elements;
    const Item upper = sized("ru", au_.rows.size(), "Au");
    program_.upperSides = upper.elements;
    for (std::size_t i = 0; i < au_.rows.size(); ++i) {
      const Number& low = program_.lowerSides[i];
      const Number& high = program_.upperSides[i];
      if (compare(low, high) > 0) crossed(upper.position, "inequation " + count(i + 1), low, high);
      if (low.infinite < 0 && high.infinite > 0)
        tokens_.refuse(upper.position, "inequation " + count(i + 1) + " has no finite side");
    }
  }

  void readVariables() {
    const Item digits = tokens_.vector("dx");
    program_.lower = sized("lx", digits.elements.size(), "dx").elements;
    const Item upper = sized("rx", digits.elements.size(), "dx");
    program_.upper = upper.elements;
    for (std::size_t j = 0; j < digits.elements.size(); ++j) {
      program_.digits.push_back(digitsOf(digits.elements[j], digits.position, j));
      const Number& low = program_.lower[j];
      const Number& high = program_.upper[j];
      if (compare(low, high) > 0 || low.infinite > 0 || high.infinite < 0)
        crossed(upper.position, "x" + count(j + 1), low, high);
    }
  }

  // Digits of 0 or less mean whole numbers.
  unsigned long digitsOf(const Number& number, std::size_t position, std::size_t j) const {
    if (number.finite() && number.value <= 0) return 0;
    if (!number.finite() || number.value.get_den() != 1 || number.value > MOST_DIGITS)
      tokens_.refuse(position, "x" + count(j + 1) + " cannot have " + toText(number) + " digits");
    return number.value.get_num().get_ui();
  }

  void requireColumns() const {
    if (at_.rows.empty() && ag_.rows.empty() && au_.rows.empty())
      tokens_.refuse(at_.position, "At, Ag and Au are all empty");
    requireColumns(at_, "At");
    requireColumns(ag_, "Ag");
    requireColumns(au_, "Au");
  }

  void requireColumns(const MatrixItem& matrix, const char* name) const {
    if (!matrix.rows.empty() && matrix.rows.front().size() != program_.variables())
      tokens_.refuse(matrix.position, std::string(name) + " has " + count(matrix.rows.front().size()) +
                                          " columns, but there are " + count(program_.variables()) +
                                          " variables");
  }

  Item sized(const char* name, std::size_t size, const char* partner) {
    Item item = tokens_.vector(name);
    if (item.elements.size() != size) differ(item.position, name, item.elements.size(), partner, size);
    return item;
  }

  [[noreturn]] void differ(std::size_t position, const char* name, std::size_t size, const char* partner,
                           std::size_t partnerSize) const {
    tokens_.refuse(position, std::string(name) + " has " + count(size) + " entries, but " + partner +
                                 " has " + count(partnerSize));
  }

  [[noreturn]] void crossed(std::size_t position, const std::string& what, const Number& low,
                            const Number& high) const {
    tokens_.refuse(
        position, "no number lies within the bounds of " + what + ", " + toText(low) + " .. " + toText(high));
  }

  Tokens tokens_;
  Program program_;
  MatrixItem at_;
  MatrixItem ag_;
  MatrixItem au_;
};

}  // namespace

Program readProgram(std::string_view text, const std::string& name) {
  return Reader(text, name).read();
}

}  // namespace latbox::complete
