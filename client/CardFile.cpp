#include "client/CardFile.h"

#include <filesystem>
#include <utility>

#include "client/InputText.h"

namespace quenlet {

std::string CardFile::nameOf(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

Result<VCards> CardFile::read(const std::string& path) {
  // The parser rejects a text of more than a card may have.
  const Result<std::string> text = readInput(path, maximumVCardSizeInBytes);
  if (!text.ok()) return Result<VCards>::failure(text.error());
  VCards cards = parseVCards(text.value());
  for (ErrorPtr& failure : cards.failures) {
    failure =
        makeError(failure->domain(), failure->code(), path + ": " + failure->debugDescription());
  }
  return Result<VCards>::success(std::move(cards));
}

}  // namespace quenlet
