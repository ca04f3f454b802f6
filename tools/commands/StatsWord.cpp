#include "tools/commands/StatsWord.h"

#include <CLI/CLI.hpp>
#include <cstdio>

#include "platform/counters/CounterStore.h"
#include "platform/counters/PrometheusCounterStore.h"
#include "platform/counters/PrometheusText.h"
#include "platform/files/FileReading.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/PropertyListFile.h"
#include "platform/files/UserDirectories.h"
#include "platform/foundation/JSONWriter.h"
#include "platform/preferences/UserDefaults.h"
#include "tools/presentation/TextTable.h"

namespace quenlet {
namespace {

using Stats = StatsWord::Stats;

// POSIX errors name the file already.
ErrorPtr errorInFile(const char* path, const ErrorPtr& error) {
  if (error->domain() == PosixErrorDomain) return error;
  const std::string name = std::filesystem::path(path).filename();
  return makeError(error->domain(), error->code(), name + ": " + error->debugDescription());
}

Result<CounterValues> readCounters(const std::filesystem::path& file, DataProxy& dataProxy) {
  const Future<std::string> reading = dataProxy.dataWithContentsOfURL(file);
  const Result<std::string>& text = reading.result();
  if (text.ok()) return PrometheusText::read(text.value());
  if (isMissingFile(*text.error())) return Result<CounterValues>::success({});
  return Result<CounterValues>::failure(text.error());
}

Result<Stats> readStats() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<Stats>::failure(home.error());
  const auto dataProxy = std::make_shared<PosixDataProxy>();
  auto counters = readCounters(home.value() / CountersPath, *dataProxy);
  if (!counters.ok()) return Result<Stats>::failure(errorInFile(CountersPath, counters.error()));
  const auto defaults = PropertyListFile(home.value() / PreferencesPath, dataProxy).read();
  if (!defaults.ok()) return Result<Stats>::failure(errorInFile(PreferencesPath, defaults.error()));
  Stats stats{std::nullopt, std::move(counters).takeValue()};
  const PropertyList* lastAttempt = findEntry(defaults.value(), LastMetricsAttemptKey);
  if (lastAttempt && lastAttempt->date()) stats.lastAttempt = *lastAttempt->date();
  return Result<Stats>::success(std::move(stats));
}

// The counters not shown yet; each part of the text takes out those that it shows.
struct Untold final {
  CounterValues counters;

  template <typename T>
  std::optional<T> take(const char* key) {
    const auto found = counters.find(key);
    if (found == counters.end() || !std::holds_alternative<T>(found->second)) return std::nullopt;
    const T value = std::get<T>(found->second);
    counters.erase(found);
    return value;
  }
};

void writeCard(std::ostream& out, const Screen& screen, Untold& untold) {
  const std::pair<const char*, const char*> rows[] = {
      {"a name", CounterKeys::hasName},
      {"e-mail addresses", CounterKeys::hasEmailAddress},
      {"phone numbers", CounterKeys::hasPhoneNumber},
      {"postal addresses", CounterKeys::hasPostalAddress},
  };
  TextTable table;
  for (const auto& [words, key] : rows) {
    if (const auto has = untold.take<std::int64_t>(key)) {
      table.addRow({words, *has != 0 ? "yes" : "no"});
    }
  }
  if (table.empty()) return;
  out << "\nYour own card has\n";
  table.write(out, screen, "  ");
}

std::string average(const CounterDistribution& samples) {
  char text[32];
  const double count = static_cast<double>(samples.count);
  std::snprintf(text, sizeof text, "%.1f", samples.count == 0 ? 0.0 : samples.sum / count);
  return text;
}

void writeDonated(std::ostream& out, const Screen& screen, Untold& untold) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"e-mail addresses", CounterKeys::matchedEmailAddresses,
       CounterKeys::unmatchedEmailAddresses},
      {"phone numbers", CounterKeys::matchedPhoneNumbers, CounterKeys::unmatchedPhoneNumbers},
      {"postal addresses", CounterKeys::matchedPostalAddresses,
       CounterKeys::unmatchedPostalAddresses},
  };
  TextTable table({"", "ALSO ON YOUR CARD", "NEW", "REPORTS"});
  for (const auto& [words, matchedKey, unmatchedKey] : rows) {
    const auto matched = untold.take<CounterDistribution>(matchedKey);
    const auto unmatched = untold.take<CounterDistribution>(unmatchedKey);
    if (!matched && !unmatched) continue;
    table.addRow({words, matched ? average(*matched) : "", unmatched ? average(*unmatched) : "",
                  std::to_string((matched ? matched : unmatched)->count)});
  }
  if (table.empty()) return;
  out << "\nDonated, on average of all reports\n";
  table.write(out, screen, "  ");
}

// Another version may have written counters that this one does not know.
void writeOthers(std::ostream& out, const Screen& screen, const Untold& untold) {
  if (untold.counters.empty()) return;
  TextTable table;
  for (const auto& [key, value] : untold.counters) {
    const auto* samples = std::get_if<CounterDistribution>(&value);
    table.addRow({key, samples
                           ? average(*samples) + " on average of " + std::to_string(samples->count)
                           : std::to_string(std::get<std::int64_t>(value))});
  }
  out << "\nOther counters\n";
  table.write(out, screen, "  ");
}

}  // namespace

void StatsWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("stats", "Show what the daily report counts; needs no agent");
  word->add_flag("--json", asJSON, "As JSON, for programs");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

ExitCode StatsWord::run(Session& session) const {
  const Result<Stats> stats = readStats();
  if (!stats.ok()) return session.failWith(stats.error());
  if (asJSON) {
    writeJSON(session.out, stats.value());
  } else {
    writeText(session.out, session.screen, stats.value());
  }
  return ExitCode::done;
}

void StatsWord::writeText(std::ostream& out, const Screen& screen, const Stats& stats) {
  out << "Last attempt  " << (stats.lastAttempt ? stats.lastAttempt->iso8601() : "never") << "\n";
  Untold untold{stats.counters};
  if (const auto cards = untold.take<std::int64_t>(CounterKeys::meCardCount)) {
    out << "Own cards     " << *cards << "\n";
  }
  writeCard(out, screen, untold);
  writeDonated(out, screen, untold);
  writeOthers(out, screen, untold);
}

void StatsWord::writeJSON(std::ostream& out, const Stats& stats) {
  JSONWriter json;
  json.beginObject();
  if (stats.lastAttempt) json.key("lastAttempt").value(stats.lastAttempt->iso8601());
  json.key("counters").beginObject();
  for (const auto& [key, value] : stats.counters) {
    json.key(key);
    if (const auto* samples = std::get_if<CounterDistribution>(&value)) {
      json.beginObject();
      json.key("count").value(static_cast<std::int64_t>(samples->count));
      json.key("sum").value(samples->sum).endObject();
    } else {
      json.value(std::get<std::int64_t>(value));
    }
  }
  out << json.endObject().endObject().text() << "\n";
}

CommandPtr makeStatsWord() { return std::make_unique<StatsWord>(); }

}  // namespace quenlet
