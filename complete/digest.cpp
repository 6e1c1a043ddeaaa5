#include "complete/digest.h"

#include <charconv>
#include <cstdio>

namespace latbox::complete {
namespace {

constexpr std::uint64_t FACTOR = 0x100000001b3;
constexpr std::size_t DIGITS = 16;

}  // namespace

void Digest::add(std::string_view text) {
  auto [first, second] = sums_;
  for (const char c : text) {
    first = (first ^ static_cast<unsigned char>(c)) * FACTOR;
    second = (second ^ static_cast<unsigned char>(c)) * FACTOR;
  }
  sums_ = {first, second};
}

std::string Digest::text() const {
  char digits[2 * DIGITS + 1];
  std::snprintf(digits, sizeof digits, "%016lx%016lx", sums_[0], sums_[1]);
  return digits;
}

std::optional<Digest> Digest::parse(std::string_view digits) {
  if (digits.size() != 2 * DIGITS) return std::nullopt;
  Digest digest;
  for (std::size_t i = 0; i < 2; ++i) {
    const char* begin = digits.data() + DIGITS * i;
    const auto [end, error] = std::from_chars(begin, begin + DIGITS, digest.sums_[i], 16);
    if (error != std::errc() || end != begin + DIGITS) return std::nullopt;
  }
  return digest;
}

std::string digestOf(std::string_view text) {
  Digest digest;
  digest.add(text);
  return digest.text();
}

}  // namespace latbox::complete
