/** Blocking changes of ports: their lock, the edit that they open, and how it ends. */
#include <doctest/doctest.h>

#include "unit/port_change_forms.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kOperator = 1;

/** A lock, a code page and an operation of its own: what opens and closes an edit. */
std::string operation(const std::string& word) {
  return "lock, code page, " + word + ", free";
}
const std::string kOpened = "lock, code page, " + operation("open") + ", change, ";

void prepare(ScriptedPlatform& platform) {
  platform.ficon_enabled_on({kFileVsan}).lock_granted();
  play_converter(platform, ebcdic);
}

Expectation& expect_operation(ScriptedPlatform& platform) {
  expect_codepage(platform);
  return platform.expect_send(7861);
}

/** Up to the change itself, an edit open. */
void prepare_edit(ScriptedPlatform& platform) {
  prepare(platform);
  expect_codepage(platform);
  expect_operation(platform).reply(file_answer(0));
}

std::uint32_t change(ScriptedPlatform& platform, const PortChange& form) {
  Name name("a");
  return form.run(platform, kOperator, name, nullptr, nullptr);
}

}  // namespace

TEST_CASE("port change: an operator's goes as an edit of its own, kept after the lock is free") {
  for (const PortChange& form : port_changes()) {
    CAPTURE(form.name);
    ScriptedPlatform platform;
    prepare_edit(platform);
    platform.expect_send(7866).reply(file_answer(0));
    expect_operation(platform).reply(file_answer(0));
    CHECK(change(platform, form) == 0);
    CHECK(story(platform) == kOpened + "free, " + operation("keep"));
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("port change: opening and keeping name the file, without a key") {
  ScriptedPlatform platform;
  prepare_edit(platform);
  platform.expect_send(7866).reply(file_answer(0));
  expect_operation(platform).reply(file_answer(0));
  CHECK(change(platform, port_changes()[0]) == 0);
  const auto edits = platform.sent(7861);
  REQUIRE(edits.size() == 2);
  for (const std::uint32_t operation : {1U, 4U}) {
    const Golden expected = golden("file_request.hex")
                                .with(8 + 112, be32(1), "requester")
                                .with(8 + 116, be32(operation), "operation")
                                .with(8 + 124, {0xc1, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40})
                                .with(8 + 133, zeros(4), "no key");
    CHECK(expected.difference_to(edits[operation == 1 ? 0 : 1]) == "");
  }
}

TEST_CASE("port change: with a key, without a name, or of another requester there is no edit") {
  struct Case {
    std::uint32_t requester;
    bool key, name;
  };
  for (const PortChange& form : port_changes()) {
    for (const Case& c : {Case{1, true, true}, Case{1, false, false}, Case{2, false, true},
                          Case{3, false, true}, Case{0, false, true}, Case{3, true, false}}) {
      CAPTURE(form.name);
      ScriptedPlatform platform;
      prepare(platform);
      expect_codepage(platform);
      platform.expect_send(7866).reply(file_answer(0x40890066));
      Name name("a");
      std::uint32_t key = 0xa1b2c3d4, status = 0x77;
      CHECK(form.run(platform, c.requester, c.name ? name.text : nullptr, c.key ? &key : nullptr,
                     &status) == 0x40890066);
      CHECK(story(platform) == "lock, code page, change, free");
      CHECK(status == 0x77);
      const Bytes sent = platform.sent(7866).at(0);
      CHECK(Bytes(&sent[8 + 133], &sent[8 + 137]) == (c.key ? host32(key) : zeros(4)));
      CHECK(sent.at(8 + 124) == (c.name ? 0xc1 : 0));  // names are ASCII, whoever asks
      CHECK(platform.printed().empty());
      CHECK(platform.finished());
    }
  }
}

TEST_CASE("port change: the status pointer is told of opening and of closing") {
  ScriptedPlatform platform;
  prepare_edit(platform);
  platform.expect_send(7866).reply(file_answer(0));
  expect_operation(platform).reply(file_answer(0x40890033));
  Name name("a");
  std::uint32_t status = 0x77;
  CHECK(port_changes()[1].run(platform, 1, name, nullptr, &status) == 0x40890033);
  CHECK(status == 0x40890033);
  CHECK(platform.finished());
}

TEST_CASE("port change: a refused opening is the result, nothing is changed, the lock is free") {
  for (const PortChange& form : port_changes()) {
    CAPTURE(form.name);
    ScriptedPlatform platform;
    prepare(platform);
    expect_codepage(platform);
    expect_operation(platform).reply(file_answer(0x40890033));
    CHECK(change(platform, form) == 0x40890033);
    CHECK(story(platform) == "lock, code page, " + operation("open") + ", free");
    CHECK(platform.finished());
  }
}

TEST_CASE("port change: without a code page nothing is opened, and the lock is free") {
  for (const PortChange& form : port_changes()) {
    ScriptedPlatform platform;
    prepare(platform);
    expect_codepage(platform, 0);
    CHECK(change(platform, form) == 0x40850004);
    CHECK(story(platform) == "lock, code page, free");
    CHECK(platform.finished());
  }
}

TEST_CASE("port change: without the lock nothing happens") {
  for (const PortChange& form : port_changes()) {
    ScriptedPlatform platform;
    prepare(platform);
    platform.lock_answers({0x40890055});
    CHECK(change(platform, form) == 0x40850012);
    CHECK(story(platform) == "lock");
    CHECK(platform.finished());
  }
}

TEST_CASE("port change: where FICON is not enabled it goes unlocked, edit and all") {
  for (const PortChange& form : port_changes()) {
    ScriptedPlatform platform;
    prepare_edit(platform);
    platform.ficon_enabled_on({});
    platform.expect_send(7866).reply(file_answer(0));
    expect_operation(platform).reply(file_answer(0));
    CHECK(change(platform, form) == 0);
    CHECK(story(platform) == "code page, code page, open, change, code page, keep");
    CHECK(platform.finished());
  }
}

TEST_CASE("port change: a failed send is told by two of the three, and drops the change") {
  for (const PortChange& form : port_changes()) {
    CAPTURE(form.name);
    ScriptedPlatform platform;
    prepare_edit(platform);
    platform.expect_send(7866).fails(32);
    expect_operation(platform).reply(file_answer(0x40890033));  // what that comes to is not told
    CHECK(change(platform, form) == 0xffffffff);
    CHECK(story(platform) == kOpened + "free, " + operation("discard"));
    std::string line;
    if (form.name == "blocked") {
      line =
          "ficon_cmi_file_set_port_blocked_portaddr(N): "
          "ficon_cmi_file_set_blocked_portaddr_nonblock failed:-1\n";
    }
    if (form.name == "prohibit") {
      line =
          "ficon_cmi_file_set_prohibit_bitset(N): "
          "ficon_cmi_file_set_prohibit_bitset_nonblock failed:-1\n";
    }
    CHECK(without_lines(platform.printed()) == line);
    CHECK(platform.finished());
  }
}

TEST_CASE("port change: a reply that does not come drops the change, but for blocked ports") {
  for (const PortChange& form : port_changes()) {
    for (const std::int32_t error : {62, 5}) {
      CAPTURE(form.name);
      ScriptedPlatform platform;
      prepare_edit(platform);
      platform.expect_send(7866).recv_errors({4, error});
      if (!form.leaves_edit_open) expect_operation(platform).reply(file_answer(0));
      CHECK(change(platform, form) == (error == 62 ? 0x40850043 : 0x40850000));
      CHECK(story(platform) ==
            kOpened + "free" + (form.leaves_edit_open ? "" : ", " + operation("discard")));
      CHECK(platform.printed().empty());
      CHECK(platform.finished());
    }
  }
}

TEST_CASE("port change: a refused change is dropped while the reply and the lock are still held") {
  for (const PortChange& form : port_changes()) {
    CAPTURE(form.name);
    ScriptedPlatform platform;
    prepare_edit(platform);
    platform.expect_send(7866).reply(file_answer(0x40890066));
    expect_operation(platform).reply(file_answer(0));
    CHECK(change(platform, form) == 0x40890066);
    CHECK(story(platform) == kOpened + operation("discard") + ", free");
    CHECK(platform.order().ends_with(exchange_of(7861) + ", " + kLockExchange + ", drop reply, " +
                                     kLockExchange));
    CHECK(platform.finished());
  }
}

TEST_CASE("port change: hostile replies drop the change") {
  struct Case {
    Bytes reply;
    std::uint32_t status;
    std::string printed;
  };
  const std::string none = "invalid cmi payload: no tlvs present\n";
  for (const PortChange& form : port_changes()) {
    for (const Case& c : {Case{tlvs(), 0x40850003, none}, Case{{}, 0x40850003, none},
                          Case{tlvs().add(22, zeros(3)), 3, ""},
                          Case{tlvs().add_claiming(6, 0xffff, zeros(158)), 0x40aa0100, ""}}) {
      CAPTURE(form.name);
      ScriptedPlatform platform;
      prepare_edit(platform);
      auto& request = platform.expect_send(7866);
      c.reply.empty() ? request.reply_without_payload() : request.reply(c.reply);
      expect_operation(platform).reply(file_answer(0));
      CHECK(change(platform, form) == c.status);
      CHECK(story(platform) == kOpened + operation("discard") + ", free");
      CHECK(platform.printed() == c.printed);
      CHECK(platform.finished());
    }
  }
}
