#include "acfg/text_service.h"

#include <doctest/doctest.h>

#include <cstdlib>

using ficon::platform::TextRequest;

namespace {

constexpr std::uint32_t kFeature = 152;

std::string respond(acfg_hdl_t handle, TextRequest& request) {
  REQUIRE(acfg_respond(handle, request.request(), request.context()) == 0);
  REQUIRE(request.text.has_value());
  return *request.text;
}

}  // namespace

TEST_CASE("elements come in the order of their values, whatever order they were filled in") {
  TextRequest request;
  acfg_hdl_t handle = acfg_hdl_init();
  acfg_elem_add(handle, kFeature, 1, 11);
  acfg_elem_add(handle, kFeature, 3, 2);
  acfg_elem_str_add_indent(handle, 1, "late\n", 0);
  acfg_elem_str_add_indent(handle, 3, "early\n", 0);
  CHECK(respond(handle, request) == "early\nlate\n");
}

TEST_CASE("a dependency goes before the values, and on strangers it does not matter") {
  TextRequest request;
  acfg_hdl_t handle = acfg_hdl_init();
  acfg_elem_add(handle, kFeature, 1, 2);
  acfg_elem_add(handle, kFeature, 3, 11);
  acfg_elem_dependency_add(handle, 1, kFeature, 3);
  acfg_elem_dependency_add(handle, 3, 139, 6);
  acfg_elem_str_add_indent(handle, 1, "needs the other\n", 0);
  acfg_elem_str_add_indent(handle, 3, "needed\n", 0);
  CHECK(respond(handle, request) == "needed\nneeds the other\n");
}

TEST_CASE("dependencies reach through several elements, whatever the order of adding") {
  TextRequest request;
  acfg_hdl_t handle = acfg_hdl_init();
  acfg_elem_add(handle, kFeature, 1, 1);
  acfg_elem_add(handle, kFeature, 2, 2);
  acfg_elem_add(handle, kFeature, 3, 3);
  acfg_elem_add(handle, kFeature, 4, 3);
  acfg_elem_dependency_add(handle, 1, kFeature, 2);
  acfg_elem_dependency_add(handle, 2, kFeature, 4);
  for (const std::uint32_t element : {1U, 2U, 3U, 4U}) {
    acfg_elem_str_add_indent(handle, element, (std::to_string(element) + "\n").c_str(), 0);
  }
  CHECK(respond(handle, request) == "3\n4\n2\n1\n");
}

TEST_CASE("a circle of dependencies is refused and leaves no text") {
  for (const std::uint32_t size : {1U, 2U, 3U}) {
    CAPTURE(size);
    TextRequest request;
    acfg_hdl_t handle = acfg_hdl_init();
    acfg_elem_add(handle, kFeature, 9, 1);  // not part of it
    acfg_elem_str_add_indent(handle, 9, "line\n", 0);
    for (std::uint32_t i = 0; i < size; ++i) acfg_elem_add(handle, kFeature, i, i);
    for (std::uint32_t i = 0; i < size; ++i) {
      CHECK(acfg_elem_dependency_add(handle, i, kFeature, (i + 1) % size) == 0);
    }
    CHECK(acfg_respond(handle, request.request(), request.context()) == 35);
    CHECK_FALSE(request.text.has_value());
  }
}

TEST_CASE("lines of an interface stand together below its heading, indented") {
  TextRequest request;
  acfg_hdl_t handle = acfg_hdl_init();
  acfg_elem_add(handle, kFeature, 4, 1);
  acfg_elem_ifindex_str_add_indent(handle, 4, 0x01001010, "first\n", 1);
  acfg_elem_ifindex_str_add_indent(handle, 4, 0x0400000c, "channel\n", 1);
  acfg_elem_ifindex_str_add_indent(handle, 4, 0x01001010, "second\n", 2);
  acfg_elem_ifindex_str_add_indent(handle, 4, 0x0a000003, "tunnel\n", 0);
  acfg_elem_str_add_indent(handle, 4, "of no interface\n", 1);
  CHECK(respond(handle, request) ==
        "  of no interface\n"
        "interface fc2/17\n"
        "  first\n"
        "    second\n"
        "interface port-channel 12\n"
        "  channel\n"
        "interface fcip 3\n"
        "tunnel\n");
}

TEST_CASE("elements that were never added take nothing") {
  TextRequest request;
  acfg_hdl_t handle = acfg_hdl_init();
  CHECK(acfg_elem_property_set(handle, 1, 1) != 0);
  CHECK(acfg_elem_dependency_add(handle, 1, kFeature, 2) != 0);
  CHECK(acfg_elem_str_add_indent(handle, 1, "lost\n", 0) != 0);
  CHECK(acfg_elem_ifindex_str_add_indent(handle, 1, 0x01000000, "lost\n", 1) != 0);
  CHECK(respond(handle, request).empty());
}

TEST_CASE("group lines come last") {
  TextRequest request;
  acfg_hdl_t handle = acfg_hdl_init();
  acfg_elem_add(handle, kFeature, 1, 1);
  acfg_elem_group_config_str_add(handle, 115, 0, 3, "logging\n");
  acfg_elem_str_add_indent(handle, 1, "line\n", 0);
  CHECK(respond(handle, request) == "line\nlogging\n");
}

TEST_CASE("without a list of VSANs all are requested, with one only those") {
  TextRequest request;
  std::uint8_t bitmap[512] = {};
  acfg_req_vsan_list_get(request.context(), bitmap);
  CHECK(bitmap[0] == 0xff);
  CHECK(bitmap[511] == 0xff);
  request.vsans = {0, 10, 4095, 5000};
  std::uint8_t some[512] = {};
  acfg_req_vsan_list_get(request.context(), some);
  CHECK(some[0] == 0x80);
  CHECK(some[1] == 0x20);
  CHECK(some[511] == 0x01);
}

TEST_CASE("the interfaces are handed out for free to release") {
  TextRequest request;
  request.interfaces = {0x11, 0x22};
  std::uint32_t count = 0;
  if_index_t* list = nullptr;
  REQUIRE(acfg_req_ifindex_list_get(request.context(), &count, &list) == 0);
  REQUIRE(count == 2);
  CHECK(list[0] == 0x11);
  CHECK(list[1] == 0x22);
  std::free(list);
  request.interfaces.clear();
  REQUIRE(acfg_req_ifindex_list_get(request.context(), &count, &list) == 0);
  CHECK(count == 0);
  CHECK(list == nullptr);
}
