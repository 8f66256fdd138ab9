#include "automation/command_framer.h"

namespace vantr {

void CommandFramer::feed(const uint8_t* data, size_t size, const CommandHandler& onCommand) {
  for (size_t i = 0; i < size; ++i) {
    const char c = static_cast<char>(data[i]);
    if (c == '[') {
      m_length = 0;
    } else if (m_length < kNoCommand) {
      if (c == ']') {
        m_buffer[m_length] = '\0';
        const std::string_view body(m_buffer, m_length);
        // Closed before the handler runs, so a handler that feeds more bytes
        // starts from a clean state.
        m_length = kNoCommand;
        if (onCommand) onCommand(body);
      } else {
        m_buffer[m_length++] = c;
      }
    }
    // With no command open every byte, ']' included, is noise.
  }
}

}  // namespace vantr
