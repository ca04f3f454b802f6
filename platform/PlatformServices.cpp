#include "platform/PlatformServices.h"

#include <atomic>
#include <cassert>

namespace quenlet {
namespace {

std::atomic<const PlatformServices*> currentServices = nullptr;

}  // namespace

const PlatformServices& PlatformServices::current() {
  const PlatformServices* services = currentServices.load(std::memory_order_acquire);
  assert(services && "no platform services are installed");
  return *services;
}

PlatformServices::Scope::Scope(PlatformServices services)
    : installed(std::make_unique<const PlatformServices>(std::move(services))),
      former(currentServices.exchange(installed.get())) {}

PlatformServices::Scope::~Scope() { currentServices.store(former); }

}  // namespace quenlet
