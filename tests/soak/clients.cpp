#include "clients.h"

#include <fcntl.h>
#include <ficon_cmi.h>
#include <platform/feature_services.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "transport/endpoint.h"

namespace ficon::soak {
namespace {

constexpr std::uint32_t kOperator = 1;
constexpr std::uint32_t kWait = 10'000;
constexpr useconds_t kRest = 2000;  // after a failure: the daemon needs some time to come back

class Connection {
 public:
  explicit Connection(const std::string& endpoint)
      : handle_(ficon_mts_open(endpoint.c_str(), nullptr, 0)) {}
  ~Connection() { ficon_mts_close(handle_); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  mts_handle_t get() const { return handle_; }

  template <class Function, class... Rest>
  std::uint32_t ask(Function function, Rest... rest) const {
    return function(kOperator, handle_, "SOAK", "CLIENT", kWait, rest...);
  }

 private:
  mts_handle_t handle_;
};

/** A value that cannot be said before it is sent, and may only be forgotten before it is answered.
 */
template <class Send>
std::uint32_t keep(Promise& promise, Send send) {
  const std::uint32_t value = promise.acknowledged + 1;
  promise.sent = value;
  const std::uint32_t status = send(value);
  if (status == 0) promise.acknowledged = value;
  return status;
}

struct Task {
  const char* name;
  std::uint32_t (*run)(const Connection&, std::uint32_t vsan, Writer&);
};

std::uint32_t set_clock(const Connection& own, std::uint32_t vsan, Writer& writer) {
  return keep(writer.clock, [&](std::uint32_t value) {
    return own.ask(ficon_cmi_set_tstmp_clock, vsan, value, ~value);
  });
}

std::uint32_t set_host_data(const Connection& own, std::uint32_t vsan, Writer& writer) {
  return keep(writer.host_data, [&](std::uint32_t value) {
    return own.ask(ficon_cmi_set_host_data, vsan, 0U, reinterpret_cast<const std::uint8_t*>(&value),
                   static_cast<std::uint32_t>(sizeof value));
  });
}

std::uint32_t look_around(const Connection& own, std::uint32_t vsan, Writer&) {
  ficon_cmi_vsan_cfg_t record{};
  if (const auto status = own.ask(ficon_cmi_get_vsan_info, 1U, vsan, &record)) return status;
  std::uint32_t key = 0;
  std::uint32_t count = 0;
  std::uint32_t word = 0;
  ficon_cmi_hist_entry_t* entries = nullptr;
  const auto status =
      own.ask(ficon_cmi_get_history_summary, 1U, &key, 1U, 20U, 0U, &count, &word, &entries);
  mtrack_free(entries);
  return status;
}

std::uint32_t look_at_ports(const Connection& own, std::uint32_t vsan, Writer&) {
  ficon_cmi_portmap_full_entry_t map[36] = {};
  if (const auto status =
          ficon_cmi_get_portmap_full(own.get(), "SOAK", "CLIENT", kWait, 0, 35, map)) {
    return status;
  }
  char name[9] = "IPL";
  ficon_cmi_port_info_t* ports = nullptr;
  std::uint32_t count = 0;
  std::uint32_t of = vsan;
  const auto status = own.ask(ficon_cmi_file_get_port_info_portaddr, 1U, 0U, &of, name,
                              static_cast<const std::uint32_t*>(nullptr), 0U, 253U, &ports, &count);
  mtrack_free(ports);
  return status;
}

/** Names ports in a file of its own, which the next round deletes: a copy replaces none. */
std::uint32_t change_file(const Connection& own, std::uint32_t vsan, Writer& writer) {
  constexpr std::uint32_t kDelete = 2;
  char source[9] = "IPL";
  char name[9] = "SOAK";
  own.ask(ficon_cmi_file_ops, vsan, kDelete, name, static_cast<std::uint32_t*>(nullptr),
          static_cast<std::uint8_t*>(nullptr), static_cast<std::uint32_t*>(nullptr));
  if (const auto status = own.ask(ficon_cmi_file_copy, vsan, source, name)) return status;
  ficon_cmi_port_name_entry_t entry{4, {}};
  std::snprintf(entry.port_name, sizeof entry.port_name, "ROUND %u", writer.clock.sent.load());
  std::uint32_t status = 0;
  return own.ask(ficon_cmi_file_set_port_name_portaddr, vsan, name,
                 static_cast<std::uint32_t*>(nullptr),
                 static_cast<const ficon_cmi_port_name_entry_t*>(&entry), 1U, &status);
}

/** Changes are most of what it does. */
constexpr Task kTasks[] = {{"clock", set_clock},         {"host data", set_host_data},
                           {"clock", set_clock},         {"reading", look_around},
                           {"host data", set_host_data}, {"ports", look_at_ports},
                           {"clock", set_clock},         {"file", change_file}};
constexpr std::uint32_t kRoundsAConnection = 5;

/** A failure counts only where the daemon was there before and behind it. */
void judge(Shared& shared, bool was_calm, const char* what, std::uint32_t status) {
  if (status == 0) return;
  if (was_calm && shared.calm && !shared.stop) {
    constexpr std::uint32_t kShown = 10;
    if (shared.failures++ < kShown) {
      std::fprintf(stderr, "soak: %s failed with 0x%08x\n", what, status);
    }
  }
  usleep(kRest);
}

/** The library says on standard output what went wrong, which here is what is meant to happen. */
void silence_output() {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  close(nowhere);
}

std::uint32_t first_word(const std::uint8_t* bytes) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

bool is_kept(Promise& promise, std::uint32_t found, const char* what) {
  const bool kept = found == promise.acknowledged || found == promise.sent;
  if (!kept) {
    std::fprintf(stderr, "soak: %s is %u; %u was acknowledged and %u sent\n", what, found,
                 promise.acknowledged.load(), promise.sent.load());
  }
  promise.acknowledged = found;
  return kept;
}

}  // namespace

void run_writer(Shared& shared, std::uint32_t index, const std::string& endpoint) {
  silence_output();
  Writer& writer = shared.writers[index];
  while (!shared.stop) {
    const Connection own(endpoint);
    for (std::uint32_t round = 0; round < kRoundsAConnection; ++round) {
      for (const Task& task : kTasks) {
        if (shared.stop) return;
        const bool was_calm = shared.calm;
        judge(shared, was_calm, task.name, task.run(own, kFirstVsan + index, writer));
        ++writer.calls;
      }
    }
  }
}

void run_tool(Shared& shared, const std::string& endpoint) {
  constexpr const char* kCommands[] = {"vsan list",           "portmap show",
                                       "config running",      "history show --json",
                                       "file list 20 --json", "vsan show 21"};
  silence_output();
  const std::string tool = std::string(FICONCTL) + " --endpoint " + endpoint + " ";
  for (std::size_t i = 0; !shared.stop; ++i) {
    const bool was_calm = shared.calm;
    const char* words = kCommands[i % std::size(kCommands)];
    const int status = std::system((tool + words + " 2>/dev/null").c_str());
    const bool failed = !WIFEXITED(status) || WEXITSTATUS(status) != 0;
    judge(shared, was_calm, words, failed ? 1 : 0);
    ++shared.tool_runs;
  }
}

bool keeps_promises(Writer& writer, std::uint32_t index, const std::string& endpoint) {
  const Connection own(endpoint);
  const std::uint32_t vsan = kFirstVsan + index;
  ficon_cmi_vsan_cfg_t record{};
  std::uint8_t data[16384] = {};
  std::uint32_t length = 0;
  if (own.ask(ficon_cmi_get_vsan_info, 1U, vsan, &record) != 0 ||
      own.ask(ficon_cmi_get_host_data, vsan, data, &length) != 0) {
    std::fprintf(stderr, "soak: VSAN %u cannot be read\n", vsan);
    return false;
  }
  const std::uint32_t clock = record.tstmp_clock1;
  const std::uint32_t complement = record.tstmp_clock2;
  const bool clock_whole = complement == (clock == 0 ? 0 : ~clock);
  if (!clock_whole) std::fprintf(stderr, "soak: the clock of VSAN %u is half set\n", vsan);
  const bool clock_kept = is_kept(writer.clock, clock, "the clock");
  const bool data_kept = is_kept(writer.host_data, first_word(data), "host data");
  return clock_whole && clock_kept && data_kept;
}

bool enable_vsan(std::uint32_t index, const std::string& endpoint) {
  const Connection own(endpoint);
  fm_cmi_set_feature_wait(own.get(), "ficon", "SOAK", "CLIENT", 3);
  return own.ask(ficon_cmi_set_ficon_state, kFirstVsan + index, std::uint8_t{1}) == 0;
}

}  // namespace ficon::soak
