// Cuts bracketed commands out of the byte stream of the serial line. Outside
// equipment sends "[body]"; everything outside brackets is line noise.
//
// A '[' always opens a command afresh (whatever was gathered is dropped), so
// a sender that lost its place recovers with its next command. A body holds
// at most 255 characters: the 256th fills the buffer, the command is then no
// longer open, and its ']' goes unseen, so an overlong command is lost whole
// rather than handed on cut short. Every byte other than the brackets, NUL and
// bytes above 127 included, is part of the body.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace vantr {

class CommandFramer {
 public:
  // The length that means "no command is open".
  static constexpr uint32_t kNoCommand = 256;
  static constexpr size_t kMaxBody = kNoCommand - 1;

  using CommandHandler = std::function<void(std::string_view body)>;

  // Takes the next bytes of the line; onCommand hears each complete body in
  // order (the text between the brackets, valid only during the call). A
  // command begun in one call continues in the next.
  void feed(const uint8_t* data, size_t size, const CommandHandler& onCommand);
  // Forgets a half-received command.
  void reset() { m_length = kNoCommand; }

  bool commandOpen() const { return m_length < kNoCommand; }

 private:
  char m_buffer[kNoCommand + 1] = {};
  uint32_t m_length = kNoCommand;
};

}  // namespace vantr
