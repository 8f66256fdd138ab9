// One typed read and one typed write of the settings store on a file of 200
// keys: what every settings access of the program costs.
#include <benchmark/benchmark.h>

#include <string>

#include "base/file.h"
#include "store/settings.h"
#include "test_support/temp_dir.h"

namespace {

std::string twoHundredKeys() {
  std::string text;
  for (int i = 0; i < 200; ++i) {
    if (i % 40 == 0) text += "[section" + std::to_string(i / 40) + "]\r\n";
    text += "key" + std::to_string(i) + "=" + std::to_string(i * 1000) + "\r\n";
  }
  return text;
}

void BM_ReadIntOf200Keys(benchmark::State& state) {
  vantr::TempDir dir;
  const std::string path = dir.file("settings.ini");
  vantr::replaceFileContents(path, twoHundredKeys());
  for (auto _ : state) benchmark::DoNotOptimize(vantr::readInt(path, "section4", "key199", 0));
}
BENCHMARK(BM_ReadIntOf200Keys);

void BM_WriteIntOf200Keys(benchmark::State& state) {
  vantr::TempDir dir;
  const std::string path = dir.file("settings.ini");
  vantr::replaceFileContents(path, twoHundredKeys());
  int32_t value = 0;
  // Each write is a whole new file synced to disk and renamed into place.
  for (auto _ : state) vantr::writeInt(path, "section2", "key100", ++value);
}
BENCHMARK(BM_WriteIntOf200Keys)->UseRealTime();

}  // namespace
