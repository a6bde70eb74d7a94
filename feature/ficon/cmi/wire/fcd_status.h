/**
 * The refusals of fcd: one table of code, name, sentence and hint. The emulator answers with the
 * codes; the error texts and the command-line tool show the rest.
 *
 * 0x40890001 to 0x4089003f speak of VSANs, locks and settings. The families behind them have room
 * of their own: files from 0x40890040, ports from 0x40890080, host data, history and limits from
 * 0x408900c0.
 */
#pragma once

#include <iterator>

#include "wire/status.h"

namespace ficon {

enum class [[nodiscard]] FcdStatus : Status{
    kDone = 0,

    kMalformed = 0x40890001,
    kUnknownOperation = 0x40890002,
    kUnknownRequester = 0x40890003,
    kVsanOutOfRange = 0x40890004,
    kVsanWithoutFicon = 0x40890005,
    kNoNextVsan = 0x40890006,
    kFeatureOff = 0x40890007,
    kUnknownFeature = 0x40890008,
    kStoreFailed = 0x40890009,
    kBadLoggingLevel = 0x4089000a,

    kBadSwitchOffline = 0x40890010,
    kBadHostControlSwitchOffline = 0x40890011,
    kBadProhibitHostControl = 0x40890012,
    kBadClockAlertMode = 0x40890013,
    kBadUserAlertMode = 0x40890014,
    kBadProhibitSnmp = 0x40890015,
    kBadAutoSave = 0x40890016,
    kBadHostClockSetAllowed = 0x40890017,
    kCodepageNotOffered = 0x40890018,

    kHostControlProhibited = 0x40890020,
    kSnmpProhibited = 0x40890021,
    kHostClockProhibited = 0x40890022,
    kHostOfflineProhibited = 0x40890023,

    kKeyCounterStale = 0x40890028,
    kLockBusy = status::kLockBusy,
    kNotLockOwner = 0x4089002a,
    kLockAlreadyHeld = status::kLockAlreadyHeld,

    kNoSuchFile = 0x40890040,
    kFileExists = 0x40890041,
    kFileBeingEdited = 0x40890042,
    kNoSuchEdit = 0x40890043,
    kTooManyFiles = 0x40890044,
    kReservedFile = 0x40890045,
    kBadFileName = 0x40890046,
    kControlUnitPort = 0x40890047,
    kNotAPortAddress = 0x40890048,
    kBadBlockedValue = 0x40890049,
    kBadProhibitChange = 0x4089004a,
    kProhibitsItself = 0x4089004b,
    kBadFileContents = 0x4089004c,
    kFileTooLarge = 0x4089004d,
    kNoPortInRange = 0x4089004e,

