#include "everything_readable.h"

#include <platform/ficon_base.h>

#include "handlers/tlv_message.h"
#include "protocol/port_map.h"
#include "protocol/services.h"
#include "wire/address.h"
#include "wire/file_request.h"
#include "wire/history.h"
#include "wire/host_data.h"
#include "wire/limits.h"
#include "wire/opcode.h"
#include "wire/port_info_request.h"
#include "wire/port_numbers.h"
#include "wire/prohibit_settings.h"

namespace ficon::fuzz {
namespace {

using emulator::to_bytes;
using wire::Opcode;
using wire::TlvType;

/** Of nobody who changes anything. */
constexpr emulator::ConnectionId kReader = 99;

template <class Record>
void begin(Record& record, wire::MessageType type, wire::Subtype subtype) {
  ficon_init_cmi_hdr(&record, static_cast<std::uint32_t>(type), "FUZZ", "UNKNOWN",
                     static_cast<std::uint32_t>(subtype));
}

template <class Record>
Bytes array_of(TlvType type, const Record& record) {
  return emulator::TlvReply().add(type, record).take();
}

class Reader {
 public:
  explicit Reader(emulator::Service& service) : service_(service) {}

  Bytes ask(std::uint32_t sap, std::uint32_t opcode, Bytes payload) {
    service_.apply(kReader, {1, wire::kFcdNode, sap, opcode, payload});
    const auto replies = service_.finish_turn();
    require(replies.size() == 1, "a question has one answer");
    learned_.push_back({sap, opcode, std::move(payload), replies[0].message.payload});
    return learned_.back().reply;
  }
  Bytes ask(Opcode opcode, Bytes payload) {
    return ask(wire::kRequestSap, static_cast<std::uint32_t>(opcode), std::move(payload));
  }
  std::vector<Learned> take() { return std::move(learned_); }

 private:
  emulator::Service& service_;
  std::vector<Learned> learned_;
};

void read_file(Reader& reader, std::uint32_t vsan, const wire::FileNameField& name) {
  wire::FileRequest asked{};
  begin(asked, wire::MessageType::kGet, wire::Subtype::kFile);
  asked.vsan.set(vsan);
  asked.file_name = name;
  reader.ask(Opcode::kGetSavedFile, array_of(TlvType::kFileRequest, asked));
}

void read_files(Reader& reader, std::uint32_t vsan) {
  wire::FileRequest asked{};
  begin(asked, wire::MessageType::kGet, wire::Subtype::kFile);
  asked.vsan.set(vsan);
  const Bytes reply = reader.ask(Opcode::kFileInfo, array_of(TlvType::kFileRequest, asked));
  const auto message = emulator::TlvMessage::parse(reply);
  require(message.has_value(), "the answer about files is well-formed");
  read_file(reader, vsan, {});  // the active configuration
  for (const auto& tlv : message->tlvs()) {
    if (tlv.type != TlvType::kFileInfo) continue;
    const auto info = emulator::leading_record<wire::FileInfo>(tlv.value);
    wire::FileNameField name{};
    std::copy_n(info.file_name.raw, sizeof name.raw, name.raw);
    read_file(reader, vsan, name);
  }
}

void read_vsan(Reader& reader, std::uint32_t vsan) {
  wire::CmiHeader header{};
  begin(header, wire::MessageType::kGet, wire::Subtype::kVsan);
  header.vsan.set(vsan);
  reader.ask(Opcode::kVsanInfo, array_of(TlvType::kHeader, header));
  wire::GetHostDataRequest host_data{};
  host_data.vsan.set(vsan);
  reader.ask(Opcode::kGetHostData, to_bytes(host_data));
  wire::MihTimeout timeout{};
  timeout.mih_arg.set(vsan);
  timeout.operation = static_cast<std::uint8_t>(wire::MihOperation::kGet);
  reader.ask(Opcode::kMihTimeout, to_bytes(timeout));
  read_files(reader, vsan);
}

void read_vsans(Reader& reader) {
  const Bytes vsans =
      reader.ask(static_cast<std::uint32_t>(platform::ServiceSap::kFiconBase),
                 static_cast<std::uint32_t>(platform::FiconBaseOpcode::kEnabledVsans), {});
  for (Input words(ByteView(vsans).subspan(sizeof(platform::EnabledVsansHead))); !words.empty();) {
    read_vsan(reader, emulator::leading_record<wire::be32>(words.take(4)).get());
  }
}

void read_ports(Reader& reader) {
  wire::PortInfoRequest asked{};
  begin(asked, wire::MessageType::kGet, wire::Subtype::kPortInfo);
  asked.selector.set(static_cast<std::uint32_t>(wire::PortSelector::kEveryPortNumber));
  reader.ask(Opcode::kPortInfo, array_of(TlvType::kPortInfoRequest, asked));
  wire::PortNumberReservation reserved{};
  reserved.operation = wire::kReservedLogical;
  reader.ask(Opcode::kReservePortNumbers, to_bytes(reserved));
  reserved.operation = wire::kReservedForModule;
  for (std::uint32_t module = 1; module <= 16; ++module) {
    reserved.module.set(module);
    reader.ask(Opcode::kReservePortNumbers, to_bytes(reserved));
  }
}

void read_switch(Reader& reader) {
  wire::LimitBlock limit{};
  begin(limit, wire::MessageType::kGet, wire::Subtype::kLimits);
  reader.ask(Opcode::kGetNextType, to_bytes(limit));
  wire::MihTimeout timeout{};
  timeout.operation = static_cast<std::uint8_t>(wire::MihOperation::kGetDefault);
  reader.ask(Opcode::kMihTimeout, to_bytes(timeout));
  wire::ProhibitRequest prohibit{};
  begin(prohibit, wire::MessageType::kGet, wire::Subtype::kProhibit);
  for (const auto operation :
       {wire::ProhibitOperation::kGetDefault, wire::ProhibitOperation::kGetAclNotFcid}) {
    prohibit.operation.set(static_cast<std::uint32_t>(operation));
    reader.ask(Opcode::kProhibitSettings, to_bytes(prohibit));
  }
  wire::HistoryRequest history{};
  begin(history, wire::MessageType::kGet, wire::Subtype::kHistory);
  history.hist_op.set(static_cast<std::uint32_t>(wire::HistoryOperation::kLatest));
  reader.ask(Opcode::kHistory, array_of(TlvType::kHistoryRequest, history));
}

}  // namespace

std::vector<Learned> everything_readable(emulator::Service& service) {
  Reader reader(service);
  read_switch(reader);
  read_ports(reader);
  read_vsans(reader);
  return reader.take();
}

bool same(const std::vector<Learned>& before, const std::vector<Learned>& after) {
  const auto [was, is] = std::ranges::mismatch(before, after);
  if (was == before.end() && is == after.end()) return true;
  if (was == before.end() || is == after.end()) {
    std::fprintf(stderr, "%zu answers became %zu\n", before.size(), after.size());
    return false;
  }
  const auto byte = std::ranges::mismatch(was->reply, is->reply).in1 - was->reply.begin();
  std::fprintf(stderr,
               "the reply to opcode %u, SAP %u (%zu bytes, then %zu) differs from byte %td\n",
               was->opcode, was->sap, was->reply.size(), is->reply.size(), byte);
  return false;
}

}  // namespace ficon::fuzz
