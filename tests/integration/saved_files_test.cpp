/** Saved files through the library: written in pieces at offsets, read in slices. */
#include <doctest/doctest.h>

#include "daemon_process.h"
#include "file_client.h"
#include "wire/fcd_status.h"

using namespace ficon;
using namespace ficon::test;
using wire::FileOperation;

namespace {

using Contents = std::vector<std::uint8_t>;

constexpr std::size_t kSlice = 65535;    // the most that one TLV holds
constexpr std::size_t kNoNotes = 14622;  // magic, header and 254 ports
constexpr std::size_t kFirstPort = 144;  // 57 bytes each
constexpr auto kBadContents = static_cast<std::uint32_t>(FcdStatus::kBadFileContents);

void put(Contents& contents, std::size_t at, std::uint32_t value, std::size_t size) {
  for (std::size_t i = size; i-- > 0; value >>= 8)
    contents[at + i] = static_cast<std::uint8_t>(value);
}

/** As every description of the common CRC-32 has it, bit by bit. */
std::uint32_t crc32(const Contents& contents, std::size_t from) {
  std::uint32_t crc = 0xffffffff;
  for (std::size_t i = from; i < contents.size(); ++i) {
    crc ^= contents[i];
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xedb88320 : 0);
  }
  return ~crc;
}

void seal(Contents& contents) {
  put(contents, 8, static_cast<std::uint32_t>(contents.size()), 4);
  put(contents, 12, crc32(contents, 16), 4);
}

/** Contents of `size` bytes: port 1a blocked, and notes in which no two pieces are alike. */
Contents contents_of(std::size_t size) {
  Contents contents(size);
  std::memcpy(contents.data(), "FCFG", 4);
  put(contents, 4, 1, 2);
  put(contents, 6, 254, 2);
  for (std::size_t port = 0; port < 254; ++port) {
    std::fill_n(&contents[kFirstPort + port * 57 + 1], 24, std::uint8_t{0x40});
  }
  contents[kFirstPort + 0x1a * 57] = 1;
  for (std::size_t i = kNoNotes; i < size; ++i) {
    contents[i] = static_cast<std::uint8_t>(i * 31 + i / 256 + i / 65536);
  }
  seal(contents);
  return contents;
}

struct Director {
  Director() {
    REQUIRE(client.enable());
    REQUIRE(client.operate(FileOperation::kSaveActive, "PROD") == 0);
  }

  std::uint32_t write(const std::uint32_t* key, std::size_t offset, const Contents& contents,
                      std::size_t size) const {
    char name[9] = "PROD";
    return client.call(ficon_cmi_set_saved_file, name, key, static_cast<std::int32_t>(offset),
                       contents.data() + offset, static_cast<std::uint32_t>(size));
  }
  std::uint32_t open() const {
    std::uint32_t key = 0;
    REQUIRE(client.operate(FileOperation::kOpen, "PROD", &key) == 0);
    return key;
  }
  std::uint32_t keep(std::uint32_t key) const {
    return client.operate(FileOperation::kKeep, "", &key);
  }

  /** In pieces of at most `piece` bytes. */
  void upload(std::uint32_t key, const Contents& contents, std::size_t piece) const {
    for (std::size_t at = 0; at < contents.size(); at += piece) {
      REQUIRE(write(&key, at, contents, std::min(piece, contents.size() - at)) == 0);
    }
  }

  /** Slice after slice, each from several offsets within it. */
  Contents download() const {
    Contents contents;
    for (std::uint32_t slice = 0;; ++slice) {
      std::size_t size = 0;
      for (std::uint32_t copied = 1; copied != 0; size += copied) {
        std::uint8_t buffer[10'007];
        char name[9] = "PROD";
        REQUIRE(client.call(ficon_cmi_get_saved_file, name, &slice, static_cast<std::int32_t>(size),
                            buffer, static_cast<std::int32_t>(sizeof buffer), &copied) == 0);
        contents.insert(contents.end(), buffer, buffer + copied);
      }
      if (size < kSlice) return contents;
    }
  }

  ScratchDirectory directory;
  DaemonProcess daemon{directory};
  FileClient client{daemon.socket()};
};

}  // namespace

