// The same bytes fetched from a service over the message bus that Linux desktops and phones have,
// with a bus daemon of this benchmark's own. All on one core, as in FetchBenchmark.cpp.

#include <benchmark/benchmark.h>
#include <systemd/sd-bus.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "bench/ChildProcess.h"
#include "bench/Latencies.h"

namespace quenlet {
namespace {

constexpr char name[] = "org.example.Cards";
constexpr char object[] = "/org/example/Cards";
constexpr std::size_t replySizeInBytes = 1024;
constexpr int pipelinedRequests = 64;

int check(int result, const char* step) {
  if (result < 0) failBenchmark(std::string("the bus refuses: ") + step);
  return result;
}

sd_bus* tryConnect(const std::string& address) {
  sd_bus* bus = nullptr;
  check(sd_bus_new(&bus), "new");
  sd_bus_set_address(bus, address.c_str());
  sd_bus_set_bus_client(bus, 1);
  if (sd_bus_start(bus) >= 0) return bus;
  sd_bus_unref(bus);
  return nullptr;
}

sd_bus* connect(const std::string& address) {
  while (true) {
    if (sd_bus* bus = tryConnect(address)) return bus;
    std::this_thread::yield();
  }
}

int reply(sd_bus_message* call, void*, sd_bus_error*) {
  static const std::vector<char> bytes(replySizeInBytes, 'r');
  sd_bus_message* answer = nullptr;
  check(sd_bus_message_new_method_return(call, &answer), "answer");
  sd_bus_message_append_array(answer, 'y', bytes.data(), bytes.size());
  const int sent = sd_bus_send(nullptr, answer, nullptr);
  sd_bus_message_unref(answer);
  return sent < 0 ? sent : 1;
}

void serve(const std::string& address) {
  sd_bus* bus = connect(address);
  const sd_bus_vtable operations[] = {
      SD_BUS_VTABLE_START(0), SD_BUS_METHOD("Fetch", "", "ay", reply, SD_BUS_VTABLE_UNPRIVILEGED),
      SD_BUS_VTABLE_END};
  check(sd_bus_add_object_vtable(bus, nullptr, object, name, operations, nullptr), "vtable");
  check(sd_bus_request_name(bus, name, 0), "name");
  while (true) {
    if (check(sd_bus_process(bus, nullptr), "process") == 0) sd_bus_wait(bus, UINT64_MAX);
  }
}

std::string writeConfiguration(const std::filesystem::path& directory) {
  const std::string file = directory / "bus.conf";
  std::ofstream(file) << "<busconfig><listen>unix:path=" << (directory / "bus").string()
                      << "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                         "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>";
  return file;
}

std::filesystem::path makeDirectory() {
  std::string path = (std::filesystem::temp_directory_path() / "quenlet-bus-XXXXXX").string();
  if (::mkdtemp(path.data()) == nullptr) failBenchmark("no temporary directory");
  return path;
}

// A bus, a service on it, and a client's connection.
class Bus final {
 public:
  Bus() {
    while (!answers()) std::this_thread::yield();
  }
  ~Bus() {
    sd_bus_unref(client);
    std::filesystem::remove_all(directory);
  }
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  [[nodiscard]] bool answers() {
    sd_bus_message* answer = nullptr;
    const int result =
        sd_bus_call_method(client, name, object, name, "Fetch", nullptr, &answer, "");
    sd_bus_message_unref(answer);
    return result >= 0;
  }

 private:
  const OnOneCore pinned;
  const std::filesystem::path directory = makeDirectory();
  const ChildProcess daemon{
      {"dbus-daemon", "--nofork", "--config-file=" + writeConfiguration(directory)}};
  const std::string address = "unix:path=" + (directory / "bus").string();
  const ChildProcess service{[this] { serve(address); }};

 public:
  sd_bus* const client = connect(address);
};

void busCall(benchmark::State& state) {
  Bus bus;
  Latencies latencies;
  for (auto _ : state) {
    latencies.measure([&] {
      if (!bus.answers()) failBenchmark("the bus does not answer");
    });
  }
  latencies.report(state);
}

int countReply(sd_bus_message*, void* answered, sd_bus_error*) {
  ++*static_cast<int*>(answered);
  return 1;
}

void busCallPipelined(benchmark::State& state) {
  Bus bus;
  for (auto _ : state) {
    int answered = 0;
    for (int i = 0; i < pipelinedRequests; ++i) {
      check(sd_bus_call_method_async(bus.client, nullptr, name, object, name, "Fetch", countReply,
                                     &answered, ""),
            "call");
    }
    while (answered < pipelinedRequests) {
      if (check(sd_bus_process(bus.client, nullptr), "process") == 0) {
        sd_bus_wait(bus.client, UINT64_MAX);
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * pipelinedRequests);
}

BENCHMARK(busCall)->UseRealTime();
BENCHMARK(busCallPipelined)->UseRealTime();

}  // namespace
}  // namespace quenlet
