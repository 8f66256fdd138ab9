// Reads arbitrary bytes as an ini file, then checks the store's promises on
// it: a key that is written reads back as written, the rest of the file reads
// as it did, and the rewritten text parses to the same answers.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_check.h"
#include "store/ini_document.h"

using vantr::IniDocument;

using vantr::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  // The first line names a section and a key to probe; the rest is the file.
  const size_t split = text.find('\n');
  const std::string probe = split == std::string::npos ? text : text.substr(0, split);
  const size_t bar = probe.find('|');
  const std::string section = bar == std::string::npos ? "settings" : probe.substr(0, bar);
  const std::string key = bar == std::string::npos ? "key" : probe.substr(bar + 1);

  IniDocument doc(text);
  const auto before = doc.value("settings", "samplerate");
  const auto probed = doc.value(section, key);
  IniDocument reparsed(doc.text());
  check(reparsed.value(section, key) == probed);

  doc.set("vantr-fuzz", "written", " value with = and ;");
  check(doc.value("vantr-fuzz", "written") == std::string("value with = and ;"));
  if (section != "vantr-fuzz") check(doc.value("settings", "samplerate") == before);
  IniDocument again(doc.text());
  check(again.value("vantr-fuzz", "written") == std::string("value with = and ;"));

  doc.removeSection("vantr-fuzz");
  (void)vantr::profileString(doc, section, key, "default  ", 259);
  return 0;
}
