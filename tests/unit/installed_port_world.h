/** A platform with interfaces, for the get-next walk over per-port information in installed mode.
 */
#pragma once

#include <map>
#include <vector>

#include "unit/port_info_forms.h"

namespace ficon::test {

inline const PortInfoForm& kByInterface = port_info_forms()[0];
inline const PortInfoForm& kByPortAddress = port_info_forms()[1];

inline constexpr std::uint32_t kPhysical = 1, kPortChannel = 4, kTunnel = 10, kOther = 3;

/** What the platform knows of an interface. */
struct PlayedInterface {
  std::uint32_t type = kPhysical;
  std::uint32_t port_vsan = kFileVsan;
  std::uint8_t trunk_mode = 0;
  std::uint32_t transceiver = 0;
};

/** A platform with interfaces; its answers to the query are given by the ports of `run`. */
class InstalledPortWorld {
 public:
  explicit InstalledPortWorld(std::map<std::uint32_t, PlayedInterface> interfaces)
      : interfaces_(std::move(interfaces)) {
    play_converter(platform, ebcdic);
    auto& on = platform.on;
    on.if_index_get_type = [this](if_index_t if_index, std::uint32_t* type) {
      if (interfaces_.count(if_index) == 0) return 0x40880022U;
      *type = interfaces_[if_index].type;
      return 0U;
    };
    on.pm_cmi_get_port_config = [this](mts_handle_t, std::uint32_t kind, std::uint32_t n,
                                       const ficon_cmi_ifindex_rng_t* range, std::uint32_t* count,
                                       pm_cmi_port_config_t** answer, std::uint32_t wait) {
      CHECK(kind == 1);
      CHECK(n == 1);
      CHECK(wait == 5);
      CHECK(if_index_t{range->first_if} == if_index_t{range->last_if});
      const PlayedInterface& it = interfaces_[range->first_if];
      *count = 1;
      *answer = static_cast<pm_cmi_port_config_t*>(mtrack_alloc(1, 0, 498));
      const Bytes config = record(498).host32(143, it.port_vsan).u8(157, it.trunk_mode);
      std::memcpy(*answer, config.data(), config.size());
      return 0U;
    };
    on.pm_cmi_get_trunk_vsan_info = [this](mts_handle_t, std::uint32_t kind, if_index_t,
                                           std::uint8_t* first, std::uint8_t* second, std::uint8_t*,
                                           std::uint8_t* fourth, std::uint32_t wait) {
      CHECK(kind == 1);
      CHECK(wait == 5);
      CHECK(Bytes(first, first + 512) == zeros(512));
      std::memset(second, 0xff, 512);
      std::memset(fourth, 0xff, 512);
      std::copy(trunk_vsans.begin(), trunk_vsans.end(), first);
      return 0U;
    };
    on.pm_cmi_get_fcot_info = [this](mts_handle_t, std::uint32_t kind, std::uint32_t n,
                                     const ficon_cmi_ifindex_rng_t* range, std::uint32_t* count,
                                     pm_fcot_info_t** answer, std::uint32_t wait) {
      CHECK(kind == 1);
      CHECK(n == 1);
      CHECK(wait == 5);
      *count = 1;
      *answer = handed_out(std::vector<pm_fcot_info_t>(1));
      (*answer)->status = interfaces_[range->first_if].transceiver;
      return 0U;
    };
  }

  /** Walks on from port address 0x10; fcd answers with these ports, which have a VSAN of theirs. */
  std::uint32_t run(const std::vector<Bytes>& ports, std::uint32_t vsan = kFileVsan) {
    expect_getnext_type(platform, kInstalledType);
    expect_codepage(platform);
    Tlvs reply = tlvs();
    reply.add(13, Record(info_head()).be32(116, vsan));
    for (const Bytes& port : ports) reply.add(0, port);
    platform.expect_send(7856).reply(reply);
    return kByPortAddress.get(platform, 2, 0x10, 0x20, nullptr, out);
  }

  /** The interface of the port that was handed out; 0 for none. Frees it. */
  std::uint32_t taken() {
    CHECK((out.list != nullptr) == (out.count == 1));
    const std::uint32_t if_index = out.list == nullptr ? 0 : std::uint32_t{out.list->if_index};
    mtrack_free(out.list);
    out.list = nullptr;
    return if_index;
  }

  ScriptedPlatform platform;
  PortInfoResult out;
  Bytes trunk_vsans = zeros(512);

 private:
  std::map<std::uint32_t, PlayedInterface> interfaces_;
};

}  // namespace ficon::test
