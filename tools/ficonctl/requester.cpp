#include "requester.h"

#include "parse.h"

namespace ficon::ctl {
namespace {

struct RequesterName {
  std::uint32_t code;
  const char* name;
};
constexpr RequesterName kRequesters[] = {{1, "operator"}, {2, "agent"}, {3, "host"}};

}  // namespace

std::uint32_t parse_requester(const std::string& text) {
  std::vector<std::string> names;
  for (const RequesterName& each : kRequesters) {
    if (text == each.name || text == std::to_string(each.code)) return each.code;
    names.emplace_back(each.name);
  }
  throw UsageError("requester \"" + text + "\" is not operator, agent or host" +
                   did_you_mean(text, names));
}

std::string requester_name(std::uint32_t code) {
  for (const RequesterName& each : kRequesters) {
    if (code == each.code) return each.name;
  }
  return "requester " + std::to_string(code);
}

}  // namespace ficon::ctl
