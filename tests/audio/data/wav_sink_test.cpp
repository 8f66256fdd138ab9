// Sinks write the 46-byte layout, keep the header close behind the data while
// a recording runs, and read back through the sources unchanged.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "audio/audio_test_support.h"
#include "audio/data/pcm_file_sink.h"
#include "audio/data/pcm_file_source.h"
#include "base/file.h"
#include "test_support/child_process.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

using namespace wavtest;

// Each stored type, written in uneven pieces (one larger than a conversion
// chunk), reads back unchanged; the file ends with the data (no pad byte).
TEST(WavSink, EveryFormatRoundTripsThroughASource) {
  const struct {
    int bits;
    uint8_t channels;
    uint32_t rate;
    int32_t frames, bytesPerSample;  // 24 bits are stored as 4 bytes
  } rows[] = {{8, 1, 8000, 20001, 1}, {16, 2, 44100, 30001, 2}, {24, 3, 192000, 8193, 4}, {32, 1, 96000, 12345, 4}};
  TempDir dir;
  std::mt19937 random(7);
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.bits) + " bits");
    std::vector<int32_t> values(static_cast<size_t>(row.frames) * row.channels);
    for (int32_t& v : values) {  // values that the stored type holds exactly
      const auto r = static_cast<int32_t>(random());
      v = row.bits == 8 ? (r >> 24) * 2048 : row.bits == 16 ? (r >> 16) * 16 : r >> 12;
    }
    const std::string path = dir.file(std::to_string(row.bits) + ".wav");
    LSoundSink sink = createPcmSink(path, row.rate, row.channels, row.bits, 0);
    for (int32_t done = 0, step = 1, n; done < row.frames; done += n, step = step * 3 + 7) {
      n = std::min(step % 20000, row.frames - done);
      sink->write(values.data() + static_cast<size_t>(done) * row.channels, n);
    }
    sink.reset();
    EXPECT_EQ(fileBytes(path).size(), 46 + values.size() * row.bytesPerSample);
    LSoundSource source = openWavSource(path);
    ASSERT_FALSE(source->failed()) << source->failure();
    EXPECT_EQ(source->channels(), row.channels);
    EXPECT_EQ(source->sampleRate(), static_cast<int32_t>(row.rate));
    ASSERT_EQ(source->length(), row.frames);
    EXPECT_EQ(readAll(*source, 10000), values);
  }
  // The 16-bit stereo header, byte by byte: 30001 frames are 120004 data bytes.
  const std::string fmt = le16(1) + le16(2) + le32(44100) + le32(176400) + le16(4) + le16(16) + le16(0);
  EXPECT_EQ(fileBytes(dir.file("16.wav")).substr(0, 46),
            "RIFF" + le32(120042) + "WAVE" + chunk("fmt ", 18, fmt) + chunk("data", 120004, ""));
}

// Setting a length cuts the file; an initial length keeps the start of an
// existing file and the recording goes on after it.
TEST(WavSink, LengthsCutTheFileAndRecordingsGoOnFromThem) {
  TempDir dir;
  const std::string path = dir.file("cut.wav");
  std::vector<int32_t> ramp(1000);
  for (size_t i = 0; i < ramp.size(); ++i) ramp[i] = (static_cast<int32_t>(i) - 500) * 16;
  LSoundSink sink = createPcmSink(path, 8000, 1, 16, 0);
  sink->write(ramp.data(), 1000);
  sink->setLength(400);
  sink->setLength(900);  // never lengthens
  EXPECT_EQ(sink->length(), 400);
  EXPECT_EQ(u32At(fileBytes(path), 42), 800u);
  EXPECT_EQ(fileBytes(path).size(), 46u + 800u);
  sink.reset();
  sink = createPcmSink(path, 8000, 1, 16, 3);
  EXPECT_EQ(sink->length(), 3);
  sink->write(ramp.data() + 100, 2);
  sink.reset();
  EXPECT_EQ(readAll(*openWavSource(path), 100),
            std::vector<int32_t>({ramp[0], ramp[1], ramp[2], ramp[100], ramp[101]}));
}

