#include "program/file_items.h"

#include <set>

#include "lib/element_text.h"
#include "lib/os/file.h"
#include "lib/os/signals.h"
#include "lib/scanner.h"
#include "numbers/number.h"

namespace latbox {
namespace {

constexpr std::size_t INTEGER_DIGITS = 18;

// The letters of an infinity, which belong to no number token.
std::string takeLetters(std::istream& in) {
  std::string letters;
  for (int ch = nextCharacter(in); ch >= 'a' && ch <= 'z' && letters.size() < 3; ch = nextCharacter(in))
    letters += static_cast<char>(takeCharacter(in));
  return letters;
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

bool writeOutput(const std::string& path, const std::string& text) {
  // Never destroyed: exit() may run while the solver writes.
  static auto& told = *new std::set<std::string>;
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
