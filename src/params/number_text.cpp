#include "params/number_text.h"

#include <algorithm>
#include <sstream>

#include "lib/scanner.h"
#include "numbers/qq.h"

namespace latbox {
namespace {

constexpr const char* SEPARATORS = ".:,/";
constexpr long MAX_SEPARATORS = 16;

bool tokenRefused(std::string token);

// What stands behind ".", "," or ":" is parsed as a number of its own; behind ":" it must be a proper
// fraction.
bool fractionRefused(const std::string& behind, bool mixed) {
  const std::size_t lead = std::min(behind.find_first_not_of('0'), behind.size());
  const std::string rest = behind.substr(lead);
  if (tokenRefused(rest)) return true;
  if (!mixed) return false;
  QQ value;
  parse(value, rest);
  return lead > 0 || !value.sign || !value.ganze.isZero();
}

bool tokenRefused(std::string token) {
  if (!token.empty() && (token[0] == '-' || token[0] == '+')) token.erase(0, 1);
  if (token.empty()) return true;
  const std::size_t mark = token.find_first_of(SEPARATORS);
  if (mark == std::string::npos) return false;
  const std::string behind = token.substr(mark + 1);
  // A denominator keeps its digits and drops all else, so it is zero unless a digit says otherwise.
  if (token[mark] == '/') return behind.find_first_of("123456789") == std::string::npos;
  return fractionRefused(behind, token[mark] == ':');
}

}  // namespace

bool exactNumberRefuses(const std::string& text) {
  // An unfinished comment in front is one that the end added here closes.
  std::istringstream in(text + "\n*/");
  skipSpaceAndComments(in);
  if (nextCharacter(in) == std::char_traits<char>::eof()) return true;
  const std::string token = takeNumberToken(in, false);
  if (token.size() > MAX_NUMBER_LENGTH) return true;
  const auto separators = std::count_if(token.begin(), token.end(), [](char ch) {
    return std::string(SEPARATORS).find(ch) != std::string::npos;
  });
  return !token.empty() && (separators > MAX_SEPARATORS || tokenRefused(token));
}

}  // namespace latbox
