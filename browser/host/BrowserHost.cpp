#include "browser/host/BrowserHost.h"

#include <cstdint>
#include <utility>

#include "browser/host/BrowserRequest.h"
#include "browser/host/CardAnswer.h"
#include "platform/foundation/JSONWriter.h"

namespace quenlet {
namespace {

std::string refusalOf(std::int64_t request, const char* error) {
  JSONWriter json;
  json.beginObject().key("id").value(request).key("error").value(error);
  return std::move(json.endObject()).take();
}

}  // namespace

BrowserHost::BrowserHost(CorvelProtocol& asked, Send sends, Watch watches)
    : agent(asked), send(std::move(sends)), watch(std::move(watches)) {}

bool BrowserHost::take(std::string_view bytes) {
  reader.add(bytes);
  while (const auto message = reader.next()) answer(*message);
  return !reader.hasFault();
}

void BrowserHost::answer(std::string_view message) {
  const BrowserRequest request = BrowserRequest::parse(message);
  switch (request.word) {
    case BrowserRequest::Word::card:
      return send(CardAnswer::to(request.id, CardReading::of(agent, Date::now())));
    case BrowserRequest::Word::changes: {
      JSONWriter json;
      json.beginObject().key("id").value(request.id).key("watching").value(true);
      send(json.endObject().text());
      return startWatching();
    }
    case BrowserRequest::Word::unknown:
      return send(refusalOf(request.id, "unknownWord"));
    case BrowserRequest::Word::malformed:
      return send(refusalOf(request.id, "malformed"));
  }
}

void BrowserHost::startWatching() {
  if (std::exchange(isWatching, true)) return;
  watch([send = send] { send(R"({"event":"changed"})"); });
}

}  // namespace quenlet
