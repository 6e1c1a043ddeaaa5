#include "numbers/vector.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iostream>
#include <limits>
#include <locale>
#include <string>

#include "lib/exceptions.h"
#include "numbers/number.h"

namespace latbox {
namespace {

bool same(long a, long b) {
  return a == b;
}
// Equality first: opposite infinities must not be subtracted, nor equal ones.
template <class T>
bool same(const T& a, const T& b) {
  return a == b || (!isInfinite(a) && !isInfinite(b) && isZero(T(a - b)));
}

template <class T>
T elementInfinity() {
  return infinity<T>();
}
template <>
long elementInfinity<long>() {
  return std::numeric_limits<long>::min();
}

void negateElement(long& x) {
  if (x != std::numeric_limits<long>::min()) x = -x;
}
void negateElement(dbl_t& x) {
  if (x != 0) x = -x;
}
void negateElement(QQ& x) {
  x.negate();
}

void extractElement(std::istream& in, long& element) {
  if (!(in >> element)) fail("Vector: bad input");
}
// A dbl_t takes its token through the parser of exact numbers, so that it reads what the other type wrote. In
// the user's program the vectors are exact and an exponent is no part of a number.
template <class T>
void extractElement(std::istream& in, T& element) {
  skipSpaceAndComments(in);
  const std::string token = takeNumberToken(in, std::is_same_v<T, dbl_t> || acceptsExponents(in));
  if (token.empty() || !exponentIsBounded(token)) fail("Vector: bad input");
  elementFromText(token, element);
}

// Behind the "i" of "inf".
void takeRestOfInf(std::istream& in) {
  if (nextCharacter(in) != 'n') fail("Vector: bad input2");
  takeCharacter(in);
  if (nextCharacter(in) != 'f') fail("Vector: bad input3");
  takeCharacter(in);
}

template <class T>
void readElement(std::istream& in, T& element) {
  const bool negative = nextCharacter(in) == '-';
  if (negative) takeCharacter(in);
  if (nextCharacter(in) == 'i') {
    takeCharacter(in);
    takeRestOfInf(in);
    element = elementInfinity<T>();
  } else {
    extractElement(in, element);
  }
  if (negative) negateElement(element);
}

// Whether the stream shows a whole number by its digits alone.
bool isPlain(const std::ostream& out) {
  constexpr auto FORMS = std::ios::floatfield | std::ios::showpoint | std::ios::showpos | std::ios::unitbuf;
  return (out.flags() & FORMS) == std::ios::fmtflags{} && out.getloc() == std::locale::classic();
}

// Whole numbers, of which nearly all of a basis consists, go out by their digits, the row in one piece: the
// library takes forty times as long for a dbl_t. False for what it has to write.
bool appendWhole(std::string& text, dbl_t x, dbl_t limit) {
  if (!(x < limit && x > -limit)) return false;
  const auto whole = static_cast<long long>(x);
  if (static_cast<dbl_t>(whole) != x || (whole == 0 && std::signbit(x))) return false;
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, whole).ptr;
  text.append(digits, end);
  return true;
}

void writeElements(std::ostream& out, const dbl_t* first, const dbl_t* last) {
  const long places = isPlain(out) ? std::min<long>(out.precision(), 18) : 0;
  const dbl_t limit = places > 0 ? powerOfTen<dbl_t>(places) : 0;
  std::string text;
  for (const dbl_t* x = first; x != last; ++x) {
    if (!appendWhole(text, *x, limit)) {
      out << text << *x;
      text.clear();
    }
    text += ' ';
  }
  out << text;
}
template <class T>
void writeElements(std::ostream& out, const T* first, const T* last) {
  for (const T* x = first; x != last; ++x) out << *x << ' ';
}

}  // namespace

template <class T>
Vector<T>::Vector(const char* text) {
  if (text == nullptr) return;
  std::istringstream in(text);
  read(in);
}

template <class T>
void Vector<T>::write(std::ostream& out) const {
  out << "[ ";
  if (MN > 0) writeElements(out, data + 1, data + MN + 1);
  out << ']';
}

