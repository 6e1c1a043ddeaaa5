#include "page.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace latbox {
namespace {

std::string readAll(const char* path) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error(std::string("cannot read ") + path);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeAll(const char* path, const std::string& text) {
  std::ofstream out(path);
  out << text << std::flush;
  if (!out) throw std::runtime_error(std::string("cannot write ") + path);
}

}  // namespace

void replaceAll(std::string& text, const std::string& mark, const std::string& replacement) {
  for (std::size_t at = text.find(mark); at != std::string::npos;
       at = text.find(mark, at + replacement.size()))
    text.replace(at, mark.size(), replacement);
}

// A hyphen that is not escaped may come out as a dash that no shell understands.
std::string manualText(const std::string& text) {
  std::string result;
  bool bold = false;
  for (const char ch : text) {
    if (ch == '`') {
      bold = !bold;
      result += bold ? "\\fB" : "\\fR";
    } else if (ch == '-') {
      result += "\\-";
    } else if (ch == '\\') {
      result += "\\e";
    } else {
      result += ch;
    }
  }
  return result;
}

int makePage(int argc, char** argv, const std::function<std::string(const std::string&)>& fill) {
  const std::string name = argc > 0 ? argv[0] : "";
  if (argc != 3) {
    std::cerr << "usage: " << name << " TEMPLATE PAGE\n";
    return 1;
  }
  try {
    writeAll(argv[2], fill(readAll(argv[1])));
  } catch (const std::exception& error) {
    std::cerr << name << ": " << error.what() << '\n';
    return 1;
  }
  return 0;
}

}  // namespace latbox
