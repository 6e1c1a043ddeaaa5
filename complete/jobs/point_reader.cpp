#include "complete/jobs/point_reader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "complete/points_file.h"
#include "complete/words.h"

namespace latbox::complete::jobs {
namespace {

constexpr unsigned long MOST_DIGITS = 9;

std::uint64_t sumOf(const IntegerVector& z) {
  constexpr std::uint64_t PRIME = 0x9e3779b97f4a7c15;
  std::uint64_t sum = z.size();
  for (const Integer& value : z) {
    sum = (sum ^ static_cast<std::uint64_t>(value.get_si())) * PRIME;
    sum ^= sum >> 29;
  }
  return sum;
}

// Of a line of the time 0 without parameters.
std::string untilTime(std::string line) {
  constexpr std::string_view REST = "0 | \n";
  line.resize(line.size() - REST.size());
  return line;
}

}  // namespace

PointReader::PointReader(const Program& program, const PieceLattice& lattice, bool isListing)
    : program_(program), isListing_(isListing), verification_(program), coefficients_(lattice) {
  for (const unsigned long digits : program.digits)
    steps_.push_back(digits <= MOST_DIGITS ? powerOfTen(digits).get_si() : 0);
  if (program.targets.empty() && std::all_of(steps_.begin(), steps_.end(), [](long s) { return s == 1; })) {
    const std::string line = untilTime(lineOf(program, Point(program.variables()), {}, 0, ""));
    middle_ = line.substr(line.find(']'));
  }
}

// Points of a program without targets have equal norms. Time and parameters, "7 | --seed=1", are the job's
// own.
bool PointReader::isLineOf(std::string_view line, const IntegerVector& z, const Point& x) const {
  std::string text;
  if (!middle_.empty() && std::all_of(z.begin(), z.end(), [](const Integer& v) { return v.fits_slong_p(); }))
    append(text, z);
  else
    text = untilTime(lineOf(program_, x, normsOf(program_, x), 0, ""));
  if (!line.starts_with(text)) return false;
  line.remove_prefix(text.size());
  const std::size_t digits = line.find_first_not_of("0123456789");
  return digits > 0 && digits != std::string_view::npos && line.substr(digits).starts_with(" | ") &&
         line.find('|', digits + 2) == std::string_view::npos;
}

void PointReader::append(std::string& text, const IntegerVector& z) const {
  constexpr std::size_t LONGEST = 24;
  char word[LONGEST];
  text = "[ ";
  for (const Integer& value : z) {
    text.append(word, std::to_chars(word, word + LONGEST, value.get_si()).ptr);
    text += ' ';
  }
  text += middle_;
}

// A line begins with "[ x1 ... xn ]".
void PointReader::takeWhole(std::string_view line, IntegerVector& z) const {
  std::size_t place = 0;
  const auto next = [&] {
    while (place < line.size() && line[place] == ' ') ++place;
    const std::size_t begin = place;
    while (place < line.size() && line[place] != ' ') ++place;
    return line.substr(begin, place - begin);
  };
  if (next() != "[") throw BadWords("no point");
  for (std::size_t j = 0; j < z.size(); ++j) {
    const std::string_view word = next();
    int value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error == std::errc() && end == word.data() + word.size() && steps_[j] != 0) {
      z[j] = value;
      z[j] *= steps_[j];
      continue;
    }
    try {
      const Rational whole = parseRational(word) * powerOfTen(program_.digits[j]);
      if (whole.get_den() != 1) throw BadWords("a value between two steps");
      z[j] = whole.get_num();
    } catch (const BadNumber&) {
      throw BadWords("a value that is none");
    }
  }
  if (next() != "]") throw BadWords("a point of another number of variables");
}

IntegerVector PointReader::wholeOf(std::string_view line) const {
  IntegerVector z(program_.variables());
  takeWhole(line, z);
  return z;
}

void PointReader::requireDistinct(std::vector<Line>& all) const {
  std::sort(all.begin(), all.end(), [](const Line& a, const Line& b) { return a.sum < b.sum; });
  for (std::size_t first = 0; first < all.size(); ++first)
    for (std::size_t i = first + 1; i < all.size() && all[i].sum == all[first].sum; ++i)
      if (wholeOf(all[i].text) == wholeOf(all[first].text))
        throw BadWords("point " + std::to_string(std::max(all[i].number, all[first].number)) +
                       ": stands there twice");
}

void PointReader::read(const Result& result, const Entry& entry,
                       const std::function<void(const Point&)>& take) const {
  Point x;
  IntegerVector z(program_.variables());
  std::vector<Line> all;
  unsigned long number = 0;
  const std::string_view lines = result.lines;
  try {
    for (std::size_t place = 0; place < lines.size();) {
      ++number;
      const std::size_t end = std::min(lines.find('\n', place), lines.size());
      const std::string_view line = lines.substr(place, end - place);
      takeWhole(line, z);
      verification_.takePoint(x, z);
      if (isListing_ && (!coefficients_.isIn(entry.pieces, z) || coefficients_.isIn(result.open, z)))
        throw BadWords("a point of another piece");
      if (isListing_ && !isLineOf(line, z, x)) throw BadWords("another line than that of its point");
      if (isListing_) all.push_back({sumOf(z), number, line});
      take(x);
      place = end + 1;
    }
  } catch (const std::exception& e) {
    throw BadWords("point " + std::to_string(number) + ": " + e.what());
  }
  requireDistinct(all);
  if (number != result.points)
    throw BadWords(std::to_string(number) + " points, not " + std::to_string(result.points));
}

}  // namespace latbox::complete::jobs
