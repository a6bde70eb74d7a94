/** Lists of numbers as ranges: what is joined, how many are kept, where a text is cut. */
#include "text/number_ranges.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace ficon;

namespace {

using Numbers = std::vector<std::uint16_t>;

std::string words(const Numbers& numbers) {
  struct {
    char text[kRangesText];
    char behind[kRangesText];
  } room;
  std::memset(&room, 0x77, sizeof room);
  format(compress(numbers.data(), static_cast<std::uint32_t>(numbers.size())), room.text);
  for (const char c : room.behind) REQUIRE(c == 0x77);
  return room.text;
}

std::string sevens(std::size_t count) {
  std::string text = "7";
  for (std::size_t i = 1; i < count; ++i) text += ", 7";
  return text;
}

Numbers followed_by(Numbers numbers, const Numbers& more) {
  numbers.insert(numbers.end(), more.begin(), more.end());
  return numbers;
}

}  // namespace

TEST_CASE("ranges: numbers that follow one another are joined, in the order of the list") {
  CHECK(words({}).empty());
  CHECK(words({5}) == "5");
  CHECK(words({1, 2, 3, 5}) == "1-3, 5");
  CHECK(words({1, 2}) == "1-2");
  CHECK(words({3, 2, 1}) == "3, 2, 1");
  CHECK(words({7, 7, 8, 8}) == "7, 7-8, 8");
  CHECK(words({5, 1, 2, 6}) == "5, 1-2, 6");
  CHECK(words({65534, 65535, 0, 1}) == "65534-65535, 0-1");
}

TEST_CASE("ranges: the 64th is repeated where a 65th would begin, and the rest is dropped") {
  CHECK(words(Numbers(63, 7)) == sevens(63));
  CHECK(words(Numbers(64, 7)) == sevens(64));
  CHECK(words(followed_by(Numbers(63, 7), {3, 4, 5})) == sevens(63) + ", 3-5");
  CHECK(words(followed_by(Numbers(64, 7), {8, 9})) == sevens(63) + ", 7-9");
  CHECK(words(followed_by(Numbers(64, 7), {3})) == sevens(65));
  CHECK(words(followed_by(Numbers(64, 7), {3, 4, 8, 9})) == sevens(65));
  CHECK(words(followed_by(Numbers(63, 7), {3, 4, 9})) == sevens(63) + ", 3-4, 3-4");
}

TEST_CASE("ranges: a text of 255 characters is whole, a longer one is cut there") {
  // 45 numbers of four digits make 268 characters.
  Numbers numbers;
  std::string whole;
  for (std::uint16_t i = 0; i < 45; ++i) {
    numbers.push_back(static_cast<std::uint16_t>(1000 + 2 * i));
    whole += (i == 0 ? "" : ", ") + std::to_string(1000 + 2 * i);
  }
  REQUIRE(whole.size() == 268);
  CHECK(words(numbers) == whole.substr(0, 255));
  numbers.resize(42);
  whole.resize(250);
  CHECK(words(followed_by(numbers, {123})) == whole + ", 123");
  CHECK(words(followed_by(numbers, {1234})) == whole + ", 123");
  CHECK(words(followed_by(numbers, {123, 125})) == whole + ", 123");
  CHECK(words(followed_by(numbers, {12, 14})) == whole + ", 12,");
}
