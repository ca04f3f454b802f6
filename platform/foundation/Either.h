#pragma once

#include <cstddef>
#include <utility>
#include <variant>

#include "platform/foundation/Error.h"

namespace quenlet {

// One of two alternatives, left or right. A value type; the sides may have the same type.
template <typename Left, typename Right>
class Either final {
 public:
  [[nodiscard]] static Either left(Left value) {
    return Either(std::in_place_index<0>, std::move(value));
  }
  [[nodiscard]] static Either right(Right value) {
    return Either(std::in_place_index<1>, std::move(value));
  }

  [[nodiscard]] bool isLeft() const { return sides.index() == 0; }
  // Each accessor requires that its side is the one held.
  [[nodiscard]] const Left& left() const { return std::get<0>(sides); }
  [[nodiscard]] const Right& right() const { return std::get<1>(sides); }
  [[nodiscard]] Left takeLeft() && { return std::get<0>(std::move(sides)); }

  friend bool operator==(const Either&, const Either&) = default;

 private:
  template <std::size_t Index, typename Value>
  explicit Either(std::in_place_index_t<Index> index, Value&& value)
      : sides(index, std::forward<Value>(value)) {}

  std::variant<Left, Right> sides;
};

// The outcome of an operation that can fail: left is the result, right the error (never null).
template <typename T>
using Result = Either<T, ErrorPtr>;

}  // namespace quenlet
