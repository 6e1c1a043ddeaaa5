#include "complete/files/digest.h"

#include <charconv>
#include <cstdio>
#include <utility>

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

std::string sealed(std::string text) {
  const std::string digest = digestOf(text);
  return std::move(text) + "end " + digest + "\n";
}

std::optional<std::string_view> unsealed(std::string_view text) {
  const std::size_t last = text.rfind("\nend ");
  if (last == std::string_view::npos) return std::nullopt;
  const std::string_view body = text.substr(0, last + 1);
  if (text.substr(last + 1) != "end " + digestOf(body) + "\n") return std::nullopt;
  return body;
}

}  // namespace latbox::complete
