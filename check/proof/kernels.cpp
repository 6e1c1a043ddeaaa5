#include "check/proof/kernels.h"

#include <cstdint>

// One machine code for each kind of processor, chosen when the program starts. Sanitizers are not ready then.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define LATBOX_FOR_ALL_PROCESSORS __attribute__((target_clones("default", "avx2", "avx512f")))
#else
#define LATBOX_FOR_ALL_PROCESSORS
#endif

namespace latbox::check::proof {
namespace {

using Doubles = double __attribute__((vector_size(BLOCK * sizeof(double)), may_alias));
using Words = std::int64_t __attribute__((vector_size(BLOCK * sizeof(double)), may_alias));

}  // namespace

LATBOX_FOR_ALL_PROCESSORS
double addMultiple(double* out, const double* in, const double* g, double a, std::size_t size) {
  Doubles sizes = {};
  for (std::size_t c = 0; c < size; c += BLOCK) {
    const Doubles sum =
        *reinterpret_cast<const Doubles*>(in + c) + a * *reinterpret_cast<const Doubles*>(g + c);
    *reinterpret_cast<Doubles*>(out + c) = sum;
    sizes += reinterpret_cast<Doubles>(reinterpret_cast<Words>(sum) & INT64_MAX);
  }
  double total = 0;
  for (std::size_t c = 0; c < BLOCK; ++c) total += sizes[c];
  return total;
}

LATBOX_FOR_ALL_PROCESSORS
double product(const double* a, const double* b, std::size_t size) {
  Doubles sums = {};
  for (std::size_t c = 0; c < size; c += BLOCK)
    sums += *reinterpret_cast<const Doubles*>(a + c) * *reinterpret_cast<const Doubles*>(b + c);
  double total = 0;
  for (std::size_t c = 0; c < BLOCK; ++c) total += sums[c];
  return total;
}

mpz_class addMultiple(mpz_class* out, const mpz_class* in, const mpz_class* g, const mpz_class& a,
                      std::size_t size) {
  mpz_class total;
  for (std::size_t c = 0; c < size; ++c) {
    out[c] = in[c];
    mpz_addmul(out[c].get_mpz_t(), g[c].get_mpz_t(), a.get_mpz_t());
    (out[c] < 0 ? mpz_sub : mpz_add)(total.get_mpz_t(), total.get_mpz_t(), out[c].get_mpz_t());
  }
  return total;
}

mpz_class product(const mpz_class* a, const mpz_class* b, std::size_t size) {
  mpz_class total;
  for (std::size_t c = 0; c < size; ++c) mpz_addmul(total.get_mpz_t(), a[c].get_mpz_t(), b[c].get_mpz_t());
  return total;
}

}  // namespace latbox::check::proof
