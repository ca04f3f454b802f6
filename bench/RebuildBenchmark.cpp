// The cost of one rebuild of the donated card, per donation: it must be the same at any number.

#include <benchmark/benchmark.h>

#include "bench/SampleDonations.h"
#include "mecard/ContactRebuilder.h"

namespace quenlet {
namespace {

void rebuildCard(benchmark::State& state) {
  const auto donations = std::make_shared<const DonationValues>(
      sampleDonations(static_cast<std::size_t>(state.range(0))));
  const PersonNameComponents curatedName{.namePrefix = {},
                                         .givenName = "Alex",
                                         .middleName = {},
                                         .familyName = "Morgan",
                                         .nameSuffix = {},
                                         .nickname = {}};
  for (auto _ : state) {
    ContactRebuilder rebuilder(donations, curatedName, {"alex@example.com"});
    benchmark::DoNotOptimize(rebuilder.buildNewContact());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(rebuildCard)->Arg(100)->Arg(10'000)->Arg(100'000);

}  // namespace
}  // namespace quenlet
