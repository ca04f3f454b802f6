#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace quenlet {

// What a file is to hold, handed out while it is written: large content need not lie in memory a
// second time, and content that is replaced before it is written costs nothing. Immutable.
class FileContent {
 public:
  // Takes the next bytes; false when it wants no more.
  using Sink = std::function<bool(std::string_view)>;

  virtual ~FileContent() = default;
  // Hands out all bytes in order, in pieces of any size, until `sink` returns false. Any thread.
  virtual void handTo(const Sink& sink) const = 0;
};

using FileContentPtr = std::shared_ptr<const FileContent>;

// A text in one piece.
class TextContent final : public FileContent {
 public:
  explicit TextContent(std::string wholeText) : text(std::move(wholeText)) {}
  void handTo(const Sink& sink) const override { sink(text); }

 private:
  const std::string text;
};

}  // namespace quenlet
