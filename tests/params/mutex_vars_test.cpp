#include "params/mutex_vars.h"

#include <gtest/gtest.h>

#include <string>

namespace latbox {
namespace {

TEST(MutexVars, EntriesStandInTheirOrder) {
  MainMutexVars vars;
  ASSERT_EQ(vars.MN, 8);
  const int order[] = {0, 1, 3, 5, 6, 7, 4, 2};
  for (long i = 1; i <= 8; ++i) {
    EXPECT_EQ(static_cast<int>(vars.data[i].left), order[i - 1]);
    const std::string expected = order[i - 1] == 4 ? "0" : order[i - 1] == 2 ? "waiting" : "";
    EXPECT_EQ(vars.data[i].right.get(), expected) << i;
  }
}

TEST(MutexVars, AMissingKeyIsAddedEmpty) {
  MutexVars<int> vars;
  EXPECT_EQ(vars[99].get(), "");
  EXPECT_EQ(vars.MN, 9);
  vars[99].set("x");
  EXPECT_EQ(vars[99].get(), "x");
  EXPECT_EQ(vars.MN, 9);
}

TEST(MutexVars, ACopyMovesNoEntry) {
  MainMutexVars source, target;
  source[MainMutexVariable::runState].set("running");
  source[MainMutexVariable::inputLoaded].set("a/b");
  MutexType<std::string>* entry = &target[MainMutexVariable::runState];
  target = source;
  EXPECT_EQ(&target[MainMutexVariable::runState], entry);
  EXPECT_EQ(entry->get(), "running");
  EXPECT_EQ(target[MainMutexVariable::inputLoaded].get(), "a/b");
  EXPECT_EQ(target.MN, 8);
  MainMutexVars copy(source);
  EXPECT_EQ(copy[MainMutexVariable::runState].get(), "running");
}

}  // namespace
}  // namespace latbox
