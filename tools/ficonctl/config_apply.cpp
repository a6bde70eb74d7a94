#include "config_apply.h"

#include <platform/feature_services.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <set>

#include "configuration/configuration.h"
#include "parse.h"
#include "wire/limits.h"
#include "wire/port_numbers.h"
#include "wire/saved_config.h"

namespace ficon::ctl {
namespace {

using Kind = ConfigLine::Kind;

/** How a line is carried out and taken back, for whoever has the session. */
class Applier {
 public:
  explicit Applier(Session& session) : session_(session) {}

  void apply(const ConfigLine& line);
  void take_back();

 private:
  void remember(std::function<void()> undo) { undo_.push_back(std::move(undo)); }
  void require(std::uint32_t status, const ConfigLine& line) {
    if (status != 0) throw session_.failure(status, "line " + std::to_string(line.line));
  }
  void enable_feature(const ConfigLine& line);
  void enable_vsan(const ConfigLine& line);
  void set_default_prohibit(const ConfigLine& line);
  void set_mih_timeout(const ConfigLine& line);
  void set_logging_level(const ConfigLine& line);
  void assign_numbers(const ConfigLine& line, bool logical);
  void set_port_number(const ConfigLine& line);
  void set_port_address(const ConfigLine& line);
  std::uint32_t mih(wire::MihOperation operation, std::uint32_t timeout,
                    ficon_cmi_mihpto_rec_t* record);
  std::uint32_t reserve(std::uint8_t operation, std::uint32_t module,
                        std::vector<NumberRange>& ranges, std::string& why);

