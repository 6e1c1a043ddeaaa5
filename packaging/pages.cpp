// latbox_pages TEMPLATE PAGE: writes the page that the template and the option table give.
#include "option_pages.h"
#include "page.h"

int main(int argc, char** argv) {
  return latbox::makePage(argc, argv, [](const std::string& text) {
    return latbox::fillTemplate(text, latbox::describeOptions());
  });
}
