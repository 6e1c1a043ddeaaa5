// The last catch of a thread: no exception may leave it.
#pragma once

#include <new>
#include <stdexcept>

#include "lib/exceptions.h"
#include "lib/failure.h"

namespace latbox {

// Runs `body`; whatever it throws ends the process by the failure path. Sizes beyond all memory arrive here
// as exceptions of the language.
template <class Body>
void endOnException(Body&& body) {
  try {
    body();
  } catch (const GeneralException& exception) {
    fail(exception.what());
  } catch (const std::bad_alloc&) {
    fail("Out of memory");
  } catch (const std::length_error&) {
    fail("Out of memory");
  } catch (const std::exception& exception) {
    fail(exception.what());
  }
}

}  // namespace latbox
