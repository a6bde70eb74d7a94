/** Configuration files between processes: edits, their ends, and what the director keeps alike. */
#include <doctest/doctest.h>

#include <tuple>

#include "daemon_process.h"
#include "file_client.h"
#include "wire/fcd_status.h"

using namespace ficon;
using namespace ficon::test;
using wire::FileOperation;

namespace {

constexpr auto kFileBeingEdited = static_cast<std::uint32_t>(FcdStatus::kFileBeingEdited);

struct Director {
  Director() {
    REQUIRE(operator_.enable());
    REQUIRE(operator_.operate(FileOperation::kSaveActive, "PROD") == 0);
  }

  ScratchDirectory directory;
  DaemonProcess daemon{directory};
  FileClient operator_{daemon.socket()};
};

/** Opens a file, blocks port 1a in the edit, says so by a byte, and waits to be killed. */
void edit_and_wait(const std::string& socket, int ready) {
  const FileClient client(socket);
  std::uint32_t key = 0;
  const bool edited = client.operate(FileOperation::kOpen, "PROD", &key) == 0 &&
                      client.block("", 0x1a, 1, &key) == 0;
  if (!edited || write(ready, "1", 1) != 1) _exit(1);
  pause();
}

}  // namespace

TEST_CASE_FIXTURE(Director, "Two editors of a file: the second is refused, and told who holds it") {
  const FileClient agent(daemon.socket(), 2);
  std::uint32_t key = 0;
  std::uint8_t flag = 0xff;
  REQUIRE(agent.operate(FileOperation::kOpen, "PROD", &key, &flag) == 0);
  CHECK(key != 0);
  CHECK(flag == 0);  // a file that was there
  REQUIRE(agent.block("", 0x1a, 1, &key) == 0);

  std::uint32_t none = 0;
  std::uint8_t holder = 0;
  CHECK(operator_.operate(FileOperation::kOpen, "PROD", &none, &holder) == kFileBeingEdited);
  CHECK(holder == 2);
  CHECK(none == 0);
  CHECK(operator_.block("PROD", 0x1b) == kFileBeingEdited);
  CHECK(operator_.operate(FileOperation::kDelete, "PROD") == kFileBeingEdited);
  std::uint32_t stolen = key;
  CHECK(operator_.operate(FileOperation::kKeep, "", &stolen) ==
        static_cast<std::uint32_t>(FcdStatus::kNoSuchEdit));
  CHECK_FALSE(operator_.blocked("PROD", 0x1a));

  std::uint32_t kept = key;
  CHECK(agent.operate(FileOperation::kKeep, "", &kept) == 0);
  CHECK(operator_.blocked("PROD", 0x1a));
  CHECK(operator_.block("PROD", 0x1b) == 0);
}

TEST_CASE_FIXTURE(Director, "The edit of a killed client is discarded, and the file free again") {
  int ready[2];
  REQUIRE(pipe(ready) == 0);
  {
    const Process editor([&] {
      edit_and_wait(daemon.socket(), ready[1]);
      return true;
    });
    close(ready[1]);
    char byte = 0;
    REQUIRE(read(ready[0], &byte, 1) == 1);
    CHECK(operator_.block("PROD", 0x1b) == kFileBeingEdited);
  }  // killed here
  close(ready[0]);
  CHECK(comes_true([&] { return operator_.block("PROD", 0x1b) == 0; }));
  CHECK_FALSE(operator_.blocked("PROD", 0x1a));
  CHECK(operator_.blocked("PROD", 0x1b));
}

TEST_CASE_FIXTURE(Director,
                  "Killed in the middle of an edit, the director has the file as it was") {
  std::uint32_t key = 0;
  REQUIRE(operator_.operate(FileOperation::kOpen, "PROD", &key) == 0);
  REQUIRE(operator_.block("", 0x1a, 1, &key) == 0);
  std::uint32_t fresh = 0;
  REQUIRE(operator_.operate(FileOperation::kOpen, "NEW", &fresh) == 0);
  daemon.signal(SIGKILL);
  daemon.wait();
  DaemonProcess again(directory);
  const FileClient client(again.socket());
  CHECK_FALSE(client.blocked("PROD", 0x1a));
  CHECK(client.names() == std::vector<std::string>{"IPL", "PROD"});
  CHECK(client.operate(FileOperation::kKeep, "", &key) ==
        static_cast<std::uint32_t>(FcdStatus::kNoSuchEdit));
  CHECK(client.block("PROD", 0x1b) == 0);
}

