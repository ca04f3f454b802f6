#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <list>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "analytics/ValueMatching.h"
#include "platform/foundation/KeyedHash.h"

namespace quenlet {

// Sorts the values of one kind, curated and donated, by the cards that they are on. A donated value
// that matches a curated one takes its place, in `common`; a value that matches one of its own side
// or in `common` is dropped. If several match, the first listed counts.
//
// The outcome is that of searching each list from its start, but only values with the added one's
// key are looked at. One thread at a time.
template <typename T>
class AugmentationBucket final {
 public:
  using Values = std::list<T>;

  AugmentationBucket() = default;
  AugmentationBucket(const AugmentationBucket&) = delete;
  AugmentationBucket& operator=(const AugmentationBucket&) = delete;

  [[nodiscard]] const Values& uniqueToCurated() const { return lists[ofCurated]; }
  [[nodiscard]] const Values& uniqueToDonated() const { return lists[ofDonated]; }
  [[nodiscard]] const Values& common() const { return lists[ofBoth]; }

  void addCurated(const T& value) { add(value, ofCurated, ofDonated); }
  void addDonated(const T& value) { add(value, ofDonated, ofCurated); }

  // Holds the values: for a debugger, not for a log.
  [[nodiscard]] std::string description() const {
    std::ostringstream text;
    text << "<AugmentationClassifier.Bucket " << this << ": common=" << listText(common())
         << " uniqueToCurated=" << listText(uniqueToCurated())
         << " uniqueToDonated=" << listText(uniqueToDonated());
    return text.str();
  }

 private:
  enum List : std::uint8_t { ofCurated, ofDonated, ofBoth };
  using Candidate = decltype(matchingOf(std::declval<const T&>()).candidate);
  struct Place final {
    Candidate candidate;
    List list;
    typename Values::iterator value;
  };
  // The places of all values with one key, in the order in which they were appended to their lists.
  using Places = std::vector<Place>;

  void add(const T& value, List own, List other) {
    const auto [key, candidate] = matchingOf(value);
    Places& places = placesByKey[key];
    if (find(places, candidate, ofBoth) != places.end()) return;
    if (const auto match = find(places, candidate, other); match != places.end()) {
      lists[other].erase(match->value);
      places.erase(match);
      append(places, candidate, value, ofBoth);
    } else if (find(places, candidate, own) == places.end()) {
      append(places, candidate, value, own);
    }
  }

  static typename Places::iterator find(Places& places, const Candidate& candidate, List list) {
    return std::find_if(places.begin(), places.end(), [&](const Place& place) {
      return place.list == list && candidate.isLike(place.candidate);
    });
  }

  void append(Places& places, const Candidate& candidate, const T& value, List list) {
    lists[list].push_back(value);
    places.push_back({candidate, list, std::prev(lists[list].end())});
  }

  static std::string listText(const Values& values) {
    std::string text = "(";
    for (const T& value : values) {
      text.append(text.size() > 1 ? ", " : "").append(describedValue(value));
    }
    return text + ")";
  }

  Values lists[3];
  std::unordered_map<std::string, Places, TextHash> placesByKey;
};

}  // namespace quenlet
