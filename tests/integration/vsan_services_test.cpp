/** Host data and history between processes: the library in each, one daemon. */
#include <doctest/doctest.h>
#include <ficon_cmi.h>
#include <platform/mts.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "daemon_process.h"
#include "own_process.h"
#include "wire/history.h"

using namespace ficon;
using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 20;
constexpr std::uint32_t kWait = 20'000;
constexpr std::uint32_t kLockUnavailable = 0x40850012;

struct SharedDirector {
  SharedDirector() { REQUIRE(enabled()); }

  bool enabled() {
    const Connected own(daemon.socket());
    return own.get() != nullptr &&
           ficon_cmi_set_ficon_state(1, own.get(), "TEST", "INTEGRATION", kWait, kVsan, 1) == 0;
  }

  ScratchDirectory directory;
  DaemonProcess daemon{directory, {"--history", "50000"}};
};

std::uint8_t pattern(std::size_t i) {
  return static_cast<std::uint8_t>(i * 31 + i / 256);
}

bool write_pieces(const std::string& socket) {
  const Connected own(socket);
  std::vector<std::uint8_t> block(16384);
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = pattern(i);
  std::uint32_t piece = 1;  // pieces of 1, 3, 7, 15... bytes, the rest in one
  for (std::uint32_t offset = 0; offset < block.size(); offset += piece, piece = piece * 2 + 1) {
    piece = std::min<std::uint32_t>(piece, static_cast<std::uint32_t>(block.size()) - offset);
    if (ficon_cmi_set_host_data(3, own.get(), "TEST", "WRITER", kWait, kVsan, offset,
                                block.data() + offset, piece) != 0) {
      return false;
    }
  }
  return true;
}

/** `count` entries: each change of the FCID's last byte is one. */
bool make_history(const std::string& socket, std::uint32_t count) {
  const Connected own(socket);
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t status = kLockUnavailable;
    while (status == kLockUnavailable) {  // the other writer was quicker, again and again
      status = ficon_cmi_set_fcid_last_byte(1, own.get(), "TEST", "WRITER", kWait, kVsan,
                                            static_cast<std::uint8_t>(i % 255 + 1));
    }
    if (status != 0) return false;
  }
  return true;
}

/** The positions that one step of a walk brings; `key` moves on. */
std::vector<std::uint32_t> step(mts_handle_t handle, std::uint32_t& key, std::uint32_t& lost) {
  std::uint32_t count = 0;
  std::uint32_t word = 0;
  ficon_cmi_hist_entry_t* entries = nullptr;
  REQUIRE(ficon_cmi_get_history_summary(2, handle, "TEST", "READER", kWait, 1, &key, 0, 7, 0,
                                        &count, &word, &entries) == 0);
  std::vector<std::uint32_t> positions;
  for (std::uint32_t i = 0; i < count; ++i) {
    wire::HistoryField field;
    __builtin_memcpy(&field, entries[i].field, sizeof field);
    positions.push_back(field.position.get());
  }
  if (count != 0) lost += word;
  mtrack_free(entries);
  return positions;
}

}  // namespace

TEST_CASE_FIXTURE(SharedDirector, "Host data written in pieces are read back by another process") {
  Process writer([&] { return write_pieces(daemon.socket()); });
  REQUIRE(writer.succeeded());
  const Connected own(daemon.socket());
  std::vector<std::uint8_t> data(16384);
  std::uint32_t length = 0;
  REQUIRE(ficon_cmi_get_host_data(2, own.get(), "TEST", "READER", kWait, kVsan, data.data(),
                                  &length) == 0);
  CHECK(length == 16384);
  for (std::size_t i = 0; i < data.size(); ++i) REQUIRE(data[i] == pattern(i));
}

TEST_CASE_FIXTURE(SharedDirector, "A write that the host data have no room for changes nothing") {
  const Connected own(daemon.socket());
  const std::vector<std::uint8_t> bytes(385, 0x5a);
  CHECK(ficon_cmi_set_host_data(3, own.get(), "TEST", "WRITER", kWait, kVsan, 16000, bytes.data(),
                                385) == 0x40850003);
  std::vector<std::uint8_t> data(16384, 0x77);
  std::uint32_t length = 0x7777;
  CHECK(ficon_cmi_get_host_data(2, own.get(), "TEST", "READER", kWait, kVsan, data.data(),
                                &length) == 0);
  CHECK(length == 0);
  CHECK(ficon_cmi_get_host_data(2, own.get(), "TEST", "READER", kWait, 21, data.data(), &length) ==
        0x40890005);
}

TEST_CASE_FIXTURE(SharedDirector, "A walk of the history while others write: each entry once") {
  constexpr std::uint32_t kChanges = 300;
  Process first([&] { return make_history(daemon.socket(), kChanges); });
  Process second([&] { return make_history(daemon.socket(), kChanges); });
  const Connected own(daemon.socket());
  std::uint32_t key = 0;
  std::uint32_t lost = 0;
  std::uint32_t next = 1;
  for (bool writing = true; writing;) {
    const bool first_writes = first.running();
    const bool second_writes = second.running();
    writing = first_writes || second_writes;
    for (auto positions = step(own.get(), key, lost); !positions.empty();
         positions = step(own.get(), key, lost)) {
      for (const std::uint32_t position : positions) REQUIRE(position == next++);
      REQUIRE(key == next - 1);
    }
    if (!writing) break;
    usleep(1000);
  }
  CHECK(first.ended_well());
  CHECK(second.ended_well());
  CHECK(lost == 0);
  CHECK(next > kChanges);  // both write the same bytes, so some changes change nothing
}

TEST_CASE_FIXTURE(SharedDirector, "Limits and time-outs set by one process hold for another") {
  Process writer([&] {
    const Connected own(daemon.socket());
    ficon_cmi_mihpto_rec_t reply{};
    return ficon_cmi_set_getnext_type(1, own.get(), "TEST", "WRITER", kWait, 2) == 0 &&
           ficon_cmi_set_max_ports(1, own.get(), "TEST", "WRITER", kWait, 512) == 0 &&
           ficon_cmi_set_max_ports(1, own.get(), "TEST", "WRITER", kWait, 1281) == 0x408900c4 &&
           ficon_cmi_mihpto(1, own.get(), "TEST", "WRITER", kWait, 0, kVsan, 0x44, nullptr) == 0 &&
           ficon_cmi_mihpto(1, own.get(), "TEST", "WRITER", kWait, 2, kVsan, 0, &reply) == 0;
  });
  REQUIRE(writer.succeeded());
  const Connected own(daemon.socket());
  std::uint32_t type = 0;
  CHECK(ficon_cmi_get_getnext_type(2, own.get(), "TEST", "READER", kWait, &type) == 0);
  CHECK(type == 2);
  ficon_cmi_mihpto_rec_t reply{};
  CHECK(ficon_cmi_mihpto(2, own.get(), "TEST", "READER", kWait, 2, kVsan, 0, &reply) == 0);
  const auto* timeout = reinterpret_cast<const std::uint8_t*>(&reply);
  CHECK(timeout[3] == 0x44);
  CHECK(timeout[7] == kVsan);
  CHECK(timeout[8] == 2);
}
