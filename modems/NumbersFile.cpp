#include "modems/NumbersFile.h"

#include <utility>

#include "platform/foundation/StandardStreams.h"

namespace quenlet {

Result<SIMCardItems> NumbersFile::writtenItems() {
  Result<SIMCardItems> items = file.read();
  if (items.ok() || items.error()->domain() == PosixErrorDomain) return items;
  if (file.keepDamaged()) return Result<SIMCardItems>::success({});
  return items;
}

ErrorPtr NumbersFile::takeModems(const std::string& daemon, const std::vector<Modem>& modems) {
  cards.setModems(daemon, modems);
  const Result<SIMCardItems> written = writtenItems();
  if (!written.ok()) return written.error();
  const std::optional<SIMCardItems> list = cards.listInPlaceOf(written.value());
  if (!list) return nullptr;
  if (ErrorPtr error = file.write(*list)) return error;
  StandardStreams::writeError("quenlet-sim-numbers: the SIM cards have " +
                              std::to_string(list->size()) +
                              (list->size() == 1 ? " number now" : " numbers now"));
  return nullptr;
}

}  // namespace quenlet
