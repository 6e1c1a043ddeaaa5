// The largest absolute weight that trimming gives a coordinate without further ado: process-wide, one value
// per number type. It starts at 1000, trimming lets it grow, and a reset of the weights puts it back.
#pragma once

namespace latbox {

inline constexpr long SCALE_LIMIT_START = 1000;

template <class T>
T& scaleLimit();

}  // namespace latbox
