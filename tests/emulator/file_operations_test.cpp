#include "model/file_operations.h"

#include <doctest/doctest.h>

#include <array>
#include <locale>
#include <sstream>

using namespace ficon;
using namespace ficon::emulator;

namespace {

constexpr FileName kProd{0xd7, 0xd9, 0xd6, 0xc4, 0x40, 0x40, 0x40, 0x40};
constexpr FileName kTest{0xe3, 0xc5, 0xe2, 0xe3, 0x40, 0x40, 0x40, 0x40};
constexpr Asker kAlice{.connection = 1, .requester = Requester::kOperator};
constexpr Asker kBob{.connection = 2, .requester = Requester::kAgent};
constexpr std::uint32_t kVsanNumber = 20;

FcdStatus block_port_7(ConfigurationFile& file) {
  return file.set_blocked(7, 1);
}

/** A switch with FICON on VSAN 20 and room for IPL and three more files. */
struct Director {
  Director() {
    director.enable_feature();
    REQUIRE(director.enable_ficon(kVsanNumber, kAlice) == FcdStatus::kDone);
  }
  const ConfigurationFile* file(const FileName& name) {
    return files.find(kVsanNumber, kAlice, {.name = name});
  }
  FileKey open(const Asker& asker, const FileName& name) {
    FileKey key = 0;
    REQUIRE(files.open(kVsanNumber, asker, name, key) == FcdStatus::kDone);
    REQUIRE(key != 0);
    return key;
  }
  FcdStatus block(const Asker& asker, FileTarget target) {
    return files.change(kVsanNumber, asker, target, block_port_7, "port 07 blocked");
  }
  std::uint32_t key_counter() { return director.find_vsan(kVsanNumber)->key_counter; }

  Switch director{SwitchOptions{.max_files = 4}};
  FileOperations files{director};
};

}  // namespace

TEST_CASE("an edit shows only when it is kept") {
  Director d;
  const FileKey key = d.open(kAlice, kProd);
  CHECK(d.block(kAlice, {.key = key}) == FcdStatus::kDone);
  CHECK(d.file(kProd) == nullptr);
  CHECK(d.files.keep(kVsanNumber, kAlice, key) == FcdStatus::kDone);
  REQUIRE(d.file(kProd) != nullptr);
  CHECK(d.file(kProd)->port(7).blocked);
  CHECK(d.files.keep(kVsanNumber, kAlice, key) == FcdStatus::kNoSuchEdit);
}

TEST_CASE("a discarded edit leaves nothing, not even a counted change") {
  Director d;
  const std::uint32_t counter = d.key_counter();
  const FileKey key = d.open(kAlice, kProd);
  CHECK(d.block(kAlice, {.key = key}) == FcdStatus::kDone);
  CHECK(d.files.discard(kVsanNumber, kAlice, key) == FcdStatus::kDone);
  CHECK(d.file(kProd) == nullptr);
  CHECK(d.key_counter() == counter);
}

TEST_CASE("a second editor is refused until the first is gone") {
  Director d;
  d.open(kAlice, kProd);
  FileKey key = 0;
  CHECK(d.files.open(kVsanNumber, kBob, kProd, key) == FcdStatus::kFileBeingEdited);
  CHECK(d.block(kBob, {.name = kProd}) == FcdStatus::kFileBeingEdited);
  CHECK(d.files.erase(kVsanNumber, kBob, kProd) == FcdStatus::kFileBeingEdited);
  CHECK(d.director.sessions.edits.editing(kVsanNumber, kProd)->editor.connection == 1);
  d.director.sessions.connection_closed(1);
  CHECK(d.files.open(kVsanNumber, kBob, kProd, key) == FcdStatus::kDone);
}

TEST_CASE("an edit belongs to its connection") {
  Director d;
  const FileKey key = d.open(kAlice, kProd);
  CHECK(d.files.keep(kVsanNumber, kBob, key) == FcdStatus::kNoSuchEdit);
  CHECK(d.block(kBob, {.key = key}) == FcdStatus::kNoSuchEdit);
}

TEST_CASE("IPL is there from the start and nobody edits it") {
  Director d;
  CHECK(d.file(kIplFile) != nullptr);
  FileKey key = 0;
  CHECK(d.files.open(kVsanNumber, kAlice, kIplFile, key) == FcdStatus::kReservedFile);
  CHECK(d.files.erase(kVsanNumber, kAlice, kIplFile) == FcdStatus::kReservedFile);
  CHECK(d.files.save_active(kVsanNumber, kAlice, kIplFile) == FcdStatus::kReservedFile);
  CHECK(d.block(kAlice, {.name = kIplFile}) == FcdStatus::kReservedFile);
  CHECK(d.files.copy(kVsanNumber, kAlice, kIplFile, kTest) == FcdStatus::kDone);
}

