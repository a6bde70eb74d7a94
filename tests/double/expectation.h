/** One request that the code under test is expected to send, and what becomes of it. */
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <initializer_list>
#include <optional>

#include "double/bytes.h"
#include "double/golden.h"

namespace ficon::test {

/** What waits for a receive: errors first, then perhaps a message. */
struct Reply {
  std::deque<std::int32_t> errors;
  bool arrives = false;
  std::optional<Bytes> payload;
};

class Expectation {
 public:
  Expectation(std::uint32_t opcode, std::optional<Golden> payload)
      : opcode_(opcode), payload_(std::move(payload)) {}

  Expectation& to(std::uint32_t node, std::uint32_t sap) {
    node_ = node;
    sap_ = sap;
    return *this;
  }
  /** Leading words of the send options; the rest is always zero. Default 1, 1. */
  Expectation& options(std::uint32_t word0, std::uint32_t word1) {
    options_ = {word0, word1};
    return *this;
  }
  Expectation& without_options() {
    has_options_ = false;
    return *this;
  }
  /** The send gives -1, and the transport's error number is `error`. */
  Expectation& fails(std::int32_t error) { return returns(-1, error); }
  Expectation& returns(std::int32_t result, std::int32_t error = 0) {
    result_ = result;
    error_ = error;
    return *this;
  }
  /** `slack` zeroed bytes stand behind the payload, as behind a real transport's. */
  Expectation& reply(Bytes payload, std::size_t slack = 0) {
    payload.resize(payload.size() + slack);
    reply_.arrives = true;
    reply_.payload = std::move(payload);
    return *this;
  }
  Expectation& reply_without_payload() {
    reply_.arrives = true;
    return *this;
  }
  /** Receives that fail with these error numbers before the reply, or instead of one. */
  Expectation& recv_errors(std::initializer_list<std::int32_t> errors) {
    reply_.errors = errors;
    return *this;
  }

 private:
  friend class ScriptedPlatform;

  std::uint32_t opcode_;
  std::optional<Golden> payload_;
  std::uint32_t node_ = 0xfe000000;
  std::uint32_t sap_ = 101;
  std::array<std::uint32_t, 2> options_{1, 1};
  bool has_options_ = true;
  std::int32_t result_ = 0;
  std::int32_t error_ = 0;
  Reply reply_;
};

}  // namespace ficon::test
