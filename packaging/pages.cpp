// latbox_pages TEMPLATE PAGE: writes the page that the template and the option table give.
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>

#include "option_pages.h"

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

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: latbox_pages TEMPLATE PAGE\n";
    return 1;
  }
  try {
    writeAll(argv[2], latbox::fillTemplate(readAll(argv[1]), latbox::describeOptions()));
  } catch (const std::exception& error) {
    std::cerr << "latbox_pages: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
