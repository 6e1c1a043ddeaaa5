// Function templates over a lattice are defined in sources and exist for both number types; this names them
// once, whatever their parameters.
#pragma once

// At the end of the source, in the namespace of `function`, a template over <class T, class F> that is not
// overloaded.
#define LATBOX_BOTH_TYPES(function)                                 \
  template decltype(function<dbl_t, dbl_t>) function<dbl_t, dbl_t>; \
  template decltype(function<QQ, dbl_t>) function<QQ, dbl_t>;
