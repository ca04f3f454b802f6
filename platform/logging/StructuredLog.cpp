#include "platform/logging/StructuredLog.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

#include "platform/foundation/JSONWriter.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

const char* nameOf(DonationKind kind) {
  switch (kind) {
    case DonationKind::name:
      return "name";
    case DonationKind::emailAddress:
      return "emailAddress";
    case DonationKind::phoneNumber:
      return "phoneNumber";
    case DonationKind::postalAddress:
      return "postalAddress";
    case DonationKind::imageData:
      break;
  }
  return "imageData";
}

enum class Form { inFull, inBrief };

struct ArgumentWriter final {
  static constexpr std::size_t briefTextSizeInBytes = 256;
  JSONWriter& json;
  const Form form;

  void operator()(bool flag) const { json.value(flag); }
  void operator()(std::int64_t number) const { json.value(number); }
  void operator()(std::string_view text) const {
    const bool fits = form == Form::inFull || text.size() <= briefTextSizeInBytes;
    fits ? json.value(text) : json.value(onOneLine(text, briefTextSizeInBytes) + "…");
  }
  void operator()(Date date) const { json.value(date.iso8601()); }
  void operator()(const ErrorPtr& error) const {
    if (error) {
      (*this)(error->description());
    } else {
      json.null();
    }
  }
  void operator()(const DonationValuePtr& value) const {
    const DonationOrigin origin = value->decoded().origin;
    json.beginObject();
    json.key("kind").value(nameOf(value->kind()));
    json.key("bundleIdentifier");
    (*this)(origin.bundleIdentifier);
    json.key("donationIdentifier");
    (*this)(origin.donationIdentifier);
    json.endObject();
  }
  void operator()(std::reference_wrapper<const DonationValues> values) const {
    if (form == Form::inBrief) return writeCounts(values);
    json.beginArray();
    for (const DonationValuePtr& value : values.get()) (*this)(value);
    json.endArray();
  }
  void writeCounts(const DonationValues& values) const {
    std::map<DonationKind, std::int64_t> counts;
    for (const DonationValuePtr& value : values) ++counts[value->kind()];
    json.beginObject();
    for (const auto& [kind, count] : counts) json.key(nameOf(kind)).value(count);
    json.endObject();
  }
};

// False for an argument that cannot fit into a line, so that no megabytes are written for nothing.
struct MayFit final {
  bool operator()(std::string_view text) const {
    return text.size() < StructuredLog::maximumLineSizeInBytes;
  }
  bool operator()(std::reference_wrapper<const DonationValues> values) const {
    return values.get().size() <= StructuredLog::mostListedValues;
  }
  template <typename Other>
  bool operator()(const Other&) const {
    return true;
  }
};

// What a line begins with. The lines of a second share it: making the time's text would cost as
// much as the rest of a short line.
const std::string& beginningOf(Date now) {
  struct Known final {
    double second = std::numeric_limits<double>::quiet_NaN();
    std::string beginning = {};
  };
  thread_local Known known;
  const double second = std::floor(now.secondsSince1970());
  if (second != known.second) known = {second, R"({"time":")" + now.iso8601() + R"(","event":")"};
  return known.beginning;
}

// Events are named in this program, with letters and colons, which need no escape.
std::string lineOf(const std::string& beginning, std::string_view event,
                   std::initializer_list<LogArgument> arguments, Form form) {
  constexpr std::size_t usualSizeInBytes = 160;
  std::string line;
  line.reserve(usualSizeInBytes);
  line.append(beginning).append(event) += '"';
  if (arguments.size() > 0) {
    line += R"(,"arguments":)";
    JSONWriter json(std::move(line));
    json.beginArray();
    for (const LogArgument& argument : arguments) std::visit(ArgumentWriter{json, form}, argument);
    json.endArray();
    line = std::move(json).take();
  }
  line += '}';
  return line;
}

}  // namespace

void StructuredLog::record(std::string_view event,
                           std::initializer_list<LogArgument> arguments) const {
  // Whether a line fits shows only once it is written: escapes can make a text six times as long.
  const std::string& beginning = beginningOf(now());
  std::string line;
  if (std::all_of(arguments.begin(), arguments.end(),
                  [](const LogArgument& argument) { return std::visit(MayFit{}, argument); })) {
    line = lineOf(beginning, event, arguments, Form::inFull);
  }
  if (line.empty() || line.size() >= maximumLineSizeInBytes) {
    line = lineOf(beginning, event, arguments, Form::inBrief);
  }
  sink->write(line);
}

}  // namespace quenlet
