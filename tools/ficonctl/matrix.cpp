/** `ficonctl matrix`: the prohibit matrix of a file, drawn for the terminal or as a picture. */
#include <algorithm>
#include <fstream>

#include "command.h"
#include "file_client.h"

namespace ficon::ctl {
namespace {

struct MatrixArguments {
  std::string vsan;
  std::string file;
  std::string ports;
  std::string output;
};

enum class Cell : char {
  kItself = '\\',
  kFree = '.',
  kProhibited = 'X',
  kBlocked = '#',
  kNotInstalled = '-',
};

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
  Matrix matrix{.file = {parse_vsan(arguments.vsan), arguments.file}, .ports = {}, .shown = {}};
  matrix.ports = read_ports(context.session, matrix.file);
  matrix.shown = arguments.ports.empty() ? ports_of_interest(matrix.ports)
                                         : parse_port_addresses(arguments.ports);
  return matrix;
}

std::string label(const Port& port) {
  return port.name + (port.blocked ? " (blocked)" : "") +
         (port.installed ? "" : " (not installed)");
}

std::string colored(Cell cell) {
  const std::string symbol(1, static_cast<char>(cell));
  switch (cell) {
    case Cell::kProhibited:
      return "\033[31m" + symbol + "\033[0m";
    case Cell::kBlocked:
      return "\033[33m" + symbol + "\033[0m";
    case Cell::kNotInstalled:
    case Cell::kItself:
      return "\033[2m" + symbol + "\033[0m";
    case Cell::kFree:
      break;
  }
  return symbol;
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
      text += " " + (color ? colored(c) : std::string(1, static_cast<char>(c)));
    }
    text += "  " + label(matrix.ports[row]);
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text + "  . free   X prohibited   # blocked   - not installed   \\ the port itself\n";
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
constexpr int kLeft = 240;
constexpr int kTop = 220;

const char* fill(Cell cell) {
  switch (cell) {
    case Cell::kItself:
      return "#d0d4da";
    case Cell::kFree:
      return "#ffffff";
    case Cell::kProhibited:
      return "#c0392b";
    case Cell::kBlocked:
      return "#f0b429";
    case Cell::kNotInstalled:
      return "#eef0f3";
  }
  return "#ffffff";
}

void draw_cell(std::string& svg, Cell c, int x, int y, const std::string& title) {
  const std::string at = " x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) + "\"";
  svg += "<rect" + at + " width=\"16\" height=\"16\" fill=\"" + fill(c) +
         "\" stroke=\"#b8bec8\"><title>" + title + "</title></rect>\n";
  if (c == Cell::kProhibited || c == Cell::kBlocked) {
    // the symbol too, for eyes and printers that see no colour
    svg += "<text class=\"s\" x=\"" + std::to_string(x + kCellSize / 2) + "\" y=\"" +
           std::to_string(y + 12) + "\">" + static_cast<char>(c) + "</text>\n";
  }
}

void draw_labels(std::string& svg, const Matrix& matrix, std::size_t i) {
  const std::uint32_t address = matrix.shown[i];
  const std::string text = escaped(address_text(address) + " " + label(matrix.ports[address]));
  const int middle = static_cast<int>(i) * kCellSize + kCellSize / 2 + 4;
  svg += "<text x=\"" + std::to_string(kLeft - 8) + "\" y=\"" + std::to_string(kTop + middle) +
         "\" text-anchor=\"end\">" + text + "</text>\n";
  svg += "<text transform=\"translate(" + std::to_string(kLeft + middle) + "," +
         std::to_string(kTop - 8) + ") rotate(-90)\">" + text + "</text>\n";
}

std::string draw_svg(const Matrix& matrix) {
  const int extent = static_cast<int>(matrix.shown.size()) * kCellSize;
  const std::string width = std::to_string(std::max(kLeft + extent + 20, 760));
  const std::string height = std::to_string(kTop + extent + 50);
  std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" +
                    height +
                    "\" font-family=\"monospace\" font-size=\"11\">\n"
                    "<style>.s{font-weight:bold;text-anchor:middle}</style>\n"
                    "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n"
                    "<text x=\"8\" y=\"20\" font-size=\"14\">Prohibit matrix of " +
                    escaped(matrix.file.text()) + "</text>\n";
  for (std::size_t row = 0; row < matrix.shown.size(); ++row) {
    draw_labels(svg, matrix, row);
    for (std::size_t column = 0; column < matrix.shown.size(); ++column) {
      draw_cell(svg, cell(matrix.ports, matrix.shown[row], matrix.shown[column]),
                kLeft + static_cast<int>(column) * kCellSize,
                kTop + static_cast<int>(row) * kCellSize,
                address_text(matrix.shown[row]) + " with " + address_text(matrix.shown[column]));
    }
  }
  svg += "<text x=\"" + std::to_string(kLeft) + "\" y=\"" + std::to_string(kTop + extent + 28) +
         "\">X prohibited   # blocked   white free   grey not installed</text>\n</svg>\n";
  return svg;
}

void show(Context& context, const MatrixArguments& arguments) {
  const Matrix matrix = read_matrix(context, arguments);
  if (matrix.shown.empty()) {
    context.output.show(Json::array(), "no port is installed and none has settings");
    return;
  }
  context.output.show(to_json(matrix.ports), draw(matrix, context.output.color));
}

void write_svg(Context& context, const MatrixArguments& arguments) {
  const std::string svg = draw_svg(read_matrix(context, arguments));
  if (arguments.output.empty()) {
    context.output.raw(svg);
    return;
  }
  std::ofstream out(arguments.output);
  out << svg;
  if (!out.flush()) {
    throw Failure(0, "not-written", "cannot write " + arguments.output, "see whether it can be");
  }
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
