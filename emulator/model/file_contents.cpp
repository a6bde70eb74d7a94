#include "model/file_contents.h"

#include <zlib.h>

#include <algorithm>
#include <bit>

namespace ficon::emulator {
namespace {

constexpr std::array<std::uint8_t, 4> kMagic{'F', 'C', 'F', 'G'};
constexpr std::uint16_t kVersion = 1;
constexpr std::uint16_t kPorts = kLastUsablePortAddress + 1;
constexpr std::size_t kSizeAt = 8;
constexpr std::size_t kChecksumAt = 12;
constexpr std::size_t kHeaderAt = 16;
constexpr std::size_t kPortsAt = kHeaderAt + sizeof(FileHeader);
constexpr std::size_t kPortSize = 1 + sizeof(PortName) + sizeof(PortSet::Mask);
constexpr std::size_t kNotesAt = kPortsAt + kPorts * kPortSize;

template <class Number>
void put(std::uint8_t* at, Number value) {
  for (std::size_t i = sizeof(Number); i-- > 0; value = static_cast<Number>(value >> 8)) {
    at[i] = static_cast<std::uint8_t>(value);
  }
}

std::uint32_t get(const std::uint8_t* at, std::size_t size) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < size; ++i) value = value << 8 | at[i];
  return value;
}

std::uint32_t checksum(std::span<const std::uint8_t> contents) {
  const auto checked = contents.subspan(kHeaderAt);
  return static_cast<std::uint32_t>(
      crc32(crc32(0, nullptr, 0), checked.data(), static_cast<uInt>(checked.size())));
}

void put_port(std::uint8_t* at, const PortSettings& port) {
  *at++ = port.blocked ? 1 : 0;
  at = std::ranges::copy(port.name, at).out;
  std::ranges::copy(port.prohibited.mask(), at);
}

PortSettings get_port(const std::uint8_t* at) {
  PortSettings port;
  port.blocked = *at++ != 0;
  std::copy_n(at, port.name.size(), port.name.begin());
  at += port.name.size();
  PortSet::Mask mask;
  std::copy_n(at, mask.size(), mask.begin());
  port.prohibited = PortSet(mask);
  return port;
}

bool is_whole(std::span<const std::uint8_t> contents) {
  return contents.size() >= kNotesAt && std::equal(kMagic.begin(), kMagic.end(), contents.data()) &&
         get(&contents[4], 2) == kVersion && get(&contents[6], 2) == kPorts &&
         get(&contents[kSizeAt], 4) == contents.size() &&
         get(&contents[kChecksumAt], 4) == checksum(contents);
}

}  // namespace

std::vector<std::uint8_t> to_contents(const ConfigurationFile& file) {
  std::vector<std::uint8_t> contents(kNotesAt);
  std::ranges::copy(kMagic, contents.begin());
  put(&contents[4], kVersion);
  put(&contents[6], kPorts);
  std::ranges::copy(file.header, &contents[kHeaderAt]);
  for (std::uint32_t a = 0; a < kPorts; ++a) {
    put_port(&contents[kPortsAt + a * kPortSize], file.port(a));
  }
  contents.insert(contents.end(), file.notes.begin(), file.notes.end());
  put(&contents[kSizeAt], static_cast<std::uint32_t>(contents.size()));
  put(&contents[kChecksumAt], checksum(contents));
  return contents;
}

std::optional<ConfigurationFile> from_contents(std::span<const std::uint8_t> contents) {
  if (!is_whole(contents)) return std::nullopt;
  ConfigurationFile file;
  std::copy_n(&contents[kHeaderAt], file.header.size(), file.header.begin());
  for (std::uint32_t a = 0; a < kPorts; ++a) {
    file.restore_port(a, get_port(&contents[kPortsAt + a * kPortSize]));
  }
  const auto notes = contents.subspan(kNotesAt);
  file.notes.assign(notes.begin(), notes.end());
  return file.is_consistent() ? std::optional(std::move(file)) : std::nullopt;
}

}  // namespace ficon::emulator
