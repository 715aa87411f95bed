// Functions over the rows of a group.
#include <cmath>

#include "engine/functions/Table.h"

namespace scorvane::engine {
namespace {

class First : public Accumulator {
 public:
  void Add(const Args& args) override {
    if (!seen_) value_ = args.At(0);
    seen_ = true;
  }
  Value Result() const override { return value_; }

 private:
  Value value_;
  bool seen_ = false;
};

class Last : public Accumulator {
 public:
  void Add(const Args& args) override { value_ = args.At(0); }
  Value Result() const override { return value_; }

 private:
  Value value_;
};

// The running mean and sum of squared distances: no large sums whose digits cancel.
template <bool kSample, bool kRoot>
class Spread : public Accumulator {
 public:
  void Add(const Args& args) override {
    if (args.IsNull(0)) return;
    const double number = args.Number(0);
    ++count_;
    const double distance = number - mean_;
    mean_ += distance / count_;
    squares_ += distance * (number - mean_);
  }
  Value Result() const override {
    const double divisor = count_ - (kSample ? 1 : 0);
    if (divisor < 1) return {};
    return Value(kRoot ? std::sqrt(squares_ / divisor) : squares_ / divisor);
  }

 private:
  double count_ = 0;
  double mean_ = 0;
  double squares_ = 0;
};

constexpr FunctionInfo NativeAggregate(const char* name, Type result) {
  FunctionInfo info = NativeFunction(name, 1, 1, result);
  info.aggregate = true;
  return info;
}

template <typename Made>
constexpr FunctionInfo Aggregate(const char* name, Type result) {
  FunctionInfo info = Function(name, 1, 1, result, nullptr);
  info.aggregate = true;
  info.accumulator = [] { return std::unique_ptr<Accumulator>(std::make_unique<Made>()); };
  return info;
}

}  // namespace

std::span<const FunctionInfo> AggregateFunctions() {
  static constexpr FunctionInfo kTable[] = {NativeAggregate("Count", Type::Long),
                                            NativeAggregate("Sum", Type::Double),
                                            NativeAggregate("Avg", Type::Double),
                                            NativeAggregate("Min", Type::Null),
                                            NativeAggregate("Max", Type::Null),
                                            Aggregate<First>("First", Type::Null),
                                            Aggregate<Last>("Last", Type::Null),
                                            Aggregate<Spread<true, true>>("StDev", Type::Double),
                                            Aggregate<Spread<false, true>>("StDevP", Type::Double),
                                            Aggregate<Spread<true, false>>("Var", Type::Double),
                                            Aggregate<Spread<false, false>>("VarP", Type::Double)};
  return kTable;
}

}  // namespace scorvane::engine