// A player follows a recording in progress from another thread, kept at most
// one header rewrite behind: it reads nearly the whole file while the writer is
// still writing, and every frame it reads is the frame the writer wrote.
TEST(WavSink, AReaderFollowsAFileBeingWritten) {
  TempDir dir;
  const std::string path = dir.file("growing.wav");
  constexpr int32_t kTotalFrames = 5 * kHeaderRewriteFrames + 1234;
  auto sampleOf = [](int32_t frame) { return ((frame * 7) % 65536 - 32768) * 16; };
  LSoundSink sink = createPcmSink(path, 8000, 1, 16, 0);
  std::atomic<bool> finished{false};
  std::atomic<int32_t> readerFrame{0};
  std::thread writer([&] {
    std::vector<int32_t> block(kFramesPerChunk);
    for (int32_t frame = 0, n; frame < kTotalFrames; frame += n) {
      const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
      while (frame - readerFrame > kHeaderRewriteFrames + 2 * kFramesPerChunk &&
             std::chrono::steady_clock::now() < giveUp)
        std::this_thread::sleep_for(std::chrono::microseconds(100));
      n = std::min(kFramesPerChunk, kTotalFrames - frame);
      for (int32_t i = 0; i < n; ++i) block[static_cast<size_t>(i)] = sampleOf(frame + i);
      sink->write(block.data(), n);
    }
    sink.reset();  // final header
    finished = true;
  });
  LSoundSource source = openWavSource(path);
  ASSERT_FALSE(source->failed()) << source->failure();
  int32_t frame = 0, readWhileWriting = 0, values[4096];
  for (bool lastRound = false;;) {
    const bool writing = !finished;
    const int32_t got = source->read(values, 4096);
    for (int32_t i = 0; i < got; ++i) ASSERT_EQ(values[i], sampleOf(frame + i)) << "frame " << frame + i;
    readerFrame = frame += got;
    if (writing) readWhileWriting = frame;
    if (got == 0 && lastRound) break;
    if (got == 0) {
      lastRound = finished;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  writer.join();
  EXPECT_EQ(frame, kTotalFrames);
  // The writer cannot end before the reader is within its lead of the end.
  EXPECT_GE(readWhileWriting, kTotalFrames - kHeaderRewriteFrames - 2 * kFramesPerChunk);
}

// A recording whose process dies at any moment leaves a file that opens and
// declares all but at most the last 441000 frames written, each as written.
TEST(WavSink, KilledRecorderLeavesAPlayableFile) {
  constexpr int32_t kWriterBlockFrames = 4410;  // one write of the helper
  auto framesOnDisk = [](const std::string& path) { return (File(path, FileMode::Read).size() - 46) / 4; };
  TempDir dir;
  std::mt19937 random(20261123);
  for (int round = 0; round < 6; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const std::string path = dir.file(std::to_string(round) + ".wav");
    ChildProcess writer;
    ASSERT_TRUE(writer.start(VANTR_WAV_WRITER, {nativePath(path)}));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (framesOnDisk(path) <= 0) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the writer never wrote";
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    // Anywhere within about three header periods from the first data on.
    std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution<int>(0, 800)(random)));
    ASSERT_FALSE(writer.wait(0)) << "the writer stopped by itself";
    writer.kill();
    ASSERT_TRUE(writer.wait(10000));
    const int64_t onDisk = framesOnDisk(path);  // the last write may have been cut short, and was not declared
    LSoundSource source = openWavSource(path);
    ASSERT_FALSE(source->failed()) << source->failure();
    const int32_t declared = source->length();
    EXPECT_LE(declared, onDisk);
    EXPECT_GE(declared, onDisk - kHeaderRewriteFrames - kWriterBlockFrames) << onDisk << " frames written";
    std::vector<int32_t> expected;
    for (int32_t f = 0; f < declared; ++f) expected.insert(expected.end(), {(f & 0x7FFF) * 16, (f & 0x7FFF) * -16});
    EXPECT_EQ(readAll(*source, 8192), expected);
  }
}

}  // namespace
}  // namespace vantr
