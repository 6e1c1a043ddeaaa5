#include "check/files/scanner.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace latbox::check {
namespace {

constexpr std::size_t INTEGER_DIGITS = 18;
constexpr std::size_t SHOWN = 40;

bool isBlank(char ch) {
  return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n';
}

// A long token is cut in messages.
std::string quoted(std::string_view token) {
  if (token.size() <= SHOWN) return "'" + std::string(token) + "'";
  return "'" + std::string(token.substr(0, SHOWN)) + "...'";
}

std::string named(char ch) {
  if (ch >= ' ' && ch <= '~') return std::string("'") + ch + "'";
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "byte 0x%02x",
                static_cast<unsigned>(static_cast<unsigned char>(ch)));
  return text.data();
}

std::string count(std::size_t number) {
  return std::to_string(number);
}

}  // namespace

void Scanner::skipSlowly() {
  do {
    while (at_ < text_.size() && isBlank(text_[at_])) ++at_;
  } while (skipComment());
}

bool Scanner::skipComment() {
  const std::string_view begin = text_.substr(at_, 2);
  if (begin != "//" && begin != "/*") return false;
  const std::string_view end = begin == "//" ? "\n" : "*/";
  const std::size_t found = text_.find(end, at_ + 2);
  if (found == std::string_view::npos && begin == "/*") refuse(at_, "the comment has no end");
  at_ = found == std::string_view::npos ? text_.size() : found + end.size();
  return true;
}

std::size_t Scanner::position() {
  skip();
  return at_;
}

bool Scanner::atEnd() {
  return position() == text_.size();
}

std::string Scanner::found() {
  return atEnd() ? "the end" : named(text_[at_]);
}

bool Scanner::takeIf(char wanted) {
  if (atEnd() || text_[at_] != wanted) return false;
  ++at_;
  return true;
}

void Scanner::take(char wanted, const std::string& purpose) {
  if (!takeIf(wanted)) refuse(at_, "expected " + named(wanted) + " " + purpose + ", found " + found());
}

// All that may stand in a number: the characters from "+" to ":", as in the solver, and the exponent's
// letter.
std::string_view Scanner::takeToken() {
  const std::size_t begin = position();
  const auto belongs = [this](char ch) {
    return (ch >= '+' && ch <= ':') || (exponents_ && (ch == 'e' || ch == 'E'));
  };
  while (at_ < text_.size() && belongs(text_[at_])) ++at_;
  return text_.substr(begin, at_ - begin);
}

bool Scanner::takeInfinity(std::string_view word) {
  const std::size_t begin = position();
  if (!text_.substr(begin).starts_with(word)) return false;
  at_ += word.size();
  requireEndOfNumber(begin, false);
  return true;
}

void Scanner::requireEndOfNumber(std::size_t begin, bool slashBelongs) {
  if (at_ == text_.size() || isBlank(text_[at_])) return;
  const std::string ends = slashBelongs ? "[]|" : "[]|/";
  if (ends.find(text_[at_]) != std::string::npos) return;
  refuse(at_, named(text_[at_]) + " behind " + quoted(text_.substr(begin, at_ - begin)));
}

// Nearly all numbers: digits, perhaps behind a minus, that fit a machine word and end at a blank. All that is
// no such number is left as it is.
std::optional<long> Scanner::takeWord() {
  skip();
  const char* const begin = text_.data() + at_;
  const char* const end = text_.data() + text_.size();
  long word = 0;
  const auto [behind, error] = std::from_chars(begin, end, word);
  if (error != std::errc() || behind == end || !isBlank(*behind)) return std::nullopt;
  at_ += static_cast<std::size_t>(behind - begin);
  return word;
}

Number Scanner::takeNumber() {
  if (const auto word = takeWord()) return *word;
  if (takeInfinity("inf")) return Number::infinity(1);
  if (takeInfinity("-inf")) return Number::infinity(-1);
  const std::string_view token = takeToken();
  const std::size_t begin = at_ - token.size();
  if (token.empty()) refuse(at_, "expected a number, found " + found());
  requireEndOfNumber(begin, true);
  try {
    return parseNumber(token, exponents_);
  } catch (const MalformedNumber& malformed) {
    refuse(begin, quoted(token) + " " + malformed.what());
  }
}

long Scanner::takeInteger() {
  const std::string_view token = takeToken();
  const std::string_view digits = token.substr(token.starts_with('-') ? 1 : 0);
  const bool whole = !digits.empty() && digits.size() <= INTEGER_DIGITS &&
                     digits.find_first_not_of("0123456789") == std::string_view::npos;
  if (!whole)
    refuse(at_ - token.size(),
           token.empty() ? "expected an integer, found " + found() : quoted(token) + " is not an integer");
  return std::stol(std::string(token));
}

Vector Scanner::takeVector(const std::string& name) {
  take('[', "to begin " + name);
  Vector elements;
  while (!takeIf(']')) {
    if (atEnd()) refuse(at_, "expected ']' to end " + name + ", found the end");
    elements.push_back(takeNumber());
  }
  return elements;
}

Row Scanner::finiteRow(const Vector& row, std::size_t position, const std::string& name) const {
  std::vector<Rational> values;
  values.reserve(row.size());
  for (const Number& element : row) {
    if (!element.isFinite()) refuse(position, "an infinity in " + name);
    values.push_back(element.value());
  }
  return Row(std::move(values));
}

Matrix Scanner::takeMatrix(const std::string& name) {
  take('[', "to begin " + name);
  Matrix rows;
  while (!takeIf(']')) {
    const std::size_t begin = position();
    const std::string row = "row " + count(rows.size() + 1) + " of " + name;
    rows.push_back(finiteRow(takeVector(row), begin, row));
    if (rows.back().size() != rows.front().size())
      refuse(begin,
             row + " has " + count(rows.back().size()) + " elements, not " + count(rows.front().size()));
  }
  // Rows without elements make no matrix.
  if (!rows.empty() && rows.front().size() == 0) rows.clear();
  return rows;
}

void Scanner::refuse(std::size_t position, const std::string& message) const {
  const std::string_view before = text_.substr(0, position);
  const long line = firstLine_ + std::count(before.begin(), before.end(), '\n');
  const std::size_t lineEnd = before.rfind('\n');
  const std::size_t column = lineEnd == std::string_view::npos ? position + 1 : position - lineEnd;
  const std::string text = "line " + std::to_string(line) + ", column " + count(column) + ": " + message;
  if (at_ == text_.size()) throw BrokenOff(text);
  throw Unreadable(text);
}

}  // namespace latbox::check
