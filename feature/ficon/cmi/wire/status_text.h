/** The library's own status codes for people: a name, a sentence, what to try. */
#pragma once

#include <iterator>

#include "wire/status.h"

namespace ficon {

struct StatusText {
  Status code;
  const char* name;
  const char* sentence;
  const char* hint;
};

inline constexpr StatusText kStatusTexts[] = {
    {status::kNoMemory, "no-memory", "there was no memory for the result", "free some memory"},
    {status::kNoReply, "no-reply-header", "the reply was empty or had no header",
     "client and daemon may be of different versions"},
    {status::kReceiveFailed, "receive-failed", "the reply could not be received",
     "see whether the daemon is still there, and try again"},
    {status::kInvalidPayload, "invalid-payload", "an argument or the reply is not well-formed",
     "check the values; client and daemon may be of different versions"},
    {status::kNotEnabled, "not-enabled",
     "FICON is not enabled on the VSAN, or its code page could not be read",
     "enable FICON on the VSAN first"},
    {status::kNoPayload, "no-payload", "the reply was empty",
     "client and daemon may be of different versions"},
    {status::kNoNextPort, "no-next-port", "no interface or port address follows",
     "the walk is complete"},
    {status::kAllocationFailed, "allocation-failed", "there was no memory for the request",
     "free some memory"},
    {status::kLockUnavailable, "lock-unavailable", "the fcd lock of the VSAN could not be taken",
     "look at the lock's status for who holds it; wait, or reset a stuck lock"},
    {status::kLockResetFailed, "lock-reset-failed", "the fcd lock could not be reset",
     "look at the lock's status, and try again"},
    {status::kReservedName, "reserved-name", "the file name IPL is reserved",
     "choose another name; automatic saving writes IPL"},
    {status::kPortAddressTooLarge, "port-address-too-large",
     "a port name needs a marker, but its port address is above 255",
     "use port addresses 00 to fd"},
    {status::kNameBeginsWithSpace, "name-begins-with-space", "a file name begins with a blank",
     "use 1 to 8 of A-Z, 0-9, hyphen, underscore and blank, the first no blank"},
    {status::kNameCharacter, "name-character", "a file name holds a character that is not allowed",
     "use 1 to 8 of A-Z, 0-9, hyphen, underscore and blank"},
    {status::kNameTooLong, "name-too-long", "a file name is longer than 8 characters",
     "use 1 to 8 characters"},
    {status::kConversionFailed, "conversion-failed",
     "the text could not be converted between ASCII and the VSAN's code page",
     "use characters that the code page has"},
    {status::kSamePort, "same-port", "both ports of the swap are the same",
     "name two different ports"},
    {status::kDescriptionCharacter, "description-character",
     "a file description holds a byte that is no character", "use printable characters"},
    {status::kTimedOut, "timed-out", "no reply came within the wait", "try again, or wait longer"},
    {status::kAutoCreatedPortChannel, "auto-created-port-channel",
     "the system created this port channel by itself: it gets no port number",
     "make the port channel persistent first"},
    {status::kEndOfStore, "end-of-store", "there are no more records", "the walk is complete"},
    {status::kFeatureAlreadyEnabled, "feature-already-enabled", "the feature was on already",
     "go on: it is enabled"},
};

/** The text of a code, or null for one that is not the library's. */
constexpr const StatusText* find_status_text(Status code) {
  for (const StatusText& text : kStatusTexts) {
    if (text.code == code) return &text;
  }
  return nullptr;
}

}  // namespace ficon
