#include "store/ini_document.h"

#include "base/text.h"

namespace vantr {

namespace {
constexpr size_t npos = std::string::npos;

std::string withoutLineBreaks(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c == '\r' || c == '\n') c = ' ';
  }
  return out;
}
}  // namespace

IniDocument::Line IniDocument::parseLine(std::string_view raw) {
  Line line;
  line.text = std::string(raw);
  const std::string_view trimmed = trimIniSpace(raw);
  if (trimmed.empty()) return line;
  if (trimmed.front() == '[') {
    const size_t close = trimmed.rfind(']');
    if (close != std::string_view::npos) {
      line.kind = Kind::Section;
      line.name = std::string(trimIniSpace(trimmed.substr(1, close - 1)));
      return line;
    }
    // No closing bracket: Windows reads the line as a key.
  }
  line.kind = Kind::Entry;
  const size_t equals = trimmed.find('=');
  if (equals == std::string_view::npos) {
    line.name = std::string(trimmed);
  } else {
    line.name = std::string(trimIniSpace(trimmed.substr(0, equals)));
    line.value = std::string(trimIniSpace(trimmed.substr(equals + 1)));
    line.hasValue = true;
  }
  return line;
}

IniDocument::IniDocument(std::string_view text) {
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    std::string_view raw = text.substr(start, end - start);
    if (!raw.empty() && raw.back() == '\r') raw.remove_suffix(1);
    m_lines.push_back(parseLine(raw));
    start = end + 1;
  }
}

size_t IniDocument::findSection(std::string_view section) const {
  const std::string_view wanted = trimIniSpace(section);
  for (size_t i = 0; i < m_lines.size(); ++i) {
    if (m_lines[i].kind == Kind::Section && !m_lines[i].name.empty() && equalsNoCase(m_lines[i].name, wanted)) return i;
  }
  return npos;
}

size_t IniDocument::sectionEnd(size_t header) const {
  size_t i = header + 1;
  while (i < m_lines.size() && m_lines[i].kind != Kind::Section) ++i;
  return i;
}

size_t IniDocument::findKey(size_t header, std::string_view key) const {
  const std::string_view wanted = trimIniSpace(key);
  const size_t end = sectionEnd(header);
  for (size_t i = header + 1; i < end; ++i) {
    if (m_lines[i].kind == Kind::Entry && equalsNoCase(m_lines[i].name, wanted)) return i;
  }
  return npos;
}

std::optional<std::string> IniDocument::value(std::string_view section, std::string_view key) const {
  const size_t header = findSection(section);
  if (header == npos) return std::nullopt;
  const size_t line = findKey(header, key);
  if (line == npos || !m_lines[line].hasValue) return std::nullopt;
  return m_lines[line].value;
}

bool IniDocument::set(std::string_view section, std::string_view key, std::string_view value) {
  while (!value.empty() && isIniSpace(value.front())) value.remove_prefix(1);
  const std::string cleanValue = withoutLineBreaks(value);
  size_t header = findSection(section);
  if (header == npos) {
    if (!m_lines.empty() && !trimIniSpace(m_lines.back().text).empty()) m_lines.push_back(parseLine(""));
    m_lines.push_back(parseLine("[" + withoutLineBreaks(trimIniSpace(section)) + "]"));
    m_lines.push_back(parseLine(withoutLineBreaks(trimIniSpace(key)) + "=" + cleanValue));
    return true;
  }
  const size_t line = findKey(header, key);
  if (line != npos) {
    // Same value as read back: leave the line, and the file, as they are.
    if (m_lines[line].hasValue && m_lines[line].value == trimIniSpace(cleanValue)) return false;
    m_lines[line] = parseLine(m_lines[line].name + "=" + cleanValue);
    return true;
  }
  // After the section's last non-blank line, so blank lines between sections stay.
  size_t insertAt = sectionEnd(header);
  while (insertAt > header + 1 && trimIniSpace(m_lines[insertAt - 1].text).empty()) --insertAt;
  m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(insertAt),
                 parseLine(withoutLineBreaks(trimIniSpace(key)) + "=" + cleanValue));
  return true;
}

bool IniDocument::removeKey(std::string_view section, std::string_view key) {
  const size_t header = findSection(section);
  if (header == npos) return false;
  const size_t line = findKey(header, key);
  if (line == npos) return false;
  m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(line));
  return true;
}

bool IniDocument::removeSection(std::string_view section) {
  const size_t header = findSection(section);
  if (header == npos) return false;
  m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(header),
                m_lines.begin() + static_cast<std::ptrdiff_t>(sectionEnd(header)));
  return true;
}

std::string IniDocument::text() const {
  std::string out;
  for (const Line& line : m_lines) {
    out += line.text;
    out += "\r\n";
  }
  return out;
}

std::string profileString(const IniDocument& doc, std::string_view section, std::string_view key,
                          std::string_view defaultText, size_t maxLength) {
  while (!defaultText.empty() && defaultText.back() == ' ') defaultText.remove_suffix(1);
  const std::optional<std::string> found = doc.value(section, key);
  std::string_view text = found ? std::string_view(*found) : defaultText;
  if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.back() == text.front()) {
    text = text.substr(1, text.size() - 2);
  }
  return std::string(text.substr(0, maxLength));
}

}  // namespace vantr
