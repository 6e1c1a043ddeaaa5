#include "complete/reduction.h"

#include <fplll.h>

#include <string>

namespace latbox::complete {
namespace {

using FplllMatrix = fplll::ZZ_mat<mpz_t>;

FplllMatrix toFplll(const IntegerMatrix& rows) {
  const int height = static_cast<int>(rows.size());
  const int width = rows.empty() ? 0 : static_cast<int>(rows.front().size());
  FplllMatrix matrix(height, width);
  for (int i = 0; i < height; ++i)
    for (int j = 0; j < width; ++j)
      mpz_set(matrix[i][j].get_data(),
              rows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)].get_mpz_t());
  return matrix;
}

void fromFplll(FplllMatrix& matrix, IntegerMatrix& rows) {
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (std::size_t j = 0; j < rows[i].size(); ++j)
      mpz_set(rows[i][j].get_mpz_t(), matrix[static_cast<int>(i)][static_cast<int>(j)].get_data());
}

}  // namespace

void reduceLLL(IntegerMatrix& rows) {
  if (rows.size() < 2) return;
  FplllMatrix matrix = toFplll(rows);
  const int status = fplll::lll_reduction(matrix, 0.99, 0.51);
  if (status != fplll::RED_SUCCESS)
    throw ReductionFailure(std::string("LLL: ") + fplll::get_red_status_str(status));
  fromFplll(matrix, rows);
}

void reduceBlocks(IntegerMatrix& rows, int blockSize) {
  reduceLLL(rows);
  if (rows.size() < 3) return;
  FplllMatrix matrix = toFplll(rows);
  const int block = std::min(blockSize, static_cast<int>(rows.size()));
  try {
    if (fplll::bkz_reduction(matrix, block, fplll::BKZ_AUTO_ABORT, fplll::FT_DOUBLE, 0) == fplll::RED_SUCCESS)
      fromFplll(matrix, rows);
  } catch (const std::runtime_error&) {
    // Its own LLL, in double, gives up where lengths differ by too many digits.
  }
}

}  // namespace latbox::complete