  Session& session_;
  std::vector<std::function<void()>> undo_;
};

std::uint32_t module_of_slot(std::uint32_t slot) {
  return slot;
}

void Applier::apply(const ConfigLine& line) {
  switch (line.kind) {
    case Kind::kFeature:
      return enable_feature(line);
    case Kind::kVsan:
      return enable_vsan(line);
    case Kind::kDefaultProhibit:
      return set_default_prohibit(line);
    case Kind::kMihTimeout:
      return set_mih_timeout(line);
    case Kind::kSlotNumbers:
    case Kind::kNoSlotNumbers:
      return assign_numbers(line, false);
    case Kind::kLogicalNumbers:
      return assign_numbers(line, true);
    case Kind::kNoLogicalNumbers:
      return;  // what is removed is said again, whole, by the line that assigns
    case Kind::kPortNumber:
      return set_port_number(line);
    case Kind::kPortAddress:
      return set_port_address(line);
    case Kind::kLoggingLevel:
      return set_logging_level(line);
  }
}

void Applier::take_back() {
  for (auto undo = undo_.rbegin(); undo != undo_.rend(); ++undo) (*undo)();
}

void Applier::enable_feature(const ConfigLine& line) {
  constexpr std::uint32_t kAlreadyOn = 0x40aa0005;
  const std::uint32_t status =
      fm_cmi_set_feature_wait(session_.handle(), "ficon", Session::word_a(), Session::word_b(), 3);
  if (status != kAlreadyOn) require(status, line);
}

void Applier::enable_vsan(const ConfigLine& line) {
  require(session_.ask(ficon_cmi_set_ficon_state, line.value, std::uint8_t{1}), line);
  remember([this, vsan = line.value] {
    session_.ask(ficon_cmi_set_ficon_state, vsan, std::uint8_t{0});
  });
}

void Applier::set_default_prohibit(const ConfigLine& line) {
  std::uint32_t before = 0;
  require(session_.ask(ficon_cmi_get_port_default_prohibit, &before), line);
  require(session_.ask(ficon_cmi_set_port_default_prohibit, 1U), line);
  remember([this, before] { session_.ask(ficon_cmi_set_port_default_prohibit, before); });
}

std::uint32_t Applier::mih(wire::MihOperation operation, std::uint32_t timeout,
                           ficon_cmi_mihpto_rec_t* record) {
  return session_.ask(ficon_cmi_mihpto, static_cast<std::uint8_t>(operation), 0U, timeout, record);
}

void Applier::set_mih_timeout(const ConfigLine& line) {
  ficon_cmi_mihpto_rec_t before{};
  require(mih(wire::MihOperation::kGetDefault, 0, &before), line);
  const auto old = std::bit_cast<wire::MihTimeout>(before).timeout.get();
  // Setting is not answered: what became of it is read back.
  require(mih(wire::MihOperation::kSetDefault, encode_mih_timeout(line.value), &before), line);
  remember([this, old] {
    ficon_cmi_mihpto_rec_t unused{};
    mih(wire::MihOperation::kSetDefault, old, &unused);
  });
  ficon_cmi_mihpto_rec_t now{};
  require(mih(wire::MihOperation::kGetDefault, 0, &now), line);
  if (std::bit_cast<wire::MihTimeout>(now).timeout.get() != encode_mih_timeout(line.value)) {
    throw Failure(0, "not-taken",
                  "line " + std::to_string(line.line) + ": the time-out was refused",
                  "look at ficonctl mihpto get");
  }
}

void Applier::set_logging_level(const ConfigLine& line) {
  require(platform::set_logging_level(session_.handle(), session_.wait(), line.value), line);
}

std::uint32_t Applier::reserve(std::uint8_t operation, std::uint32_t module,
                               std::vector<NumberRange>& ranges, std::string& why) {
  std::uint32_t firsts[wire::kReservedRanges] = {};
  std::uint32_t lasts[wire::kReservedRanges] = {};
  auto count =
      static_cast<std::int32_t>(std::min<std::size_t>(ranges.size(), wire::kReservedRanges));
  for (std::int32_t i = 0; i < count; ++i) {
    firsts[i] = ranges[static_cast<std::size_t>(i)].first;
    lasts[i] = ranges[static_cast<std::size_t>(i)].last;
  }
  char text[wire::kReserveText + 1] = "";
  std::uint32_t result = 0;
  const std::uint32_t status = session_.ask(ficon_cmi_reserve_portnum, operation, module, 0U,
                                            &result, &count, firsts, lasts, text);
  why = text;
  if (status == 0 && wire::reserve_is_query(operation)) {
    ranges.clear();
    for (std::int32_t i = 0; i < count; ++i) ranges.push_back({firsts[i], lasts[i]});
  }
  return status;
}

std::vector<NumberRange> ranges_of(const std::vector<std::uint32_t>& numbers) {
  std::vector<NumberRange> ranges;
  for (const std::uint32_t number : numbers) {
    if (!ranges.empty() && ranges.back().last + 1 == number) {
      ranges.back().last = number;
    } else {
      ranges.push_back({number, number});
    }
  }
  return ranges;
}

/** The numbers that are there are released first: the line names all that are to be. */
void Applier::assign_numbers(const ConfigLine& line, bool logical) {
  const std::uint32_t module = logical ? 0 : module_of_slot(line.value);
  const std::uint8_t query = logical ? wire::kReservedLogical : wire::kReservedForModule;
  const std::uint8_t release = logical ? wire::kReleaseLogical : wire::kReleaseOfModule;
  const std::uint8_t take = logical ? wire::kReserveLogical : wire::kReserveForModule;
  std::string why;
  std::vector<NumberRange> before;
  require(reserve(query, module, before, why), line);
  if (!before.empty()) require(reserve(release, module, before, why), line);
  remember([this, take, module, before] {
    std::string unused;
    auto ranges = before;
    reserve(take, module, ranges, unused);
  });
  auto wanted = ranges_of(line.numbers);
  if (wanted.empty()) return;
  if (const std::uint32_t status = reserve(take, module, wanted, why)) {
    throw session_.failure(status, "line " + std::to_string(line.line) + ": " + why);
  }
  remember([this, release, module, wanted] {
    std::string unused;
    auto ranges = wanted;
    reserve(release, module, ranges, unused);
  });
}

void Applier::set_port_number(const ConfigLine& line) {
  require(ficon_cmi_set_portnum(session_.handle(), wire::kAssignPortNumber, line.if_index,
                                line.value, session_.wait()),
          line);
  remember([this, line] {
    ficon_cmi_set_portnum(session_.handle(), wire::kReleasePortNumber, line.if_index, line.value,
                          session_.wait());
  });
}

void Applier::set_port_address(const ConfigLine& line) {
  require(session_.ask(ficon_cmi_set_pa_if, static_cast<std::uint16_t>(line.value), line.if_index),
          line);
}

}  // namespace

std::vector<ConfigLine> plan_config(Session& session, const std::vector<ConfigLine>& wanted) {
  std::set<std::string> there;
  for (const ConfigLine& line : parse_config(running_text(session, {}))) there.insert(line.text());
  std::vector<ConfigLine> plan;
  for (const ConfigLine& line : wanted) {
    if (there.insert(line.text()).second) plan.push_back(line);
  }
  return plan;
}

void carry_out(Session& session, const std::vector<ConfigLine>& plan) {
  Applier applier(session);
  try {
    for (const ConfigLine& line : plan) applier.apply(line);
  } catch (const Failure&) {
    applier.take_back();
    throw;
  }
}

}  // namespace ficon::ctl
