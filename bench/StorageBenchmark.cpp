// The cost of the donations file at 10,000 donations: its text against a copy of the same bytes,
// and the restore against the XML library's bare parse of the same file.

#include <benchmark/benchmark.h>

#include <cstring>
#include <pugixml.hpp>

#include "bench/SampleDonations.h"
#include "storage/DonationPersistence.h"

namespace quenlet {
namespace {

constexpr std::size_t heldDonations = 10'000;

// Stands in for the file system: loads give what was stored.
class MemoryDataProxy final : public DataProxy {
 public:
  Future<std::string> dataWithContentsOfURL(const std::filesystem::path&) override {
    return Future<std::string>::futureWithResult(content);
  }
  Future<bool> writeContent(FileContentPtr written, const std::filesystem::path&,
                            WritingOptions) override {
    content.clear();
    written->handTo([this](std::string_view piece) {
      benchmark::DoNotOptimize(piece.data());
      if (keepsContent) content.append(piece);
      return true;
    });
    return Future<bool>::futureWithResult(true);
  }
  bool keepDamagedFile(const std::filesystem::path&) override { return true; }
  void keepUnreadFile(const std::filesystem::path&) override {}
  ErrorPtr setExcludedFromBackups(const std::filesystem::path&) override { return nullptr; }

  std::string content;
  // Without, a write costs what the agent does for it before the file system copies the bytes.
  bool keepsContent = true;
};

struct StoredTable final {
  StoredTable() { benchmark::DoNotOptimize(persistence.storeWithAllValues(donations).result()); }
  const std::shared_ptr<const DonationValues> donations =
      std::make_shared<const DonationValues>(sampleDonations(heldDonations));
  const std::shared_ptr<MemoryDataProxy> proxy = std::make_shared<MemoryDataProxy>();
  DonationPersistence persistence{proxy};
};

void copyTable(benchmark::State& state) {
  const StoredTable table;
  std::string copy(table.proxy->content.size(), '\0');
  for (auto _ : state) {
    std::memcpy(copy.data(), table.proxy->content.data(), copy.size());
    benchmark::ClobberMemory();
  }
}

void storeTable(benchmark::State& state) {
  StoredTable table;
  table.proxy->keepsContent = false;
  for (auto _ : state) {
    benchmark::DoNotOptimize(table.persistence.storeWithAllValues(table.donations).result());
  }
}

void parseTable(benchmark::State& state) {
  const StoredTable table;
  for (auto _ : state) {
    pugi::xml_document document;
    benchmark::DoNotOptimize(
        document.load_buffer(table.proxy->content.data(), table.proxy->content.size()));
  }
}

void restoreTable(benchmark::State& state) {
  StoredTable table;
  for (auto _ : state) {
    benchmark::DoNotOptimize(table.persistence.loadDonations().result());
  }
}

BENCHMARK(copyTable)->Unit(benchmark::kMicrosecond);
BENCHMARK(storeTable)->Unit(benchmark::kMicrosecond);
BENCHMARK(parseTable)->Unit(benchmark::kMicrosecond);
BENCHMARK(restoreTable)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quenlet
