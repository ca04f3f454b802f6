#pragma once

#include <functional>
#include <ostream>
#include <string_view>
#include <utility>

#include "quenlet/Date.h"
#include "quenlet/Error.h"
#include "tools/presentation/CardChanges.h"
#include "tools/presentation/Screen.h"

namespace quenlet {

// What "watch" tells, as it happens: lines for people, or a JSON object a line. Each is flushed.
// One thread at a time.
class WatchReport final {
 public:
  enum class Format { text, json };

  // `onFailure` is called when a line could not be written.
  WatchReport(std::ostream& stream, const Screen& outputScreen, Format lineFormat,
              std::function<void()> onFailure)
      : out(stream), screen(outputScreen), format(lineFormat), failed(std::move(onFailure)) {}

  // From here on nothing is missed.
  void began(bool agentIsThere);
  void agentAppeared(Date when);
  void agentEnded(Date when);
  // The agent answers, but gives no card.
  void refused(Date when, const Error& error);
  void changed(Date when, const CardChanges& changes);

 private:
  void writeEvent(Date when, const char* event, const char* sentence);
  void write(std::string_view lines);

  std::ostream& out;
  const Screen screen;
  const Format format;
  const std::function<void()> failed;
};

}  // namespace quenlet
