// The text of numbers: parse refuses or gives a number in canonical form whose text gives the same number
// again. The console's look at a text before it is parsed must foresee every refusal.
#include <sstream>

#include "lib/scanner.h"
#include "numbers/element_text.h"
#include "numbers/number.h"
#include "numbers/vector.h"
#include "params/number_text.h"
#include "refusal.h"

namespace latbox::fuzzing {
namespace {

void requireCanonical(const QQ& q) {
  require(q.ganze.sign && q.zaehler.sign && q.nenner.sign, "signs of the parts");
  require(!q.nenner.isZero() && q.zaehler < q.nenner, "a proper fraction");
  require(gcd(q.zaehler, q.nenner).isOne(), "a reduced fraction");
  require(q.sign || q.isInf || !q.isExactZero(), "zero is positive");
}

void parseAlone(const std::string& text) {
  QQ q;
  if (!accepted([&] { parse(q, text); })) return;
  requireCanonical(q);
  QQ again;
  require(accepted([&] { parse(again, toText(q)); }), "the written number is read");
  require(q == again && q.sign == again.sign, "the written number is the same");
}

// As the console takes a norm.
void takeAsParameter(const std::string& text) {
  bool refuses = true;
  if (!accepted([&] { refuses = exactNumberRefuses(text); })) broken("the look at a number refuses");
  std::istringstream in(text);
  QQ q;
  const bool read = accepted([&] { in >> q; });
  if (!refuses) require(read, "a refusal was foreseen");
}

// As the files of the system's own making and vectors do.
void takeAsElement(const std::string& text) {
  std::istringstream in(text);
  acceptExponents(in);
  Vector<QQ> exact;
  accepted([&] { exact.read(in); });
  std::istringstream again(text);
  Vector<dbl_t> rounded;
  accepted([&] { rounded.read(again); });
}

}  // namespace
}  // namespace latbox::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace latbox::fuzzing;
  const std::string text = textOf(bytes, size);
  parseAlone(text);
  takeAsParameter(text);
  takeAsElement("[ " + text + " ]");
  return 0;
}
