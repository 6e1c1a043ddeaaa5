#include "params/params.h"

#include <cctype>
#include <sstream>

#include "lib/failure.h"
#include "lib/immortal.h"
#include "lib/scanner.h"
#include "lib/text.h"
#include "numbers/conversion.h"
#include "params/option_table.h"

namespace latbox {
namespace {

// What the values of an emptied table point at.
ParamInfo* sharedEmptyParameter() {
  static Immortal<ParamInfo> empty;
  return &*empty;
}

}  // namespace

Params::Params() {
  for (const Option& option : latbox::optionTable())
    std::visit(
        [&](auto member) {
          auto& param = this->*member;
          using Value = typename std::remove_reference_t<decltype(param)>::Value;
          param.init(option.key, option.help, static_cast<Value>(option.defaultValue), keys, hash);
        },
        option.member);
}

void Params::assignFrom(const Params& other) {
  if (this == &other) return;
  for (const Option& option : latbox::optionTable())
    std::visit(
        [&](auto member) { (this->*member).assign((other.*member).get(), (other.*member).value.get()); },
        option.member);
  gui.assign(other.gui.get(), other.gui.value.get());
}

ParamInfo& Params::find(const std::string& key) {
  ParamInfo* param = lookUp(key);
  if (param == nullptr) fail("No such parameter: " + key);
  return *param;
}

void Params::write(std::ostream& out) const {
  std::string joined;
  for (long i = 1; i <= hash.MN; ++i) {
    const ParamInfo& param = *hash.data[i].right;
    if (param.key.empty()) continue;
    std::ostringstream one;
    one << param;
    if (one.str().empty()) continue;
    if (!joined.empty()) joined += ' ';
    joined += one.str();
  }
  out << trimmed(joined, BLANKS);
}

std::string Params::text() const {
  std::ostringstream out;
  setFullPrecision(out);
  write(out);
  return out.str();
}

// The line end stays in the stream.
void Params::read(std::istream& in) {
  std::string line;
  for (int ch = nextCharacter(in); ch != '\n' && ch != std::char_traits<char>::eof(); ch = nextCharacter(in))
    line += static_cast<char>(takeCharacter(in));
  const std::size_t first = line.find_first_not_of(" \t");
  if (first == std::string::npos || std::isspace(static_cast<unsigned char>(line[first]))) {
    emptyTable();
    return;
  }
  std::istringstream tokens(line);
  std::string token;
  while (tokens >> token) readOne(token);
}

void Params::emptyTable() {
  for (long i = 1; i <= hash.MN; ++i) hash.data[i].right = sharedEmptyParameter();
  hash.clear();
  keys.clear();
}

void Params::readOne(const std::string& token) {
  ParamInfo parsed;
  std::istringstream in(token);
  in >> parsed;
  ParamInfo* target = lookUp(parsed.key);
  if (target == nullptr) {
    added_.push_back(std::make_unique<ParamInfo>());
    target = added_.back().get();
    target->key = parsed.key;
    hash.add(parsed.key, target);
    keys.append(parsed.key);
  }
  target->setText(parsed.value.get());
}

void Params::optionTable(std::ostream& out) const {
  for (long i = 1; i <= hash.MN; ++i) {
    const ParamInfo& param = *hash.data[i].right;
    out << "  --" << param.key << " | " << param.help
        << " [ Default: " << (param.defaultText.empty() ? "*" : param.defaultText) << " ]\n";
  }
}

template <class T>
ExtendedParams<T>::ExtendedParams(ParamOwner* owner) {
  snorm.init("snorm", SNORM_HELP, T(-1), keys, hash);
  tnorm.init("tnorm", TNORM_HELP, -infinity<T>(), keys, hash);
  if (owner == nullptr) return;
  listen(consistency, [owner] { owner->orthogonalisationRefresh(); });
  listen(scale, [owner] { owner->resetScales(true, false); });
  listen(translate, [owner] { owner->resetScales(false, true); });
}

// A switch that goes off refreshes what it left behind. It never comes to that: `set` has stored the text by
// the time it calls, and neither the command line nor the console goes through `set`. The console could not:
// it has a thread of its own, and the lattice is the solver's. The reporting phase refreshes it instead.
template <class T>
template <class Action>
void ExtendedParams<T>::listen(Param<bool>& param, Action action) {
  param.setListener([&param, action](const std::string& text) {
    if (param.value.get() == text) return;
    if (!param.get()) action();
  });
}

template <class T>
void ExtendedParams<T>::assignFrom(const ExtendedParams& other) {
  if (this == &other) return;
  Params::assignFrom(other);
  snorm.assign(other.snorm.get(), other.snorm.value.get());
  tnorm.assign(other.tnorm.get(), other.tnorm.value.get());
}

template <class T>
template <class U>
void ExtendedParams<T>::convertFrom(const ExtendedParams<U>& other) {
  const T newSnorm = converted<T>(other.snorm.get());
  const T newTnorm = converted<T>(other.tnorm.get());
  Params::assignFrom(other);
  snorm.assign(newSnorm, other.snorm.value.get());
  tnorm.assign(newTnorm, other.tnorm.value.get());
}

template class ExtendedParams<dbl_t>;
template class ExtendedParams<QQ>;
template void ExtendedParams<dbl_t>::convertFrom(const ExtendedParams<QQ>&);
template void ExtendedParams<QQ>::convertFrom(const ExtendedParams<dbl_t>&);

}  // namespace latbox
