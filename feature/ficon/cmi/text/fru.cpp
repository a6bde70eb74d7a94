/** FICON's field-replaceable units: their names, identifiers and states. */
#include <ficon_cmi.h>

#include <cstring>

#include "wire/byte_order.h"
#include "wire/code_set.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kEbcdic = 37;
constexpr std::uint8_t kEbcdicBlank = 0x40;
constexpr std::size_t kListNameLength = 7;

struct FruName {
  std::uint32_t id;
  char name[12];  // NUL-padded; one of 12 characters has no terminator
};

constexpr FruName kFruNames[] = {
    {0, ""},           {1, "SLOT"},       {2, "CHASSIS"},   {3, "BACKPLN"},   {4, "CLOCK"},
    {5, "POWER"},      {6, "FAN"},        {7, "CTLPROC"},   {8, "CTLPROC2"},  {9, "XBAR-A"},
    {10, "XBAR-B"},    {11, "FC16-2G"},   {12, "FC32-2G"},  {13, "IPS8"},     {14, "IPS4"},
    {15, "CACHE"},     {16, "SERVICE"},   {17, "FC12-4G"},  {18, "FC24-4G"},  {19, "FC48-4G"},
    {20, "FC4-10G"},   {21, "MULTI18-4"}, {22, "FC24-8G"},  {23, "FC48-8G"},  {24, "FC32-8G"},
    {25, "ENCRYPT16"}, {26, "FC32-16G"},  {27, "FC48-16G"}, {28, "FC48-32G"}, {29, "FABRIC"},
    {32, "FC64-64G"},
};
static_assert(sizeof kFruNames / sizeof kFruNames[0] == 31);

struct CardType {
  std::uint16_t type;
  std::int32_t fru;
};

/** In the order in which they are searched; the slots' rows of type 0 are never reached by it. */
constexpr CardType kCardTypes[] = {
    {0, 1},   {0, 2},   {0, 3},   {0, 4},   {0, 5},   {0, 6},   {0, 7},   {1, 29},
    {3, 8},   {4, 9},   {5, 10},  {6, 11},  {7, 12},  {8, 13},  {9, 14},  {11, 15},
    {12, 16}, {18, 17}, {21, 18}, {22, 19}, {24, 20}, {25, 21}, {28, 22}, {29, 23},
    {30, 24}, {31, 29}, {32, 25}, {33, 26}, {34, 27}, {35, 28}, {36, 29}, {37, 28},
    {38, 28}, {39, 27}, {41, 30}, {53, 31}, {52, 32},
};
static_assert(sizeof kCardTypes / sizeof kCardTypes[0] == 37);

constexpr std::uint32_t kListRows = 32;

struct ListRow {
  std::uint8_t length;
  std::uint8_t name[kListNameLength];
};
static_assert(sizeof(ListRow) == 8);

void put_name(ListRow* row, const FruName& fru, std::size_t length) {
  row->length = static_cast<std::uint8_t>(length);
  convert_codepage_and_copy(wire::kAsciiCodeSet, kEbcdic,
                            reinterpret_cast<const std::uint8_t*>(fru.name), row->name,
                            static_cast<std::uint32_t>(length));
}

constexpr std::size_t name_length(const FruName& fru) {
  std::size_t length = 0;
  while (length < sizeof fru.name && fru.name[length] != '\0') ++length;
  return length;
}
static_assert(name_length(kFruNames[1]) <= kListNameLength);  // the last row holds it uncut

}  // namespace

int32_t get_fru_id(uint32_t slot, uint16_t card_type) {
  constexpr std::uint32_t kSlots = 6;
  if (card_type == 0) return slot - 1 < kSlots ? 1 : -1;
  for (const CardType& card : kCardTypes) {
    if (card.type == card_type) return card.fru;
  }
  return -1;
}

uint32_t ficon_convert_pfm_oper_state(uint32_t state) {
  constexpr std::uint32_t kStates[] = {0, 3, 1, 5};
  constexpr std::uint32_t kAnyOther = 6;
  return state < sizeof kStates / sizeof kStates[0] ? kStates[state] : kAnyOther;
}

void ficon_get_list_of_ficon_fru(uint8_t* buffer) {
  ListRow rows[kListRows] = {};
  for (std::uint32_t i = 1; i < kListRows; ++i) {
    std::memset(rows[i].name, kEbcdicBlank, sizeof rows[i].name);
  }
  for (std::uint32_t i = 1; i < kListRows - 1; ++i) {
    const std::size_t length = name_length(kFruNames[i]);
    put_name(&rows[i], kFruNames[i], length < kListNameLength ? length : kListNameLength);
  }
  // The last row repeats row 1, its name uncut: intended.
  put_name(&rows[kListRows - 1], kFruNames[1], name_length(kFruNames[1]));
  std::memcpy(buffer, rows, sizeof rows);
}
