#include <cerrno>
#include <string_view>
#include <utility>

#include "bus/BusArguments.h"
#include "bus/BusError.h"

namespace quenlet {
namespace {

constexpr int beyondLimits = -E2BIG;

// Reads one message. Results are the library's: negative errno, 0 at the end of a container.
class BusReader final {
 public:
  BusReader(sd_bus_message* read, const BusLimits& given) : message(read), limits(given) {}

  // Appends values up to the end of the container that was entered.
  int readAll(BusValues& values) {
    while (true) {
      const int result = readNext(values);
      if (result <= 0) return result;
    }
  }

 private:
  int readNext(BusValues& values);
  int readBasic(char type, BusValues& values);
  template <typename Wire, typename Value>
  int readNumber(char type, BusValues& values);
  int readText(char type, BusValues& values);
  int readBytes(BusValues& values);
  int readArray(const std::string& contents, BusValues& values);
  int readDictionary(const std::string& entry, BusValues& values);
  // Enters, reads all and leaves.
  int readContainer(char type, const std::string& contents, BusValues& values);
  [[nodiscard]] bool spendValue() {
    if (spentValues == limits.values) return false;
    ++spentValues;
    return true;
  }
  [[nodiscard]] bool spendBytes(std::size_t bytes) {
    if (bytes > limits.bytes - spentBytes) return false;
    spentBytes += bytes;
    return true;
  }

  sd_bus_message* const message;
  const BusLimits limits;
  std::size_t spentValues = 0;
  std::size_t spentBytes = 0;
  std::size_t depth = 0;
};

int BusReader::readNext(BusValues& values) {
  char type = 0;
  const char* contents = nullptr;
  const int more = sd_bus_message_peek_type(message, &type, &contents);
  if (more <= 0) return more;
  if (type == SD_BUS_TYPE_ARRAY) {
    const std::string element = contents;
    return element == "y" ? readBytes(values) : readArray(element, values);
  }
  if (type == SD_BUS_TYPE_VARIANT) return readContainer(type, contents, values);
  if (type == SD_BUS_TYPE_STRUCT || type == SD_BUS_TYPE_DICT_ENTRY) {
    BusStruct record;
    const int result = readContainer(type, contents, record.members);
    if (result > 0) values.emplace_back(std::move(record));
    return result;
  }
  return spendValue() ? readBasic(type, values) : beyondLimits;
}

int BusReader::readBasic(char type, BusValues& values) {
  switch (type) {
    case SD_BUS_TYPE_BOOLEAN:
      return readNumber<int, bool>(type, values);
    case SD_BUS_TYPE_BYTE:
      return readNumber<std::uint8_t, std::uint32_t>(type, values);
    case SD_BUS_TYPE_INT16:
      return readNumber<std::int16_t, std::int32_t>(type, values);
    case SD_BUS_TYPE_UINT16:
      return readNumber<std::uint16_t, std::uint32_t>(type, values);
    case SD_BUS_TYPE_INT32:
      return readNumber<std::int32_t, std::int32_t>(type, values);
    case SD_BUS_TYPE_UINT32:
      return readNumber<std::uint32_t, std::uint32_t>(type, values);
    case SD_BUS_TYPE_INT64:
      return readNumber<std::int64_t, std::int64_t>(type, values);
    case SD_BUS_TYPE_UINT64:
      return readNumber<std::uint64_t, std::uint64_t>(type, values);
    case SD_BUS_TYPE_DOUBLE:
      return readNumber<double, double>(type, values);
    case SD_BUS_TYPE_UNIX_FD:
      return -EBADMSG;
    default:
      return readText(type, values);
  }
}

template <typename Wire, typename Value>
int BusReader::readNumber(char type, BusValues& values) {
  Wire number{};
  const int result = sd_bus_message_read_basic(message, type, &number);
  if (result > 0) values.emplace_back(static_cast<Value>(number));
  return result;
}

int BusReader::readText(char type, BusValues& values) {
  const char* text = nullptr;
  const int result = sd_bus_message_read_basic(message, type, &text);
  if (result <= 0) return result;
  const std::string_view read = text;
  if (!spendBytes(read.size())) return beyondLimits;
  if (type == SD_BUS_TYPE_OBJECT_PATH) {
    values.emplace_back(BusObjectPath{std::string(read)});
  } else {
    values.emplace_back(std::string(read));
  }
  return result;
}

int BusReader::readBytes(BusValues& values) {
  const void* bytes = nullptr;
  std::size_t size = 0;
  const int result = sd_bus_message_read_array(message, SD_BUS_TYPE_BYTE, &bytes, &size);
  if (result < 0) return result;
  if (!spendValue() || !spendBytes(size)) return beyondLimits;
  values.emplace_back(BusBytes{std::string(static_cast<const char*>(bytes), size)});
  return 1;
}

int BusReader::readArray(const std::string& contents, BusValues& values) {
  if (contents.starts_with("{s") || contents.starts_with("{o")) {
    return readDictionary(contents, values);
  }
  BusList list{contents, {}};
  const int result = readContainer(SD_BUS_TYPE_ARRAY, contents, list.elements);
  if (result > 0) values.emplace_back(std::move(list));
  return result;
}

int BusReader::readDictionary(const std::string& entry, BusValues& values) {
  BusValues entries;
  const int result = readContainer(SD_BUS_TYPE_ARRAY, entry, entries);
  if (result <= 0) return result;
  BusDictionary dictionary;
  for (BusValue& read : entries) {
    BusStruct pair = std::get<BusStruct>(read.value());
    const BusValue& key = pair.members.front();
    const std::string name = key.text() == nullptr ? *key.objectPath() : *key.text();
    dictionary.insert_or_assign(name, std::move(pair.members.back()));
  }
  values.emplace_back(std::move(dictionary));
  return result;
}

int BusReader::readContainer(char type, const std::string& contents, BusValues& values) {
  if (depth == limits.depth || !spendValue()) return beyondLimits;
  ++depth;
  int result = sd_bus_message_enter_container(message, type, contents.c_str());
  if (result > 0) result = readAll(values);
  if (result >= 0) result = sd_bus_message_exit_container(message);
  --depth;
  return result < 0 ? result : 1;
}

}  // namespace

Result<BusValues> readArguments(sd_bus_message* message, const BusLimits& limits) {
  BusValues values;
  int result = sd_bus_message_rewind(message, 1);
  if (result >= 0) result = BusReader(message, limits).readAll(values);
  if (result == beyondLimits) {
    return Result<BusValues>::failure(makeBusError(BusLimitsExceeded, "the message is too large"));
  }
  if (result < 0) return Result<BusValues>::failure(makePosixError(-result, "read a message"));
  return Result<BusValues>::success(std::move(values));
}

}  // namespace quenlet
