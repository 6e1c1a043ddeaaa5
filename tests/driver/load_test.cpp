#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <filesystem>

#include "driver/run.h"
#include "lib/progress.h"
#include "small_program.h"

namespace latbox {
namespace {

using latbox::testing::SMALL_PROGRAM;
using latbox::testing::TemporaryFolder;

void setAge(const std::string& path, std::time_t time) {
  const utimbuf times{time, time};
  ASSERT_EQ(utime(path.c_str(), &times), 0);
}

class IsNewer : public ::testing::Test {
 protected:
  TemporaryFolder folder_;
  std::string opt_ = folder_.path("a.opt");
  std::string lat_ = folder_.path("a.lat");

  void makeOpt(std::time_t time) {
    folder_.write("a.opt", "x");
    setAge(opt_, time);
  }
  void makeLat(std::time_t time) {
    folder_.write("a.lat", "x");
    setAge(lat_, time);
  }
};

TEST_F(IsNewer, OlderLatFileIsReplaced) {
  makeOpt(2000);
  makeLat(1999);
  EXPECT_TRUE(isNewer(opt_, lat_));
}

TEST_F(IsNewer, LatFileOfTheSameAgeIsTaken) {
  makeOpt(2000);
  makeLat(2000);
  EXPECT_FALSE(isNewer(opt_, lat_));
}

TEST_F(IsNewer, YoungerLatFileIsTaken) {
  makeOpt(2000);
  makeLat(2001);
  EXPECT_FALSE(isNewer(opt_, lat_));
}

TEST_F(IsNewer, FractionsOfASecondDoNotCount) {
  makeOpt(2000);
  makeLat(2000);
  const timespec optTimes[2] = {{2000, 900000000}, {2000, 900000000}};
  const timespec latTimes[2] = {{2000, 100000000}, {2000, 100000000}};
  ASSERT_EQ(utimensat(AT_FDCWD, opt_.c_str(), optTimes, 0), 0);
  ASSERT_EQ(utimensat(AT_FDCWD, lat_.c_str(), latTimes, 0), 0);
  EXPECT_FALSE(isNewer(opt_, lat_));
}

TEST_F(IsNewer, MissingLatFileIsGenerated) {
  makeOpt(2000);
  EXPECT_TRUE(isNewer(opt_, lat_));
}

TEST_F(IsNewer, FolderInPlaceOfTheLatFileCountsAsMissing) {
  makeOpt(2000);
  std::filesystem::create_directory(lat_);
  EXPECT_TRUE(isNewer(opt_, lat_));
}

TEST_F(IsNewer, MissingOptFileIsNeverNewer) {
  EXPECT_FALSE(isNewer(opt_, lat_));
  makeLat(2000);
  EXPECT_FALSE(isNewer(opt_, lat_));
}

struct NameCase {
  const char* input;
  const char* base;
};

template <class T>
class DeriveFileNames : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(DeriveFileNames, NumberTypes);

TYPED_TEST(DeriveFileNames, DropsOneExtensionWithinTheLastComponent) {
  const NameCase cases[] = {{"a", "a"},
                            {"a.b", "a"},
                            {"a.b.c", "a.b"},
                            {"dir.d/prob", "dir.d/prob"},
                            {"dir.d/p.x", "dir.d/p"},
                            {"./x", "./x"},
                            {".hidden", ".hidden"},
                            {"a.", "a"},
                            {"dir/.x", "dir/"},
                            {"/abs/p", "/abs/p"},
                            {"..", "."}};
  for (const NameCase& row : cases) {
    Lattice<TypeParam, dbl_t> lattice;
    deriveFileNames(lattice, row.input);
    const std::string base = row.base;
    EXPECT_EQ(lattice.optFile, base + ".opt") << row.input;
    EXPECT_EQ(lattice.solFile, base + ".sol") << row.input;
    EXPECT_EQ(lattice.latFile, base + ".lat") << row.input;
    EXPECT_EQ(lattice.program.optFile, base + ".opt") << row.input;
    EXPECT_EQ(lattice.program.solFile, base + ".sol") << row.input;
  }
}

TEST(ReadFiles, GeneratesTheLatticeAndWritesIt) {
  const TemporaryFolder folder;
  folder.write("small.opt", SMALL_PROGRAM);
  YLattice<dbl_t> y;
  readFiles(y, folder.path("small"));
  ASSERT_FALSE(y.extendedActive);
  EXPECT_EQ(y.standard.rank, 3);
  EXPECT_EQ(y.standard.dim, 4);
  EXPECT_TRUE(folder.has("small.lat"));
  EXPECT_FALSE(y.standard.writeEnabled);
  EXPECT_EQ(y.standard.mainVars[MainMutexVariable::inputRequested].get(), folder.path("small"));
}

TEST(ReadFiles, ALatFileOfTheSameAgeIsRead) {
  const TemporaryFolder folder;
  folder.write("small.opt", SMALL_PROGRAM);
  YLattice<dbl_t> first;
  readFiles(first, folder.path("small"));
  const std::string saved = folder.read("small.lat");
  setAge(folder.path("small.lat"), 2000);
  setAge(folder.path("small.opt"), 2000);
  YLattice<dbl_t> second;
  readFiles(second, folder.path("small"));
  EXPECT_EQ(second.standard.B, first.standard.B);
  EXPECT_EQ(folder.read("small.lat"), saved);
}

// Once a finite bound on the target could not be read back: its comma was taken for a part of the number.
TEST(ReadFiles, ALatFileWithABoundedTargetIsReadBack) {
  const TemporaryFolder folder;
  folder.write(
      "bounded.opt",
      "[ -inf ] = [ 5 ]\n[ [ 1 1 ] ]\n[ ]\n[ ]\n[ [ 1 2 ] ]\n[ 1 ]\n[ 3 ]\n[ 0 0 ]\n[ 0 0 ]\n[ 4 4 ]\n");
  YLattice<dbl_t> first;
  readFiles(first, folder.path("bounded"));
  ASSERT_TRUE(first.standard.program.tu);
  setAge(folder.path("bounded.opt"), 2000);
  YLattice<dbl_t> second;
  readFiles(second, folder.path("bounded"));
  EXPECT_EQ(second.standard.B, first.standard.B);
  EXPECT_EQ(second.standard.program.ltu(), first.standard.program.ltu());
  EXPECT_EQ(second.standard.program.rtu(), first.standard.program.rtu());
}

TEST(ReadFiles, ABenchmarkRunReadsNeitherLatNorSol) {
  const TemporaryFolder folder;
  folder.write("small.opt", SMALL_PROGRAM);
  folder.write("small.lat", "damaged");
  folder.write("small.sol", "damaged");
  YLattice<dbl_t> y;
  y.standard.params.bench.set(1);
  readFiles(y, folder.path("small"));
  EXPECT_EQ(y.standard.rank, 3);
}

TEST(ReadFiles, NameWithTwoExtensionsAsksForTheShorterOne) {
  const TemporaryFolder folder;
  folder.write("a.opt", SMALL_PROGRAM);
  YLattice<dbl_t> y;
  readFiles(y, folder.path("a.b"));
  EXPECT_EQ(y.standard.mainVars[MainMutexVariable::inputRequested].get(), folder.path("a"));
}

TEST(ReadFiles, PrintsItsLevelsAtVerb2) {
  const TemporaryFolder folder;
  folder.write("small.opt", SMALL_PROGRAM);
  YLattice<dbl_t> y;
  y.standard.params.verb.set(2);
  ::testing::internal::CaptureStdout();
  readFiles(y, folder.path("small"));
  const std::string text = ::testing::internal::GetCapturedStdout();
  EXPECT_TRUE(
      text.starts_with("|-> Reading files ...\n|    |-> Reading opt file ...\n"
                       "|    |    |-> Switching to extended precision\n"
                       "|    |    |-> Using standard precision\n"
                       "|    |-> Generating lattice ...\n"
                       "|    |    |-> Preparing optimization program ...\n"))
      << text;
  EXPECT_EQ(progressDepth(), 0);
}

}  // namespace
}  // namespace latbox
