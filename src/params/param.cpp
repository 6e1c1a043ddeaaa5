#include "params/param.h"

#include <limits>
#include <sstream>
#include <type_traits>

#include "lib/failure.h"
#include "lib/scanner.h"
#include "numbers/number.h"
#include "params/number_text.h"

namespace latbox {
namespace {

// The infinities in each type. `long` would be the truncating conversion of an infinity, which the language
// leaves open; the machine gives the smallest value for both signs, and so do we. `bool`: not 0.
template <class T>
T infiniteValue(bool negative) {
  if constexpr (std::is_same_v<T, bool>) {
    return true;
  } else if constexpr (std::is_same_v<T, long>) {
    return std::numeric_limits<long>::min();
  } else if constexpr (std::is_same_v<T, QQ>) {
    return negative ? -qqInfinity() : qqInfinity();
  } else {
    constexpr T INF = std::numeric_limits<T>::infinity();
    return negative ? -INF : INF;
  }
}

template <class T>
T parsedValue(const std::string& text) {
  if (text == "-inf") return infiniteValue<T>(true);
  if (text == "inf") return infiniteValue<T>(false);
  T result{};
  std::istringstream in(text);
  in >> result;
  return result;
}

void ignoreChange(const std::string&) {}

}  // namespace

void ParamInfo::write(std::ostream& out) const {
  const std::string text = value.get();
  if (!text.empty()) out << "--" << key << '=' << text;
}

void ParamInfo::read(std::istream& in) {
  skipSpace(in);
  takeCharacter(in);
  takeCharacter(in);
  std::string token;
  in >> token;
  const std::size_t split = token.find('=');
  if (split == std::string::npos) fail("Malformed parameter: " + token);
  key = token.substr(0, split);
  setText(token.substr(split + 1));
}

void ParamInfo::setText(const std::string& text) {
  value.set(text);
  parse();
}

void ParamInfo::setTextOrZero(const std::string& text) {
  value.set(text);
  if (refuses(text)) {
    clearTyped();
  } else {
    parse();
  }
}

template <class T>
Param<T>::Param() : listener_(ignoreChange) {}

template <class T>
Param<T>::Param(const Param& other)
    : ParamInfo(other), defaultValue(other.defaultValue), listener_(ignoreChange) {
  typed_.store(other.get());
}

template <class T>
Param<T>& Param<T>::operator=(const Param& other) {
  if (this == &other) return *this;
  ParamInfo::operator=(other);
  defaultValue = other.defaultValue;
  typed_.store(other.get());
  return *this;
}

template <class T>
void Param<T>::init(const std::string& name, const std::string& helpText, const Value& defaultTo,
                    Array<std::string>& keys, Hash<ParamInfo*>& hash) {
  defaultValue = defaultTo;
  key = name;
  help = helpText;
  set(defaultTo);
  defaultText = value.get();
  hash.add(key, this);
  keys.append(key);
  listener_ = ignoreChange;
}

template <class T>
void Param<T>::set(const Value& v) {
  std::ostringstream out;
  out << v;
  const std::string text = out.str();
  // The text is stored before the listener hears of it, so that one that compares the two finds them equal.
  // In the other order a switch that the program turns off would rewrite the lattice from within the setting.
  setText(text);
  listener_(text);
}

template <class T>
void Param<T>::assign(const Value& v, const std::string& text) {
  value.set(text);
  typed_.store(v);
}

template <class T>
void Param<T>::parse() {
  typed_.store(parsedValue<Value>(value.get()));
}

template <class T>
bool Param<T>::isBool() const {
  return std::is_same_v<T, bool>;
}

template <class T>
bool Param<T>::refuses(const std::string& text) const {
  if constexpr (std::is_same_v<T, QQ>) return text != "inf" && text != "-inf" && exactNumberRefuses(text);
  return false;
}

template class Param<bool>;
template class Param<long>;
template class Param<float>;
template class Param<dbl_t>;
template class Param<QQ>;
template class Param<MutexType<long>>;
template class MutexParam<long>;

}  // namespace latbox
