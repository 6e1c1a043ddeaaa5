#include "lib/time_text.h"

#include <ostream>

namespace latbox {

namespace {

void twoDigits(FixedText& text, long long number) {
  if (number < 10) text << '0';
  text << number;
}

}  // namespace

void timeText(FixedText& text, long long seconds) {
  const long long hours = seconds / 3600;
  const long long minutes = seconds / 60 % 60;
  if (hours <= 0 && minutes <= 0) {
    text << seconds << " sec(s)";
    return;
  }
  if (hours > 0) {
    text << hours << ':';
    twoDigits(text, minutes);
  } else {
    text << minutes;
  }
  text << ':';
  twoDigits(text, seconds % 60);
  text << (hours > 0 ? " hour(s):min(s):sec(s) == " : " min(s):sec(s) == ") << seconds << " secs";
}

void timeText(std::ostream& stream, long seconds) {
  FixedText text;
  timeText(text, static_cast<long long>(seconds));
  stream.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace latbox
