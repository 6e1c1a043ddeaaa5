#include "program/file_items.h"

#include <cmath>
#include <set>

#include "lib/immortal.h"
#include "lib/os/file.h"
#include "lib/os/signals.h"
#include "lib/scanner.h"
#include "numbers/element_text.h"
#include "numbers/number.h"

namespace latbox {
namespace {

constexpr std::size_t INTEGER_DIGITS = 18;
constexpr dbl_t TEXTUAL_RANGE = 1e6L;
constexpr dbl_t SHOWN_PLACES = 1e7L;  // 17 digits show so many places of every number below 10^10

// The letters of an infinity, which belong to no number token.
std::string takeLetters(std::istream& in) {
  std::string letters;
  for (int ch = nextCharacter(in); ch >= 'a' && ch <= 'z' && letters.size() < 3; ch = nextCharacter(in))
    letters += static_cast<char>(takeCharacter(in));
  return letters;
}

// 9.75 has few, a third has more. What the type itself rounds off is far smaller.
bool hasMorePlaces(dbl_t x) {
  constexpr dbl_t ROUNDING = 0.01L;
  const dbl_t shifted = x * SHOWN_PLACES;
  return std::fabs(shifted - std::round(shifted)) > ROUNDING;
}

bool isSign(const std::string& text) {
  return text == "-" || text == "+";
}

}  // namespace

template <class T>
T takeNumber(std::istream& in) {
  skipSpaceAndComments(in);
  std::string text = takeNumberToken(in, true);
  if ((text.empty() || isSign(text)) && nextCharacter(in) == 'i') text += takeLetters(in);
  if (!exponentIsBounded(text)) fail("Vector: bad input");
  const T value = parseText<T>(text);
  precisionCheck(value);
  return value;
}

long takeInteger(std::istream& in) {
  skipSpaceAndComments(in);
  const std::string text = takeNumberToken(in, false);
  const std::string digits = text.substr(!text.empty() && text[0] == '-' ? 1 : 0);
  const bool number = !digits.empty() && digits.size() <= INTEGER_DIGITS &&
                      digits.find_first_not_of("0123456789") == std::string::npos;
  if (!number) fail("QQ: parse error1");
  return std::stol(text);
}

template <class T>
void requireExact(const Vector<T>& v) {
  for (long i = 1; i <= v.MN; ++i) precisionCheck(v[i]);
}

void requireTextual(const Matrix<dbl_t>& basis, dbl_t range) {
  if (range <= TEXTUAL_RANGE) return;
  for (long i = 1; i <= basis.M; ++i)
    for (long j = 1; j <= basis.N; ++j)
      if (hasMorePlaces(basis[i][j])) throwPrecision("B_save overflow");
}

bool writeOutput(const std::string& path, const std::string& text) {
  static Immortal<std::set<std::string>> immortal;
  auto& told = *immortal;
  std::string reason;
  const SignalHold hold;
  if (writeFile(path, text, reason)) {
    told.erase(path);
    return true;
  }
  if (told.insert(path).second) warn(path + ": " + reason);
  return false;
}

template dbl_t takeNumber<dbl_t>(std::istream&);
template QQ takeNumber<QQ>(std::istream&);
template void requireExact(const Vector<dbl_t>&);
template void requireExact(const Vector<QQ>&);

}  // namespace latbox
