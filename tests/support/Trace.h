#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace quenlet {

using Events = std::vector<std::string>;

// What happened, in order, and on which scheduler: "io: store a b". One thread only.
class Trace final {
 public:
  void note(const std::string& what) { entries.push_back(place + ": " + what); }

  // `block`, which then notes what it does under `scheduler`.
  [[nodiscard]] std::function<void()> within(std::string scheduler, std::function<void()> block) {
    return [this, scheduler = std::move(scheduler), block = std::move(block)] {
      const std::string former = std::exchange(place, scheduler);
      block();
      place = former;
    };
  }

  Events take() { return std::exchange(entries, {}); }

 private:
  std::string place = "caller";
  Events entries;
};

}  // namespace quenlet
