#include "double/scripted_platform.h"

#include <arpa/inet.h>
#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "double/console_capture.h"
#include "double/message.h"

namespace ficon::test {
namespace {

ScriptedPlatform* the_platform = nullptr;

/** Calls that only look at what a message holds; they would drown the order of the others. */
bool is_detail(std::string_view line) {
  return line.starts_with("tlv_") || line.starts_with("mts_payload_get") ||
         line.starts_with("mts_errno_get") || line.starts_with("ficon_init_cmi_hdr") ||
         line.starts_with("malloc") || line.starts_with("syserr2str") ||
         line.starts_with("sdwrap_");
}

std::string in_short(const std::string& line) {
  const std::string name = line.substr(0, line.find(' '));
  if (name == "mts_send") {
    const auto opcode = line.find("opcode=") + 7;
    return "send " + line.substr(opcode, line.find(' ', opcode) - opcode);
  }
  if (name == "mts_rr_token_get") return "token";
  if (name == "mts_recv") return "recv";
  if (name == "mts_drop") return line.find(" request") != line.npos ? "drop request" : "drop reply";
  return name;
}

}  // namespace

ScriptedPlatform::ScriptedPlatform() {
  if (the_platform != nullptr) throw std::logic_error("one scripted platform at a time");
  the_platform = this;
  on.hton_if_index = [](if_index_t value) { return htonl(value); };
  on.ntoh_if_index = [](if_index_t value) { return ntohl(value); };
  begin_capture();
}

ScriptedPlatform::~ScriptedPlatform() {
  end_capture();
  the_platform = nullptr;
}

ScriptedPlatform* ScriptedPlatform::active() {
  return the_platform;
}

ScriptedPlatform& ScriptedPlatform::require(const char* function) {
  if (the_platform == nullptr) {
    throw std::logic_error(std::string(function) + " called without a scripted platform");
  }
  return *the_platform;
}

Expectation& ScriptedPlatform::expect_send(std::uint32_t opcode) {
  return script_.emplace_back(opcode, std::nullopt);
}
Expectation& ScriptedPlatform::expect_send(std::uint32_t opcode, Golden payload) {
  return script_.emplace_back(opcode, std::move(payload));
}

ScriptedPlatform& ScriptedPlatform::ficon_enabled_on(std::vector<std::uint32_t> vsans) {
  enabled_.scripted = true;
  enabled_.vsans = std::move(vsans);
  return *this;
}
ScriptedPlatform& ScriptedPlatform::enabled_vsans_send_fails(std::uint32_t error) {
  enabled_.scripted = true;
  enabled_.send_error = error;
  return *this;
}
ScriptedPlatform& ScriptedPlatform::enabled_vsans_recv_fails(std::int32_t error) {
  enabled_.scripted = true;
  enabled_.recv_error = error;
  return *this;
}
ScriptedPlatform& ScriptedPlatform::enabled_vsans_parse_fails(std::uint32_t error) {
  enabled_.scripted = true;
  enabled_.parse_error = error;
  return *this;
}
ScriptedPlatform& ScriptedPlatform::enabled_vsans_status(std::uint32_t status) {
  enabled_.scripted = true;
  enabled_.status = status;
  return *this;
}
ScriptedPlatform& ScriptedPlatform::enabled_vsans_count(std::int32_t count) {
  enabled_.scripted = true;
  enabled_.count = count;
  return *this;
}

ScriptedPlatform& ScriptedPlatform::lock_answers(std::vector<std::uint32_t> statuses) {
  lock_.scripted = true;
  lock_.answers = std::move(statuses);
  return *this;
}
ScriptedPlatform& ScriptedPlatform::lock_send_fails(std::int32_t error) {
  lock_.scripted = true;
  lock_.send_error = error;
  return *this;
}
ScriptedPlatform& ScriptedPlatform::lock_may_stay() {
  lock_.may_stay = true;
  return *this;
}

ScriptedPlatform& ScriptedPlatform::feature_answers(std::uint32_t status) {
  on.fm_cmi_set_feature_wait = [status](auto...) { return status; };
  return *this;
}

std::vector<std::string> ScriptedPlatform::calls(
    std::initializer_list<std::string_view> names) const {
  if (names.size() == 0) return calls_;
  std::vector<std::string> found;
  std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(found), [&](const auto& line) {
    const std::string_view name = std::string_view(line).substr(0, line.find(' '));
    return std::find(names.begin(), names.end(), name) != names.end();
  });
  return found;
}

