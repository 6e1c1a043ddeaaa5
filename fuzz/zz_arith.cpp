// ZZ against an independent library: the input is a sequence of operations on four numbers, the result
// written over any of them, an operand among them. Each operation is done in all the forms that there are,
// and every result must be the same and in normal form.
#include <array>

#include "numbers/zz.h"
#include "refusal.h"
#include "support/gmp.h"
#include "tape.h"

namespace latbox::fuzzing {
namespace {

using testing::Mpz;

constexpr std::size_t NUMBERS = 4;
// Products grow; what is larger starts anew.
constexpr long MAX_DIGITS = 9 * 600;
constexpr int MAX_OPERATIONS = 200;

void requireSame(const ZZ& a, const Mpz& b, const char* operation) {
  require(a.MN >= 1 && (a.MN == 1 || a.data[a.MN] != 0), "normal form");
  for (long i = 1; i <= a.MN; ++i) require(a.data[i] >= 0 && a.data[i] < ZZ::BASE, "range of a limb");
  require(a.to_string() == b.text(), operation);
}

class Machine {
 public:
  explicit Machine(Tape& tape) : tape_(tape) {}

  void run() {
    for (std::size_t i = 0; i < NUMBERS; ++i) load(i);
    for (int i = 0; i < MAX_OPERATIONS && !tape_.atEnd(); ++i) step();
  }

 private:
  void load(std::size_t i) {
    const std::string text = tape_.integer(8);
    exact_[i] = ZZ(text);
    wanted_[i] = Mpz(text);
    requireSame(exact_[i], wanted_[i], "text");
  }

  void step() {
    const unsigned operation = tape_.below(11);
    const unsigned places = tape_.byte();
    r_ = places % NUMBERS;
    a_ = places / NUMBERS % NUMBERS;
    b_ = places / NUMBERS / NUMBERS % NUMBERS;
    operate(operation);
    if (exact_[r_].digits() > MAX_DIGITS) load(r_);
  }

  void operate(unsigned operation) {
    switch (operation) {
      case 0:
        return load(r_);
      case 1:
        return simple(ZZ::add, ZZ::addGeneral, mpz_add, "add");
      case 2:
        return simple(ZZ::sub, ZZ::subGeneral, mpz_sub, "sub");
      case 3:
        return simple(ZZ::mul, ZZ::mulGeneral, mpz_mul, "mul");
      case 4:
      case 5:
        return divide();
      case 6:
        return greatestDivisor();
      case 7:
        return power();
      case 8:
        return decimalShift();
      case 9:
        return limbShift();
      default:
        return compareAndCount();
    }
  }

  using Operation = void(const ZZ&, const ZZ&, ZZ&);
  void simple(Operation fast, Operation general, void reference(mpz_t, const mpz_t, const mpz_t),
              const char* name) {
    ZZ slow;
    general(exact_[a_], exact_[b_], slow);
    Mpz wanted;
    reference(wanted.value, wanted_[a_].value, wanted_[b_].value);
    fast(exact_[a_], exact_[b_], exact_[r_]);
    wanted_[r_] = wanted;
    requireSame(slow, wanted, name);
    requireSame(exact_[r_], wanted, name);
  }

  // The remainder goes over a number, too: over the quotient's own, of which the quotient stays.
  void divide() {
    const std::size_t rest = tape_.below(NUMBERS);
    ZZ q, rem;
    if (exact_[b_].isZero()) {
      require(!accepted([&] { ZZ::div(exact_[a_], exact_[b_], q, rem); }), "division by zero is refused");
      return;
    }
    Mpz wantedQ, wantedRem;
    mpz_tdiv_qr(wantedQ.value, wantedRem.value, wanted_[a_].value, wanted_[b_].value);
    ZZ::divGeneral(exact_[a_], exact_[b_], q, rem);
    requireSame(q, wantedQ, "quotient in general");
    requireSame(rem, wantedRem, "remainder in general");
    ZZ::div(exact_[a_], exact_[b_], exact_[r_], exact_[rest]);
    wanted_[rest] = wantedRem;
    wanted_[r_] = wantedQ;
    requireSame(exact_[r_], wantedQ, "quotient");
    requireSame(exact_[rest], wanted_[rest], "remainder");
  }

  void greatestDivisor() {
    Mpz wanted;
    mpz_gcd(wanted.value, wanted_[a_].value, wanted_[b_].value);
    exact_[r_] = gcd(exact_[a_], exact_[b_]);
    wanted_[r_] = wanted;
    requireSame(exact_[r_], wanted, "gcd");
  }

  void power() {
    const unsigned exponent = tape_.below(40);
    if (exact_[a_].digits() * static_cast<long>(exponent) > MAX_DIGITS) return;
    mpz_pow_ui(wanted_[r_].value, wanted_[a_].value, exponent);
    exact_[r_] = exact_[a_] ^ ZZ(static_cast<int>(exponent));
    requireSame(exact_[r_], wanted_[r_], "power");
  }

  void decimalShift() {
    const long n = static_cast<long>(tape_.below(64));
    Mpz wanted;
    mpz_ui_pow_ui(wanted.value, 10, static_cast<unsigned long>(n));
    ZZ byText = exact_[a_];
    exact_[r_] = exact_[a_];
    if ((n & 1) != 0) {
      mpz_mul(wanted.value, wanted_[a_].value, wanted.value);
      exact_[r_].decimal_lshift(n);
      byText.decimalLshiftByText(n);
    } else {
      mpz_tdiv_q(wanted.value, wanted_[a_].value, wanted.value);
      exact_[r_].decimal_rshift(n);
      byText.decimalRshiftByText(n);
    }
    wanted_[r_] = wanted;
    requireSame(byText, wanted, "shift by text");
    requireSame(exact_[r_], wanted, "shift");
  }

  void limbShift() {
    const long steps = static_cast<long>(tape_.below(8));
    if (steps >= exact_[a_].MN) return;
    exact_[r_] = exact_[a_];
    Mpz base;
    mpz_ui_pow_ui(base.value, 10, static_cast<unsigned long>(ZZ::LIMB_DIGITS * steps));
    mpz_tdiv_q(wanted_[r_].value, wanted_[a_].value, base.value);
    exact_[r_].base_rshift(steps);
    requireSame(exact_[r_], wanted_[r_], "shift by limbs");
  }

  void compareAndCount() {
    const int order = mpz_cmp(wanted_[a_].value, wanted_[b_].value);
    const long sign = order < 0 ? -1 : (order > 0 ? 1 : 0);
    require(ZZ::compare(exact_[a_], exact_[b_]) == sign, "order");
    require((exact_[a_] == exact_[b_]) == (order == 0), "equality");
    Mpz magnitude;
    mpz_abs(magnitude.value, wanted_[a_].value);
    require(exact_[a_].digits() == static_cast<long>(magnitude.text().size()), "digits");
    requireSame(abs(exact_[a_]), magnitude, "magnitude");
    exact_[r_] = -exact_[a_];
    mpz_neg(wanted_[r_].value, wanted_[a_].value);
    requireSame(exact_[r_], wanted_[r_], "negation");
  }

  Tape& tape_;
  std::array<ZZ, NUMBERS> exact_;
  std::array<Mpz, NUMBERS> wanted_;
  std::size_t r_ = 0, a_ = 0, b_ = 0;
};

}  // namespace
}  // namespace latbox::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  latbox::fuzzing::Tape tape(bytes, size);
  latbox::fuzzing::Machine(tape).run();
  return 0;
}
