// Sources read back real files that sox wrote and refuse broken layouts, and
// vantrctl's wavinfo and samples commands show what they read.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "audio/data/pcm_file_source.h"
#include "audio/data/sample_format.h"
#include "test_support/run_command.h"
#include "test_support/temp_dir.h"
#include "tools/vantrctl/commands.h"
#include "wav_test_util.h"

namespace vantr {
namespace {

using namespace wavtest;

// How sox's 32-bit decoding of a file maps onto the common scale.
enum class Scale { U8, S16, S24AsS32, S32, Compressed };

// What a source should deliver for a file that sox decoded. A 24-bit file is
// read as 4-byte groups across its 3-byte samples: the stored bytes are
// rebuilt from sox's decoding and regrouped, which is the accepted misreading.
std::vector<int32_t> expectedValues(const std::vector<int32_t>& sox, Scale scale) {
  std::vector<int32_t> values;
  if (scale == Scale::S24AsS32) {
    std::vector<uint8_t> stored;
    for (int32_t s : sox)
      for (int shift : {8, 16, 24}) stored.push_back(static_cast<uint8_t>(static_cast<uint32_t>(s) >> shift));
    values.resize(stored.size() / 4);
    LSF32::toValues(stored.data(), values.data(), values.size());
    return values;
  }
  for (int32_t s : sox)
    values.push_back(scale == Scale::U8    ? (s >> 24) * 2048
                     : scale != Scale::S32 ? (s >> 16) * 16
                                           : static_cast<int32_t>((int64_t{s} + 2048) >> 12));
  return values;
}

// Compressed files decode through the compression manager on Windows and open
// as failed sources elsewhere. sox decodes them to 16 bits.
TEST(WavSource, FilesMadeBySoxReadAsSoxDecodesThem) {
  const struct {
    const char* name;
    Scale scale;
    int32_t channels, rate;
  } rows[] = {
      {"pcm_u8_mono_8000", Scale::U8, 1, 8000},
      {"pcm_s16_stereo_44100", Scale::S16, 2, 44100},
      {"pcm_s24_stereo_48000", Scale::S24AsS32, 2, 48000},
      {"pcm_s32_stereo_192000", Scale::S32, 2, 192000},
      {"list_before_fmt", Scale::S16, 1, 16000},  // odd-sized LIST chunks around fmt
      {"list_after_fmt", Scale::S16, 1, 16000},
      {"ima_adpcm_mono_8000", Scale::Compressed, 1, 8000},
      {"ms_adpcm_stereo_11025", Scale::Compressed, 2, 11025},
      {"alaw_stereo_8000", Scale::Compressed, 2, 8000},
      {"ulaw_mono_8000", Scale::Compressed, 1, 8000},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    LSoundSource source = openWavSource(dataFile(std::string(row.name) + ".wav"));
    ASSERT_TRUE(source);
    const bool compressed = row.scale == Scale::Compressed;
#ifndef _WIN32
    EXPECT_EQ(source->failed(), compressed);
    if (compressed) continue;
#endif
    ASSERT_FALSE(source->failed());
    EXPECT_EQ(source->channels(), row.channels);
    EXPECT_EQ(source->sampleRate(), row.rate);
    EXPECT_EQ(source->fullScale(), row.scale == Scale::U8 ? 0x3F800u : 0x7FFF0u);
    const std::vector<int32_t> expected = expectedValues(soxSamples(row.name), row.scale);
    ASSERT_FALSE(expected.empty()) << "no sox decoding";
    const std::vector<int32_t> got = readAll(*source, 333);  // crosses chunk boundaries at odd places
    // A compressed length is an estimate from the average rate: compare what
    // both hold. MS ADPCM decoders round negative predictions differently (sox
    // shifts, the compression manager divides) by some tens of 16-bit steps;
    // a wrong block, channel or offset is off by thousands.
    EXPECT_TRUE(compressed || source->length() * row.channels == static_cast<int32_t>(got.size())) << source->length();
    ASSERT_TRUE(compressed ? got.size() >= expected.size() * 9 / 10 : got.size() == expected.size()) << got.size();
    const int32_t tolerance = compressed && row.name[1] == 's' ? 64 * 16 : 0;
    for (size_t i = 0; i < std::min(got.size(), expected.size()); ++i)
      ASSERT_LE(std::abs(got[i] - expected[i]), tolerance) << "sample " << i;
  }
}

// Hand-made layouts; the rows that open deliver their one frame 0x1234.
TEST(WavSource, BrokenFilesAreRefused) {
  constexpr int32_t kRefused = -1;
  const std::string fmt = fmtChunk(1, 8000, 16), data = chunk("data", 2, le16(0x1234));
  const struct {
    const char* what;
    std::string bytes;
    int32_t length;
  } rows[] = {
      {"well formed", riff(fmt + data), 1},
      {"fmt of 14", riff(fmtChunk(1, 8000, 16, 14) + data), kRefused},
      {"fmt of 8192", riff(fmtChunk(1, 8000, 16, 8192) + data), 1},
      {"fmt of 8193", riff(fmtChunk(1, 8000, 16, 8193) + data), kRefused},
      {"0 channels", riff(fmtChunk(0, 8000, 16) + data), kRefused},
      {"rate 192000", riff(fmtChunk(1, 192000, 16) + data), 1},
      {"rate 192001", riff(fmtChunk(1, 192001, 16) + data), kRefused},
      {"empty chunk before fmt", riff(chunk("LIST", 0, "") + fmt + data), kRefused},
      {"chunk past the end", riff(chunk("LIST", 0x7FFFFFF0u, "") + fmt + data), kRefused},
      // The header claims more than the file holds: only what is there comes.
      {"data size beyond the file", riff(fmt + chunk("data", 0xFFFFFFF0u, le16(0x1234))), 0x7FFFFFF8},
      {"truncated in fmt", riff(fmt + data).substr(0, 30), kRefused},
  };
  TempDir dir;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string path = dir.file(std::string(row.what) + ".wav");  // never reused: a source may hold it open
    writeBytes(path, row.bytes);
    LSoundSource source = openWavSource(path);
    ASSERT_EQ(static_cast<bool>(source), row.length != kRefused);
    if (!source) continue;
    EXPECT_EQ(source->length(), row.length);
    int32_t values[2] = {-1, -1};
    ASSERT_EQ(source->read(values, 2), 1);
    EXPECT_EQ(values[0], 0x1234 * 16);
  }
}

TEST(WavCommands, WavinfoAndSamples) {
  TempDir dir;
  const std::string pcm = dir.file("three.wav"), broken = dir.file("broken.wav");
  std::string data;
  for (int v : {1, -1, 2, -2, 3, -3}) data += le16(static_cast<uint16_t>(v));
  writeBytes(pcm, riff(chunk("LIST", 3, "abc") + '\0' + fmtChunk(2, 32000, 16) + chunk("data", 12, data)));
  writeBytes(broken, riff(fmtChunk(2, 32000, 16, 14)));
  const struct {
    const char* command;
    ctl::Args args;
    int code;
    std::string expected;  // what it prints, on standard error if it fails
  } rows[] = {
      {"wavinfo",
       {pcm},
       0,
       "format_tag=1\nchannels=2\nrate=32000\nbits=16\ndata_offset=56\ndata_size=12\nlength_frames=3\n"},
      {"samples", {pcm, "--from", "-1", "--count", "2"}, 0, "0 0\n16 -16\n"},  // silence before the start
      {"samples", {broken}, 1, "vantrctl: " + broken + " is not a WAV file the program can read\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command + (" " + testing::PrintToString(row.args)));
    std::string out, err;
    EXPECT_EQ(runCommand(ctl::kWavCommands, row.command, row.args, out, err), row.code);
    EXPECT_EQ(row.code == 0 ? out : err, row.expected);
    EXPECT_EQ(row.code == 0 ? err : out, "");
  }
}

}  // namespace
}  // namespace vantr
