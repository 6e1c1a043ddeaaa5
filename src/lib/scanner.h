// Skipping and tokens, shared by every reader. The routines work on the stream's buffer and set no state
// except where they say so: an end of file met while skipping is left for the next read to report, and a text
// of many megabytes is read at the speed of the buffer.
#pragma once

#include <istream>
#include <string>

namespace latbox {

// Skips any run of the characters " \t\r\n".
void skipSpace(std::istream& in);

// Skips any run of " \t\r\n" and comments: from "//" up to but not including the line end, and from "/*" to
// "*/" inclusive. A lone slash is put back and ends the skipping. Fails with "Comment is not terminated" at
// the end of the file inside "/*".
void skipSpaceAndComments(std::istream& in);

// The next character without taking it, or EOF; sets no state.
int nextCharacter(std::istream& in);

// Takes and returns the next character, or EOF; sets no state.
int takeCharacter(std::istream& in);

// The longest run of number characters: from '+' to ':' in the character code (signs, comma, point, slash,
// digits, colon), so neither a letter nor an exponent. With `exponents` 'e' and 'E' belong to the token too.
// Empty where none stands.
std::string takeNumberToken(std::istream& in, bool exponents);

// Whether vectors of exact numbers read from `in` accept exponents, as the files that the system wrote itself
// need: standard precision writes them. Off for every new stream, for the user's program has no exponents.
void acceptExponents(std::istream& in, bool accept = true);
bool acceptsExponents(std::istream& in);

}  // namespace latbox
