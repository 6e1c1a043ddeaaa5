#include "params/option_table.h"

namespace latbox {

// The help texts are part of the interface, their misspellings included.
std::span<const Option> optionTable() {
  static const Option table[] = {
      {"help", &Params::help, 0, "Display this help information."},
      {"verb", &Params::verb, 0, "To receive (detailed) runtime statistics, set this parameter to 1 or 2."},
      {"consistency", &Params::consistency, 0,
       "By setting this switch the lattice transformations are remembered and get used to "
       "detect computing / overflow errors."},
      {"eenum", &Params::eenum, 1,
       "Enables the essential enumeration algorithm, which helps to find euclidean short "
       "vectors in a deterministic way (see also: --deep, --beta, --btime, --eprune)."},
      {"beta", &Params::beta, 20,
       "The enumeration algorithm operates on blocks of 20 vectors per default, which can be "
       "changed utilizing this parameter (see also: --eenum, --btime)."},
      {"eprune", &Params::eprune, 3,
       "The enumeration trees can be pruned, which will speed up the enumeration. To enable "
       "moderate pruning use 1 - if you prefer more aggressive pruning, then use 2 or 3 (see: "
       "also --eenum, --beta)."},
      {"btime", &Params::btime, 0,
       "This defines a bound for the maximum time (in seconds) to spent, when ennumerating a "
       "block of lattice vectors (see also: --beta, eenum)."},
      {"deep", &Params::deep, 0,
       "The enumeration algorithm should do some kind of backtracking, when a short vector has "
       "been found - the short vector is not only compared with the basis vector of the current "
       "stage, but also with base vectors, which are stages ahead (see also: --eenum)."},
      {"collectLimit", &Params::collectLimit, 100,
       "The collection limit defines the maximum size of the set containing the collected, good "
       "vectors. (see also:  --pair, --sieve, --sample)."},
      {"pair", &Params::pair, 1,
       "This switch enables a heuristic pairwise recombination method, which helps to discover "
       "vectors with small sup-norms and collects these within a set of heuristically good "
       "vectors (see also: --pairLimit, --collectLimit)."},
      {"pairLimit", &Params::pairLimit, 10,
       "The pair limit defines the maximum amount of vectors which are chosen from the "
       "collection set for pairing purposes (see also:  --pair, --collectLimit)."},
      {"sieve", &Params::sieve, 0,
       "This switch enables a sieving method on the collection set of heuristically good "
       "vectors, which helps to discover vectors with small sup-norms (see also: "
       "--collectLimit)."},
      {"sample", &Params::sample, 0,
       "To enable a algorithm, which samples random (but probably short) vectors and collects "
       "them  within the sets containing good vectors (see also: --sampleLimit, --collectLimit)."},
      {"sampleLimit", &Params::sampleLimit, 1000,
       "The sample limit defines how many vectors should be chosen, when using random sampling "
       "(see also: --sample)."},
      {"scale", &Params::scale, 0, "Enables a scaling routine, which trims the lattice towards feasibility."},
      {"translate", &Params::translate, 0,
       "Enables a translation routine, which trims the lattice towards feasibility."},
      {"reinsert", &Params::reinsert, 1,
       "Enables a routine to re-insert best vectors into the lattice after each progressless "
       "iteration."},
      {"variate", &Params::variate, 1,
       "Enables a variation of lattice base vectors (sorting / shuffling) after each "
       "progressless iteration."},
      {"rtime", &Params::rtime, 0,
       "Terminate the program after the submitted number of seconds has been reached."},
      {"iters", &Params::iters, -1, "Terminate the program after the submitted number of iterations."},
      {"sol", &Params::sol, 1,
       "Terminate the program, when the submitted number of solutions has been found."},
      {"bench", &Params::bench, 0,
       "A value > 0 enables a benchmark run. The read of the lat / sol file is skipped and the "
       "secondsUntilDiscovered property of best vectors gets multiplied with the value of this "
       "parameter."},
  };
  return table;
}

}  // namespace latbox
