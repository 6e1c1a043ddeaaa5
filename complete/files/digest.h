// 128 bits that tell texts apart: equal texts have equal digests, and others hardly ever, unless somebody
// means them to.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace latbox::complete {

class Digest {
 public:
  // Of what was added so far, followed by this.
  void add(std::string_view text);

  // 32 hexadecimal digits; and back, nothing if the text is none.
  std::string text() const;
  static std::optional<Digest> parse(std::string_view digits);

  friend bool operator==(const Digest&, const Digest&) = default;

 private:
  // Two sums of the kind of Fowler, Noll and Vo, from different beginnings.
  std::array<std::uint64_t, 2> sums_ = {0xcbf29ce484222325, 0x84222325cbf29ce4};
};

std::string digestOf(std::string_view text);

// A text whose last line, "end DIGEST", tells whether it is all there; and back without that line, nothing if
// it is not.
std::string sealed(std::string text);
std::optional<std::string_view> unsealed(std::string_view text);

}  // namespace latbox::complete
