/**
 * The daemon without its sockets: requests are applied to the model as they come, and when the
 * turn ends what they changed is committed in one transaction. Only then do the replies leave.
 */
#pragma once

#include <memory>
#include <vector>

#include "handlers/request.h"
#include "model/switch.h"
#include "server/log.h"
#include "server/message.h"
#include "store/store.h"

namespace ficon::emulator {

class Service {
 public:
  struct Reply {
    ConnectionId to;
    Message message;
  };

  /** Opens the store and loads the model. Throws StoreError. */
  Service(const std::string& store_path, SwitchOptions options, Log& log);

  void apply(ConnectionId from, Message request);
  /** Whether the turn has something to commit. */
  bool has_changes() const { return model_->touched.any(); }
  /** Commits. Throws StoreError when not even the stored state can be had any more. */
  std::vector<Reply> finish_turn();
  void connection_closed(ConnectionId connection) {
    model_->sessions.connection_closed(connection);
  }

 private:
  struct Applied {
    ConnectionId from;
    Message request;
    const Route* route;
    bool changed_model;
    bool saves_startup;
    std::optional<Bytes> reply;
  };

  void run(Applied& request);
  void load();
  void reload();
  void refuse_for_store(Applied& applied);
  void take_back_turn();
  void save_startup();

  SwitchOptions options_;
  Log& log_;
  Store store_;
  std::unique_ptr<Switch> model_;
  std::vector<Applied> turn_;
};

}  // namespace ficon::emulator
