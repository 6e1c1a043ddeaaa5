// The linear relaxation of a program in any part of its box: proposed in double, believed by proof.
//
// The dual simplex method of relaxation.h, with the variables as columns and the rows as rows. Its dictionary
// serves all parts of the box, so that it goes on from where it was for the last one. A row that nothing
// brings into its range gives multipliers, which are rounded to whole numbers and then prove it by themselves
// (Neumaier, Shcherbina, Safe bounds in linear and mixed-integer linear programming, 2004).
#pragma once

#include <functional>

#include "complete/linear/relaxation.h"
#include "complete/linear/word_program.h"

namespace latbox::complete {

class BoxRelaxation {
 public:
  // Points with about the least value of the goal come out, a form of the variables, and with other seeds
  // other ones of them. The program outlives this.
  BoxRelaxation(const WordProgram& program, const std::vector<double>& goal, unsigned seed);

  enum class Outcome {
    // values() are a point of the relaxation, up to rounding.
    POINT,
    // No point, by proof.
    EMPTY,
    UNDECIDED
  };
  // Requires a part of the program's box. Undecided, too, when `isOver`, which is asked after some hundred
  // steps.
  Outcome run(const std::vector<WordRange>& box, const std::function<bool()>& isOver);

  // Of the last POINT, by variables.
  const std::vector<double>& values() const { return values_; }
  // There, at least what the goal rises when a variable goes to its next whole value down or up; infinite if
  // it cannot. Scaled: to be compared with each other alone.
  double lossDown(std::size_t variable) const;
  double lossUp(std::size_t variable) const;

  // In operations, roughly.
  unsigned long work() const { return work_ + relaxation_.work(); }
  // Numbers of the dictionary, which each step goes through.
  static std::size_t sizeOf(const WordProgram& program);

 private:
  static std::vector<std::size_t> freeVariables(const WordProgram& program);
  Dictionary dictionary(const std::vector<double>& goal, unsigned seed);
  static void append(Dictionary& dictionary, std::vector<double> entries);
  std::vector<double> scaledRow(const WordRow& row);
  std::vector<double> slanted(const std::vector<double>& goal, unsigned seed) const;
  double scaled(std::int64_t value, std::size_t coordinate) const;
  void place(const std::vector<WordRange>& box);
  Relaxation::Outcome runToEnd(const std::function<bool()>& isOver);
  bool isProvenEmpty(const std::vector<WordRange>& box);
  void takeValues();
  double lossOf(std::size_t variable, double distance, double direction) const;

  const WordProgram& program_;
  // Coordinates: the variables that are not fixed, as parts of their widths, then the rows, over what scales
  // them. All are 0 where the variables are at their low ends.
  std::vector<std::size_t> variables_;
  std::vector<std::size_t> coordinateOf_;
  std::vector<double> scales_;
  std::vector<double> starts_;
  RealBox box_;
  std::vector<double> zeros_;
  std::vector<double> moves_;
  std::vector<double> values_;
  // Of each coordinate its row in the dictionary.
  std::vector<std::size_t> places_;
  std::vector<std::int64_t> multipliers_;
  unsigned long work_ = 0;
  Relaxation relaxation_;
};

}  // namespace latbox::complete
