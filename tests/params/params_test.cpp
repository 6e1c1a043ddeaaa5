#include "params/params.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <sstream>
#include <string>

#include "lib/exceptions.h"
#include "lib/os/threads.h"
#include "numbers/number.h"
#include "support/failure.h"
#include "support/text.h"

namespace latbox {
namespace {

using testing::textOf;

// As the operator sees it, misspellings included.
constexpr const char* OPTION_TABLE =
    "  --help | Display this help information. [ Default: 0 ]\n"
    "  --verb | To receive (detailed) runtime statistics, set this parameter to 1 or 2. [ "
    "Default: 0 ]\n"
    "  --consistency | By setting this switch the lattice transformations are remembered and get "
    "used to detect computing / overflow errors. [ Default: 0 ]\n"
    "  --eenum | Enables the essential enumeration algorithm, which helps to find euclidean "
    "short vectors in a deterministic way (see also: --deep, --beta, --btime, --eprune). [ "
    "Default: 1 ]\n"
    "  --beta | The enumeration algorithm operates on blocks of 20 vectors per default, which "
    "can be changed utilizing this parameter (see also: --eenum, --btime). [ Default: 20 ]\n"
    "  --eprune | The enumeration trees can be pruned, which will speed up the enumeration. To "
    "enable moderate pruning use 1 - if you prefer more aggressive pruning, then use 2 or 3 "
    "(see: also --eenum, --beta). [ Default: 3 ]\n"
    "  --btime | This defines a bound for the maximum time (in seconds) to spent, when "
    "ennumerating a block of lattice vectors (see also: --beta, eenum). [ Default: 0 ]\n"
    "  --deep | The enumeration algorithm should do some kind of backtracking, when a short "
    "vector has been found - the short vector is not only compared with the basis vector of the "
    "current stage, but also with base vectors, which are stages ahead (see also: --eenum). [ "
    "Default: 0 ]\n"
    "  --collectLimit | The collection limit defines the maximum size of the set containing the "
    "collected, good vectors. (see also:  --pair, --sieve, --sample). [ Default: 100 ]\n"
    "  --pair | This switch enables a heuristic pairwise recombination method, which helps to "
    "discover vectors with small sup-norms and collects these within a set of heuristically good "
    "vectors (see also: --pairLimit, --collectLimit). [ Default: 1 ]\n"
    "  --pairLimit | The pair limit defines the maximum amount of vectors which are chosen from "
    "the collection set for pairing purposes (see also:  --pair, --collectLimit). [ Default: 10 ]\n"
    "  --sieve | This switch enables a sieving method on the collection set of heuristically "
    "good vectors, which helps to discover vectors with small sup-norms (see also: "
    "--collectLimit). [ Default: 0 ]\n"
    "  --sample | To enable a algorithm, which samples random (but probably short) vectors and "
    "collects them  within the sets containing good vectors (see also: --sampleLimit, "
    "--collectLimit). [ Default: 0 ]\n"
    "  --sampleLimit | The sample limit defines how many vectors should be chosen, when using "
    "random sampling (see also: --sample). [ Default: 1000 ]\n"
    "  --scale | Enables a scaling routine, which trims the lattice towards feasibility. [ "
    "Default: 0 ]\n"
    "  --translate | Enables a translation routine, which trims the lattice towards feasibility. "
    "[ Default: 0 ]\n"
    "  --reinsert | Enables a routine to re-insert best vectors into the lattice after each "
    "progressless iteration. [ Default: 1 ]\n"
    "  --variate | Enables a variation of lattice base vectors (sorting / shuffling) after each "
    "progressless iteration. [ Default: 1 ]\n"
    "  --rtime | Terminate the program after the submitted number of seconds has been reached. [ "
    "Default: 0 ]\n"
    "  --iters | Terminate the program after the submitted number of iterations. [ Default: -1 ]\n"
    "  --sol | Terminate the program, when the submitted number of solutions has been found. [ "
    "Default: 1 ]\n"
    "  --bench | A value > 0 enables a benchmark run. The read of the lat / sol file is skipped "
    "and the secondsUntilDiscovered property of best vectors gets multiplied with the value of "
    "this parameter. [ Default: 0 ]\n"
    "  --snorm | Terminate the program, when a solution has been found, whose slack norm <= the "
    "provided value. [ Default: -1 ]\n"
    "  --tnorm | Terminate the program, when a solution has been found, whose target norm <= the "
    "provided value. [ Default: -inf ]\n";

template <class T>
class ParamsOf : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(ParamsOf, NumberTypes);

TYPED_TEST(ParamsOf, OptionTable) {
  const ExtendedParams<TypeParam> params;
  std::ostringstream out;
  params.optionTable(out);
  EXPECT_EQ(out.str(), OPTION_TABLE);
}

TYPED_TEST(ParamsOf, AnEmptyDefaultShowsAStar) {
  ExtendedParams<TypeParam> params;
  params.find("verb").defaultText = "";
  std::ostringstream out;
  params.optionTable(out);
  EXPECT_NE(out.str().find("set this parameter to 1 or 2. [ Default: * ]\n"), std::string::npos);
}

TYPED_TEST(ParamsOf, Defaults) {
  const ExtendedParams<TypeParam> params;
  EXPECT_FALSE(params.help.get() || params.gui.get() || params.consistency.get() || params.sieve.get());
  EXPECT_FALSE(params.scale.get() || params.translate.get() || params.sample.get() || params.deep.get());
  EXPECT_TRUE(params.eenum.get() && params.pair.get() && params.reinsert.get() && params.variate.get());
  EXPECT_EQ(params.verb.get(), 0);
  EXPECT_EQ(params.beta.get(), 20);
  EXPECT_EQ(params.eprune.get(), 3);
  EXPECT_EQ(params.btime.get(), 0);
  EXPECT_EQ(params.collectLimit.get(), 100);
  EXPECT_EQ(params.pairLimit.get(), 10);
  EXPECT_EQ(params.sampleLimit.get(), 1000);
  EXPECT_EQ(params.rtime.get(), 0);
  EXPECT_EQ(params.iters.get(), -1);
  EXPECT_EQ(params.sol.get(), 1);
  EXPECT_EQ(params.bench.get(), 0.0F);
  EXPECT_TRUE(params.snorm.get() == TypeParam(-1));
  EXPECT_TRUE(params.tnorm.get() == -infinity<TypeParam>());
  EXPECT_EQ(params.snorm.defaultText, "-1");
  EXPECT_EQ(params.tnorm.defaultText, "-inf");
}

TYPED_TEST(ParamsOf, WritesInTheOrderOfRegistration) {
  ExtendedParams<TypeParam> params;
  const std::string all =
      "--help=0 --verb=0 --consistency=0 --eenum=1 --beta=20 --eprune=3 --btime=0 --deep=0 "
      "--collectLimit=100 "
      "--pair=1 --pairLimit=10 --sieve=0 --sample=0 --sampleLimit=1000 --scale=0 --translate=0 --reinsert=1 "
      "--variate=1 --rtime=0 --iters=-1 --sol=1 --bench=0 --snorm=-1 --tnorm=-inf";
  EXPECT_EQ(textOf(params), all);
  EXPECT_EQ(params.text(), all);
}

TYPED_TEST(ParamsOf, AnEmptyValueIsLeftOutOfTheText) {
  ExtendedParams<TypeParam> params;
  params.find("verb").setText("");
  params.find("tnorm").setText("");
  EXPECT_EQ(params.verb.get(), 0);
  EXPECT_EQ(params.text().find("--help=0 --consistency=0 "), 0U);
  EXPECT_EQ(params.text().find("tnorm"), std::string::npos);
  EXPECT_NE(params.text().back(), ' ');
}

TYPED_TEST(ParamsOf, TheTextHasNoWhiteSpaceAroundIt) {
  ExtendedParams<TypeParam> params;
  params.find("verb").setText(" 2 ");
  params.find("tnorm").setText("3 \t\r\n");
  EXPECT_EQ(params.text().find("--help=0 --verb= 2  --consistency=0 "), 0U);
  EXPECT_TRUE(params.text().ends_with(" --snorm=-1 --tnorm=3"));
}

TYPED_TEST(ParamsOf, AnEmptyKeyIsLeftOutOfTheText) {
  ExtendedParams<TypeParam> params;
  const std::string before = params.text();
  std::istringstream in("--=x");
  params.read(in);
  EXPECT_EQ(params.find("").value.get(), "x");
  EXPECT_EQ(params.text(), before);
}

TYPED_TEST(ParamsOf, GuiHasNoKey) {
  ExtendedParams<TypeParam> params;
  EXPECT_EQ(params.gui.key, "");
  EXPECT_EQ(params.keys.MN, 24);
  EXPECT_EQ(params.lookUp("gui"), nullptr);
  EXPECT_FAILURE(params.find("gui"), "No such parameter: gui");
}

TYPED_TEST(ParamsOf, UnknownKeysFail) {
  ExtendedParams<TypeParam> params;
  EXPECT_FAILURE(params.find("nothing"), "No such parameter: nothing");
  EXPECT_FAILURE(params.find(""), "No such parameter: ");
  EXPECT_EQ(params.lookUp("nothing"), nullptr);
}

TYPED_TEST(ParamsOf, TextsOfEveryType) {
  const long smallest = std::numeric_limits<long>::min();
  const struct {
    const char* text;
    bool flag;
    long number;
  } cases[] = {
      {"1", true, 1},     {"0", false, 0},     {"", false, 0},          {"x", false, 0},
      {"true", false, 0}, {"-7", true, -7},    {"inf", true, smallest}, {"-inf", true, smallest},
      {" 5", true, 5},    {"12abc", true, 12}, {"infinity", false, 0},  {"+inf", false, 0},
  };
  for (const auto& c : cases) {
    ExtendedParams<TypeParam> params;
    params.find("help").setText(c.text);
    params.find("iters").setText(c.text);
    params.find("rtime").setText(c.text);
    EXPECT_EQ(params.help.get(), c.flag) << c.text;
    EXPECT_EQ(params.iters.get(), c.number) << c.text;
    EXPECT_EQ(params.rtime.get(), c.number) << c.text;
    EXPECT_EQ(params.iters.value.get(), c.text);
  }
}

TYPED_TEST(ParamsOf, NumbersOfTheLatticesOwnType) {
  ExtendedParams<TypeParam> params;
  params.find("snorm").setText("2.5");
  EXPECT_TRUE(params.snorm.get() * TypeParam(2) == TypeParam(5));
  params.find("snorm").setText("inf");
  EXPECT_TRUE(params.snorm.get() == infinity<TypeParam>());
  params.find("tnorm").setText("-inf");
  EXPECT_TRUE(params.tnorm.get() == -infinity<TypeParam>());
  params.find("tnorm").setText("word");
  EXPECT_TRUE(params.tnorm.get() == TypeParam(0));
  params.find("bench").setText("-inf");
  EXPECT_EQ(params.bench.get(), -std::numeric_limits<float>::infinity());
}

TYPED_TEST(ParamsOf, OnlySwitchesAreBool) {
  ExtendedParams<TypeParam> params;
  EXPECT_TRUE(params.find("pair").isBool());
  for (const char* key : {"verb", "rtime", "bench", "snorm"}) EXPECT_FALSE(params.find(key).isBool()) << key;
  EXPECT_FALSE(ParamInfo().isBool());
}

TYPED_TEST(ParamsOf, ACopyPointsIntoItself) {
  ExtendedParams<TypeParam> source;
  source.find("verb").setText("2");
  source.find("snorm").setText("3");
  ExtendedParams<TypeParam> copy(source);
  EXPECT_EQ(copy.verb.get(), 2);
  EXPECT_TRUE(copy.snorm.get() == TypeParam(3));
  EXPECT_EQ(&copy.find("verb"), &copy.verb);
  copy.find("verb").setText("1");
  EXPECT_EQ(source.verb.get(), 2);
}

// The text crosses as it is, and is not parsed again: a default precision would lose digits.
TYPED_TEST(ParamsOf, AssignmentParsesNothing) {
  ExtendedParams<TypeParam> source, target;
  source.verb.assign(5, "odd text");
  source.snorm.assign(TypeParam(1) / TypeParam(8), "other");
  source.gui.set(true);
  const std::string* keys = target.keys.data;
  const auto* table = target.hash.data;
  target = source;
  EXPECT_EQ(target.verb.get(), 5);
  EXPECT_EQ(target.verb.value.get(), "odd text");
  EXPECT_TRUE(target.snorm.get() * TypeParam(8) == TypeParam(1));
  EXPECT_TRUE(target.gui.get());
  EXPECT_EQ(target.keys.data, keys);
  EXPECT_EQ(target.hash.data, table);
  const ExtendedParams<TypeParam>& self = target;
  target = self;
  EXPECT_EQ(target.verb.get(), 5);
}

TYPED_TEST(ParamsOf, ReadsALineOfOptions) {
  ExtendedParams<TypeParam> params;
  std::istringstream in(" \t--verb=2 --pair=0 --snorm=7 --new=a=b\n--beta=3");
  params.read(in);
  EXPECT_EQ(params.verb.get(), 2);
  EXPECT_FALSE(params.pair.get());
  EXPECT_TRUE(params.snorm.get() == TypeParam(7));
  EXPECT_EQ(params.find("new").value.get(), "a=b");
  EXPECT_EQ(params.beta.get(), 20);
  EXPECT_EQ(in.get(), '\n');
  std::istringstream again("--new=c");
  params.read(again);
  EXPECT_EQ(params.find("new").value.get(), "c");
  EXPECT_EQ(params.keys.MN, 25);
}

TYPED_TEST(ParamsOf, ALineWithoutOptionsEmptiesTheTable) {
  for (const char* text : {"", " \t", "\n--verb=2", " \r\n", "\v--verb=2", " \f"}) {
    ExtendedParams<TypeParam> params;
    std::istringstream in(text);
    params.read(in);
    EXPECT_EQ(params.hash.MN, 0) << text;
    EXPECT_EQ(params.text(), "") << text;
    EXPECT_EQ(params.verb.get(), 0) << text;
    EXPECT_FAILURE(params.find("verb"), "No such parameter: verb");
  }
}

TYPED_TEST(ParamsOf, MalformedOptionsFail) {
  ExtendedParams<TypeParam> params;
  std::istringstream in("--verb");
  EXPECT_FAILURE(params.read(in), "Malformed parameter: verb");
}

struct Owner : ParamOwner {
  int refreshes = 0, resets = 0;
  void orthogonalisationRefresh() override { ++refreshes; }
  void resetScales(bool, bool) override { ++resets; }
};

// The text is stored before the listener compares it, so the listeners of the three switches never act. This
// order is a rule of the design.
TYPED_TEST(ParamsOf, ListenersOfTheSwitchesNeverAct) {
  Owner owner;
  ExtendedParams<TypeParam> params(&owner);
  for (Param<bool>* param : {&params.consistency, &params.scale, &params.translate}) {
    param->set(true);
    param->set(false);
    param->setText("1");
    param->setText("0");
  }
  EXPECT_EQ(owner.refreshes, 0);
  EXPECT_EQ(owner.resets, 0);
}

TYPED_TEST(ParamsOf, ConvertsByTypedValueWithItsText) {
  ExtendedParams<QQ> exact;
  exact.find("snorm").setText("5/4");
  exact.find("verb").setText("2");
  exact.find("rtime").setText("9");
  ExtendedParams<TypeParam> there;
  if constexpr (std::is_same_v<TypeParam, dbl_t>) {
    there.convertFrom(exact);
  } else {
    ExtendedParams<dbl_t> between;
    between.convertFrom(exact);
    there.convertFrom(between);
  }
  EXPECT_TRUE(there.snorm.get() * TypeParam(4) == TypeParam(5));
  EXPECT_EQ(there.snorm.value.get(), "5/4");
  EXPECT_TRUE(there.tnorm.get() == -infinity<TypeParam>());
  EXPECT_EQ(there.verb.get(), 2);
  EXPECT_EQ(there.rtime.get(), 9);
}

TEST(Params, AValueThatDoesNotComeBackIsNotConverted) {
  for (const char* text : {"1/3", "123456789012345678901234567", "1.2345678901234567890123"}) {
    ExtendedParams<QQ> exact;
    ExtendedParams<dbl_t> standard;
    exact.find("verb").setText("2");
    exact.find("tnorm").setText(text);
    try {
      standard.convertFrom(exact);
      FAIL() << text;
    } catch (const PrecisionException& caught) {
      EXPECT_STREQ(caught.what(), "Precision lost during conversion");
    }
    EXPECT_EQ(standard.verb.get(), 0);
  }
}

// The console retunes while the solver reads and copies. The thread sanitizer looks on.
TYPED_TEST(ParamsOf, ReadersNeverSeeATornValue) {
  ExtendedParams<TypeParam> params, backup;
  std::atomic<bool> stop{false};
  pthread_t console;
  startThread(&console, [&](void*) -> void* {
    for (long i = 0; !stop.load(); ++i) {
      params.find("snorm").setText(i % 2 == 0 ? "123456789/1000" : "-1");
      params.find("verb").setText(i % 2 == 0 ? "2" : "0");
      backup.find("snorm").setText("17");
      if (i > 300) break;
    }
    return nullptr;
  });
  for (int i = 0; i < 300; ++i) {
    backup = params;
    const long verb = params.verb.get();
    EXPECT_TRUE(verb == 0 || verb == 2);
    const TypeParam seen = params.snorm.get();
    EXPECT_TRUE(seen == TypeParam(-1) || seen > TypeParam(123456));
  }
  stop = true;
  joinThread(console);
}

}  // namespace
}  // namespace latbox
