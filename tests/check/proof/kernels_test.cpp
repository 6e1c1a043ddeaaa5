#include "check/proof/kernels.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace latbox::check::proof {
namespace {

TEST(ProofKernels, doubles_are_the_whole_numbers) {
  std::mt19937_64 random(1);
  std::uniform_int_distribution<long> number(-(1L << 23), 1L << 23);
  for (std::size_t size = 0; size <= 5 * BLOCK; size += BLOCK) {
    Array<double> in(size), g(size), out(size);
    Array<mpz_class> exactIn(size), exactG(size), exactOut(size);
    for (std::size_t c = 0; c < size; ++c) {
      exactIn[c] = in[c] = static_cast<double>(number(random));
      exactG[c] = g[c] = static_cast<double>(number(random));
    }
    const auto a = static_cast<double>(number(random));
    const double sum = addMultiple(out.data(), in.data(), g.data(), a, size);
    const mpz_class exact = addMultiple(exactOut.data(), exactIn.data(), exactG.data(), mpz_class(a), size);
    EXPECT_EQ(mpz_class(sum), exact);
    mpz_class sizes = 0;
    for (std::size_t c = 0; c < size; ++c) {
      EXPECT_EQ(mpz_class(out[c]), exactOut[c]);
      EXPECT_EQ(exactOut[c], exactIn[c] + mpz_class(a) * exactG[c]);
      sizes += abs(exactOut[c]);
    }
    EXPECT_EQ(exact, sizes);
    EXPECT_EQ(mpz_class(product(in.data(), g.data(), size)), product(exactIn.data(), exactG.data(), size));
  }
}

TEST(ProofKernels, floors_at_the_edge_of_doubles) {
  const long edge = 1L << 53;
  for (const long b : {1L, 2L, 3L, 7L, 1L << 20, (1L << 26) - 1, (1L << 30) + 1})
    for (const long m : {0L, 1L, edge / b / 2, edge / b - 2})
      for (const long r : {-1L, 0L, 1L})
        for (const long sign : {-1L, 1L}) {
          const long a = sign * (b * m + r);
          if (std::abs(a) + b >= edge) continue;
          EXPECT_EQ(mpz_class(floorQuotient(static_cast<double>(a), static_cast<double>(b))),
                    floorQuotient(mpz_class(a), mpz_class(b)))
              << a << " / " << b;
        }
}

}  // namespace
}  // namespace latbox::check::proof
