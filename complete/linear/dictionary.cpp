#include "complete/linear/dictionary.h"

#include <algorithm>
#include <cmath>

#include "complete/linear/row_operations.h"

namespace latbox::complete {
namespace {

std::size_t padded(std::size_t size) {
  return (size + WIDTH - 1) / WIDTH * WIDTH;
}

}  // namespace

void exchange(Dictionary& dictionary, std::size_t r, std::size_t column) {
  double* pivot = dictionary.row(r);
  const double inverse = 1 / pivot[column];
  for (std::size_t c = 0; c < dictionary.columns.size(); ++c) pivot[c] *= -inverse;
  pivot[column] = inverse;
  eliminate({dictionary.entries.data(), dictionary.rows.size() + 1, dictionary.stride}, r, column);
  std::swap(dictionary.rows[r], dictionary.columns[column]);
}

DictionaryBuilder::DictionaryBuilder(const std::vector<std::vector<double>>& basis, std::size_t levels)
    : basis_(basis),
      stride_(padded(levels)),
      table_(basis.front().size() * stride_),
      objective_(stride_),
      isOpen_(basis.front().size(), 1),
      isColumn_(basis.front().size(), 0) {}

DictionaryBuilder::DictionaryBuilder(const std::vector<std::vector<double>>& basis,
                                     const std::vector<std::size_t>& columns)
    : DictionaryBuilder(basis, columns.size()) {
  isOpen_.assign(isOpen_.size(), 0);
  for (const std::size_t j : columns) isOpen_[j] = 1;
}

// What the new row K has beside A times its part on the columns, K - A K, is 0 on the columns. Its greatest
// entry, that of the new column q, tells lambda_t = (w_q - A_q w) / (K_q - A_q K), and that the others.
bool DictionaryBuilder::addLevel() {
  const std::size_t t = columns_.size();
  const std::vector<double>& next = basis_[t];
  std::vector<double> part(stride_);
  for (std::size_t c = 0; c < t; ++c) part[c] = next[columns_[c]];
  const std::size_t count = next.size();
  std::vector<double> beside(count);
  multiply({table_.data(), count, stride_}, part.data(), beside.data());
  std::size_t chosen = count;
  double largest = 0;
  for (std::size_t j = 0; j < count; ++j) {
    beside[j] = isColumn_[j] != 0 ? 0 : next[j] - beside[j];
    table_[j * stride_ + t] = beside[j];
    if (isOpen_[j] == 0 || !(std::fabs(beside[j]) > largest)) continue;
    largest = std::fabs(beside[j]);
    chosen = j;
  }
  if (chosen == count) return false;
  double* pivot = &table_[chosen * stride_];
  for (std::size_t c = 0; c < t; ++c) pivot[c] /= -beside[chosen];
  pivot[t] = 1 / beside[chosen];
  eliminate({table_.data(), count, stride_}, chosen, t);
  objective_.assign(pivot, pivot + stride_);
  std::fill(pivot, pivot + stride_, 0);
  columns_.push_back(chosen);
  isOpen_[chosen] = 0;
  isColumn_[chosen] = 1;
  return true;
}

Dictionary DictionaryBuilder::dictionary(int sign) const {
  Dictionary result;
  result.columns = columns_;
  result.stride = padded(columns_.size());
  const auto append = [&](const double* from, double factor) {
    for (std::size_t c = 0; c < result.stride; ++c)
      result.entries.push_back(c < columns_.size() ? factor * from[c] : 0);
  };
  for (std::size_t j = 0; j < isColumn_.size(); ++j) {
    if (isColumn_[j] != 0) continue;
    result.rows.push_back(j);
    append(&table_[j * stride_], 1);
  }
  append(objective_.data(), sign);
  return result;
}

}  // namespace latbox::complete
