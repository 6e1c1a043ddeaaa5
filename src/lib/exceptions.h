// Conditions that a caller or the driver recovers from. A broken invariant or unusable input is not an
// exception: it takes the failure path (failure.h).
#pragma once

#include <exception>
#include <string>

namespace latbox {

// The standard exception is not a public base: a handler names the condition that it can act on,
// and a catch of std::exception never swallows one of these.
class GeneralException : private std::exception {
 public:
  explicit GeneralException(std::string message) : message_(std::move(message)) {}
  ~GeneralException() override = default;
  const char* what() const noexcept override { return message_.c_str(); }

 protected:
  // Stores `message`, or `fallback` where it is empty.
  GeneralException(std::string message, const char* fallback)
      : message_(message.empty() ? std::string(fallback) : std::move(message)) {}

 private:
  std::string message_;
};

// A text form could not be read.
class ReadException : public GeneralException {
 public:
  explicit ReadException(std::string message = "") : GeneralException(std::move(message), "Read exception") {}
};

// A dependent vector stands where no room is left to move it away.
class DependencyException : public GeneralException {
 public:
  explicit DependencyException(std::string message = "")
      : GeneralException(std::move(message), "Dependency exception") {}
};

// A number left the range that its type holds exactly; the driver repeats the step in exact arithmetic.
class PrecisionException : public GeneralException {
 public:
  explicit PrecisionException(std::string message = "")
      : GeneralException(std::move(message), "Precision exception") {}

 protected:
  PrecisionException(std::string message, const char* fallback)
      : GeneralException(std::move(message), fallback) {}
};

// The overflow was noticed too late: digits may be lost already. A handler that treats the two apart must
// name this one first.
class FatalPrecisionException : public PrecisionException {
 public:
  explicit FatalPrecisionException(std::string message = "")
      : PrecisionException(std::move(message), "Fatal precision exception") {}
};

// The lattice was regenerated: the driver goes back to its reporting phase.
class RestartException : public GeneralException {
 public:
  explicit RestartException(std::string message = "")
      : GeneralException(std::move(message), "Restart exception") {}
};

}  // namespace latbox
