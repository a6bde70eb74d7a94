/** Pictures of a module: ports in two rows, the odd ones above, as they stand on a line card. */
#include <set>

#include "mapped_ports.h"

namespace ficon::ctl {
namespace {

constexpr std::size_t kColumns = 8;  // of a block: sixteen ports

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

std::string cell(const MappedPort& port, bool color) {
  const PortStateName state = state_name(port.state);
  std::string symbol(1, state.symbol);
  if (color) symbol = "\033[" + std::to_string(state.ansi) + "m" + symbol + "\033[0m";
  return symbol + " " + padded(port_address_text(port.port_address), 3) +
         padded(number_text(port.port_number), 5);
}

std::string square(const MappedPort& port, std::size_t x, std::size_t y) {
  const PortStateName state = state_name(port.state);
  const std::string left = std::to_string(x);
  const std::string middle = std::to_string(x + 38);
  const auto line = [&](std::size_t dy, const char* size, const std::string& text) {
    return "<text x=\"" + middle + "\" y=\"" + std::to_string(y + dy) + "\" font-size=\"" + size +
           "\">" + text + "</text>";
  };
  return "<g><title>" + interface_text(port.if_index) + ": " + state.name + "</title><rect x=\"" +
         left + "\" y=\"" + std::to_string(y) +
         "\" width=\"76\" height=\"60\" rx=\"4\" fill=\"white\" stroke=\"" + state.color +
         "\" stroke-width=\"3\"/><rect x=\"" + left + "\" y=\"" + std::to_string(y) +
         "\" width=\"76\" height=\"10\" rx=\"4\" fill=\"" + state.color + "\"/>" +
         line(27, "15", std::string(1, state.symbol) + " " + port_address_text(port.port_address)) +
         line(41, "11", "number " + number_text(port.port_number)) +
         line(54, "11", interface_text(port.if_index)) + "</g>\n";
}

}  // namespace

std::string grid_of(const std::vector<MappedPort>& ports, bool color) {
  std::string text;
  std::set<std::uint8_t> states;
  for (std::size_t block = 0; block < ports.size(); block += 2 * kColumns) {
    for (const std::size_t row : {0u, 1u}) {
      const std::size_t first = block + row;
      if (first >= ports.size()) continue;
      text += padded(interface_text(ports[first].if_index), 8);
      for (std::size_t i = first; i < std::min(ports.size(), block + 2 * kColumns); i += 2) {
        text += cell(ports[i], color);
        states.insert(ports[i].state);
      }
      text.erase(text.find_last_not_of(' ') + 1);
      text += '\n';
    }
    text += '\n';
  }
  text += "state, port address, port number:";
  for (const std::uint8_t state : states) {
    text += std::string("  ") + state_name(state).symbol + ' ' + state_name(state).name;
  }
  return text;
}

std::string svg_of(const std::vector<MappedPort>& ports, const std::string& title) {
  constexpr std::size_t kRowColumns = 16;
  constexpr std::size_t kPitchX = 82;
  constexpr std::size_t kPitchY = 66;
  constexpr std::size_t kTop = 44;
  const std::size_t blocks = (ports.size() + 2 * kRowColumns - 1) / (2 * kRowColumns);
  const std::size_t legend = kTop + blocks * (2 * kPitchY + 14) + 16;
  std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                    std::to_string(kRowColumns * kPitchX + 20) + "\" height=\"" +
                    std::to_string(legend + 16) +
                    "\" font-family=\"sans-serif\" text-anchor=\"middle\">\n"
                    "<rect width=\"100%\" height=\"100%\" fill=\"#f4f4f4\"/>\n"
                    "<text x=\"12\" y=\"28\" font-size=\"18\" text-anchor=\"start\">" +
                    title + "</text>\n";
  for (std::size_t i = 0; i < ports.size(); ++i) {
    const std::size_t block = i / (2 * kRowColumns);
    const std::size_t column = i % (2 * kRowColumns) / 2;
    svg += square(ports[i], 12 + column * kPitchX,
                  kTop + block * (2 * kPitchY + 14) + i % 2 * kPitchY);
  }
  for (std::uint8_t state = 0; state <= 5; ++state) {
    const PortStateName name = state_name(state);
    const std::size_t x = 12 + state * std::size_t{130};
    svg += "<rect x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(legend - 11) +
           "\" width=\"12\" height=\"12\" fill=\"" + name.color + "\"/><text x=\"" +
           std::to_string(x + 18) + "\" y=\"" + std::to_string(legend) +
           "\" font-size=\"13\" text-anchor=\"start\">" + name.symbol + " " + name.name +
           "</text>\n";
  }
  return svg + "</svg>\n";
}

}  // namespace ficon::ctl
