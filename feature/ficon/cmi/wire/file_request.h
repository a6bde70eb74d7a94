/** Requests about configuration files: one record for all, and the whole-file records after it. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

enum class FileOperation : std::uint32_t {
  kOpen = 1,
  kDelete = 2,
  kRename = 3,
  kKeep = 4,
  kDiscard = 5,
  kApply = 6,
  kPortName = 7,
  kPortBlocked = 8,
  kProhibitBitset = 9,
  kSaveActive = 10,
  kSetHeader = 11,
  kCopy = 12,
};

/** EBCDIC, padded with blanks (0x40), not terminated; all zero where a request names no file. */
using FileNameField = bytes<8>;

/** The record that every file request and its reply carry. */
struct FileRequest {
  PlatformHeader platform;
  be32 requester;
  be32 operation;
  be32 vsan;
  FileNameField file_name;
  std::uint8_t spare0;
  host32 file_key;  // passed and handed back unswapped
  be32 data_offset;
  host32 status;
  std::uint8_t reply_flag;
  bytes<3> spare1;
  FileNameField file_name2;
  std::uint8_t spare2;
};
static_assert(is_packed<FileRequest, 158>);
static_assert(offsetof(FileRequest, requester) == 112);
static_assert(offsetof(FileRequest, operation) == 116);
static_assert(offsetof(FileRequest, vsan) == 120);
static_assert(offsetof(FileRequest, file_name) == 124);
static_assert(offsetof(FileRequest, file_key) == 133);
static_assert(offsetof(FileRequest, data_offset) == 137);
static_assert(offsetof(FileRequest, status) == 141);
static_assert(offsetof(FileRequest, reply_flag) == 145);
static_assert(offsetof(FileRequest, file_name2) == 149);

/** The header of a file: 24 characters of description among bytes that pass through. */
struct FileHeader {
  bytes<32> spare0;
  bytes<24> description;
  bytes<72> spare1;
};
static_assert(is_packed<FileHeader, 128>);
static_assert(offsetof(FileHeader, description) == 32);

/** One file in the reply to a file information request. */
struct FileInfo {
  be32 vsan;
  std::uint8_t is_ipl;
  std::uint8_t editor;  // requester code of who has it open; 0 nobody
  std::uint8_t equals_active;
  bytes<26> spare0;
  bytes<9> file_name;  // 8 EBCDIC bytes and one that a terminator takes
  bytes<49> spare1;
  bytes<24> description;
  bytes<81> spare2;
};
static_assert(is_packed<FileInfo, 196>);
static_assert(offsetof(FileInfo, file_name) == 33);
static_assert(offsetof(FileInfo, description) == 91);

}  // namespace ficon::wire
