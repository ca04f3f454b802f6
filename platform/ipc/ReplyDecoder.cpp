#include "platform/ipc/ReplyDecoder.h"

#include <utility>

#include "platform/ipc/ErrorWire.h"

namespace quenlet {

ErrorPtr ReplyDecoder::failure(std::string_view body) {
  static const std::vector<WireParameter> parameters{
      {WireType::object, false, {ErrorWire::className}}};
  if (ErrorPtr error = validateWireValues(body, parameters)) return error;
  WireReader values(body);
  return ErrorWire::decode(values);
}

Result<std::string> ReplyDecoder::reply(const FrameReader::Frame& last, std::string parts,
                                        const std::vector<WireParameter>& parameters) {
  using Reply = Result<std::string>;
  if (last.kind == FrameKind::failure) return Reply::failure(failure(last.body));
  std::string values = std::move(parts.append(last.body));
  if (ErrorPtr error = validateWireValues(values, parameters)) {
    return Reply::failure(std::move(error));
  }
  return Reply::success(std::move(values));
}

}  // namespace quenlet
