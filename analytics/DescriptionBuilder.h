#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace quenlet {

// Puts an object's description together: "<Name first=…, second=…>". One thread at a time.
class DescriptionBuilder final {
 public:
  explicit DescriptionBuilder(std::string_view typeName) : text("<" + std::string(typeName)) {}

  DescriptionBuilder& append(std::string_view name, std::string_view value) {
    text.append(isFirst ? " " : ", ").append(name).append("=").append(value);
    isFirst = false;
    return *this;
  }
  [[nodiscard]] std::string build() const { return text + ">"; }

 private:
  std::string text;
  bool isFirst = true;
};

}  // namespace quenlet
