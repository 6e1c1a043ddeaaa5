// The values of the independent library that the arithmetic is held against.
#pragma once

#include <gmp.h>

#include <string>
#include <utility>

namespace latbox::fuzzing {

struct Mpz {
  mpz_t value;
  Mpz() { mpz_init(value); }
  explicit Mpz(const std::string& text) { mpz_init_set_str(value, text.c_str(), 10); }
  Mpz(const Mpz& other) { mpz_init_set(value, other.value); }
  Mpz& operator=(const Mpz& other) {
    mpz_set(value, other.value);
    return *this;
  }
  ~Mpz() { mpz_clear(value); }
  std::string text() const {
    std::string buffer(mpz_sizeinbase(value, 10) + 2, '\0');
    mpz_get_str(buffer.data(), 10, value);
    return buffer.c_str();
  }
};

struct Mpq {
  mpq_t value;
  Mpq() { mpq_init(value); }
  // The denominator is not zero.
  Mpq(const std::string& numerator, const std::string& denominator) {
    mpq_init(value);
    mpz_set_str(mpq_numref(value), numerator.c_str(), 10);
    mpz_set_str(mpq_denref(value), denominator.c_str(), 10);
    mpq_canonicalize(value);
  }
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

}  // namespace latbox::fuzzing
