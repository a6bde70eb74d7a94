#include <doctest/doctest.h>
#include <platform/mts.h>
#include <platform/tlv_array.h>
#include <transport/message.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "fake_daemon.h"

using namespace ficon::test;

namespace {

struct Walk {
  std::vector<std::uint16_t> types;
  std::uint32_t end;  // what the walk ended with
};

Walk walk(const void* array, std::uint32_t alignment = 1) {
  Walk result{};
  std::uint32_t cursor = 0;
  std::uint16_t type = 0, length = 0;
  void* value = nullptr;
  while ((result.end = tlv_aligned_array_get_next_tlv(array, &type, &length, &value, alignment,
                                                      &cursor)) == 0) {
    result.types.push_back(type);
    REQUIRE(result.types.size() < 1000);
  }
  return result;
}

constexpr std::uint32_t kEnd = 61;
constexpr std::uint32_t kMalformed = 74;

/** An array as a handle receives it, its true length known. */
class Received {
 public:
  explicit Received(const Bytes& payload) {
    daemon_.listen();
    mts_msg_ref_t request{};
    const mts_send_opts_t send_options{{1, 1}};
    REQUIRE(mts_send(handle_, 0xfe000000, 101, 1, "x", 1, &request, 0, &send_options) == 0);
    daemon_.accept();
    daemon_.reply(mts_rr_token_get(&request), payload);
    const mts_recv_opts_t options{{1, 0, 1000, mts_rr_token_get(&request)}};
    REQUIRE(mts_recv(handle_, &reply_, &options) == 0);
  }
  const void* array() { return mts_payload_get(&reply_); }

 private:
  FakeDaemon daemon_;
  Handle handle_{daemon_.endpoint()};
  mts_msg_ref_t reply_{};
};

}  // namespace

TEST_CASE("TLV array: bytes as documented, without padding at alignment 1") {
  Bytes buffer(64);
  CHECK(tlv_aligned_array_size_get(buffer.data(), 1) == 4);
  CHECK(tlv_aligned_array_get_num_tlvs(buffer.data(), 1) == 0);
  CHECK(tlv_aligned_array_add_tlv(buffer.data(), 64, 0x1122, 3, "\xa1\xa2\xa3", 1) == 0);
  CHECK(tlv_aligned_array_add_tlv(buffer.data(), 64, 0x3344, 1, "\xb1", 1) == 0);
  CHECK(tlv_aligned_array_size_get(buffer.data(), 1) == 16);
  buffer.resize(16);
  CHECK(buffer == hex("00000010 1122 0003 a1a2a3 3344 0001 b1"));
  CHECK(tlv_aligned_array_get_num_tlvs(buffer.data(), 1) == 2);
  const Walk walked = walk(buffer.data());
  CHECK(walked.types == std::vector<std::uint16_t>{0x1122, 0x3344});
  CHECK(walked.end == kEnd);
}

TEST_CASE("TLV array: each TLV is padded to the alignment") {
  Bytes buffer(64);
  CHECK(tlv_aligned_array_add_tlv(buffer.data(), 64, 0x1122, 3, "\xa1\xa2\xa3", 8) == 0);
  CHECK(tlv_aligned_array_add_tlv(buffer.data(), 64, 0x3344, 0, nullptr, 8) == 0);
  buffer.resize(24);
  CHECK(buffer == hex("00000018 00000000 1122 0003 a1a2a3 00 3344 0000 00000000"));
  CHECK(walk(buffer.data(), 8).types.size() == 2);
}

TEST_CASE("TLV array: add stops at the capacity and leaves the array as it was") {
  Bytes buffer(20, 0);
  CHECK(tlv_aligned_array_add_tlv(buffer.data(), 16, 1, 8, "abcdefgh", 1) == 0);
  const Bytes before = buffer;
  CHECK(tlv_aligned_array_add_tlv(buffer.data(), 16, 2, 0, nullptr, 1) == 28);
  CHECK(tlv_aligned_array_add_tlv(buffer.data(), 16, 2, 0xffff, "x", 1) == 28);
  CHECK(buffer == before);
  CHECK(tlv_aligned_array_add_tlv(buffer.data(), 3, 2, 0, nullptr, 1) == 28);
}

