#include "client/CardFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {
namespace {

// Stops after somewhat more than a card may have; the parser then rejects the text as too large.
Result<std::string> readAll(int descriptor, const std::string& path) {
  std::string text;
  std::array<char, 65536> block;
  while (text.size() <= maximumVCardSizeInBytes) {
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Result<std::string>::failure(makePosixError(errno, "read " + path));
    if (count == 0) break;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return Result<std::string>::success(std::move(text));
}

Result<std::string> readText(const std::string& path) {
  if (path == "-") return readAll(STDIN_FILENO, path);
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) return Result<std::string>::failure(makePosixError(errno, "open " + path));
  return readAll(file.get(), path);
}

}  // namespace

std::string CardFile::nameOf(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

Result<VCards> CardFile::read(const std::string& path) {
  const Result<std::string> text = readText(path);
  if (!text.ok()) return Result<VCards>::failure(text.error());
  VCards cards = parseVCards(text.value());
  for (ErrorPtr& failure : cards.failures) {
    failure =
        makeError(failure->domain(), failure->code(), path + ": " + failure->debugDescription());
  }
  if (cards.cards.empty()) return Result<VCards>::failure(cards.failures.front());
  return Result<VCards>::success(std::move(cards));
}

}  // namespace quenlet
