#include "platform/ipc/WireReader.h"

#include <bit>
#include <string>
#include <utility>

#include "platform/ipc/WireToken.h"

namespace quenlet {

WireType WireReader::nextType() const {
  return rest.empty() ? WireType::null : static_cast<WireType>(rest.front());
}

std::optional<WireToken> WireReader::take(WireType type) {
  if (rest.empty() || nextType() != type) {
    skip();
    return std::nullopt;
  }
  return WireToken::take(rest);
}

std::optional<bool> WireReader::boolean() {
  const std::optional<WireToken> token = take(WireType::boolean);
  return token ? std::optional(token->number != 0) : std::nullopt;
}

std::optional<std::int64_t> WireReader::integer() {
  const std::optional<WireToken> token = take(WireType::integer);
  return token ? std::optional(static_cast<std::int64_t>(token->number)) : std::nullopt;
}

std::optional<double> WireReader::real() {
  const std::optional<WireToken> token = take(WireType::real);
  return token ? std::optional(std::bit_cast<double>(token->number)) : std::nullopt;
}

std::optional<Date> WireReader::date() {
  const std::optional<WireToken> token = take(WireType::date);
  return token ? std::optional(Date(std::bit_cast<double>(token->number))) : std::nullopt;
}

std::optional<std::string_view> WireReader::string() {
  const std::optional<WireToken> token = take(WireType::string);
  return token ? std::optional(token->text) : std::nullopt;
}

std::optional<std::string_view> WireReader::data() {
  const std::optional<WireToken> token = take(WireType::data);
  return token ? std::optional(token->text) : std::nullopt;
}

std::optional<std::size_t> WireReader::list() {
  const std::optional<WireToken> token = take(WireType::list);
  return token ? std::optional<std::size_t>(token->number) : std::nullopt;
}

std::optional<std::size_t> WireReader::dictionary() {
  const std::optional<WireToken> token = take(WireType::dictionary);
  return token ? std::optional<std::size_t>(token->number / 2) : std::nullopt;
}

std::optional<std::string_view> WireReader::object() {
  const std::optional<WireToken> token = take(WireType::object);
  return token ? std::optional(token->text) : std::nullopt;
}

namespace {

// Builds one tree. A value that a property list cannot hold, or one too many, makes the result
// nothing; the rest is then skipped without being built.
class TreeBuilder final {
 public:
  TreeBuilder(WireReader& source, std::size_t maximumValues)
      : reader(source), left(maximumValues) {}

  // Recursive; the depth is bounded by what validation passes.
  std::optional<PropertyList> build() {
    if (left == 0) return refuse();
    --left;
    switch (reader.nextType()) {
      case WireType::boolean:
        return reader.boolean();
      case WireType::integer:
        return reader.integer();
      case WireType::real:
        return reader.real();
      case WireType::date:
        return reader.date();
      case WireType::string:
        return std::string(reader.string().value_or(""));
      case WireType::data:
        return Data{std::string(reader.data().value_or(""))};
      case WireType::list:
        return buildArray();
      case WireType::dictionary:
        return buildDictionary();
      case WireType::null:
      case WireType::object:
        break;
    }
    return refuse();
  }

 private:
  // From now on values are skipped, not built.
  std::nullopt_t refuse() {
    left = 0;
    reader.skip();
    return std::nullopt;
  }

  std::optional<PropertyList> buildArray() {
    PropertyListArray elements;
    bool whole = true;
    for (std::size_t count = reader.list().value_or(0); count > 0; --count) {
      std::optional<PropertyList> element = build();
      whole = whole && element;
      if (whole) elements.push_back(*std::move(element));
    }
    return whole ? std::optional<PropertyList>(std::move(elements)) : std::nullopt;
  }

  std::optional<PropertyList> buildDictionary() {
    PropertyListDictionary entries;
    bool whole = true;
    for (std::size_t count = reader.dictionary().value_or(0); count > 0; --count) {
      const std::optional<std::string_view> key = reader.string();
      std::optional<PropertyList> entry = build();
      whole = whole && key && entry;
      if (whole) entries.insert_or_assign(std::string(*key), *std::move(entry));
    }
    return whole ? std::optional<PropertyList>(std::move(entries)) : std::nullopt;
  }

  WireReader& reader;
  std::size_t left;
};

}  // namespace

std::optional<PropertyList> WireReader::propertyList(std::size_t maximumValues) {
  return TreeBuilder(*this, maximumValues).build();
}

std::string_view WireReader::skip() {
  const std::string_view before = rest;
  // Counts instead of recursing: a head adds the values that follow it.
  for (std::uint64_t pending = rest.empty() ? 0 : 1; pending > 0; --pending) {
    const std::optional<WireToken> token = WireToken::take(rest);
    if (!token) {
      rest = {};
      break;
    }
    if (token->isHead()) pending += token->number;
  }
  return before.substr(0, before.size() - rest.size());
}

}  // namespace quenlet
