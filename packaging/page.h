// What the makers of pages share: marks in a template, plain text for the man macros, and their command line.
#pragma once

#include <functional>
#include <string>

namespace latbox {

void replaceAll(std::string& text, const std::string& mark, const std::string& replacement);

// Backquotes begin and end bold text in turn; hyphens and backslashes come out as they are.
std::string manualText(const std::string& text);

// NAME TEMPLATE PAGE: writes what `fill` makes of the template. The exit status of the program.
int makePage(int argc, char** argv, const std::function<std::string(const std::string&)>& fill);

}  // namespace latbox
