// Sources read back real files that sox wrote and refuse broken layouts, and
// vantrctl's wavinfo and samples commands show what they read.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "audio/audio_test_support.h"
#include "audio/data/pcm_file_source.h"
#include "test_support/child_process.h"
#include "test_support/run_command.h"
#include "test_support/temp_dir.h"
#include "tools/vantrctl/commands.h"

namespace vantr {
namespace {

using namespace wavtest;

std::string dataFile(const std::string& name) { return nativePath(std::string(VANTR_WAV_DATA) + "/" + name); }

// The little-endian 32-bit words of bytes.
std::vector<int32_t> words(const std::string& bytes) {
  std::vector<int32_t> words(bytes.size() / 4);
  for (size_t i = 0; i < words.size(); ++i) words[i] = static_cast<int32_t>(u32At(bytes, 4 * i));
  return words;
}

// How sox's 32-bit decoding of a file maps onto the common scale.
enum class Scale { U8, S16, S24AsS32, S32 };

// What a source should deliver for a file, worked out from sox's decoding
// (NAME.s32) alone. A 24-bit file is read as 4-byte groups across its 3-byte
// samples (the accepted misreading): its stored bytes are rebuilt from sox's
// decoding and regrouped, and each group comes down as a 32-bit sample does,
// by 2^12 with halves rounded up.
std::vector<int32_t> expectedValues(const std::string& name, Scale scale) {
  std::vector<int32_t> sox = words(fileBytes(dataFile(name + ".s32")));
  if (scale == Scale::S24AsS32) {
    std::string stored;
    for (int32_t s : sox)
      for (int shift : {8, 16, 24}) stored += static_cast<char>(static_cast<uint32_t>(s) >> shift);
    sox = words(stored);
  }
  std::vector<int32_t> values;
  for (int32_t s : sox)
    values.push_back(scale == Scale::U8    ? (s >> 24) * 2048
                     : scale == Scale::S16 ? (s >> 16) * 16
                                           : static_cast<int32_t>((int64_t{s} + 2048) >> 12));
  return values;
}

// Compressed files decode through the compression manager on Windows and open
// as failed sources elsewhere; sox decodes them to 16 bits. A compressed
// length is an estimate from the average rate: only what both hold is
// compared. MS ADPCM decoders round negative predictions differently (sox
// shifts, the compression manager divides) by some tens of 16-bit steps; a
// wrong block, channel or offset is off by thousands.
TEST(WavSource, FilesMadeBySoxReadAsSoxDecodesThem) {
  const struct {
    const char* name;
    Scale scale;
    int32_t channels, rate;
    bool compressed;
    int32_t tolerance;  // on the common scale
  } rows[] = {
      {"pcm_u8_mono_8000", Scale::U8, 1, 8000, false, 0},
      {"pcm_s16_stereo_44100", Scale::S16, 2, 44100, false, 0},
      {"pcm_s24_stereo_48000", Scale::S24AsS32, 2, 48000, false, 0},
      {"pcm_s32_stereo_192000", Scale::S32, 2, 192000, false, 0},
      {"list_before_fmt", Scale::S16, 1, 16000, false, 0},  // odd-sized LIST chunks around fmt
      {"list_after_fmt", Scale::S16, 1, 16000, false, 0},
      {"ima_adpcm_mono_8000", Scale::S16, 1, 8000, true, 0},
      {"ms_adpcm_stereo_11025", Scale::S16, 2, 11025, true, 64 * 16},
      {"alaw_stereo_8000", Scale::S16, 2, 8000, true, 0},
      {"ulaw_mono_8000", Scale::S16, 1, 8000, true, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    LSoundSource source = openWavSource(dataFile(std::string(row.name) + ".wav"));
#ifndef _WIN32
    EXPECT_EQ(source->failed(), row.compressed);
    if (row.compressed) continue;
#endif
    ASSERT_FALSE(source->failed()) << source->failure();
    EXPECT_EQ(source->channels(), row.channels);
    EXPECT_EQ(source->sampleRate(), row.rate);
    EXPECT_EQ(source->fullScale(), row.scale == Scale::U8 ? 0x3F800u : 0x7FFF0u);
    const std::vector<int32_t> expected = expectedValues(row.name, row.scale);
    ASSERT_FALSE(expected.empty()) << "no sox decoding";
    const std::vector<int32_t> got = readAll(*source, 333);  // crosses chunk boundaries at odd places
    EXPECT_TRUE(row.compressed || source->length() * row.channels == static_cast<int32_t>(got.size()))
        << source->length();
    ASSERT_TRUE(row.compressed ? got.size() >= expected.size() * 9 / 10 : got.size() == expected.size()) << got.size();
    for (size_t i = 0; i < std::min(got.size(), expected.size()); ++i)
      ASSERT_LE(std::abs(got[i] - expected[i]), row.tolerance) << "sample " << i;
  }
}

// Hand-made layouts: the rows that open deliver their one frame 0x1234, the
// others open as failed sources that say why. In a plain file the fmt chunk
// starts at offset 12 and its fields at 20 (channels at 22, rate at 24); the
// data chunk follows at 36.
TEST(WavSource, BrokenFilesAreRefusedWithAReason) {
  const std::string fmt = fmtChunk(1, 8000, 16), data = chunk("data", 2, le16(0x1234));
  const struct {
    const char* what;
    std::string bytes;
    int32_t length;      // when it opens
    std::string reason;  // when it does not
  } rows[] = {
      {"well formed", riff(fmt + data), 1, ""},
      {"RIFX", "RIFX" + le32(40) + "WAVE" + fmt + data, 0, "not a RIFF file at offset 0"},
      {"cut in the RIFF header", "RIFF" + le16(44), 0, "RIFF header cut short by end of file at offset 6"},
      {"AVI form", "RIFF" + le32(40) + "AVI " + fmt + data, 0, "WAVE tag missing at offset 8"},
      {"fmt of 14", riff(fmtChunk(1, 8000, 16, 14) + data), 0, "fmt chunk too short (14 bytes) at offset 12"},
      {"fmt of 8192", riff(fmtChunk(1, 8000, 16, 8192) + data), 1, ""},
      {"fmt of 8193", riff(fmtChunk(1, 8000, 16, 8193) + data), 0, "fmt chunk too long (8193 bytes) at offset 12"},
      {"0 channels", riff(fmtChunk(0, 8000, 16) + data), 0, "fmt chunk: channels 0 at offset 22"},
      {"rate 192000", riff(fmtChunk(1, 192000, 16) + data), 1, ""},
      {"rate 192001", riff(fmtChunk(1, 192001, 16) + data), 0, "fmt chunk: sample rate 192001 at offset 24"},
      {"empty chunk before fmt", riff(chunk("LIST", 0, "") + fmt + data), 0, "LIST chunk: size 0 at offset 16"},
      {"chunk past the end", riff(chunk("LIST", 0x7FFFFFF0u, "") + fmt + data), 0,
       "LIST chunk: size 2147483632 runs past end of file at offset 16"},
      {"truncated in fmt", riff(fmt + data).substr(0, 30), 0, "fmt chunk cut short by end of file at offset 30"},
      {"no data chunk", riff(fmt), 0, "no data chunk before end of file at offset 36"},
      // The header claims more than the file holds: only what is there comes.
      {"data size beyond the file", riff(fmt + chunk("data", 0xFFFFFFF0u, le16(0x1234))), 0x7FFFFFF8, ""},
  };
  TempDir dir;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string path = dir.file(std::string(row.what) + ".wav");  // never reused: a source may hold it open
    writeBytes(path, row.bytes);
    LSoundSource source = openWavSource(path);
    EXPECT_EQ(source->failure(), row.reason);
    ASSERT_EQ(source->failed(), !row.reason.empty());
    if (source->failed()) continue;
    EXPECT_EQ(source->length(), row.length);
    int32_t values[2] = {-1, -1};
    ASSERT_EQ(source->read(values, 2), 1);
    EXPECT_EQ(values[0], 0x1234 * 16);
  }
}

TEST(WavCommands, WavinfoAndSamples) {
  TempDir dir;
  const std::string pcm = dir.file("three.wav"), broken = dir.file("broken.wav"), mono0 = dir.file("no channels.wav");
  std::string data;
  for (int v : {1, -1, 2, -2, 3, -3}) data += le16(static_cast<uint16_t>(v));
  writeBytes(pcm, riff(chunk("LIST", 3, "abc") + '\0' + fmtChunk(2, 32000, 16) + chunk("data", 12, data)));
  writeBytes(broken, "RIFX" + le32(4) + "WAVE");
  writeBytes(mono0, riff(fmtChunk(0, 32000, 16) + chunk("data", 0, "")));
  const struct {
    const char* command;
    ctl::Args args;
    int code;
    std::string expected;  // what it prints; on failure, after "vantrctl: FILE" on standard error
  } rows[] = {
      {"wavinfo",
       {pcm},
       0,
       "format_tag=1\nchannels=2\nrate=32000\nbits=16\ndata_offset=56\ndata_size=12\nlength_frames=3\n"},
      {"samples", {pcm, "--from", "-1", "--count", "2"}, 0, "0 0\n16 -16\n"},  // silence before the start
      {"samples", {broken}, 1, " is not a WAV file the program can read: not a RIFF file at offset 0\n"},
      {"wavinfo", {mono0}, 1, " is not a format the program plays: fmt chunk: channels 0 at offset 22\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command + (" " + testing::PrintToString(row.args)));
    std::string out, err;
    EXPECT_EQ(runCommand(ctl::kWavCommands, row.command, row.args, out, err), row.code);
    EXPECT_EQ(row.code == 0 ? out : err, row.code == 0 ? row.expected : "vantrctl: " + row.args[0] + row.expected);
    EXPECT_EQ(row.code == 0 ? err : out, "");
  }
}

}  // namespace
}  // namespace vantr
