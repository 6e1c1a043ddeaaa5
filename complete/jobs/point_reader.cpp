#include "complete/jobs/point_reader.h"

#include <algorithm>

#include "complete/files/points_file.h"
#include "complete/files/words.h"

namespace latbox::complete::jobs {
namespace {

long wordOf(long value) {
  return value;
}

long wordOf(const Integer& value) {
  return value.get_si();
}

template <class Values>
std::uint64_t sumOf(const Values& values) {
  constexpr std::uint64_t PRIME = 0x9e3779b97f4a7c15;
  std::uint64_t sum = values.size();
  for (const auto& value : values) {
    sum = (sum ^ static_cast<std::uint64_t>(wordOf(value))) * PRIME;
    sum ^= sum >> 29;
  }
  return sum;
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Of a point's line all that stands before its time.
std::string untilTime(const Program& program, const Point& x, const Norms& norms) {
  constexpr std::string_view REST = "0 | \n";
  std::string line = lineOf(program, x, norms, 0, "");
  line.resize(line.size() - REST.size());
  return line;
}

// Whether nothing but this stands before the time; that and parameters, "7 | --seed=1", are the job's own.
bool isUntilTime(std::string_view line, std::string_view beginning) {
  if (!line.starts_with(beginning)) return false;
  line.remove_prefix(beginning.size());
  const std::size_t digits = line.find_first_not_of("0123456789");
  return digits > 0 && digits != std::string_view::npos && line.substr(digits).starts_with(" | ") &&
         line.find('|', digits + 2) == std::string_view::npos;
}

}  // namespace

// Points of a program without targets have equal norms.
PointReader::PointReader(const Program& program, const PieceLattice& lattice)
    : program_(program), verification_(program), coefficients_(lattice) {
  const auto isWhole = [](unsigned long digits) { return digits == 0; };
  if (program.targets.empty() && std::all_of(program.digits.begin(), program.digits.end(), isWhole)) {
    const std::string line = untilTime(program, Point(program.variables()), {});
    middle_ = line.substr(line.find(']'));
  }
}

// False: the line is not in the very form that is written, or its values are long.
bool PointReader::takeWords(std::string_view line, std::vector<long>& words) const {
  constexpr std::string_view BEGIN = "[ ";
  constexpr std::ptrdiff_t MOST_DIGITS = 18;
  if (middle_.empty() || !line.starts_with(BEGIN)) return false;
  const char* at = line.data() + BEGIN.size();
  const char* const end = line.data() + line.size();
  for (long& word : words) {
    // Nearly all of them are.
    if (const bool isDigitAlone = end - at > 1 && isDigit(at[0]) && at[1] == ' '; isDigitAlone) {
      word = at[0] - '0';
      at += 2;
      continue;
    }
    const bool isNegative = at != end && *at == '-';
    if (isNegative) ++at;
    const char* const first = at;
    long value = 0;
    for (; at != end && isDigit(*at) && at - first < MOST_DIGITS; ++at) value = 10 * value + (*at - '0');
    if (at == first || at == end || *at != ' ' || *first == '0') return false;
    ++at;
    word = isNegative ? -value : value;
  }
  return isUntilTime(line.substr(static_cast<std::size_t>(at - line.data())), middle_);
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
  for (std::size_t j = 0; j < z.size(); ++j) try {
      const Rational whole = parseRational(next()) * powerOfTen(program_.digits[j]);
      if (whole.get_den() != 1) throw BadWords("a value between two steps");
      z[j] = whole.get_num();
    } catch (const BadNumber&) {
      throw BadWords("a value that is none");
    }
  if (next() != "]") throw BadWords("a point of another number of variables");
}

std::uint64_t PointReader::judgeLine(std::string_view line, const Result& result, const Entry& entry,
                                     Room& room) const {
  constexpr const char* ELSEWHERE = "a point of another piece";
  if (verification_.isShort() && takeWords(line, room.words) && verification_.keeps(room.words) &&
      coefficients_.enter(room.coefficients, room.words)) {
    if (!coefficients_.belong(entry.pieces, room.coefficients) ||
        coefficients_.belong(result.open, room.coefficients))
      throw BadWords(ELSEWHERE);
    return sumOf(room.words);
  }
  takeWhole(line, room.z);
  verification_.takePoint(room.x, room.z);
  if (!coefficients_.isIn(entry.pieces, room.z) || coefficients_.isIn(result.open, room.z))
    throw BadWords(ELSEWHERE);
  if (!isUntilTime(line, untilTime(program_, room.x, normsOf(program_, room.x))))
    throw BadWords("another line than that of its point");
  return sumOf(room.z);
}

void PointReader::requireDistinct(std::vector<Line>& all) const {
  const auto wholeOf = [this](std::string_view line) {
    IntegerVector z(program_.variables());
    takeWhole(line, z);
    return z;
  };
  std::sort(all.begin(), all.end(), [](const Line& a, const Line& b) { return a.sum < b.sum; });
  for (std::size_t first = 0; first < all.size(); ++first)
    for (std::size_t i = first + 1; i < all.size() && all[i].sum == all[first].sum; ++i)
      if (wholeOf(all[i].text) == wholeOf(all[first].text))
        throw BadWords("point " + std::to_string(std::max(all[i].number, all[first].number)) +
                       ": stands there twice");
}

template <class Use>
void PointReader::eachLine(const Result& result, const Use& use) const {
  unsigned long number = 0;
  const std::string_view lines = result.lines;
  try {
    for (std::size_t place = 0; place < lines.size();) {
      ++number;
      const std::size_t end = std::min(lines.find('\n', place), lines.size());
      use(number, lines.substr(place, end - place));
      place = end + 1;
    }
  } catch (const std::exception& e) {
    throw BadWords("point " + std::to_string(number) + ": " + e.what());
  }
  if (number != result.points)
    throw BadWords(std::to_string(number) + " points, not " + std::to_string(result.points));
}

void PointReader::judge(const Result& result, const Entry& entry) const {
  const std::size_t n = program_.variables();
  Room room{std::vector<long>(n), {}, IntegerVector(n), {}};
  std::vector<Line> all;
  eachLine(result, [&](unsigned long number, std::string_view line) {
    all.push_back({judgeLine(line, result, entry, room), number, line});
  });
  requireDistinct(all);
}

void PointReader::read(const Result& result, const std::function<void(const Point&)>& take) const {
  Room room{{}, {}, IntegerVector(program_.variables()), {}};
  eachLine(result, [&](unsigned long, std::string_view line) {
    takeWhole(line, room.z);
    verification_.takePoint(room.x, room.z);
    take(room.x);
  });
}

}  // namespace latbox::complete::jobs
