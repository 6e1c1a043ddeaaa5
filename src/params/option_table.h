// The one table of options that do not depend on the number type.
#pragma once

#include <span>
#include <variant>

#include "params/params.h"

namespace latbox {

using OptionMember = std::variant<Param<bool> Params::*, Param<long> Params::*, Param<float> Params::*,
                                  MutexParam<long> Params::*>;

struct Option {
  const char* key;
  OptionMember member;
  long defaultValue;
  const char* help;
};

// In the order of registration, which is that of the usage.
std::span<const Option> optionTable();

inline constexpr const char* SNORM_HELP =
    "Terminate the program, when a solution has been found, whose slack norm <= the provided value.";
inline constexpr const char* TNORM_HELP =
    "Terminate the program, when a solution has been found, whose target norm <= the provided value.";

}  // namespace latbox
