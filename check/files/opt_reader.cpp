// The .opt file: ten or eleven bracketed items in a fixed order.
#include <string>

#include "check/files/program.h"

namespace latbox::check {
namespace {

std::string count(std::size_t number) {
  return std::to_string(number);
}

class OptReader {
 public:
  explicit OptReader(std::string_view text) : scanner_(text) {}

  Program read() {
    readTargets();
    readEquations();
    readInequations();
    readVariables();
    requireColumns();
    p_.trailingText = standsBehind();
    return std::move(p_);
  }

 private:
  void readTargets() {
    p_.dt = scanner_.takeVector("dt");
    p_.kt = p_.dt;
    if (scanner_.takeIf('=')) p_.kt = takeSized("kt", p_.dt.size(), "dt");
    atPosition_ = scanner_.position();
    p_.At = scanner_.takeMatrix("At");
    if (p_.At.size() != p_.dt.size()) differ(atPosition_, "At", p_.At.size(), "dt", p_.dt.size());
  }

  void readEquations() {
    agPosition_ = scanner_.position();
    p_.Ag = scanner_.takeMatrix("Ag");
    const std::size_t begin = scanner_.position();
    for (const Number& side : takeSized("bg", p_.Ag.size(), "Ag")) {
      if (!side.isFinite()) scanner_.refuse(begin, "an infinity in bg");
      p_.bg.push_back(side.value());
    }
  }

  void readInequations() {
    auPosition_ = scanner_.position();
    p_.Au = scanner_.takeMatrix("Au");
    p_.lu = takeSized("lu", p_.Au.size(), "Au");
    const std::size_t begin = scanner_.position();
    p_.ru = takeSized("ru", p_.Au.size(), "Au");
    for (std::size_t i = 0; i < p_.ru.size(); ++i) {
      if (p_.lu[i] > p_.ru[i]) crossed(begin, "inequation " + count(i + 1), p_.lu[i], p_.ru[i]);
      if (p_.lu[i].infinite() < 0 && p_.ru[i].infinite() > 0)
        scanner_.refuse(begin, "inequation " + count(i + 1) + " has no finite side");
    }
  }

  void readVariables() {
    const std::size_t digits = scanner_.position();
    const Vector dx = scanner_.takeVector("dx");
    p_.lx = takeSized("lx", dx.size(), "dx");
    const std::size_t begin = scanner_.position();
    p_.rx = takeSized("rx", dx.size(), "dx");
    for (std::size_t i = 0; i < dx.size(); ++i) p_.dx.push_back(digitsOf(dx[i], digits, i));
    for (std::size_t i = 0; i < dx.size(); ++i)
      if (p_.lx[i] > p_.rx[i] || p_.lx[i].infinite() > 0 || p_.rx[i].infinite() < 0)
        crossed(begin, "x" + count(i + 1), p_.lx[i], p_.rx[i]);
  }

  // Digits of 0 or less mean whole numbers.
  long digitsOf(const Number& d, std::size_t position, std::size_t i) const {
    if (d.isFinite() && d.value() <= 0) return 0;
    if (!d.isFinite() || !d.value().isWhole() || d.value() > MAX_DIGITS)
      scanner_.refuse(position, "x" + count(i + 1) + " cannot have " + toText(d) + " digits");
    return d.value().exact().get_num().get_si();
  }

  void requireColumns() const {
    if (p_.At.empty() && p_.Ag.empty() && p_.Au.empty())
      scanner_.refuse(atPosition_, "At, Ag and Au are all empty");
    requireColumns(p_.At, "At", atPosition_);
    requireColumns(p_.Ag, "Ag", agPosition_);
    requireColumns(p_.Au, "Au", auPosition_);
  }

  void requireColumns(const Matrix& matrix, const char* name, std::size_t position) const {
    if (!matrix.empty() && matrix.front().size() != p_.variables())
      scanner_.refuse(position, std::string(name) + " has " + count(matrix.front().size()) +
                                    " columns, but there are " + count(p_.variables()) + " variables");
  }

  Vector takeSized(const char* name, std::size_t size, const char* partner) {
    const std::size_t begin = scanner_.position();
    Vector vector = scanner_.takeVector(name);
    if (vector.size() != size) differ(begin, name, vector.size(), partner, size);
    return vector;
  }

  [[noreturn]] void differ(std::size_t position, const char* name, std::size_t size, const char* partner,
                           std::size_t partnerSize) const {
    scanner_.refuse(position, std::string(name) + " has " + count(size) + " entries, but " + partner +
                                  " has " + count(partnerSize));
  }

  [[noreturn]] void crossed(std::size_t position, const std::string& what, const Number& low,
                            const Number& high) const {
    scanner_.refuse(
        position, "no number lies within the bounds of " + what + ", " + toText(low) + " .. " + toText(high));
  }

  // An open comment there is no matter: nothing is read any more.
  bool standsBehind() {
    try {
      return !scanner_.atEnd();
    } catch (const Unreadable&) {
      return false;
    }
  }

  Scanner scanner_;
  Program p_;
  std::size_t atPosition_ = 0;
  std::size_t agPosition_ = 0;
  std::size_t auPosition_ = 0;
};

}  // namespace

Program readProgram(std::string_view text) {
  return OptReader(text).read();
}

}  // namespace latbox::check
