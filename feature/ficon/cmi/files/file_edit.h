/** A change to a file in one go: under the lock and, for an operator, as an edit of its own. */
#pragma once

#include <ficon_cmi.h>

#include "core/fcd_lock.h"
#include "exchange/exchange.h"
#include "files/file_name.h"
#include "wire/file_request.h"

namespace ficon {

/** The file that a blocking setter changes. */
struct EditedFile {
  std::uint32_t vsan;
  char* name;
  std::uint32_t* key;
  std::uint32_t* status;  // handed to the file operations; may be null
};

/** The edit that a setter opens where its caller has none. */
class FileEdit {
 public:
  FileEdit(const Caller& caller, const EditedFile& file) : caller_(caller), file_(file) {}

  /** Only the operator's requests with a name and without a key get an edit of their own. */
  Status open_if_needed() {
    constexpr std::uint32_t kOperator = 1;
    if (caller_.requester != kOperator || file_.key != nullptr || file_.name == nullptr) {
      return status::kOk;
    }
    const Status refused = operate(wire::FileOperation::kOpen);
    open_ = refused == 0;
    return refused;
  }

  /** Drops the change; what that comes to is not told. */
  void discard() {
    if (open_) operate(wire::FileOperation::kDiscard);
    open_ = false;
  }

  /** Keeps the change: its status is the whole change's, or `otherwise` where no edit is open. */
  Status keep_or(Status otherwise) {
    return open_ ? operate(wire::FileOperation::kKeep) : otherwise;
  }

 private:
  Status operate(wire::FileOperation operation) {
    return ficon_cmi_file_ops(caller_.requester, caller_.handle, caller_.word_a, caller_.word_b,
                              caller_.wait, file_.vsan, static_cast<std::uint32_t>(operation),
                              file_.name, nullptr, nullptr, file_.status);
  }

  const Caller& caller_;
  const EditedFile& file_;
  bool open_ = false;
};

/** What becomes of an open edit whose reply does not come. */
enum class LostReply : std::uint8_t { kDiscardsEdit, kLeavesEditOpen };

/**
 * Sends a change with `send(&message, codepage)`; `report(status)` prints that it failed. The lock
 * is freed before the edit is closed, since closing takes the lock for itself.
 */
template <class Send, class Report>
Status change_file(const Caller& caller, const EditedFile& file, Send send, Report report,
                   LostReply lost_reply) {
  FcdLock lock(caller, file.vsan);
  if (lock.refused()) return status::kLockUnavailable;
  const std::uint32_t codepage = codepage_of(caller, file.vsan);
  if (codepage == 0) return status::kNotEnabled;
  FileEdit edit(caller, file);
  if (const Status refused = edit.open_if_needed()) return refused;

  mts_msg_ref_t request{};
  if (const Status failure = send(&request, codepage)) {
    report(failure);
    lock.free();
    edit.discard();
    return failure;
  }
  mts_msg_ref_t reply{};
  if (const Status failure = await_reply(caller, &request, &reply)) {
    lock.free();
    if (lost_reply == LostReply::kDiscardsEdit) edit.discard();
    return failure;
  }
  const Status result = ficon_cmi_file_parse_set_port_cfg(&reply);
  if (result != 0) edit.discard();
  mts_drop(caller.handle, &reply);
  lock.free();
  return edit.keep_or(result);
}

}  // namespace ficon
