// What the tests of the complete search share.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "complete/program/opt_reader.h"
#include "complete/tree/search.h"

namespace latbox::complete::testing {

// What a BadInput thrown by `statement` says; "" if none is thrown.
template <class Statement>
std::string refusal(Statement statement) {
  try {
    statement();
  } catch (const BadInput& bad) {
    return bad.what();
  }
  return "";
}

inline IntegerVector vectorOf(std::initializer_list<long> values) {
  return IntegerVector(values.begin(), values.end());
}

inline Row rowOf(std::initializer_list<long> a, std::optional<long> low, std::optional<long> high) {
  Row row;
  row.a = vectorOf(a);
  if (low) row.range.low = *low;
  if (high) row.range.high = *high;
  return row;
}

inline Range rangeOf(long low, long high) {
  return {Integer(low), Integer(high)};
}

// Keeps every point; after `most` of them it asks to stop.
class Collector : public Visitor {
 public:
  explicit Collector(std::size_t most = 0) : most_(most) {}
  Next visit(const IntegerVector& z) override {
    EXPECT_TRUE(points.insert(z).second) << "a point twice";
    return most_ != 0 && points.size() >= most_ ? Next::STOP : Next::GO_ON;
  }

  std::set<IntegerVector> points;

 private:
  std::size_t most_;
};

}  // namespace latbox::complete::testing