TEST_CASE_FIXTURE(Director, "Saved files of many sizes come back byte for byte, and last") {
  for (const std::size_t size :
       {kNoNotes, kNoNotes + 1, kSlice, kSlice + 1, std::size_t{200'000}}) {
    CAPTURE(size);
    const Contents contents = contents_of(size);
    const std::uint32_t key = open();
    upload(key, contents, size == kSlice ? kSlice : 20'011);
    REQUIRE(keep(key) == 0);
    CHECK(download() == contents);
    CHECK(client.blocked("PROD", 0x1a));
  }
  daemon.signal(SIGKILL);
  daemon.wait();
  const DaemonProcess again(directory);
  CHECK(download() == contents_of(200'000));
}

TEST_CASE_FIXTURE(Director, "Nothing and a single byte are no contents, and refused whole") {
  const Contents before = download();
  CHECK(before.size() == kNoNotes);
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}}) {
    CAPTURE(size);
    CHECK(write(nullptr, 0, contents_of(kNoNotes), size) == kBadContents);
    const std::uint32_t key = open();
    REQUIRE(write(&key, 0, contents_of(kNoNotes), size) == 0);
    CHECK(keep(key) == kBadContents);
    std::uint32_t dropped = key;
    CHECK(client.operate(FileOperation::kDiscard, "", &dropped) == 0);
    CHECK(download() == before);
  }
}

TEST_CASE_FIXTURE(Director, "Pieces may come in any order; a torn upload waits for the rest") {
  const Contents contents = contents_of(100'000);
  const std::uint32_t key = open();
  REQUIRE(write(&key, 70'000, contents, 30'000) == 0);
  CHECK(keep(key) == kBadContents);
  CHECK_FALSE(client.blocked("PROD", 0x1a));
  REQUIRE(write(&key, 0, contents, 40'000) == 0);
  CHECK(keep(key) == kBadContents);
  REQUIRE(write(&key, 40'000, contents, 30'000) == 0);
  CHECK(keep(key) == 0);
  CHECK(download() == contents);
}

TEST_CASE_FIXTURE(Director, "A corrupt upload is refused whole") {
  const Contents before = download();
  const Contents good = contents_of(20'000);
  const auto refused = [&](const Contents& contents) {
    return write(nullptr, 0, contents, contents.size()) == kBadContents && download() == before;
  };
  for (const std::size_t at : {0U, 5U, 7U, 11U, 15U, 16U, 144U, 14'621U, 14'622U, 19'999U}) {
    CAPTURE(at);
    Contents bad = good;
    bad[at] ^= 0x10;
    CHECK(refused(bad));
  }
  Contents one_sided = good;
  one_sided[kFirstPort + 0x10 * 57 + 25 + 0x20 / 8] |= 0x80 >> (0x20 % 8);
  seal(one_sided);
  CHECK(refused(one_sided));
  Contents with_itself = good;
  with_itself[kFirstPort + 0x10 * 57 + 25 + 0x10 / 8] |= 0x80 >> (0x10 % 8);
  seal(with_itself);
  CHECK(refused(with_itself));
  CHECK(write(nullptr, 0, good, good.size()) == 0);
  CHECK(download() == good);
}

TEST_CASE_FIXTURE(Director, "Reading at the end gives nothing; beyond it is an error") {
  char name[9] = "PROD";
  std::uint8_t byte = 0x77;
  std::uint32_t copied = 7;
  const std::uint32_t* const no_key = nullptr;
  const auto read = [&](std::size_t offset) {
    return client.call(ficon_cmi_get_saved_file, name, no_key, static_cast<std::int32_t>(offset),
                       &byte, 1, &copied);
  };
  CHECK(read(kNoNotes) == 0);
  CHECK(copied == 0);
  CHECK(read(kNoNotes - 1) == 0);
  CHECK(copied == 1);
  CHECK(read(kNoNotes + 1) == 0x40850003);
  const std::uint32_t key = open();
  const std::uint32_t* const edit = &key;
  const std::uint8_t* const data = &byte;
  CHECK(client.call(ficon_cmi_set_saved_file, name, edit, 0x7fffff00, data, 1U) ==
        static_cast<std::uint32_t>(FcdStatus::kFileTooLarge));
}
