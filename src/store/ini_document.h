// The text of an ini file, kept line by line so that a change rewrites only
// the line it must: comments, blank lines, unknown lines and the spelling of
// everything else stay as they were.
//
// Lookups follow Windows' private profile functions: a line is trimmed of
// blanks; "[ name ]" (up to the last ']', blanks inside dropped) starts a
// section; "key = value" is an
// entry, name and value trimmed; a line with no '=' is a key with no value.
// Sections and keys compare without regard to case, and only the first
// section of a name is searched, for the first key of a name.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantr {

class IniDocument {
 public:
  IniDocument() = default;
  explicit IniDocument(std::string_view text);

  // The trimmed value of the key, or nothing when the key is missing or its
  // line has no '='. No quotes are removed here (see profileString).
  std::optional<std::string> value(std::string_view section, std::string_view key) const;

  // Sets a key, adding it at the end of its section, or the section at the end
  // of the file. Leading blanks of the value are dropped, as Windows does. A
  // line break inside a name or value would split the entry into lines of its
  // own, so each is written as a blank. Returns whether the text changed.
  bool set(std::string_view section, std::string_view key, std::string_view value);
  bool removeKey(std::string_view section, std::string_view key);
  bool removeSection(std::string_view section);

  // The whole text, lines ended by CR LF.
  std::string text() const;
  bool empty() const { return m_lines.empty(); }

 private:
  enum class Kind { Other, Section, Entry };
  struct Line {
    std::string text;
    Kind kind = Kind::Other;
    std::string name;   // section or key name, trimmed
    std::string value;  // trimmed value of an entry
    bool hasValue = false;
  };
  static Line parseLine(std::string_view raw);
  // Index of the first section header of that name, or npos.
  size_t findSection(std::string_view section) const;
  // One past the last line of the section that starts at header.
  size_t sectionEnd(size_t header) const;
  size_t findKey(size_t header, std::string_view key) const;

  std::vector<Line> m_lines;
};

// What GetPrivateProfileString gives for a key: the value, or the default
// (less its trailing spaces) when the key has none; a pair of matching quotes
// (' or ") around it removed; cut to maxLength characters.
std::string profileString(const IniDocument& doc, std::string_view section, std::string_view key,
                          std::string_view defaultText, size_t maxLength);

}  // namespace vantr
