#include "check/judging/judge_file.h"

#include "check/judging/repetitions.h"

namespace latbox::check {
namespace {

class FileJudge {
 public:
  FileJudge(const Program& program, SolutionFile& file)
      : program_(program), rewriting_(program), file_(file) {}

  void tellAll(const Verdict& tell) {
    Repetitions repetitions = findRepetitions();
    Digest second = 0;
    std::size_t number = 0;
    file_.forEach([&](const Solution& solution, std::uint64_t offset) {
      second = chained(second, digestOf(solution));
      Judgement judgement = judge(program_, rewriting_, solution);
      const std::size_t earlier = repetitions.earlier(offset, ++number);
      if (earlier != 0) judgement.faults.push_back("the same as solution " + std::to_string(earlier));
      tell(number, solution, judgement);
    });
    if (second != first_) throw Unreadable(CHANGED);
  }

 private:
  Repetitions findRepetitions() {
    Digests digests;
    file_.forEach([&](const Solution& solution, std::uint64_t offset) {
      const Digest digest = digestOf(solution);
      digests.add(digest, offset);
      first_ = chained(first_, digest);
    });
    return Repetitions(std::move(digests), [this](std::uint64_t offset) { return file_.at(offset); });
  }

  const Program& program_;
  Rewriting rewriting_;
  SolutionFile& file_;
  // The digest of all digests of the first reading: the second one must meet the same points.
  Digest first_ = 0;
};

}  // namespace

void judgeFile(const Program& program, SolutionFile& file, const Verdict& tell) {
  FileJudge(program, file).tellAll(tell);
}

}  // namespace latbox::check