TEST_CASE_FIXTURE(Director, "While active equals saved, IPL follows every active change") {
  REQUIRE(operator_.block("", 0x10) == 0);
  CHECK_FALSE(operator_.blocked("IPL", 0x10));
  REQUIRE(operator_.call(ficon_cmi_auto_save_config, std::uint8_t{1}) == 0);
  CHECK(operator_.blocked("IPL", 0x10));
  REQUIRE(operator_.block("", 0x11) == 0);
  REQUIRE(operator_.prohibit("", masks_of(7)) == 0);
  CHECK(operator_.blocked("IPL", 0x11));
  CHECK(operator_.masks("IPL") == masks_of(7));
  REQUIRE(operator_.operate(FileOperation::kApply, "PROD") == 0);
  CHECK_FALSE(operator_.blocked("IPL", 0x11));
  REQUIRE(operator_.call(ficon_cmi_auto_save_config, std::uint8_t{0}) == 0);
  REQUIRE(operator_.block("", 0x12) == 0);
  CHECK_FALSE(operator_.blocked("IPL", 0x12));
}

TEST_CASE_FIXTURE(Director, "A prohibit set on one side stands on both, in the file that has it") {
  ficon_cmi_prohibit_entry_t entry{};
  entry.port_address = 0x10;
  entry.bitset[0x21 / 8] = 0x80 >> (0x21 % 8);
  char name[9] = "PROD";
  std::uint32_t* const no_key = nullptr;
  std::uint32_t* const no_status = nullptr;
  REQUIRE(operator_.call(ficon_cmi_file_set_prohibit_bitset, name, no_key, &entry, 1U, no_status) ==
          0);
  const Masks masks = operator_.masks("PROD");
  CHECK(masks[0x21][0x10 / 8] == 0x80 >> (0x10 % 8));
  CHECK(masks[0x10][0x21 / 8] == 0x80 >> (0x21 % 8));
  CHECK(operator_.masks("") == Masks{});
}

TEST_CASE_FIXTURE(Director,
                  "Files are copied, renamed, applied, saved and deleted for all to see") {
  const FileClient other(daemon.socket(), 2);
  REQUIRE(operator_.block("PROD", 0x33) == 0);
  REQUIRE(operator_.copy("PROD", "TEST") == 0);
  CHECK(operator_.copy("PROD", "TEST") == static_cast<std::uint32_t>(FcdStatus::kFileExists));
  CHECK(other.blocked("TEST", 0x33));
  std::uint32_t key = 0;
  REQUIRE(operator_.operate(FileOperation::kOpen, "TEST", &key) == 0);
  REQUIRE(operator_.operate(FileOperation::kRename, "NIGHT", &key) == 0);
  CHECK(other.names() == std::vector<std::string>{"IPL", "PROD", "TEST"});
  REQUIRE(operator_.operate(FileOperation::kKeep, "", &key) == 0);
  CHECK(other.names() == std::vector<std::string>{"IPL", "NIGHT", "PROD"});
  REQUIRE(operator_.operate(FileOperation::kApply, "NIGHT") == 0);
  CHECK(other.blocked("", 0x33));
  REQUIRE(other.block("", 0x34) == 0);
  REQUIRE(operator_.operate(FileOperation::kSaveActive, "PROD") == 0);
  CHECK(other.blocked("PROD", 0x34));
  REQUIRE(operator_.operate(FileOperation::kDelete, "NIGHT") == 0);
  CHECK(operator_.operate(FileOperation::kDelete, "NIGHT") ==
        static_cast<std::uint32_t>(FcdStatus::kNoSuchFile));
  CHECK(operator_.operate(FileOperation::kDelete, "ipl") == 0x40850017);
  CHECK(other.names() == std::vector<std::string>{"IPL", "PROD"});
}