TEST_CASE("TLV array: add refuses what it cannot build on") {
  Bytes buffer = hex("00000002 00000000 00000000");
  CHECK(tlv_aligned_array_add_tlv(buffer.data(), 12, 1, 0, nullptr, 1) == 74);
  CHECK(tlv_aligned_array_add_tlv(nullptr, 12, 1, 0, nullptr, 1) == 22);
  Bytes empty(12);
  CHECK(tlv_aligned_array_add_tlv(empty.data(), 12, 1, 4, nullptr, 1) == 22);
  Bytes garbage(12, 0xee);
  CHECK(tlv_aligned_array_add_tlv(garbage.data(), 12, 1, 0, nullptr, 1) == 28);
}

TEST_CASE("TLV array: a null array has no TLVs and no size") {
  CHECK(tlv_aligned_array_get_num_tlvs(nullptr, 1) == 0);
  CHECK(tlv_aligned_array_size_get(nullptr, 1) == 0);
  CHECK(walk(nullptr).end == kMalformed);
}

TEST_CASE("TLV array: a malformed rest ends the walk with an error, not with silence") {
  struct {
    const char* name;
    Bytes array;
    std::size_t good;
  } const arrays[] = {
      {"value beyond the end", hex("0000000d 0001 0001 aa 0002 0001"), 1},
      {"half a head", hex("0000000b 0001 0001 aa 0002"), 1},
      {"one byte over", hex("0000000a 0001 0001 aa ff"), 1},
      {"length of everything", hex("00000008 0001 ffff"), 0},
      {"size below its own field", hex("00000003 0001 0000"), 0},
  };
  for (const auto& malformed : arrays) {
    CAPTURE(malformed.name);
    CHECK(tlv_aligned_array_get_num_tlvs(malformed.array.data(), 1) ==
          static_cast<std::int32_t>(malformed.good) + 1);
    const Walk walked = walk(malformed.array.data());
    CHECK(walked.types.size() == malformed.good);
    CHECK(walked.end == kMalformed);
  }
}

TEST_CASE("TLV array: a reply that claims more than was received is malformed") {
  for (const char* claim : {"00000013", "00010000", "7fffffff", "ffffffff"}) {
    CAPTURE(claim);
    Received reply(hex(claim) + hex("0001 0001 aa 0002 0001 bb 0003 0000"));
    CHECK(tlv_aligned_array_get_num_tlvs(reply.array(), 1) == 1);
    CHECK(walk(reply.array()).end == kMalformed);
  }
  Received honest(hex("00000012 0001 0001 aa 0002 0001 bb 0003 0000"));
  CHECK(walk(honest.array()).types.size() == 3);
  Received shorter(hex("0000000e 0001 0001 aa 0002 0001 bb 0003 0000"));
  CHECK(walk(shorter.array()).types.size() == 2);
  Received tiny(hex("0000"));
  CHECK(walk(tiny.array()).end == kMalformed);
}

TEST_CASE("TLV array: of replies that several threads hold, each ends where it ends") {
  const Bytes whole = hex("0000000d 0001 0001 aa 0002 0000");
  const Bytes cut_off = hex("0000000d 0001 0001 aa");  // the zeros behind it would be a TLV
  std::atomic<int> wrong = 0;
  const auto hold_and_walk = [&] {
    ficon::platform::Message first, second;
    for (int i = 0; i < 20'000; ++i) {
      for (auto [message, bytes] : {std::pair(&first, &whole), std::pair(&second, &cut_off)}) {
        message->prepare(bytes->size());
        std::ranges::copy(*bytes, message->room());
        message->finish(bytes->size());
      }
      if (walk(first.payload()).end != kEnd) ++wrong;
      if (walk(second.payload()).end != kMalformed) ++wrong;
    }
  };
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) threads.emplace_back(hold_and_walk);
  for (std::thread& thread : threads) thread.join();
  CHECK(wrong == 0);
}

TEST_CASE("TLV array: values are writable in the walk") {
  Bytes array = hex("00000009 0001 0001 aa");
  std::uint32_t cursor = 0;
  std::uint16_t type = 0, length = 0;
  void* value = nullptr;
  REQUIRE(tlv_aligned_array_get_next_tlv(array.data(), &type, &length, &value, 1, &cursor) == 0);
  *static_cast<std::uint8_t*>(value) = 0;
  CHECK(array == hex("00000009 0001 0001 00"));
}
