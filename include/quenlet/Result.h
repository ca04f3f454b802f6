#pragma once

#include <cstddef>
#include <utility>
#include <variant>

#include "quenlet/Error.h"

namespace quenlet {

// The outcome of an operation that can fail: a value or an error. A value type.
template <typename T>
class [[nodiscard]] Result final {
 public:
  static Result success(T value) { return Result(std::in_place_index<0>, std::move(value)); }
  // `error` is not null.
  static Result failure(ErrorPtr error) { return Result(std::in_place_index<1>, std::move(error)); }

  [[nodiscard]] bool ok() const { return outcome.index() == 0; }
  // Each accessor requires that its side is the one held.
  [[nodiscard]] const T& value() const { return std::get<0>(outcome); }
  [[nodiscard]] T takeValue() && { return std::get<0>(std::move(outcome)); }
  [[nodiscard]] const ErrorPtr& error() const { return std::get<1>(outcome); }

  friend bool operator==(const Result&, const Result&) = default;

 private:
  template <std::size_t Index, typename Side>
  explicit Result(std::in_place_index_t<Index> index, Side&& side)
      : outcome(index, std::forward<Side>(side)) {}

  std::variant<T, ErrorPtr> outcome;
};

}  // namespace quenlet
