#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ipc/WireReader.h"
#include "quenlet/Error.h"
#include "quenlet/ErrorCodes.h"

namespace quenlet {

[[nodiscard]] ErrorPtr makeServiceError(ServiceErrorCode code, std::string debugDescription);

enum class OfReply { no, yes };

// One argument or reply value of an operation: its type, whether it may be null, and the classes of
// object that may stand anywhere inside it.
struct WireParameter final {
  WireType type;
  bool nullable = false;
  std::set<std::string, std::less<>> classes = {};
};

// The operations of a service by name, with the types and classes allowed in each argument. A value
// type, configured before the connection is resumed, then constant. Copies share their content
// until one of them is changed.
class ServiceInterface final {
 public:
  ServiceInterface& addOperation(std::string selector, std::vector<WireParameter> arguments,
                                 std::vector<WireParameter> reply);

  // Marks an operation whose replies can be long; a connection may have only a few pending.
  ServiceInterface& expectLongReplies(std::string_view selector);
  [[nodiscard]] bool expectsLongReplies(std::string_view selector) const;

  // The classes allowed in one argument. The selector and index must exist.
  [[nodiscard]] const std::set<std::string, std::less<>>& classesForSelector(
      std::string_view selector, std::size_t argumentIndex, OfReply ofReply) const;
  void setClasses(std::set<std::string, std::less<>> classes, std::string_view forSelector,
                  std::size_t argumentIndex, OfReply ofReply);

  // The parameters of an operation; null when it does not exist.
  [[nodiscard]] const std::vector<WireParameter>* parameters(std::string_view selector,
                                                             OfReply ofReply) const;

 private:
  struct Operation final {
    std::vector<WireParameter> arguments;
    std::vector<WireParameter> reply;
    bool hasLongReplies = false;
  };
  using Operations = std::map<std::string, Operation, std::less<>>;

  // For changes: copies the operations if they are shared.
  [[nodiscard]] Operations& ownOperations();

  std::shared_ptr<Operations> operations = std::make_shared<Operations>();
};

// How deep lists, dictionaries and objects may be nested.
inline constexpr int maximumWireNesting = 64;

// Checks that `bytes` are exactly one value for each parameter: well-formed, valid UTF-8, nested at
// most `maximumWireNesting` deep, of the right types, with objects of the allowed classes only.
// Dates must be finite and dictionary keys texts. Returns null, or a malformedMessage or
// invalidArguments error, whose text quotes nothing of the message. Does not recurse, and allocates
// only the error.
[[nodiscard]] ErrorPtr validateWireValues(std::string_view bytes,
                                          const std::vector<WireParameter>& parameters);

}  // namespace quenlet
