// Loads arbitrary bytes as a schedule file: the list text of every slot, the
// engine's table, and a few minutes of ticks over it. Whatever the file holds,
// the table stays within its bounds and every entry is a known kind.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "fuzz_check.h"
#include "store/ini_document.h"

using vantr::fuzz::check;
#include "schedule/schedule_item.h"
#include "schedule/scheduler.h"

namespace {

class CountingActions : public vantr::SchedulerActions {
 public:
  void play(const std::string&, int channel) override { check(channel >= -1 && channel < 255); }
  void record(const std::string&, int channel, int32_t) override { check(channel >= -1 && channel < 255); }
  void deleteFile(const std::string& name) override { check(name.size() <= vantr::kMaxNameLength); }
  void rebuild() override {}
};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const vantr::IniDocument doc(text);
  for (const int order : {0, 1, 2}) (void)vantr::FillScheduleList(doc, order);

  constexpr int64_t kNow = 1078495629;  // 2004-03-05 14:07:09
  auto table = std::make_unique<vantr::ScheduleTable>();
  for (int copy = 0; copy < 5; ++copy) vantr::loadScheduleItems(*table, "Fuzzed", doc, kNow);
  check(table->count <= vantr::ScheduleTable::kCapacity);
  for (size_t i = 0; i < table->count; ++i) check(vantr::isKnownKind(table->entries[i].kind));
  CountingActions actions;
  for (int64_t now = kNow; now < kNow + 180; now += 7) vantr::SchedulerTick(*table, now, actions);
  return 0;
}
