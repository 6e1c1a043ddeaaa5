#include "lib/scanner.h"

#include <streambuf>

#include "lib/failure.h"

namespace latbox {
namespace {

constexpr int END = std::char_traits<char>::eof();

bool isSpace(int ch) {
  return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n';
}

void skipSpace(std::streambuf& in) {
  int ch = in.sgetc();
  while (isSpace(ch)) ch = in.snextc();
}

void skipLineComment(std::streambuf& in) {
  int ch = in.sgetc();
  while (ch != '\n' && ch != END) ch = in.snextc();
}

// Behind the opening slash and asterisk.
void skipBlockComment(std::streambuf& in) {
  int before = 0;
  for (int ch = in.sbumpc(); ch != END; before = ch, ch = in.sbumpc())
    if (before == '*' && ch == '/') return;
  fail("Comment is not terminated");
}

// Skips one comment; false, and nothing taken, if none begins here.
bool skipComment(std::streambuf& in) {
  if (in.sgetc() != '/') return false;
  const int second = in.snextc();
  if (second == '/') {
    skipLineComment(in);
  } else if (second == '*') {
    in.sbumpc();
    skipBlockComment(in);
  } else {
    in.sputbackc('/');
    return false;
  }
  return true;
}

int exponentSwitch() {
  static const int index = std::ios_base::xalloc();
  return index;
}

}  // namespace

void skipSpace(std::istream& in) {
  skipSpace(*in.rdbuf());
}

void skipSpaceAndComments(std::istream& in) {
  std::streambuf& buffer = *in.rdbuf();
  do {
    skipSpace(buffer);
  } while (skipComment(buffer));
}

int nextCharacter(std::istream& in) {
  return in.rdbuf()->sgetc();
}

int takeCharacter(std::istream& in) {
  return in.rdbuf()->sbumpc();
}

std::string takeNumberToken(std::istream& in, bool exponents) {
  std::streambuf& buffer = *in.rdbuf();
  std::string token;
  for (int ch = buffer.sgetc();; ch = buffer.snextc()) {
    const bool belongs = (ch >= '+' && ch <= ':') || (exponents && (ch == 'e' || ch == 'E'));
    if (!belongs) return token;
    token += static_cast<char>(ch);
  }
}

void acceptExponents(std::istream& in, bool accept) {
  in.iword(exponentSwitch()) = accept ? 1 : 0;
}

bool acceptsExponents(std::istream& in) {
  return in.iword(exponentSwitch()) != 0;
}

}  // namespace latbox
