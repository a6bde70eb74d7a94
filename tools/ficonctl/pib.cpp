/** `ficonctl pib`: what the switch, its modules and its ports say of themselves. */
#include <cstring>

#include "command.h"
#include "interface_index/interface_index.h"
#include "parse.h"
#include "wire/pib.h"
#include "wire/port_plan.h"

namespace ficon::ctl {
namespace {

constexpr std::uint32_t kMostModules = 16;

template <std::size_t N>
std::string text_of(const wire::bytes<N>& field) {
  const auto* text = reinterpret_cast<const char*>(field.raw);
  return {text, strnlen(text, N)};
}

std::vector<wire::PibContents> read_records(Session& session, std::uint32_t key) {
  constexpr std::uint8_t kFirst = 0;
  constexpr std::uint8_t kLast = 255;
  const std::string what = "cannot read the identification block";
  mts_msg_ref_t request{};
  session.require(what, ficon_cmi_send_get_pib, key, kFirst, kLast, &request);
  mts_msg_ref_t reply = receive_reply(session, &request, what);
  const MessageDrop drop(session.handle(), &reply);
  std::uint8_t first = 0;
  std::uint8_t last = 0;
  ficon_cmi_pib_rec_t* records = nullptr;
  const std::uint32_t status = ficon_cmi_parse_getpib(&reply, 0, &first, &last, &records);
  std::vector<wire::PibContents> contents;
  if (status == 0) {
    contents.resize(last - first + 1U);
    std::memcpy(contents.data(), records, contents.size() * sizeof *records);
  }
  mtrack_free(records);
  if (status != 0) throw session.failure(status, what);
  return contents;
}

std::string name_of(const wire::PibContents& record) {
  switch (record.kind) {
    case wire::PibKind::kSwitch:
      return "switch";
    case wire::PibKind::kModule:
      return "module " + std::to_string(record.module);
    case wire::PibKind::kPort:
      return platform::interface_name(record.if_index.get());
  }
  return "kind " + std::to_string(static_cast<unsigned>(record.kind));
}

void show(Context& context, const std::string& module) {
  const std::uint32_t key = module.empty() ? 0 : parse_number(module, 1, kMostModules, "module");
  Json json = Json::array();
  Table table({"WHAT", "TYPE", "MODEL", "SERIAL", "TAG"});
  for (const wire::PibContents& record : read_records(context.session, key)) {
    const std::uint16_t tag = record.tag.get();
    const bool tagged = tag != wire::kNoPort;
    json.push_back({{"what", name_of(record)},
                    {"type", text_of(record.type)},
                    {"model", text_of(record.model)},
                    {"serial", text_of(record.serial)},
                    {"tag", tagged ? Json(tag) : Json()}});
    table.add({name_of(record), text_of(record.type), text_of(record.model), text_of(record.serial),
               tagged ? std::to_string(tag) : "-"});
  }
  context.output.show(json, table);
}

}  // namespace

void register_pib(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "pib", "The product identification block");
  auto module = keep<std::string>();
  add_action(object, "show", "Show the switch and its modules, or the ports of a module",
             [&context, module] { show(context, *module); })
      .add_option("--module", *module, "Its ports")
      ->type_name("M");
}

}  // namespace ficon::ctl
