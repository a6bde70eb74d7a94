/** `ficonctl matrix`: the prohibit matrix of a file, drawn for the terminal or as a picture. */
#include <algorithm>
#include <iterator>

#include "command.h"
#include "file_client.h"
#include "whole_file.h"

namespace ficon::ctl {
namespace {

struct MatrixArguments {
  std::string vsan;
  std::string file;
  std::string ports;
  std::string output;
};

enum class Cell : std::uint8_t { kFree, kProhibited, kBlocked, kNotInstalled, kItself };

/** How a cell is shown: in the terminal, and in the picture. */
struct Look {
  const char* name;
  char symbol;
  const char* ansi;
  const char* fill;
};

const Look& look_of(Cell cell) {
  static constexpr Look kLooks[] = {
      {"free", '.', "", "#ffffff"},
      {"prohibited", 'X', "\033[31m", "#e8958c"},
      {"blocked", '#', "\033[33m", "#f0b429"},
      {"not installed", '-', "\033[2m", "#eef0f3"},
      {"the port itself", '\\', "\033[2m", "#d0d4da"},
  };
  return kLooks[static_cast<std::size_t>(cell)];
}

Cell cell(const PortTable& ports, std::uint32_t row, std::uint32_t column) {
  if (row == column) return Cell::kItself;
  if (ports[row].prohibited[column]) return Cell::kProhibited;
  if (ports[row].blocked || ports[column].blocked) return Cell::kBlocked;
  if (!ports[row].installed || !ports[column].installed) return Cell::kNotInstalled;
  return Cell::kFree;
}

struct Matrix {
  FileName file;
  PortTable ports;
  std::vector<std::uint32_t> shown;
};

Matrix read_matrix(Context& context, const MatrixArguments& arguments) {
  Matrix matrix{.file = file_or_active(arguments.vsan, arguments.file), .ports = {}, .shown = {}};
  matrix.ports = read_ports(context.session, matrix.file);
  matrix.shown = arguments.ports.empty() ? ports_of_interest(matrix.ports)
                                         : parse_port_addresses(arguments.ports);
  return matrix;
}

/** The address, and behind it what else there is to say of the port. */
std::string label(std::uint32_t address, const Port& port) {
  std::string text = address_text(address);
  if (!port.name.empty()) text += " " + port.name;
  if (port.blocked) text += " (blocked)";
  if (!port.installed) text += " (not installed)";
  return text;
}

constexpr Cell kLegend[] = {Cell::kFree, Cell::kProhibited, Cell::kBlocked, Cell::kNotInstalled,
                            Cell::kItself};

std::string colored(Cell cell) {
  const Look& look = look_of(cell);
  return *look.ansi == '\0' ? std::string(1, look.symbol)
                            : look.ansi + std::string(1, look.symbol) + "\033[0m";
}

/** The columns' addresses stand upright, one digit above the other. */
std::string header_lines(const Matrix& matrix) {
  std::string tens = "    ";
  std::string units = "    ";
  for (const std::uint32_t address : matrix.shown) {
    const std::string digits = address_text(address);
    tens += std::string(" ") + digits[0];
    units += std::string(" ") + digits[1];
  }
  return tens + "\n" + units + "\n";
}

std::string draw(const Matrix& matrix, bool color) {
  std::string text = matrix.file.text() + "\n" + header_lines(matrix);
  for (const std::uint32_t row : matrix.shown) {
    text += "  " + address_text(row);
    for (const std::uint32_t column : matrix.shown) {
      const Cell c = cell(matrix.ports, row, column);
      text += " " + (color ? colored(c) : std::string(1, look_of(c).symbol));
    }
    const std::string more = label(row, matrix.ports[row]).substr(2);
    text += (more.empty() ? "" : " " + more) + "\n";
  }
  for (const Cell c : kLegend) {
    text += std::string("  ") + look_of(c).symbol + " " + look_of(c).name + " ";
  }
  text.back() = '\n';
  return text;
}

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

constexpr int kCellSize = 16;
constexpr int kTitleHeight = 36;
constexpr int kLegendPitch = 130;

std::string attribute(const char* name, int value) {
  return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
}

/** With the terminal's symbol too, for eyes and printers that see no colour. */
void draw_cell(std::string& svg, Cell c, int x, int y, const std::string& title) {
  svg += "<g><title>" + title + "</title><rect" + attribute("x", x) + attribute("y", y) +
         attribute("width", kCellSize) + attribute("height", kCellSize) + " fill=\"" +
         look_of(c).fill + "\" stroke=\"#b8bec8\"/>";
  if (c != Cell::kFree) {
    svg += "<text class=\"s\"" + attribute("x", x + kCellSize / 2) + attribute("y", y + 12) + ">" +
           look_of(c).symbol + "</text>";
  }
  svg += "</g>\n";
}

/** Where the cells begin: the margins have room for the longest label. */
struct Place {
  int left;
  int top;
  int extent;
};

Place place_of(const Matrix& matrix) {
  constexpr int kCharacterWidth = 7;  // of the monospaced labels, rounded up
  std::size_t longest = 0;
  for (const std::uint32_t address : matrix.shown) {
    longest = std::max(longest, label(address, matrix.ports[address]).size());
  }
  const int margin = static_cast<int>(longest) * kCharacterWidth + 20;
  return {margin, kTitleHeight + margin, static_cast<int>(matrix.shown.size()) * kCellSize};
}

void draw_labels(std::string& svg, const Matrix& matrix, const Place& place, std::size_t i) {
  const std::uint32_t address = matrix.shown[i];
  const std::string text = escaped(label(address, matrix.ports[address]));
  const int middle = static_cast<int>(i) * kCellSize + kCellSize / 2 + 4;
  svg += "<text" + attribute("x", place.left - 8) + attribute("y", place.top + middle) +
         " text-anchor=\"end\">" + text + "</text>\n<text transform=\"translate(" +
         std::to_string(place.left + middle) + "," + std::to_string(place.top - 8) +
         ") rotate(-90)\">" + text + "</text>\n";
}

/** Free cells, most of a matrix, are left to the grid behind all. */
void draw_row(std::string& svg, const Matrix& matrix, const Place& place, std::size_t row) {
  for (std::size_t column = 0; column < matrix.shown.size(); ++column) {
    const Cell c = cell(matrix.ports, matrix.shown[row], matrix.shown[column]);
    if (c == Cell::kFree) continue;
    draw_cell(svg, c, place.left + static_cast<int>(column) * kCellSize,
              place.top + static_cast<int>(row) * kCellSize,
              address_text(matrix.shown[row]) + " with " + address_text(matrix.shown[column]) +
                  ": " + look_of(c).name);
  }
}

void draw_legend(std::string& svg, int y) {
  int x = kCellSize;
  for (const Cell c : kLegend) {
    draw_cell(svg, c, x, y, look_of(c).name);
    svg += "<text" + attribute("x", x + 22) + attribute("y", y + 12) + ">" + look_of(c).name +
           "</text>\n";
    x += kLegendPitch;
  }
}

std::string draw_svg(const Matrix& matrix) {
  const Place place = place_of(matrix);
  const int legend_width = static_cast<int>(std::size(kLegend)) * kLegendPitch;
  std::string svg =
      "<svg xmlns=\"http://www.w3.org/2000/svg\"" +
      attribute("width", std::max(place.left + place.extent, legend_width) + 20) +
      attribute("height", place.top + place.extent + 52) +
      " font-family=\"monospace\" font-size=\"11\">\n"
      "<style>.s{font-weight:bold;text-anchor:middle}</style>\n"
      "<defs><pattern id=\"grid\" patternUnits=\"userSpaceOnUse\"" +
      attribute("x", place.left) + attribute("y", place.top) + attribute("width", kCellSize) +
      attribute("height", kCellSize) +
      "><rect width=\"16\" height=\"16\" fill=\"#fff\" stroke=\"#b8bec8\"/></pattern></defs>\n"
      "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n"
      "<text x=\"16\" y=\"24\" font-size=\"14\">Prohibit matrix of " +
      escaped(matrix.file.text()) + "</text>\n<rect" + attribute("x", place.left) +
      attribute("y", place.top) + attribute("width", place.extent) +
      attribute("height", place.extent) + " fill=\"url(#grid)\" stroke=\"#b8bec8\"/>\n";
  for (std::size_t i = 0; i < matrix.shown.size(); ++i) {
    draw_labels(svg, matrix, place, i);
    draw_row(svg, matrix, place, i);
  }
  draw_legend(svg, place.top + place.extent + 20);
  return svg + "</svg>\n";
}

void show(Context& context, const MatrixArguments& arguments) {
  const Matrix matrix = read_matrix(context, arguments);
  if (matrix.shown.empty()) {
    context.output.show(Json::array(), "no port is installed and none has settings");
    return;
  }
  context.output.show(to_json(matrix.ports, matrix.shown), draw(matrix, context.output.color));
}

void write_svg(Context& context, const MatrixArguments& arguments) {
  const std::string svg = draw_svg(read_matrix(context, arguments));
  if (arguments.output.empty()) {
    context.output.raw(svg);
    return;
  }
  write_file(arguments.output, svg);
  context.output.show({{"written", arguments.output}}, "written to " + arguments.output);
}

}  // namespace

void register_matrix(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "matrix", "The prohibit matrix of a configuration file");
  auto arguments = keep<MatrixArguments>();
  const auto add = [&](const char* name, const char* help,
                       void (*run)(Context&, const MatrixArguments&)) -> CLI::App& {
    CLI::App& action =
        add_action(object, name, help, [&context, arguments, run] { run(context, *arguments); });
    action.add_option("VSAN", arguments->vsan, "VSAN number")->required();
    action.add_option("--file", arguments->file, "File (default: the active configuration)");
    action.add_option("--ports", arguments->ports,
                      "Port addresses (default: installed ones and those with settings)");
    return action;
  };
  add("show", "Draw the matrix in the terminal", show);
  add("svg", "Draw the matrix as an SVG picture", write_svg)
      .add_option("-o,--output", arguments->output, "Where to (default: standard output)");
}

}  // namespace ficon::ctl
