// The parameters of a lattice run. The table in option_table.cpp registers them, and so drives the usage, the
// text form and the look-up of keys.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "params/param.h"

namespace latbox {

class Params : public Serializable {
 public:
  Array<std::string> keys;  // registered keys, in the order of the usage
  Hash<ParamInfo*> hash;    // key to parameter, in the same order; points into this object

  Param<bool> help;
  // A run under a graphical front end. Never registered: no option sets it, so it stays false.
  Param<bool> gui;
  Param<bool> consistency;
  Param<long> beta;
  Param<long> eprune;
  Param<long> btime;  // seconds
  Param<bool> pair;
  Param<bool> sieve;
  Param<bool> scale;
  Param<bool> translate;
  Param<bool> sample;
  Param<bool> reinsert;
  Param<bool> variate;
  Param<bool> deep;
  Param<bool> eenum;
  Param<long> pairLimit;
  Param<long> collectLimit;
  Param<long> sampleLimit;
  Param<long> sol;
  Param<long> iters;
  Param<long> verb;
  MutexParam<long> rtime;  // seconds
  Param<float> bench;

  Params();  // registers all but `gui`, in table order
  Params(const Params& other) : Params() { assignFrom(other); }
  Params& operator=(const Params& other) {
    assignFrom(other);
    return *this;
  }

  // Typed values and texts of all members, parameter by parameter: nothing is parsed, the tables stay as they
  // are (another thread may be searching them), the listeners stay too.
  void assignFrom(const Params& other);

  // The parameter of this key. Fails with "No such parameter: " and the key.
  ParamInfo& find(const std::string& key);
  // The same, null for an unknown key.
  ParamInfo* lookUp(const std::string& key) const { return hash.find(key); }

  // "--key=value" of each parameter that has a key and a value, in table order, joined by blanks.
  void write(std::ostream& out) const override;
  // The rest of a line of "--key=value" tokens. An unknown key makes a new parameter. A line without any
  // empties the table.
  void read(std::istream& in) override;
  // What write gives at 17 digits.
  std::string text() const;

  // For each key: two blanks, "--", the key, " | ", the help, " [ Default: ", the default or "*", " ]", line
  // end.
  void optionTable(std::ostream& out) const;

 private:
  void readOne(const std::string& token);
  void emptyTable();

  std::vector<std::unique_ptr<ParamInfo>> added_;  // by read, for keys that no member has
};

// What the listeners of ExtendedParams would ask of the lattice that owns the parameters.
class ParamOwner {
 public:
  virtual ~ParamOwner() = default;
  virtual void orthogonalisationRefresh() = 0;
  virtual void resetScales(bool resetFactors, bool resetTranslation) = 0;
};

// Adds the two parameters whose values are of the number type. Instantiated for dbl_t and QQ.
template <class T>
class ExtendedParams : public Params {
 public:
  Param<T> snorm;
  Param<T> tnorm;

  // `owner` outlives the object; null for parameters without a lattice.
  explicit ExtendedParams(ParamOwner* owner = nullptr);
  // A copy belongs to no lattice; an assignment leaves the target with its own.
  ExtendedParams(const ExtendedParams& other) : ExtendedParams(nullptr) { assignFrom(other); }
  ExtendedParams& operator=(const ExtendedParams& other) {
    assignFrom(other);
    return *this;
  }

  void assignFrom(const ExtendedParams& other);
  // From the other number type: by typed value, texts copied. To dbl_t it throws PrecisionException
  // "Precision lost during conversion", and changes nothing, if a value would not come back the same.
  template <class U>
  void convertFrom(const ExtendedParams<U>& other);

 private:
  template <class Action>
  void listen(Param<bool>& param, Action action);
};

}  // namespace latbox
