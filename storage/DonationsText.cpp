#include "storage/DonationsText.h"

#include <string>
#include <utility>

#include "model/DonationError.h"
#include "platform/files/DonationFiles.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/foundation/PropertyListWriter.h"

namespace quenlet {
namespace {

// The text before and after the records.
struct Frame final {
  Frame() {
    constexpr std::string_view listTag = "<array>\n";
    PropertyListWriter writer;
    writer.beginDocument();
    writer.beginDictionary();
    writer.key(DonationFiles::donationsKey);
    writer.beginArray();
    writer.endArray();
    writer.endDictionary();
    writer.endDocument();
    head = std::move(writer).takeText().takeValue();
    const std::size_t sizeOfHead = head.find(listTag) + listTag.size();
    tail = head.substr(sizeOfHead);
    head.resize(sizeOfHead);
  }
  // The most bytes of record text that fit between them.
  [[nodiscard]] std::size_t capacityInBytes() const {
    return PropertyListSerializer::maximumSizeInBytes - head.size() - tail.size();
  }

  std::string head;
  std::string tail;
};

// The size of all texts; nothing when a record has no text.
std::optional<std::size_t> sizeOfTexts(const DonationValues& values) {
  std::size_t size = 0;
  for (std::size_t place = 0; place < values.size(); ++place) {
    prefetchDonation(values, place);
    const std::optional<std::string_view> text = values[place]->propertyListText();
    if (!text) return std::nullopt;
    size += text->size();
  }
  return size;
}

// Makes few large pieces of many small ones. Texts that lie together in memory, as those do that
// were read from one file, are copied together. All pieces but the last have one size, a multiple
// of a page's: a file system has less to do for writes that end with a page.
class Pieces final {
 public:
  explicit Pieces(const FileContent::Sink& whereTo) : sink(whereTo) { gathered.reserve(pieceSize); }

  void add(std::string_view text) {
    if (run.data() + run.size() == text.data()) {
      run = {run.data(), run.size() + text.size()};
    } else {
      endRun();
      run = text;
    }
  }
  void finish() {
    endRun();
    handOnGathered();
  }
  [[nodiscard]] bool isRefused() const { return refused; }

 private:
  void endRun() {
    while (!run.empty()) {
      const std::string_view part = run.substr(0, pieceSize - gathered.size());
      gathered.append(part);
      run.remove_prefix(part.size());
      if (gathered.size() == pieceSize) handOnGathered();
    }
  }
  void handOnGathered() {
    if (!refused && !gathered.empty()) refused = !sink(gathered);
    gathered.clear();
  }

  // Fits into a processor's cache.
  static constexpr std::size_t pieceSize = std::size_t{256} << 10;
  const FileContent::Sink& sink;
  std::string gathered;
  std::string_view run;
  bool refused = false;
};

class RecordTexts final : public FileContent {
 public:
  // Each of the values has a text.
  explicit RecordTexts(std::shared_ptr<const DonationValues> donations)
      : values(std::move(donations)) {}

  void handTo(const Sink& sink) const override {
    const Frame frame;
    Pieces pieces(sink);
    pieces.add(frame.head);
    for (std::size_t place = 0; place < values->size() && !pieces.isRefused(); ++place) {
      prefetchDonation(*values, place);
      pieces.add(*(*values)[place]->propertyListText());
    }
    pieces.add(frame.tail);
    pieces.finish();
  }

 private:
  const std::shared_ptr<const DonationValues> values;
};

}  // namespace

std::size_t DonationsText::capacityInBytes() { return Frame().capacityInBytes(); }

Result<FileContentPtr> DonationsText::of(std::shared_ptr<const DonationValues> values) {
  const auto refused = [](const char* sentence) {
    return Result<FileContentPtr>::failure(
        makeDonationError(DonationErrorCode::notSerializable, sentence));
  };
  const std::optional<std::size_t> size = sizeOfTexts(*values);
  if (!size) return refused("a value cannot be serialised");
  if (*size > capacityInBytes()) {
    return refused("the donations together are larger than their file may be");
  }
  return Result<FileContentPtr>::success(std::make_shared<const RecordTexts>(std::move(values)));
}

std::optional<DonationValues> DonationsText::read(std::string_view text) {
  const Frame frame;
  if (text.size() > PropertyListSerializer::maximumSizeInBytes || !text.starts_with(frame.head)) {
    return std::nullopt;
  }
  text.remove_prefix(frame.head.size());
  DonationValues values;
  while (text != frame.tail) {
    if (!DonationValue::takeFromPropertyListTexts(text, values)) return std::nullopt;
  }
  return values;
}

}  // namespace quenlet
