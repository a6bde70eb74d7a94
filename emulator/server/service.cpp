#include "server/service.h"

#include <cstdio>
#include <filesystem>

#include "handlers/routes.h"
#include "wire/opcode.h"

namespace ficon::emulator {
namespace {

std::string describe(ConnectionId from, const Message& request, const char* what) {
  char text[256];
  std::snprintf(text, sizeof text,
                "connection %llu: %s (opcode %u, SAP %u, node 0x%08x, %zu bytes)",
                static_cast<unsigned long long>(from), what, request.opcode, request.sap,
                request.node, request.payload.size());
  return text;
}

}  // namespace

Service::Service(const std::string& store_path, SwitchOptions options, Log& log)
    : options_(std::move(options)), log_(log), store_(store_path) {
  options_.store_path = std::filesystem::absolute(store_path).string();
  load();
}

void Service::load() {
  auto model = std::make_unique<Switch>(options_);
  store_.load(*model);
  model_ = std::move(model);
}

void Service::apply(ConnectionId from, Message request) {
  turn_.push_back({from, std::move(request), nullptr, false, false, std::nullopt});
  run(turn_.back());
}

void Service::run(Applied& applied) {
  const Message& message = applied.request;
  const Request request{applied.from, message.node, message.sap, message.opcode, message.payload};
  applied.route = find_route(request);
  if (applied.route == nullptr) {
    // Nobody knows how the reply would look: it is empty, which every reader takes as a failure.
    log_.complaint(describe(applied.from, message, "nobody answers this request"));
    applied.reply = Bytes{};
    return;
  }
  const std::uint64_t marks = model_->touched.marks();
  const std::size_t startups = model_->touched.startups();
  Answer answer = applied.route->handle(request, *model_);
  applied.changed_model = model_->touched.marks() != marks;
  applied.saves_startup = model_->touched.startups() != startups;
  FcdStatus status = FcdStatus::kDone;
  if (const auto* malformed = std::get_if<Malformed>(&answer)) {
    log_.complaint(describe(applied.from, message, malformed->reason));
    status = FcdStatus::kMalformed;
  } else if (const auto* refused = std::get_if<FcdStatus>(&answer)) {
    status = *refused;
  } else if (auto* bytes = std::get_if<Bytes>(&answer)) {
    applied.reply = std::move(*bytes);
    return;
  } else {
    const auto& silent = std::get<NoReply>(answer);
    if (silent.status != FcdStatus::kDone) {
      log_.complaint(describe(applied.from, message,
                              find_fcd_status(static_cast<Status>(silent.status))->sentence));
    }
    applied.reply.reset();
    return;
  }
  applied.reply = applied.route->status_reply(request.payload, status);
}

std::vector<Service::Reply> Service::finish_turn() {
  if (model_->touched.any()) {
    try {
      store_.commit(*model_);
      if (model_->touched.startups() != 0) save_startup();
      model_->touched.clear();
    } catch (const StoreError& error) {
      log_.error(std::string("the store takes no changes: ") + error.what());
      take_back_turn();
    }
  }
  std::vector<Reply> replies;
  for (Applied& applied : turn_) {
    if (!applied.reply) continue;
    Message& request = applied.request;
    replies.push_back(
        {applied.from,
         {request.token, request.node, request.sap, request.opcode, std::move(*applied.reply)}});
  }
  turn_.clear();
  return replies;
}

void Service::reload() {
  Sessions sessions = std::move(model_->sessions);
  load();
  model_->sessions = std::move(sessions);
}

void Service::refuse_for_store(Applied& applied) {
  applied.reply = applied.route->status_reply(applied.request.payload, FcdStatus::kStoreFailed);
}

/** Of what is stored by now: if it fails, that stays, and only whoever asked is refused. */
void Service::save_startup() {
  try {
    store_.save_startup();
  } catch (const StoreError& error) {
    log_.error(std::string("no startup configuration was saved: ") + error.what());
    for (Applied& applied : turn_) {
      if (applied.saves_startup) refuse_for_store(applied);
    }
  }
}

/** Back to what is stored: changes are refused, and whoever only looked looks again. */
void Service::take_back_turn() {
  reload();
  for (Applied& applied : turn_) {
    if (!applied.changed_model && applied.route != nullptr) run(applied);
    if (!applied.changed_model) continue;
    refuse_for_store(applied);
    if (model_->touched.any()) reload();  // it had nothing to change before, and now it had
  }
}

}  // namespace ficon::emulator
