/** What is refused or wrong, over every object: the exit status, and an error that JSON can read.
 */
#include <doctest/doctest.h>

#include "switches.h"

using namespace ficon::test;

namespace {

struct Wrong {
  const char* words;
  int status;
  const char* message;  // a part of it
};

/** On a switch with FICON on VSAN 20 and a file PROD there. */
constexpr Wrong kWrong[] = {
    {"vsan show -5", 2, "VSAN \"-5\" is not a number"},
    {"vsan show 0xZZ", 2, "VSAN \"0xZZ\" is not a number"},
    {"vsan show 99999999999", 2, "VSAN \"99999999999\" is not a number"},
    {"vsan show é", 2, "VSAN \"é\" is not a number"},
    {"vsan show 22", 1, "FICON is not enabled on the VSAN"},
    {"vsan set 20 =on", 2, "\"=on\" is not FIELD=VALUE"},
    {"vsan set 20 auto-sav=on", 2, "did you mean \"auto-save\"?"},
    {"vsan set 20 fcid-last-byte=256", 2, "\"256\" is not a number from 0 to 255"},
    {"vsan set 20 codepage=1", 1, "the code page is not offered"},
    {"vsan key-counter 20 --test 9", 1, "the key counter has moved on"},
    {"vsan clock 20 --set 100000000:0", 2, "\"100000000\" is not hexadecimal"},
    {"lock get 23", 1, "cannot take the lock of VSAN 23"},
    {"lock status 4094", 2, "is not a number from 1 to 4093"},
    {"hostdata read 20 /nonexistent/x", 1, "/nonexistent/x: No such file or directory"},
    {"hostdata write 20 --hex 00 --offset 16384", 2, "reach beyond the 16384"},
    {"hostdata dump 23", 1, "cannot read the host data of VSAN 23"},
    {"history show --since -1", 2, "--since \"-1\" is not a number"},
    {"pib show --module 17", 2, "module \"17\" is not a number from 1 to 16"},
    {"pib show --module 9", 1, "identifies itself"},
    {"limits set max-ports=0", 2, "max-ports \"0\" is not a number from 1 to 1280"},
    {"mihpto set 65", 2, "is not 1 to 63 times 1, 10, 100 or 1000 seconds"},
    {"mihpto get --vsan 23", 1, "cannot read the MIH time-out of VSAN 23"},
    {"box status now", 2, "\"now\" is one word too many"},
    {"file list 23", 1, "cannot list the files of VSAN 23"},
    {"file show 20 nosuch", 1, "no configuration file of this name"},
    {"file show 20 toolongname", 2, "longer than 8 characters"},
    {"file create 20 prod", 1, "a configuration file of this name already"},
    {"file create 20 a.b", 1, "a character that is not allowed"},
    {"file delete 20 ipl", 1, "reserved"},
    {"file describe 20 prod 日本", 1, "code page has not all of the characters"},
    {"file export 20 prod -o /nonexistent/x", 1, "/nonexistent/x: No such file or directory"},
    {"file import 20 prod /dev/null", 2, "no JSON: parse error at line 1, column 1"},
    {"port block 20 fe", 2, "port address fe is the control unit port"},
    {"port block 20 20-10", 2, "range \"20-10\" runs backwards"},
    {"port block 20 10,,20", 2, "\"10,,20\" has an empty part"},
    {"port block 23 10", 1, "cannot read the active configuration of VSAN 23"},
    {"port name 20 10-11 x", 2, "a name is for one port address"},
    {"port name 20 10 1234567890123456789012345", 2, "longer than 24 characters"},
    {"port name 20 10 日本", 2, "takes no character '日'"},
    {"port prohibit 20 10", 2, "--with is required"},
    {"port find", 2, "--if, --number, --address or --fcid"},
    {"port find --if fc99/99", 2, "\"fc99/99\" is no interface"},
    {"port find --if fc1/1 --number 5", 1, "no port has all that was given"},
    {"port swap 0 0", 1, "both ports of the swap are the same"},
    {"port swap 0 254", 1, "the control unit port"},
    {"port bind 10 --if fc9/9", 1, "no such interface"},
    {"port bind fe --number 5", 2, "\"fe\" is not hexadecimal from 0 to fd"},
    {"portmap show --module 1 --logical", 2, "--module excludes --logical"},
    {"portmap show --range 0-9999", 2, "port number \"9999\" is not a number from 0 to"},
    {"portmap grid 16", 1, "no such module"},
    {"portnumber reserve 0-5", 2, "say --module or --logical"},
    {"portnumber reserve --module 3 0-3", 1, "port number 0 is reserved for module 1"},
    {"portnumber assign fc1/1 5", 1, "belongs to another port"},
    {"portnumber assign port-channel9 241", 1, "no such module or interface"},
    {"prohibit-default set maybe", 2, "is not on or off"},
    {"acl set 2", 2, "is not on or off"},
    {"matrix show 20 --ports zz", 2, "\"zz\" is not hexadecimal"},
    {"matrix svg 20 -o /nonexistent/x", 1, "/nonexistent/x: No such file or directory"},
    {"config startup", 1, "no configuration was saved yet"},
    {"config running --interface nonsense", 2, "\"nonsense\" is no interface"},
    {"config apply /nonexistent", 1, "cannot read /nonexistent: No such file or directory"},
    {"debug level 8", 2, "logging level \"8\" is not a number from 0 to 7"},
    {"fru list x", 2, "\"x\" is one word too many"},
    {"--wait 1.5 vsan list", 2, "--wait \"1.5\" is not a number"},
    {"--requester 9 vsan list", 2, "requester \"9\" is not operator, agent or host"},
    {"--endpoint tcp:1 vsan list", 1, "\"tcp:1\" is no endpoint"},
    {"--endpoint embedded:/dev/null/x vsan list", 1, "the directory /dev/null/x cannot be created"},
    {"--endpoint unix:/nonexistent vsan list", 1, "no daemon answers at unix:/nonexistent"},
};

}  // namespace

TEST_CASE_FIXTURE(EmbeddedSwitch,
                  "whatever is wrong has its exit status, a sentence and what to try") {
  REQUIRE(tool("vsan enable 20").status == 0);
  REQUIRE(tool("file create 20 prod").status == 0);
  for (const Wrong& wrong : kWrong) {
    CAPTURE(wrong.words);
    const Result result = tool(std::string(wrong.words) + " --json");
    CHECK(result.status == wrong.status);
    CHECK(result.err.empty());
    const auto error = result.json()["error"];
    const auto message = error["message"].get<std::string>();
    CHECK_MESSAGE(contains(message, wrong.message), message);
    CHECK(message.find('\n') == std::string::npos);
    CHECK((error["name"] == "usage") == (wrong.status == 2));
    CHECK_FALSE(error["hint"].get<std::string>().empty());
  }
}