std::string ScriptedPlatform::lines(std::initializer_list<std::string_view> names) const {
  std::string text;
  for (const std::string& line : calls(names)) text += line + "\n";
  return text;
}

std::string ScriptedPlatform::order() const {
  std::string text;
  for (const std::string& line : calls_) {
    if (!is_detail(line)) text += (text.empty() ? "" : ", ") + in_short(line);
  }
  return text;
}

std::vector<Bytes> ScriptedPlatform::sent(std::uint32_t opcode) const {
  std::vector<Bytes> payloads;
  for (const auto& [sent_opcode, payload] : sent_) {
    if (sent_opcode == opcode) payloads.push_back(payload);
  }
  return payloads;
}

std::string ScriptedPlatform::printed() const {
  return captured();
}

bool ScriptedPlatform::messages_dropped() const {
  return std::all_of(messages_.begin(), messages_.end(),
                     [](const auto& message) { return message->released(); });
}

bool ScriptedPlatform::lock_balanced() const {
  return std::all_of(lock_.held.begin(), lock_.held.end(),
                     [](const auto& entry) { return entry.second == 0; });
}

std::vector<std::string> ScriptedPlatform::leaks() const {
  std::vector<std::string> lines;
  for (const auto& [block, what] : blocks_) lines.push_back(what);
  return lines;
}

void ScriptedPlatform::release_leaks() {
  for (const auto& [block, what] : std::exchange(blocks_, {})) {
    std::free(const_cast<void*>(block));
  }
}

std::vector<std::string> ScriptedPlatform::complaints() const {
  std::vector<std::string> found;
  for (std::size_t i = played_; i < script_.size(); ++i) {
    found.push_back("never sent: opcode " + std::to_string(script_[i].opcode_));
  }
  for (const auto& message : messages_) {
    if (!message->released()) found.push_back("never dropped: " + message->described());
  }
  if (!lock_balanced() && !lock_.may_stay) found.push_back("the lock is still held");
  for (const std::string& line : leaks()) found.push_back("never released: " + line);
  return found;
}

bool ScriptedPlatform::finished() const {
  const auto found = complaints();
  for (const std::string& complaint : found) MESSAGE(complaint);
  return found.empty();
}

void ScriptedPlatform::problem(const std::string& text) const {
  FAIL_CHECK(text);
}

ScriptedPlatform& ScriptedPlatform::fail_call(int n, std::int32_t error) {
  fail_call_ = n;
  fail_error_ = error;
  return *this;
}
ScriptedPlatform& ScriptedPlatform::fail_allocation(int n) {
  fail_allocation_ = n;
  return *this;
}

bool ScriptedPlatform::faulted(const std::string& line) {
  if (fail_call_ == 0 || --fail_call_ != 0) return false;
  fault_ = line;
  error_ = fail_error_;
  return true;
}

bool ScriptedPlatform::allocation_fails() {
  return fail_allocation_ != 0 && --fail_allocation_ == 0;
}

void ScriptedPlatform::allocated(const void* block, std::string what) {
  if (block != nullptr) blocks_[block] = std::move(what);
}

std::string ScriptedPlatform::released(const void* block) {
  const auto node = blocks_.extract(block);
  return node.empty() ? "" : node.mapped();
}

}  // namespace ficon::test
