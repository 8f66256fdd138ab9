// Reading a 60-second 16-bit stereo 44100 Hz WAV file into the common sample
// scale, and writing one back, against libsndfile doing the same with 32-bit
// integers (sf_readf_int / sf_writef_int) and against a plain memcpy of the
// file's bytes. Compare the bytes_per_second columns: the program's reader and
// writer should be at least as fast as libsndfile's.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "audio/data/pcm_file_sink.h"
#include "audio/data/pcm_file_source.h"
#include "base/file.h"
#include "test_support/temp_dir.h"

#ifdef VANTR_HAVE_SNDFILE
#include <sndfile.h>
#endif

namespace {

constexpr int kChannels = 2;
constexpr int kRate = 44100;
constexpr int32_t kFrames = 60 * kRate;
constexpr int64_t kDataBytes = int64_t{kFrames} * kChannels * 2;

// One file for all the read benchmarks, made once.
struct Fixture {
  vantr::TempDir dir;
  std::string readPath = dir.file("sixty.wav");
  std::string writePath = dir.file("written.wav");
  std::vector<int32_t> values;  // the file's samples on the common scale
  Fixture() {
    values.resize(static_cast<size_t>(kFrames) * kChannels);
    uint32_t x = 12345;
    for (int32_t& v : values) {
      x = x * 1664525u + 1013904223u;
      v = static_cast<int16_t>(x >> 16) * 16;
    }
    vantr::LSoundSink sink = vantr::createPcmSink(readPath, kRate, kChannels, 16, 0);
    for (int32_t frame = 0; frame < kFrames; frame += vantr::kFramesPerChunk)
      sink->write(values.data() + static_cast<size_t>(frame) * kChannels,
                  std::min(vantr::kFramesPerChunk, kFrames - frame));
  }
};

Fixture& fixture() {
  static Fixture* f = new Fixture;
  return *f;
}

void BM_Read_Vantorel(benchmark::State& state) {
  Fixture& f = fixture();
  std::vector<int32_t> buffer(static_cast<size_t>(vantr::kFramesPerChunk) * kChannels);
  for (auto _ : state) {
    vantr::LSoundSource source = vantr::openWavSource(f.readPath);
    int64_t frames = 0;
    for (int32_t got; (got = source->read(buffer.data(), vantr::kFramesPerChunk)) > 0;) frames += got;
    benchmark::DoNotOptimize(buffer.data());
    if (frames != kFrames) state.SkipWithError("short read");
  }
  state.SetBytesProcessed(state.iterations() * kDataBytes);
}
BENCHMARK(BM_Read_Vantorel)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Write_Vantorel(benchmark::State& state) {
  Fixture& f = fixture();
  for (auto _ : state) {
    vantr::LSoundSink sink = vantr::createPcmSink(f.writePath, kRate, kChannels, 16, 0);
    for (int32_t frame = 0; frame < kFrames; frame += vantr::kFramesPerChunk)
      sink->write(f.values.data() + static_cast<size_t>(frame) * kChannels,
                  std::min(vantr::kFramesPerChunk, kFrames - frame));
  }
  state.SetBytesProcessed(state.iterations() * kDataBytes);
}
BENCHMARK(BM_Write_Vantorel)->Unit(benchmark::kMillisecond)->UseRealTime();

#ifdef VANTR_HAVE_SNDFILE
void BM_Read_Sndfile(benchmark::State& state) {
  Fixture& f = fixture();
  std::vector<int> buffer(static_cast<size_t>(vantr::kFramesPerChunk) * kChannels);
  for (auto _ : state) {
    SF_INFO info{};
    SNDFILE* file = sf_open(f.readPath.c_str(), SFM_READ, &info);
    int64_t frames = 0;
    for (sf_count_t got; (got = sf_readf_int(file, buffer.data(), vantr::kFramesPerChunk)) > 0;) frames += got;
    sf_close(file);
    benchmark::DoNotOptimize(buffer.data());
    if (frames != kFrames) state.SkipWithError("short read");
  }
  state.SetBytesProcessed(state.iterations() * kDataBytes);
}
BENCHMARK(BM_Read_Sndfile)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Write_Sndfile(benchmark::State& state) {
  Fixture& f = fixture();
  // libsndfile's integers are full-scale 32-bit: the same samples, shifted.
  std::vector<int> values(f.values.size());
  for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<int>(static_cast<uint32_t>(f.values[i]) << 12);
  for (auto _ : state) {
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = kChannels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(f.writePath.c_str(), SFM_WRITE, &info);
    for (int32_t frame = 0; frame < kFrames; frame += vantr::kFramesPerChunk)
      sf_writef_int(file, values.data() + static_cast<size_t>(frame) * kChannels,
                    std::min(vantr::kFramesPerChunk, kFrames - frame));
    sf_close(file);
  }
  state.SetBytesProcessed(state.iterations() * kDataBytes);
}
BENCHMARK(BM_Write_Sndfile)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

// The floor: the same number of bytes copied in memory, no file and no
// conversion.
void BM_Memcpy(benchmark::State& state) {
  std::vector<char> from(static_cast<size_t>(kDataBytes), 1), to(static_cast<size_t>(kDataBytes));
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kDataBytes);
}
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