TEST_CASE_FIXTURE(Director, "Every usable port's prohibits in one request; one more is refused") {
  REQUIRE(operator_.prohibit("PROD", masks_of(3)) == 0);
  CHECK(operator_.masks("PROD") == masks_of(3));
  CHECK(operator_.prohibit("PROD", masks_of(5), kPorts + 1) != 0);
  CHECK(operator_.masks("PROD") == masks_of(3));
  CHECK(operator_.block("PROD", 0x01) == 0);  // the refused request's edit was discarded
}

TEST_CASE_FIXTURE(Director, "A swap gives each of two ports the other's settings in every file") {
  REQUIRE(operator_.copy("PROD", "TEST") == 0);
  REQUIRE(operator_.block("PROD", 0x01) == 0);
  REQUIRE(operator_.block("TEST", 0x3c) == 0);
  REQUIRE(operator_.prohibit("", masks_of(9)) == 0);
  const std::uint32_t first = operator_.ports("").at(0x01).if_index.get();
  const std::uint32_t second = operator_.ports("").at(0x3c).if_index.get();
  const auto settings = [&](const char* file, std::uint32_t if_index) {
    for (const wire::PortInfo& port : operator_.ports(file)) {
      if (port.if_index.get() != if_index) continue;
      return std::tuple(port.port_address.get(), port.blocked != 0,
                        std::to_array(port.prohibited.raw));
    }
    FAIL("no such interface");
    return std::tuple(0U, false, std::array<std::uint8_t, 32>{});
  };
  const auto swap = [&] {
    ficon_cmi_swap_reply_t* record = nullptr;
    REQUIRE(operator_.call_plain(ficon_cmi_swap_port, 0x01U, 0x3cU, &record) == 0);
    mtrack_free(record);
  };
  std::vector<decltype(settings("", first))> before;
  for (const char* file : {"", "PROD", "TEST"}) {
    before.push_back(settings(file, first));
    before.push_back(settings(file, second));
  }
  swap();
  std::size_t i = 0;
  for (const char* file : {"", "PROD", "TEST"}) {
    CHECK(settings(file, second) == before[i++]);
    CHECK(settings(file, first) == before[i++]);
  }
  CHECK(before[0] != before[1]);
  CHECK(before[2] != before[3]);
  swap();
  CHECK(settings("", first) == before[0]);
  CHECK(settings("TEST", second) == before[5]);
}

TEST_CASE_FIXTURE(Director, "Names of every printable character come back in every code page") {
  std::vector<ficon_cmi_port_name_entry_t> entries(4);
  for (std::size_t i = 0; i < 4 * 24; ++i) {
    ficon_cmi_port_name_entry_t& entry = entries[i / 24];
    entry.port_address = static_cast<std::uint32_t>(0x40 + i / 24);
    entry.port_name[i % 24] = static_cast<char>(i < 95 ? ' ' + i : 'x');
  }
  for (const std::uint32_t page :
       {37U,   273U,  277U,  278U,  280U,  284U,  285U,  297U,  500U,  871U, 1047U,
        1140U, 1141U, 1142U, 1143U, 1144U, 1145U, 1146U, 1147U, 1148U, 1149U}) {
    CAPTURE(page);
    REQUIRE(operator_.call(ficon_cmi_set_codepage, page) == 0);
    char name[9] = "PROD";
    std::uint32_t* const no_key = nullptr;
    std::uint32_t* const no_status = nullptr;
    REQUIRE(operator_.call(ficon_cmi_file_set_port_name_portaddr, name, no_key, entries.data(), 4U,
                           no_status) == 0);
    const auto ports = operator_.ports("PROD");
    for (const ficon_cmi_port_name_entry_t& entry : entries) {
      CHECK(std::memcmp(ports[entry.port_address].port_name.raw, entry.port_name, 24) == 0);
    }
  }
}
