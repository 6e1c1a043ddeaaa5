#include "complete/run/outlook.h"

#include <cstdio>

namespace latbox::complete {
namespace {

struct Unit {
  double size;
  const char* name;
};

constexpr double YEAR = 365.25 * 86400;
// Nobody waits longer.
constexpr double PATIENCE = 5 * YEAR;

std::string format(const char* form, double value, const char* unit) {
  char text[64];
  std::snprintf(text, sizeof text, form, value, unit);
  return text;
}

// In the largest unit of which there is one at least.
template <std::size_t N>
std::string inUnits(double value, const Unit (&units)[N]) {
  const Unit* unit = &units[0];
  for (const Unit& next : units)
    if (value >= next.size) unit = &next;
  const double amount = value / unit->size;
  return format(amount < 10 && unit != &units[0] ? "%.2g %s"
                : amount < 1000                  ? "%.0f %s"
                                                 : "%.2g %s",
                amount, unit->name);
}

}  // namespace

std::string duration(double seconds) {
  constexpr Unit UNITS[] = {{1, "s"}, {60, "min"}, {3600, "h"}, {86400, "days"}, {YEAR, "years"}};
  return inUnits(seconds, UNITS);
}

std::string size(double bytes) {
  constexpr Unit UNITS[] = {{1, "bytes"}, {1e3, "KB"}, {1e6, "MB"}, {1e9, "GB"}, {1e12, "TB"}};
  return inUnits(bytes, UNITS);
}

std::string textOf(const Outlook& outlook) {
  const double seconds = outlook.nodes / outlook.speed;
  std::string text = format("estimate: %.2g %s, ", outlook.nodes, "nodes") + duration(seconds);
  if (outlook.points >= 1)
    text += format(", %.2g %s", outlook.points, "points");
  else if (outlook.points >= 0)
    text += ", a point or none";
  if (outlook.points >= 1 && outlook.lineBytes > 0)
    text += ", a file of " + size(outlook.points * outlook.lineBytes);
  text += "\n";
  if (seconds > PATIENCE)
    text += "this search will not end in " + duration(PATIENCE) +
            "; --first=1, or latbox itself, may find a point all the same\n";
  return text;
}

}  // namespace latbox::complete
