// A program and the steps of a derivation as lines of a certificate: which line says each end of a range.
//
// Variables are the whole z of the system, then one for each target with a wanted value: at least the signed
// distance from it and at least its negative, in the whole units of the objective. The objective is the
// target norm in these units. Objective rows follow from the assumption that it is at most some value.
#pragma once

#include <optional>

#include "complete/program/objective.h"
#include "complete/proof/derivation.h"
#include "complete/vipr/certificate.h"

namespace latbox::complete::vipr {

// Lines low <= form and form <= high, as far as there are any.
struct EndLines {
  std::optional<std::size_t> low;
  std::optional<std::size_t> high;
};

// Adds the form that has these ends, times the factor, by the end that fits the sense. Requires that it is
// there.
void add(Combination& combination, const EndLines& ends, const Rational& factor, Sense sense);

// count * form - period * part has one value: what rows with equal ends, each times its factor, and fixed
// variables say.
struct Congruence {
  IntegerVector form;
  Integer count;
  IntegerVector part;
  Integer period;
  std::vector<std::pair<std::size_t, Rational>> rows;
};

class Ranges {
 public:
  // Gives the lines of the program. With a limit the objective is assumed to be at most that.
  Ranges(const Program& program, const proof::System& system, const std::optional<Integer>& limit);

  Certificate& certificate() { return certificate_; }
  const Certificate& certificate() const { return certificate_; }
  const IntegerVector& objective() const { return *objective_; }
  // Of the assumption on the objective.
  std::size_t limitLine() const { return limitLine_; }
  std::size_t boundCount() const { return boundCount_; }
  // z, and the distances behind it.
  IntegerVector solutionOf(const IntegerVector& z) const;

  // Replays the steps of a derivation from the same system. A line that is a contradiction, if they come to
  // one.
  std::optional<std::size_t> replay(const proof::Derivation& derivation);

  const EndLines& variable(std::size_t j) const { return variables_[j]; }
  const EndLines& row(std::size_t i) const { return rows_[i]; }
  // Over all variables.
  const IntegerVector& rowForm(std::size_t i) const { return rowForms_[i]; }
  // An objective row that is the norm of these z, and its upper end. Requires a limit.
  std::pair<IntegerVector, EndLines> normRow(const IntegerVector& z);

  // Moves both ends, as far as they are there, to the next number that the congruence allows.
  void narrow(EndLines& ends, const Congruence& congruence);
  // Cancels what the combination has of fixed variables beyond the wanted form.
  void cancel(Combination& combination, const IntegerVector& wanted, Sense sense) const;

 private:
  void giveBounds();
  void giveRows();
  void giveDistances();
  void assumeLimit(const Integer& limit);
  EndLines objectiveRow(const proof::ObjectiveRow& row);
  EndLines giveRange(const FormPointer& form, const Range& range);
  IntegerVector overAll(IntegerVector z) const;
  FormPointer unit(std::size_t j) const;

  std::optional<std::size_t> take(const proof::Derivation& before, const proof::Step& step);
  std::optional<std::size_t> takeEnd(const proof::Step& step);
  std::optional<std::size_t> takeClass(const proof::Derivation& before, const proof::Step& step);
  Congruence congruenceOf(const proof::Derivation& before, const proof::Step& step) const;
  bool moves(std::optional<std::size_t>& end, const EndLines& ends, const Congruence& congruence,
             Sense sense);
  std::optional<std::size_t> impossible(const Congruence& congruence);
  std::optional<std::size_t> contradiction(const EndLines& ends);
  EndLines* endsOf(const proof::Form& form);
  IntegerVector formOf(const proof::Form& form) const;

  proof::System system_;
  Objective norm_;
  Certificate certificate_;
  FormPointer objective_;
  std::size_t boundCount_ = 0;
  std::size_t limitLine_ = 0;
  std::vector<EndLines> variables_;
  std::vector<EndLines> rows_;
  IntegerMatrix rowForms_;
  // Of the distances: at least the signed one, and at least its negative.
  std::vector<std::size_t> above_;
  std::vector<std::size_t> below_;
};

}  // namespace latbox::complete::vipr
