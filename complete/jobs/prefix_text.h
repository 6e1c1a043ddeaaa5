// Pieces of a tree as words of a line.
//
// A level is its coefficient; behind it, where further candidates are left, ">u" for u and all above, "<d"
// for d and all below. The lowest level has not chosen: its coefficient is "*". Levels are joined by commas,
// and the whole tree is ".". So "3,0>2,*>1<0" is what lies below the coefficients 3 and 0, and below 3 and 2,
// 3 and 3, and so on.
#pragma once

#include <string>

#include "complete/tree/piece.h"

namespace latbox::complete::jobs {

std::string textOf(const Piece& piece);
// Throws BadWords.
Piece parsePiece(const std::string& word);

}  // namespace latbox::complete::jobs
