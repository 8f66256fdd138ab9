// Feeds arbitrary bytes to the serial line's framer, cut into pieces chosen by
// the input itself, and checks it against a model of the framing written here
// from the rules alone: the same commands, in the same order, each once, none
// longer than 255 characters, however the bytes arrive.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/command_framer.h"
#include "fuzz_check.h"

using vantr::fuzz::check;

namespace {

// '[' opens a command afresh; ']' closes an open one; any other byte joins an
// open command, and the 256th such byte loses it. Outside a command every
// byte is noise.
std::vector<std::string> modelCommands(const uint8_t* data, size_t size) {
  std::vector<std::string> commands;
  std::optional<std::string> open;
  for (size_t i = 0; i < size; ++i) {
    const char c = static_cast<char>(data[i]);
    if (c == '[') {
      open.emplace();
    } else if (open && c == ']') {
      commands.push_back(*open);
      open.reset();
    } else if (open) {
      open->push_back(c);
      if (open->size() == 256) open.reset();
    }
  }
  return commands;
}

std::vector<std::string> framed(const uint8_t* data, size_t size, const std::vector<size_t>& pieces) {
  vantr::CommandFramer framer;
  std::vector<std::string> commands;
  const auto collect = [&](std::string_view body) {
    check(body.size() <= vantr::CommandFramer::kMaxBody);
    commands.emplace_back(body);
  };
  size_t at = 0;
  for (size_t piece : pieces) {
    framer.feed(data + at, piece, collect);
    at += piece;
  }
  framer.feed(data + at, size - at, collect);
  return commands;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  // The first byte picks how the rest is cut; each piece's length comes from
  // the byte it starts at, so cuts fall inside commands as often as between.
  const uint8_t key = data[0];
  const uint8_t* stream = data + 1;
  const size_t length = size - 1;
  std::vector<size_t> pieces;
  for (size_t at = 0; at < length;) {
    size_t piece = std::min<size_t>(length - at, (stream[at] ^ key) % 71);
    if (piece == 0) pieces.push_back(0);  // an empty feed now and then
    piece = std::max<size_t>(piece, 1);
    pieces.push_back(piece);
    at += piece;
  }
  size_t total = 0;
  for (size_t piece : pieces) total += piece;
  check(total == length);

  const std::vector<std::string> expected = modelCommands(stream, length);
  check(framed(stream, length, pieces) == expected);
  check(framed(stream, length, {}) == expected);
  std::vector<size_t> single(length, 1);
  check(framed(stream, length, single) == expected);
  return 0;
}