TEST_CASE("while automatic saving is on, IPL follows the active configuration") {
  Director d;
  CHECK(d.block(kAlice, {}) == FcdStatus::kDone);
  CHECK(d.file(kActiveConfiguration)->port(7).blocked);
  CHECK_FALSE(d.file(kIplFile)->port(7).blocked);
  const ModeChange on{&kAutoSave, 1};
  CHECK(d.director.set_modes(kVsanNumber, kAlice, {&on, 1}) == FcdStatus::kDone);
  CHECK(d.file(kIplFile)->port(7).blocked);
  CHECK(d.files.save_active(kVsanNumber, kAlice, kProd) == FcdStatus::kDone);
  const FileKey key = d.open(kAlice, kActiveConfiguration);
  CHECK(d.files.change(
            kVsanNumber, kAlice, {.key = key},
            [](ConfigurationFile& file) { return file.set_blocked(7, 0); },
            "") == FcdStatus::kDone);
  CHECK(d.file(kIplFile)->port(7).blocked);
  CHECK(d.files.keep(kVsanNumber, kAlice, key) == FcdStatus::kDone);
  CHECK_FALSE(d.file(kIplFile)->port(7).blocked);
  CHECK(d.files.apply(kVsanNumber, kAlice, kProd) == FcdStatus::kDone);
  CHECK(d.file(kIplFile)->port(7).blocked);
}

TEST_CASE("a rename takes place when the edit is kept") {
  Director d;
  REQUIRE(d.files.save_active(kVsanNumber, kAlice, kProd) == FcdStatus::kDone);
  const FileKey key = d.open(kAlice, kProd);
  CHECK(d.files.rename(kVsanNumber, kAlice, key, kIplFile) == FcdStatus::kReservedFile);
  CHECK(d.files.rename(kVsanNumber, kAlice, key, kTest) == FcdStatus::kDone);
  CHECK(d.file(kProd) != nullptr);
  CHECK(d.files.keep(kVsanNumber, kAlice, key) == FcdStatus::kDone);
  CHECK(d.file(kProd) == nullptr);
  CHECK(d.file(kTest) != nullptr);
}

TEST_CASE("copies and renames never overwrite") {
  Director d;
  REQUIRE(d.files.save_active(kVsanNumber, kAlice, kProd) == FcdStatus::kDone);
  REQUIRE(d.files.save_active(kVsanNumber, kAlice, kTest) == FcdStatus::kDone);
  CHECK(d.files.copy(kVsanNumber, kAlice, kProd, kTest) == FcdStatus::kFileExists);
  const FileKey key = d.open(kAlice, kProd);
  CHECK(d.files.rename(kVsanNumber, kAlice, key, kTest) == FcdStatus::kFileExists);
}

TEST_CASE("the number of files is bounded") {
  Director d;
  FileName name = kProd;
  for (const std::uint8_t digit : std::array<std::uint8_t, 3>{0xf1, 0xf2, 0xf3}) {
    name[4] = digit;
    CHECK(d.files.save_active(kVsanNumber, kAlice, name) == FcdStatus::kDone);
  }
  CHECK(d.files.save_active(kVsanNumber, kAlice, name) == FcdStatus::kDone);
  FileKey key = 0;
  CHECK(d.files.open(kVsanNumber, kAlice, kTest, key) == FcdStatus::kTooManyFiles);
  CHECK(d.files.copy(kVsanNumber, kAlice, kIplFile, kTest) == FcdStatus::kTooManyFiles);
}

TEST_CASE("files that edits are to create count as files") {
  Director d;
  FileName name = kProd;
  for (const std::uint8_t digit : std::array<std::uint8_t, 3>{0xf1, 0xf2, 0xf3}) {
    name[4] = digit;
    d.open(kAlice, name);
  }
  FileKey key = 0;
  CHECK(d.files.open(kVsanNumber, kBob, kTest, key) == FcdStatus::kTooManyFiles);
  d.director.sessions.connection_closed(kAlice.connection);
  CHECK(d.files.open(kVsanNumber, kBob, kTest, key) == FcdStatus::kDone);
}

TEST_CASE("a refused request changes nothing of an edit") {
  Director d;
  const FileKey key = d.open(kAlice, kProd);
  const auto blocks_then_fails = [](ConfigurationFile& file) {
    const FcdStatus done = file.set_blocked(1, 1);
    return done != FcdStatus::kDone ? done : file.set_blocked(0xfe, 1);
  };
  CHECK(d.files.change(kVsanNumber, kAlice, {.key = key}, blocks_then_fails, "") ==
        FcdStatus::kControlUnitPort);
  CHECK_FALSE(d.files.find(kVsanNumber, kAlice, {.key = key})->port(1).blocked);
}

TEST_CASE("a change that changes nothing is not counted") {
  Director d;
  CHECK(d.block(kAlice, {}) == FcdStatus::kDone);
  const std::uint32_t counter = d.key_counter();
  CHECK(d.block(kAlice, {}) == FcdStatus::kDone);
  CHECK(d.key_counter() == counter);
}

TEST_CASE("names in lower case, with a leading blank or odd characters are refused") {
  Director d;
  FileKey key = 0;
  FileName name = kProd;
  for (const std::uint8_t bad : std::array<std::uint8_t, 4>{0x40, 0x81, 0x4b, 0x01}) {
    name[0] = bad;
    CAPTURE(bad);
    CHECK(d.files.open(kVsanNumber, kAlice, name, key) == FcdStatus::kBadFileName);
  }
}

TEST_CASE("a file is named in letters for people and the store") {
  CHECK(readable(kProd) == "PROD");
  CHECK(readable(kActiveConfiguration) == "the active configuration");
  CHECK(file_object(20, kIplFile) == "vsan/0020/file/IPL");
  CHECK(file_object(20, kActiveConfiguration) == "vsan/0020/active");
}
