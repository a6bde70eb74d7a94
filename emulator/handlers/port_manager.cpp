#include "handlers/port_manager.h"

#include <optional>

#include "interface_index/interface_index.h"
#include "protocol/port_manager.h"

namespace ficon::emulator {
namespace {

using platform::Port;

/** The largest reply stays within the limits of a message, whatever is asked. */
constexpr std::uint32_t kMaxRecords = 4096;

/** Head and records, one an interface. */
class Records {
 public:
  template <class Record>
  void add(const Record& record) {
    append(tail_, record);
    ++count_;
  }
  std::uint32_t count() const { return count_; }
  Bytes take() const {
    platform::PortReplyHead head{};
    head.count.set(count_);
    Bytes reply = to_bytes(head);
    reply.insert(reply.end(), tail_.begin(), tail_.end());
    return reply;
  }

 private:
  std::uint32_t count_ = 0;
  Bytes tail_;
};

/** A record for every interface of the ranges asked for; `make` gives it. */
template <class Make>
Answer answer_ranges(const Request& request, const Switch& model, Make make) {
  if (request.payload.size() % sizeof(platform::InterfaceRange) != 0) {
    return Malformed{"port manager: the request is no list of ranges"};
  }
  Records records;
  const auto add = [&](if_index_t if_index) {
    const Port* port = model.chassis().port(if_index);
    if (port != nullptr) records.add(make(if_index, *port));
    return records.count() <= kMaxRecords;
  };
  std::vector<if_index_t> interfaces;  // all of them, for the ranges of more than one
  for (ByteView rest = request.payload; !rest.empty();
       rest = rest.subspan(sizeof(platform::InterfaceRange))) {
    const auto range = leading_record<platform::InterfaceRange>(rest);
    bool room = true;
    if (range.first.get() == range.last.get()) {
      room = add(range.first.get());
    } else {
      if (interfaces.empty()) interfaces = model.chassis().interfaces();
      auto at = std::ranges::lower_bound(interfaces, range.first.get());
      while (room && at != interfaces.end() && *at <= range.last.get()) room = add(*at++);
    }
    if (!room) return Malformed{"port manager: too many interfaces"};
  }
  return records.take();
}

/** The one record of the one interface asked for; none where the chassis has no such interface. */
template <class Make>
Answer answer_interface(const Request& request, const Switch& model, Make make) {
  const auto* asked = whole_record<platform::InterfaceNumber>(request.payload);
  if (asked == nullptr) return Malformed{"port manager: the request is no interface"};
  Records records;
  if (const Port* port = model.chassis().port(asked->if_index.get())) records.add(make(*port));
  return records.take();
}

platform::PortConfig port_config(if_index_t if_index, const Port& port) {
  platform::PortConfig config{};
  config.if_index.set(if_index);
  config.vsan.set(port.vsan);
  config.mode.set(static_cast<std::uint32_t>(port.mode));
  config.trunk_mode = port.trunking() ? platform::kTrunking : 0;
  config.flags = port.condition == platform::PortCondition::kUp ? 1 : 0;
  return config;
}

platform::VsanBitmap bitmap_of(const Port& port) {
  platform::VsanBitmap bitmap{};
  for (std::size_t vsan = 0; vsan < port.trunk_vsans.size(); ++vsan) {
    if (!port.trunk_vsans[vsan]) continue;
    bitmap.vsans.raw[vsan / 8] |= static_cast<std::uint8_t>(0x80 >> (vsan % 8));
  }
  return bitmap;
}

}  // namespace

Answer handle_chassis_description(const Request& request, Switch& model) {
  if (!request.payload.empty()) return Malformed{"chassis: the request is not empty"};
  const std::string& text = model.options().hardware->description;
  return Bytes(text.begin(), text.end());
}

Bytes chassis_description_status_reply(ByteView, FcdStatus status) {
  // A description of nothing: its reader goes on without one.
  const std::string text = std::string("# ") + find_fcd_status(static_cast<Status>(status))->name;
  return Bytes(text.begin(), text.end());
}

Answer handle_port_config(const Request& request, Switch& model) {
  return answer_ranges(request, model, port_config);
}

Answer handle_transceivers(const Request& request, Switch& model) {
  return answer_ranges(request, model, [](if_index_t if_index, const Port& port) {
    platform::TransceiverState state{};
    state.if_index.set(if_index);
    state.status.set(static_cast<std::uint32_t>(port.transceiver));
    return state;
  });
}

Answer handle_trunk_vsans(const Request& request, Switch& model) {
  return answer_interface(request, model, bitmap_of);
}

Answer handle_module_ports(const Request& request, Switch& model) {
  const auto* asked = whole_record<platform::ModuleMask>(request.payload);
  if (asked == nullptr) return Malformed{"port manager: the request is no mask of modules"};
  Records records;
  for (const platform::Module& module : model.chassis().modules) {
    if ((asked->mask.get() >> (module.slot - 1) & 1) == 0) continue;
    for (std::uint32_t port = 0; port < module.ports.size(); ++port) {
      platform::InterfaceNumber number{};
      number.if_index.set(
          platform::interface_index(platform::fibre_channel_port(module.slot - 1, port)));
      records.add(number);
    }
  }
  return records.take();
}

Answer handle_auto_created(const Request& request, Switch& model) {
  return answer_interface(request, model, [](const Port& port) {
    platform::AutoCreated answer{};
    answer.auto_created.set(port.auto_created ? 1 : 0);
    return answer;
  });
}

Answer handle_set_condition(const Request& request, Switch& model) {
  const auto* asked = whole_record<platform::PortConditionChange>(request.payload);
  if (asked == nullptr) return Malformed{"port manager: the request is no change of a condition"};
  if (asked->condition.get() > static_cast<std::uint32_t>(platform::PortCondition::kFailed)) {
    return FcdStatus::kUnknownOperation;
  }
  Port* port = model.chassis().port(asked->if_index.get());
  if (port == nullptr) return FcdStatus::kNoSuchInterface;
  port->condition = static_cast<platform::PortCondition>(asked->condition.get());
  return Records().take();
}

Bytes port_manager_status_reply(ByteView, FcdStatus status) {
  platform::PortReplyHead head{};
  head.status.set(static_cast<Status>(status));
  return to_bytes(head);
}

}  // namespace ficon::emulator
