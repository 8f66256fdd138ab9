// Feeds arbitrary text to the as-run line reader: a line it takes must come
// back the same from the line made of what it read.
#include <cstdint>
#include <string>

#include "asrun/as_run_log.h"
#include "fuzz_check.h"

using vantr::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  vantr::AsRunEntry entry;
  if (!vantr::parseAsRunLine(text, entry)) return 0;
  const std::string line = vantr::formatAsRunLine(entry);
  vantr::AsRunEntry again;
  check(vantr::parseAsRunLine(line, again));
  check(again.milliseconds == entry.milliseconds && again.channel == entry.channel && again.action == entry.action &&
        again.file == entry.file && again.cause == entry.cause && again.result == entry.result);
  check(vantr::formatAsRunLine(again) == line);
  return 0;
}