    kBeyondHostData = 0x408900c0,
    kNoIdentification = 0x408900c1,
    kNoHistoryPosition = 0x408900c2,
    kBadGetNextType = 0x408900c3,
    kBadMaxPorts = 0x408900c4,
    kBadMihTimeout = 0x408900c5,
};

struct FcdStatusText {
  FcdStatus code;
  const char* name;      // for scripts: lower case, never changed once published
  const char* sentence;  // what was wrong
  const char* hint;      // what to try
};

inline constexpr FcdStatusText kFcdStatusTexts[] = {
    {FcdStatus::kMalformed, "malformed-request", "the request is not well-formed",
     "client and daemon may be of different versions; the daemon's log has the reason"},
    {FcdStatus::kUnknownOperation, "unknown-operation", "the daemon does not know the operation",
     "client and daemon may be of different versions"},
    {FcdStatus::kUnknownRequester, "unknown-requester",
     "the requester code may not ask for a change",
     "use 1 (operator), 2 (management agent) or 3 (host)"},
    {FcdStatus::kVsanOutOfRange, "vsan-out-of-range", "there is no such VSAN number",
     "use a VSAN from 1 to 4093"},
    {FcdStatus::kVsanWithoutFicon, "vsan-without-ficon", "FICON is not enabled on the VSAN",
     "enable FICON on the VSAN first"},
    {FcdStatus::kNoNextVsan, "no-next-vsan", "no FICON VSAN follows the one named",
     "the walk is complete"},
    {FcdStatus::kFeatureOff, "feature-off", "the FICON feature is not enabled on the switch",
     "enable the feature \"ficon\" first"},
    {FcdStatus::kUnknownFeature, "unknown-feature", "the switch has no feature of this name",
     "the feature is called \"ficon\""},
    {FcdStatus::kStoreFailed, "store-failed",
     "the change could not be written to the daemon's store, and was not made",
     "look at the daemon's log, and at the space and the rights of the store"},
    {FcdStatus::kBadLoggingLevel, "bad-logging-level", "there is no such logging level",
     "use a level from 0 to 7"},
    {FcdStatus::kBadSwitchOffline, "bad-switch-offline",
     "the value of switch offline is neither 0 nor 1", "use 0 (online) or 1 (offline)"},
    {FcdStatus::kBadHostControlSwitchOffline, "bad-host-control-switch-offline",
     "the value of host control switch offline is neither 0 nor 1",
     "use 0 (the host may not take the switch offline) or 1 (it may)"},
    {FcdStatus::kBadProhibitHostControl, "bad-prohibit-host-control",
     "the value of prohibit host control is neither 0 nor 1",
     "use 0 (the host may change) or 1 (it may only read)"},
    {FcdStatus::kBadClockAlertMode, "bad-clock-alert-mode",
     "the value of clock alert mode is neither 0 nor 1", "use 0 (off) or 1 (on)"},
    {FcdStatus::kBadUserAlertMode, "bad-user-alert-mode",
     "the value of user alert mode is neither 0 nor 1", "use 0 (off) or 1 (on)"},
    {FcdStatus::kBadProhibitSnmp, "bad-prohibit-snmp",
     "the value of prohibit SNMP is neither 0 nor 1",
     "use 0 (management agents may change) or 1 (they may only read)"},
    {FcdStatus::kBadAutoSave, "bad-auto-save", "the value of automatic saving is neither 0 nor 1",
     "use 0 (off) or 1 (active equals saved)"},
    {FcdStatus::kBadHostClockSetAllowed, "bad-host-clock-set-allowed",
     "the value of host clock set allowed is neither 0 nor 1",
     "use 0 (the host may not set the clock) or 1 (it may)"},
    {FcdStatus::kCodepageNotOffered, "codepage-not-offered", "the code page is not offered",
     "use 37, 273, 277, 278, 280, 284, 285, 297, 500, 871, 1047 or 1140 to 1149"},
    {FcdStatus::kHostControlProhibited, "host-control-prohibited",
     "the VSAN does not let the host make changes",
     "an operator can set prohibit host control to 0"},
    {FcdStatus::kSnmpProhibited, "snmp-prohibited",
     "the VSAN does not let management agents make changes",
     "an operator can set prohibit SNMP to 0"},
    {FcdStatus::kHostClockProhibited, "host-clock-prohibited",
     "the VSAN does not let the host set the clock",
     "an operator can set host clock set allowed to 1"},
    {FcdStatus::kHostOfflineProhibited, "host-offline-prohibited",
     "the VSAN does not let the host take the switch offline",
     "an operator can set host control switch offline to 1"},
    {FcdStatus::kKeyCounterStale, "key-counter-stale",
     "the key counter has moved on: the configuration changed since it was read",
     "read the VSAN again, look at what changed, and repeat"},
    {FcdStatus::kLockBusy, "lock-busy", "another requester holds the lock of the VSAN",
     "look at the lock's status for who and since when; wait, or reset a stuck lock"},
    {FcdStatus::kNotLockOwner, "not-lock-owner",
     "the lock of the VSAN belongs to another requester",
     "only its owner frees a lock; reset a stuck one"},
    {FcdStatus::kLockAlreadyHeld, "lock-already-held",
     "the lock of the VSAN is already held by this requester", "go on: it is granted"},
    {FcdStatus::kNoSuchFile, "no-such-file", "the VSAN has no configuration file of this name",
     "list the files for the names that there are"},
    {FcdStatus::kFileExists, "file-exists", "there is a configuration file of this name already",
     "choose another name, or delete that file first"},
    {FcdStatus::kFileBeingEdited, "file-being-edited", "somebody else has the file open",
     "wait until it is kept or discarded; an edit ends with its editor's connection"},
    {FcdStatus::kNoSuchEdit, "no-such-edit", "the file key names no edit of this connection",
     "open the file for a key; edits end when they are kept, discarded or disconnected"},
    {FcdStatus::kTooManyFiles, "too-many-files", "the VSAN has as many files as it may have",
     "delete one, or start the daemon with a higher limit"},
    {FcdStatus::kReservedFile, "reserved-file",
     "the file IPL is reserved: it cannot be edited, saved over, renamed or deleted",
     "turn automatic saving on, or apply another file"},
    {FcdStatus::kBadFileName, "bad-file-name", "the request needs a file name, or another one",
     "use 1 to 8 of A-Z, 0-9, hyphen, underscore and blank, the first no blank"},
    {FcdStatus::kControlUnitPort, "control-unit-port",
     "port address fe is the control unit port: it cannot be blocked, named or prohibited",
     "use port addresses 00 to fd"},
    {FcdStatus::kNotAPortAddress, "not-a-port-address", "there is no such port address",
     "use port addresses 00 to fd"},
    {FcdStatus::kBadBlockedValue, "bad-blocked-value", "the blocked value is neither 0 nor 1",
     "use 0 (unblocked) or 1 (blocked)"},
    {FcdStatus::kBadProhibitChange, "bad-prohibit-change",
     "the prohibit entry is neither a replacement (0) nor an addition (1) nor a removal (2)",
     "use 0, 1 or 2 as the common value"},
    {FcdStatus::kProhibitsItself, "prohibits-itself", "a port cannot be prohibited to itself",
     "clear the port's own bit in its mask"},
    {FcdStatus::kBadFileContents, "bad-file-contents",
     "the uploaded contents are incomplete or damaged, and none of them was taken",
     "upload the file again, whole"},
    {FcdStatus::kFileTooLarge, "file-too-large",
     "the upload reaches beyond the largest file contents",
     "look at the offset, or start the daemon with a higher limit"},
    {FcdStatus::kNoPortInRange, "no-port-in-range", "no port follows in the range asked for",
     "the walk is complete"},
    {FcdStatus::kBeyondHostData, "beyond-host-data",
     "the write reaches beyond the 16384 bytes of host data", "lower the offset or the length"},
    {FcdStatus::kNoIdentification, "no-identification",
     "nothing with this key and index identifies itself",
     "use key 0 for the switch and its modules, a module's number for its ports"},
    {FcdStatus::kNoHistoryPosition, "no-history-position",
     "the history has not come to this position",
     "begin at 0; the position may be of another store"},
    {FcdStatus::kBadGetNextType, "bad-get-next-type", "there is no such get-next type",
     "use 1 (all ports) or 2 (installed ports)"},
    {FcdStatus::kBadMaxPorts, "bad-max-ports", "the switch cannot have so many ports",
     "use 1 to 1280"},
    {FcdStatus::kBadMihTimeout, "bad-mih-timeout", "the time-out is none that can be encoded",
     "use 1 to 63, times 1, 10, 100 or 1000"},
};

/** The text of a code, or null for a code that is not one of fcd's refusals. */
constexpr const FcdStatusText* find_fcd_status(Status code) {
  for (const FcdStatusText& text : kFcdStatusTexts) {
    if (static_cast<Status>(text.code) == code) return &text;
  }
  return nullptr;
}

/** Ascending codes: none twice, and the table reads like the enumeration. */
constexpr bool fcd_status_texts_ascend() {
  for (std::size_t i = 1; i < std::size(kFcdStatusTexts); ++i) {
    if (kFcdStatusTexts[i - 1].code >= kFcdStatusTexts[i].code) return false;
  }
  return true;
}
static_assert(fcd_status_texts_ascend());

}  // namespace ficon
