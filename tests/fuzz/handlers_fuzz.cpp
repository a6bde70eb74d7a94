/**
 * The daemon's handlers behind the service that the server uses, on a real store: whatever is
 * asked, in whatever order and over whichever connections, each reply is bounded and that of its
 * request, and a daemon that is started again answers as the one before it did.
 */
#include "everything_readable.h"
#include "protocol/frame.h"
#include "scratch.h"
#include "script.h"
#include "wire/address.h"

using namespace ficon::fuzz;
using ficon::emulator::Hardware;
using ficon::emulator::Route;
using ficon::emulator::Service;

namespace {

const Scratch& scratch() {
  static const Scratch directory;
  return directory;
}

/** Read once; a run has its own, since conditions of ports change. */
std::shared_ptr<Hardware> new_hardware() {
  static const Hardware pristine = *ficon::emulator::read_hardware({});
  return std::make_shared<Hardware>(pristine);
}

/** Time stands still, so that what is recorded of a change is the same in every run. */
ficon::emulator::Clocks still_clocks() {
  const auto noon = [] { return std::int64_t{1'700'000'000}; };
  return {noon, noon};
}

/** What a reply has of its request. */
struct Asked {
  ficon::emulator::ConnectionId connection;
  std::uint32_t token, node, sap, opcode;
  bool operator==(const Asked&) const = default;
};

class Daemon {
 public:
  Daemon() { start(); }

  void ask(Step step) {
    if ((step.flags & Step::kWholeTlvArray) != 0 && step.payload.size() >= 4) {
      ficon::wire::be32 length{};
      length.set(static_cast<std::uint32_t>(step.payload.size()));
      std::ranges::copy(length.raw, step.payload.begin());
    }
    const auto routes = ficon::emulator::routes();
    const std::size_t number = step.route % (routes.size() + 1);
    const bool known = number < routes.size();
    const ficon::emulator::ConnectionId connection = step.flags & Step::kConnections;
    const Asked asked{connection, ++token_, known ? routes[number].node : ficon::wire::kFcdNode,
                      known ? routes[number].sap : 0U, known ? routes[number].opcode : 0U};
    turn_.push_back(asked);
    service_->apply(connection,
                    {asked.token, asked.node, asked.sap, asked.opcode, std::move(step.payload)});
    if ((step.flags & Step::kSameTurn) == 0) finish_turn();
    if ((step.flags & Step::kHangsUp) != 0) service_->connection_closed(connection);
    if ((step.flags & Step::kRestarts) != 0) restart();
  }

  void restart() {
    finish_turn();
    // What belongs to connections goes with them: locks, and edits of files.
    for (std::uint8_t i = 0; i <= Step::kConnections; ++i) service_->connection_closed(i);
    const auto before = everything_readable(*service_);
    service_.reset();
    start();
    require(same(before, everything_readable(*service_)), "what was acknowledged is there again");
  }

 private:
  void start() {
    service_ = std::make_unique<Service>(scratch().file("ficon.db"),
                                         ficon::emulator::SwitchOptions{.history_capacity = 50,
                                                                        .max_file_contents = 20'000,
                                                                        .max_files = 6,
                                                                        .hardware = hardware_,
                                                                        .clocks = still_clocks()},
                                         log_);
  }
  /** Replies come in the order of their requests, of which some have none. */
  void finish_turn() {
    auto asked = turn_.begin();
    for (const auto& [to, message] : service_->finish_turn()) {
      require(message.payload.size() <= ficon::platform::kMaxMessage,
              "a reply is no longer than a message may be");
      const Asked replied{to, message.token, message.node, message.sap, message.opcode};
      asked = std::find(asked, turn_.end(), replied);
      require(asked++ != turn_.end(), "a reply answers a request of its turn, once");
    }
    turn_.clear();
  }

  ficon::emulator::Log log_{ficon::emulator::LogLevel::kError};
  std::shared_ptr<Hardware> hardware_ = new_hardware();
  std::unique_ptr<Service> service_;
  std::vector<Asked> turn_;
  std::uint32_t token_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kMostSteps = 200;
  scratch().clear();
  Daemon daemon;
  std::vector<Step> script = read_script({data, size});
  if (script.size() > kMostSteps) script.resize(kMostSteps);
  for (Step& step : script) daemon.ask(std::move(step));
  return 0;
}