template <class T>
void Vector<T>::read(std::istream& in) {
  this->resize(0, true);
  if (in.fail()) throw ReadException("Vector: bad stream");
  skipSpaceAndComments(in);
  const int opener = nextCharacter(in);
  if (opener != '[') {
    if (opener == std::char_traits<char>::eof()) in.setstate(std::ios::failbit | std::ios::eofbit);
    return;
  }
  takeCharacter(in);
  skipSpaceAndComments(in);
  while (nextCharacter(in) != ']') {
    this->reserve(MN + 1);
    this->resize(MN + 1, true);
    readElement(in, data[MN]);
    skipSpaceAndComments(in);
  }
  takeCharacter(in);
}

template <class T>
Vector<T>& Vector<T>::operator*=(const Vector& v) {
  requireSame(v, "Vector: dimension mismatch3");
  for (long i = 1; i <= MN; ++i) data[i] *= v.data[i];
  return *this;
}

template <class T>
Vector<T>& Vector<T>::operator/=(const Vector& v) {
  requireSame(v, "Vector: dimension mismatch4");
  for (long i = 1; i <= MN; ++i) data[i] /= v.data[i];
  return *this;
}

// The factor may be an element of this vector.
template <class T>
Vector<T>& Vector<T>::operator*=(const T& factor) {
  const T fixed(factor);
  for (long i = 1; i <= MN; ++i) data[i] *= fixed;
  return *this;
}

template <class T>
Vector<T>& Vector<T>::operator/=(const T& divisor) {
  const T fixed(divisor);
  for (long i = 1; i <= MN; ++i) data[i] /= fixed;
  return *this;
}

template <class T>
Vector<T> Vector<T>::operator+(const Vector& v) const {
  requireSame(v, "Vector: dimension mismatch5");
  Vector result(*this);
  result += v;
  return result;
}

template <class T>
Vector<T> Vector<T>::operator-(const Vector& v) const {
  requireSame(v, "Vector: dimension mismatch6");
  Vector result(*this);
  result -= v;
  return result;
}

template <class T>
Vector<T> Vector<T>::operator-() const {
  Vector result(*this);
  for (long i = 1; i <= MN; ++i) negateElement(result.data[i]);
  return result;
}

template <class T>
Vector<T> Vector<T>::operator*(const T& factor) const {
  Vector result(*this);
  result *= factor;
  return result;
}

template <class T>
Vector<T> Vector<T>::operator/(const T& divisor) const {
  Vector result(*this);
  result /= divisor;
  return result;
}

template <class T>
bool Vector<T>::operator==(const Vector& v) const {
  requireSame(v, "Vector: dimension mismatch9");
  if (this == &v) return true;
  for (long i = 1; i <= MN; ++i)
    if (!same(data[i], v.data[i])) return false;
  return true;
}

template <class T>
bool Vector<T>::operator>=(const Vector& v) const {
  requireSame(v, "Vector: dimension mismatch10");
  for (long i = 1; i <= MN; ++i)
    if (data[i] < v.data[i]) return false;
  return true;
}

template <class T>
bool Vector<T>::operator<=(const Vector& v) const {
  requireSame(v, "Vector: dimension mismatch11");
  for (long i = 1; i <= MN; ++i)
    if (data[i] > v.data[i]) return false;
  return true;
}

template <class T>
void Vector<T>::print(long from, long to) const {
  if (from < 1 || from > to || to > MN) fail("Vector: dimension mismatch12");
  std::cout << "( ";
  for (long i = from; i <= to; ++i) std::cout << data[i] << ' ';
  std::cout << ")\n";
}

Vector<dbl_t> round(const Vector<dbl_t>& v) {
  Vector<dbl_t> result(v);
  for (long i = 1; i <= v.MN; ++i) result.data[i] = std::round(static_cast<double>(v.data[i]));
  return result;
}

template class Vector<long>;
template class Vector<dbl_t>;
template class Vector<QQ>;

}  // namespace latbox
