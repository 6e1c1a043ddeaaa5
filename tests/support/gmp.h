// The values of the independent library that exact arithmetic is held against.
#pragma once

#include <gmp.h>

#include <string>

#include "numbers/qq.h"

namespace latbox::testing {

inline std::string textOf(mpz_srcptr z) {
  std::string buffer(mpz_sizeinbase(z, 10) + 2, '\0');
  mpz_get_str(buffer.data(), 10, z);
  return buffer.c_str();
}

struct Mpz {
  mpz_t value;
  Mpz() { mpz_init(value); }
  explicit Mpz(const std::string& text) { mpz_init_set_str(value, text.c_str(), 10); }
  explicit Mpz(const ZZ& a) : Mpz(a.to_string()) {}
  Mpz(const Mpz& other) { mpz_init_set(value, other.value); }
  Mpz& operator=(const Mpz& other) {
    mpz_set(value, other.value);
    return *this;
  }
  ~Mpz() { mpz_clear(value); }
  std::string text() const { return textOf(value); }
};

struct Mpq {
  mpq_t value;
  Mpq() { mpq_init(value); }
  // An integer, or "numerator/denominator" with a denominator that is not zero.
  explicit Mpq(const std::string& text) {
    mpq_init(value);
    mpq_set_str(value, text.c_str(), 10);
    mpq_canonicalize(value);
  }
  // Finite, and need not be reduced.
  explicit Mpq(const QQ& a)
      : Mpq((signedGanze(a) * a.nenner + signedZaehler(a)).to_string() + "/" + a.nenner.to_string()) {}
  Mpq(const Mpq& other) {
    mpq_init(value);
    mpq_set(value, other.value);
  }
  Mpq& operator=(const Mpq& other) {
    mpq_set(value, other.value);
    return *this;
  }
  ~Mpq() { mpq_clear(value); }
  int sign() const { return mpq_sgn(value); }
};

}  // namespace latbox::testing
