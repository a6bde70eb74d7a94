#include <unistd.h>

#include <exception>

#include "server/event_loop.h"
#include "server/listener.h"
#include "server/options.h"

using namespace ficon::emulator;

namespace {

void serve(const Options& options, Log& log) {
  Service service(store_file(options.store),
                  {.history_capacity = options.history, .hardware = read_hardware(options.chassis)},
                  log);
  EventLoop loop(service, options.limits, log);
  loop.stop_on_signals();
  loop.listen_on(listen_at(options.socket), options.users);
  log.info("listening on " + options.socket);
  loop.run();
  unlink(options.socket.c_str());
  log.info("stopped");
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = parse_options(argc, argv);
  Log log(options.log_level);
  try {
    serve(options, log);
    return 0;
  } catch (const std::exception& error) {
    log.error(error.what());
    return 1;
  }
}
