/** `ficonctl hostdata`: the bytes that the host side keeps on the switch. */
#include <array>
#include <cctype>
#include <cstring>

#include "command.h"
#include "parse.h"
#include "vsan_record.h"
#include "whole_file.h"
#include "wire/code_set.h"
#include "wire/host_data.h"

namespace ficon::ctl {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kBytesALine = 16;

Bytes read_host_data(Context& context, std::uint32_t vsan) {
  Bytes bytes(wire::kHostDataSize);
  std::uint32_t length = 0;
  context.session.require("cannot read the host data of VSAN " + std::to_string(vsan),
                          ficon_cmi_get_host_data, vsan, bytes.data(), &length);
  bytes.resize(length);
  return bytes;
}

std::string to_hex(const Bytes& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xf];
  }
  return text;
}

Bytes from_hex(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    if (std::isspace(static_cast<unsigned char>(c)) != 0) continue;
    if (std::isxdigit(static_cast<unsigned char>(c)) == 0) {
      throw UsageError("\"" + text + "\" is not hexadecimal: two digits a byte");
    }
    digits += c;
  }
  if (digits.size() % 2 != 0) {
    throw UsageError("\"" + text + "\" is an odd number of digits: a byte has two");
  }
  Bytes bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(parse_hex(digits.substr(i, 2), 0xff, "byte")));
  }
  return bytes;
}

struct ReadArguments {
  std::string vsan;
  std::string file;
};

void read_to(Context& context, const ReadArguments& arguments) {
  const std::uint32_t vsan = parse_vsan(arguments.vsan);
  const Bytes bytes = read_host_data(context, vsan);
  if (!arguments.file.empty()) {
    write_file(arguments.file, std::string(bytes.begin(), bytes.end()));
    context.output.show(
        {{"vsan", vsan}, {"length", bytes.size()}, {"file", arguments.file}},
        std::to_string(bytes.size()) + " bytes of host data written to " + arguments.file);
    return;
  }
  context.output.show(
      {{"vsan", vsan}, {"length", bytes.size()}, {"data", to_hex(bytes)}},
      bytes.empty() ? "VSAN " + arguments.vsan + " has no host data" : to_hex(bytes));
}

struct WriteArguments {
  std::string vsan;
  std::string file;
  std::string hex;
  std::string offset = "0";
};

Bytes bytes_to_write(const WriteArguments& arguments) {
  if (arguments.file.empty() == arguments.hex.empty()) {
    throw UsageError("what to write is a FILE or --hex BYTES");
  }
  if (!arguments.hex.empty()) return from_hex(arguments.hex);
  const std::string contents = read_file(arguments.file);
  return {contents.begin(), contents.end()};
}

void write_from(Context& context, const WriteArguments& arguments) {
  const std::uint32_t vsan = parse_vsan(arguments.vsan);
  const std::uint32_t offset = parse_number(arguments.offset, 0, wire::kHostDataSize, "--offset");
  const Bytes bytes = bytes_to_write(arguments);
  if (bytes.size() > wire::kHostDataSize - offset) {
    throw UsageError(std::to_string(bytes.size()) + " bytes from offset " + std::to_string(offset) +
                     " on reach beyond the 16384 of the host data");
  }
  context.session.require("cannot write the host data of VSAN " + arguments.vsan,
                          ficon_cmi_set_host_data, vsan, offset, bytes.data(),
                          static_cast<std::uint32_t>(bytes.size()));
  context.output.show({{"vsan", vsan}, {"offset", offset}, {"length", bytes.size()}},
                      std::to_string(bytes.size()) + " bytes written to the host data of VSAN " +
                          arguments.vsan + ", from offset " + std::to_string(offset) + " on");
}

/** What each byte is for people: its character in the code page, a dot where it has none. */
std::array<char, 256> printable_characters(std::uint32_t codepage) {
  std::array<char, 256> characters;
  for (std::size_t value = 0; value < characters.size(); ++value) {
    const auto byte = static_cast<std::uint8_t>(value);
    std::uint8_t converted = 0;
    const bool known = byte >= 0x40 && convert_codepage_and_copy(codepage, wire::kAsciiCodeSet,
                                                                 &byte, &converted, 1) == 0;
    characters[value] = known && converted < 0x80 && std::isprint(converted) != 0
                            ? static_cast<char>(converted)
                            : '.';
  }
  return characters;
}

std::string dump_line(const Bytes& bytes, std::size_t offset,
                      const std::array<char, 256>& characters) {
  char cell[32];
  std::snprintf(cell, sizeof cell, "%04zx ", offset);
  std::string line = cell;
  std::string text;
  for (std::size_t i = 0; i < kBytesALine; ++i) {
    if (i % 8 == 0) line += ' ';
    if (offset + i >= bytes.size()) {
      line += "   ";
      continue;
    }
    const std::uint8_t byte = bytes[offset + i];
    std::snprintf(cell, sizeof cell, "%02x ", byte);
    line += cell;
    text += characters[byte];
  }
  return line + " |" + text + "|\n";
}

void dump(Context& context, const std::string& vsan_text) {
  const std::uint32_t vsan = parse_vsan(vsan_text);
  const Bytes bytes = read_host_data(context, vsan);
  const std::uint32_t codepage = read_vsan(context.session, vsan).codepage;
  const auto characters = printable_characters(codepage);
  std::string lines;
  std::string text;
  for (std::size_t offset = 0; offset < bytes.size(); offset += kBytesALine) {
    lines += dump_line(bytes, offset, characters);
  }
  for (const std::uint8_t byte : bytes) text += characters[byte];
  context.output.show({{"vsan", vsan},
                       {"codepage", codepage},
                       {"length", bytes.size()},
                       {"data", to_hex(bytes)},
                       {"text", text}},
                      bytes.empty() ? "VSAN " + vsan_text + " has no host data" : lines);
}

}  // namespace

void register_host_data(CLI::App& app, Context& context) {
  CLI::App& object =
      add_object(app, "hostdata", "The bytes that the host side keeps on the switch");
  const auto add_vsan = [](CLI::App& action, std::string& vsan) {
    action.add_option("VSAN", vsan, "VSAN number, 1 to 4093")->required();
  };

  auto reading = keep<ReadArguments>();
  CLI::App& read = add_action(object, "read", "Print the host data as hexadecimal, or save them",
                              [&context, reading] { read_to(context, *reading); });
  add_vsan(read, reading->vsan);
  read.add_option("FILE", reading->file, "Where to save the bytes as they are");

  auto writing = keep<WriteArguments>();
  CLI::App& write = add_action(object, "write", "Write bytes into the host data",
                               [&context, writing] { write_from(context, *writing); });
  add_vsan(write, writing->vsan);
  auto* file = write.add_option("FILE", writing->file, "Whose bytes to write");
  write.add_option("--hex", writing->hex, "The bytes themselves, as hexadecimal")
      ->type_name("BYTES")
      ->excludes(file);
  write.add_option("--offset", writing->offset, "Where they go (default: 0)")->type_name("N");

  auto vsan = keep<std::string>();
  add_vsan(add_action(object, "dump", "Show the host data as hexadecimal and EBCDIC side by side",
                      [&context, vsan] { dump(context, *vsan); }),
           *vsan);
}

}  // namespace ficon::ctl
