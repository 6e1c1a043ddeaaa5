#include "complete/lattice/reduction.h"

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

// Small blocks first: most of the way is cheap with them.
constexpr int FIRST_BLOCK = 20;
constexpr int BLOCK_STEP = 10;

// How blocks of each size are pruned. To read the file takes a tenth of a second, and without it all goes on,
// more slowly.
std::vector<fplll::Strategy>& strategies() {
  static std::vector<fplll::Strategy> loaded = [] {
    try {
      return fplll::load_strategies_json(fplll::strategy_full_path("default.json"));
    } catch (const std::exception&) {
      return std::vector<fplll::Strategy>();
    }
  }();
  return loaded;
}

bool reduceIn(FplllMatrix& matrix, int block, int flags) {
  std::vector<fplll::Strategy> none;
  const bool pruned = block > FIRST_BLOCK && strategies().size() > static_cast<std::size_t>(block);
  fplll::BKZParam parameters(block, pruned ? strategies() : none);
  parameters.flags = flags;
  const auto turn = turnOfBlocks();
  try {
    return fplll::bkz_reduction(&matrix, nullptr, parameters, fplll::FT_DOUBLE, 0) == fplll::RED_SUCCESS;
  } catch (const std::runtime_error&) {
    // Its own LLL, in double, gives up where lengths differ by too many digits.
    return false;
  }
}

// Of squared lengths that no double holds block reduction makes searches without an end.
bool areLong(const IntegerMatrix& rows) {
  constexpr std::size_t MOST_BITS = 400;
  for (const IntegerVector& row : rows)
    for (const Integer& entry : row)
      if (mpz_sizeinbase(entry.get_mpz_t(), 2) > MOST_BITS) return true;
  return false;
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
  if (rows.size() < 3 || areLong(rows)) return;
  FplllMatrix matrix = toFplll(rows);
  const int most = std::min(blockSize, static_cast<int>(rows.size()));
  std::vector<std::pair<int, int>> rounds;
  for (int block = std::min(FIRST_BLOCK, most); block <= most; block += BLOCK_STEP)
    rounds.emplace_back(block, fplll::BKZ_AUTO_ABORT);
  // The walk begins at the last vectors: they are worth as much as the first ones.
  rounds.emplace_back(std::min(FIRST_BLOCK, most), fplll::BKZ_SD_VARIANT | fplll::BKZ_AUTO_ABORT);
  for (const auto& [block, flags] : rounds) {
    if (!reduceIn(matrix, block, flags)) return;
    fromFplll(matrix, rows);
  }
}

std::unique_lock<std::mutex> turnOfBlocks() {
  static std::mutex pool;
  return std::unique_lock(pool);
}

void scramble(IntegerMatrix& rows, std::mt19937_64& random) {
  constexpr int ROUNDS = 3;
  const std::size_t k = rows.size();
  for (int round = 0; round < ROUNDS; ++round) {
    for (std::size_t i = k; i-- > 1;) std::swap(rows[i], rows[random() % (i + 1)]);
    for (std::size_t i = 0; i < k; ++i) {
      const std::size_t other = random() % k;
      const bool minus = random() % 2 != 0;
      for (std::size_t j = 0; other != i && j < rows[i].size(); ++j)
        minus ? rows[i][j] -= rows[other][j] : rows[i][j] += rows[other][j];
    }
  }
}

std::string libraryVersion() {
  return "fplll " + std::to_string(FPLLL_MAJOR_VERSION) + '.' + std::to_string(FPLLL_MINOR_VERSION) + '.' +
         std::to_string(FPLLL_MICRO_VERSION);
}

}  // namespace latbox::complete
