#include "numbers/element_text.h"

#include "lib/failure.h"
#include "numbers/number.h"

namespace latbox {
namespace {

bool isSmallInteger(const std::string& token) {
  constexpr std::size_t EXACT_DIGITS = 18;
  return !token.empty() && token.size() <= EXACT_DIGITS &&
         token.find_first_not_of("0123456789") == std::string::npos;
}

template <class T>
void parseElement(const std::string& text, T& element) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return;
  if (!exponentIsBounded(text)) fail("Exponent is out of range");
  element = parseText<T>(text.substr(first));
}

}  // namespace

bool exponentIsBounded(const std::string& text) {
  const std::size_t mark = text.find_first_of("eE");
  if (mark == std::string::npos) return true;
  std::string exponent = text.substr(mark + 1);
  if (!exponent.empty() && (exponent[0] == '+' || exponent[0] == '-')) exponent.erase(0, 1);
  return !exponent.empty() && exponent.size() <= 4 &&
         exponent.find_first_not_of("0123456789") == std::string::npos;
}

template <>
void elementFromText<dbl_t>(const std::string& text, dbl_t& element) {
  // Nearly all that files hold; the way through an exact number costs a hundred times as much.
  if (isSmallInteger(text)) {
    element = static_cast<dbl_t>(std::stoll(text));
  } else {
    parseElement(text, element);
  }
}

template <>
void elementFromText<QQ>(const std::string& text, QQ& element) {
  parseElement(text, element);
}

}  // namespace latbox
