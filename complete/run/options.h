// The command line: --key=value, strictly.
#pragma once

#include <string>
#include <vector>

#include "complete/program/opt_reader.h"

namespace latbox::complete {

struct Options {
  std::string file;
  // Empty: NAME.all.
  std::string out;
  // Where others write points that they find; empty: there are none.
  std::string best;
  // Empty: no proof.
  std::string proof;
  // Of a proof that other houses' readers check.
  bool vipr = false;
  bool help = false;
  bool version = false;
  bool all = false;
  bool ties = false;
  bool count = false;
  bool first = false;
  bool quiet = false;
  // Points; 0: no limit.
  unsigned long limit = 0;
  // Wall seconds; 0: no limit.
  double rtime = 0;
  bool resume = true;
  // Wall seconds between checkpoints.
  double checkpoint = 60;
  unsigned long threads = 0;
  unsigned long seed = 0;
  // A folder of pieces; empty: none. Then one of the others says what is done with it.
  std::string jobs;
  // Pieces, and the number of one; 0: none.
  unsigned long split = 0;
  unsigned long job = 0;
  // Wall seconds; 0: no limit.
  double jobRtime = 0;
  // A result from elsewhere; empty: none.
  std::string take;
  bool pieces = false;
  bool join = false;
  // As they were given, for the lines of points; what would end the field there is a blank.
  std::string text;
};

// Requires the arguments behind the program's name. Throws BadInput on an unknown or repeated key, a value
// that is none, options that exclude each other, and any number of files but one.
Options parseOptions(const std::vector<std::string>& arguments);

// An option as the usage, the manual page and the completion tell it.
struct OptionHelp {
  const char* name;
  // What may stand behind "=": a switch shows the value that is not its default, others a name in capitals.
  // Empty: the option may stand alone.
  const char* value;
  // A sentence.
  const char* text;
};

// Every option that is taken, and no other.
std::vector<OptionHelp> optionHelp();

std::string helpText();

}  // namespace latbox::complete
