// The version of the program, as the banner and every solution record it.
#pragma once

namespace latbox {

inline constexpr const char VERSION[] = "2.2.2";

}  // namespace latbox
