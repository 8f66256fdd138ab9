// The framer against byte streams and the commands they must yield, each
// stream fed whole, one byte at a time, and in random splits.
#include "automation/command_framer.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace vantr {
namespace {

std::vector<std::string> feedInPieces(CommandFramer& framer, const std::string& stream,
                                      const std::vector<size_t>& cuts) {
  std::vector<std::string> commands;
  const auto collect = [&](std::string_view body) { commands.emplace_back(body); };
  size_t from = 0;
  for (size_t cut : cuts) {
    framer.feed(reinterpret_cast<const uint8_t*>(stream.data()) + from, cut - from, collect);
    from = cut;
  }
  framer.feed(reinterpret_cast<const uint8_t*>(stream.data()) + from, stream.size() - from, collect);
  return commands;
}

std::string body(size_t length) {
  std::string text;
  for (size_t i = 0; i < length; ++i) text += static_cast<char>('a' + i % 26);
  return text;
}

TEST(AutomationFramer, YieldsTheCommandsOfAStreamHoweverItIsSplit) {
  using namespace std::string_literals;
  struct Row {
    const char* name;
    std::string stream;
    std::vector<std::string> commands;
  } rows[] = {
      {"noise around a command", "xx[VantorelPlayStart-News]yy", {"VantorelPlayStart-News"}},
      {"two commands back to back", "[one][two]", {"one", "two"}},
      {"noise between commands", "[one] \r\n\x01 [two]\r\n", {"one", "two"}},
      {"an empty body", "[]", {""}},
      {"'[' inside a command starts it afresh", "[VantorelPlayStart-A[VantorelPlayStart-B]", {"VantorelPlayStart-B"}},
      {"'[' twice", "[[]", {""}},
      {"stray ']' before anything", "]]x]", {}},
      {"']' after a command is noise", "[a]]b][c]", {"a", "c"}},
      {"a command never closed", "[VantorelPlayStart-News", {}},
      {"a body of 255 characters", "[" + body(255) + "]", {body(255)}},
      {"a body of 256 characters is lost", "[" + body(256) + "]", {}},
      {"a body of 300 characters is lost", "[" + body(300) + "]", {}},
      {"the next '[' recovers after an overlong body", "[" + body(256) + "][ok]", {"ok"}},
      {"'[' as the 256th byte starts afresh", "[" + body(255) + "[b]", {"b"}},
      {"a long body then a short one", "[" + body(255) + "][" + body(3) + "]", {body(255), body(3)}},
      {"NUL bytes are ordinary", "[a\0b]\0[\0]"s, {"a\0b"s, "\0"s}},
      {"bytes above 127 are ordinary", "[\x80\xff\xfe-\x7f]", {"\x80\xff\xfe-\x7f"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    {
      CommandFramer framer;
      EXPECT_EQ(feedInPieces(framer, row.stream, {}), row.commands) << "whole";
    }
    {
      CommandFramer framer;
      std::vector<size_t> cuts;
      for (size_t i = 1; i < row.stream.size(); ++i) cuts.push_back(i);
      EXPECT_EQ(feedInPieces(framer, row.stream, cuts), row.commands) << "one byte per feed";
    }
    std::mt19937 random(20240305);
    for (int round = 0; round < 20; ++round) {
      CommandFramer framer;
      std::vector<size_t> cuts;
      std::uniform_int_distribution<size_t> step(0, 9);
      for (size_t at = step(random); at < row.stream.size(); at += step(random)) cuts.push_back(at);
      EXPECT_EQ(feedInPieces(framer, row.stream, cuts), row.commands) << "random split, round " << round;
    }
  }
}

TEST(AutomationFramer, KeepsAHalfCommandUntilReset) {
  CommandFramer framer;
  std::vector<std::string> commands;
  const auto collect = [&](std::string_view body) { commands.emplace_back(body); };
  EXPECT_FALSE(framer.commandOpen()) << "no command is open at the start";
  const std::string first = "noise[VantorelRecord";
  const std::string second = "Start-News]";
  framer.feed(reinterpret_cast<const uint8_t*>(first.data()), first.size(), collect);
  EXPECT_TRUE(framer.commandOpen());
  EXPECT_TRUE(commands.empty());
  framer.feed(reinterpret_cast<const uint8_t*>(second.data()), second.size(), collect);
  EXPECT_EQ(commands, std::vector<std::string>{"VantorelRecordStart-News"});
  EXPECT_FALSE(framer.commandOpen());

  framer.feed(reinterpret_cast<const uint8_t*>(first.data()), first.size(), collect);
  framer.reset();
  framer.feed(reinterpret_cast<const uint8_t*>(second.data()), second.size(), collect);
  EXPECT_EQ(commands.size(), 1u) << "after reset the rest of the old command is noise";
}

}  // namespace
}  // namespace vantr
