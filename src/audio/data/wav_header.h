// The RIFF/WAVE layout: what the reader accepts and the 46-byte header the
// writer puts at the start of every PCM file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/file.h"

namespace vantr {

constexpr uint16_t kWaveFormatPcm = 1;
constexpr size_t kPcmHeaderBytes = 46;
constexpr uint32_t kMinFmtBytes = 15;
constexpr uint32_t kMaxFmtBytes = 8192;
constexpr uint32_t kMaxSampleRate = 192000;
// The wave format record (tag to extra-size word); a shorter fmt chunk reads
// as if padded with zeros up to it.
constexpr size_t kWaveFormatRecordBytes = 18;

struct WavHeader {
  uint16_t formatTag = 0;
  uint16_t channels = 0;
  uint32_t sampleRate = 0;
  uint32_t avgBytesPerSecond = 0;
  uint16_t blockAlign = 0;
  uint16_t bitsPerSample = 0;
  // The whole fmt chunk as stored, at least kWaveFormatRecordBytes long.
  std::vector<uint8_t> format;
  int64_t dataOffset = 0;  // file offset of the first data byte
  uint32_t dataSize = 0;   // as the data chunk's header says, 0 while unknown
};

// Where the header reader takes its bytes from: a file or memory.
class WavByteInput {
 public:
  virtual ~WavByteInput() = default;
  // Reads up to n bytes and returns how many were read.
  virtual size_t read(void* data, size_t n) = 0;
  // Moves n bytes forward; past the end is allowed (the next read is short).
  virtual void skip(int64_t n) = 0;
  virtual int64_t position() const = 0;
  // How many bytes there are in all, or -1 when that cannot be told.
  virtual int64_t size() const = 0;
};

class WavFileInput : public WavByteInput {
 public:
  explicit WavFileInput(File& file) : m_file(file) {}
  size_t read(void* data, size_t n) override;
  void skip(int64_t n) override;
  int64_t position() const override { return m_position; }
  int64_t size() const override { return m_file.size(); }

 private:
  File& m_file;
  int64_t m_position = 0;
};

class WavMemoryInput : public WavByteInput {
 public:
  WavMemoryInput(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
  size_t read(void* data, size_t n) override;
  void skip(int64_t n) override;
  int64_t position() const override { return m_position; }
  int64_t size() const override { return static_cast<int64_t>(m_size); }

 private:
  const uint8_t* m_data;
  size_t m_size;
  int64_t m_position = 0;
};

enum class WavParse {
  Ok,
  Unreadable,  // not a WAV file, or cut short: the file is closed
  Invalid,     // a WAV file with an impossible channel count or rate
};

// What the header reader made of a file. A refusal says why in words that
// name the chunk, the field and the byte offset where the reader found the
// fault, e.g. "fmt chunk: channels 0 at offset 22"; Ok has no reason.
struct WavParseResult {
  WavParse status = WavParse::Ok;
  std::string reason;
  bool ok() const { return status == WavParse::Ok; }
};

// Reads the chunk layout up to the first data byte. Leading top-level chunks
// that are not RIFF/WAVE are skipped, as are unknown chunks around fmt.
WavParseResult parseWavHeader(WavByteInput& input, WavHeader& header);

// Bytes per stored sample for a PCM file of the given bits: 1, 2 or 4.
int bytesPerPcmSample(uint16_t bitsPerSample);

// Length in frames of a PCM data size: whole frames of channels x bytes per
// sample, capped at the largest signed 32-bit count.
int32_t pcmFramesInBytes(uint32_t dataSize, uint16_t channels, int bytesPerSample);

// Length in frames of compressed data, estimated from its average bytes per
// second; with no such figure, the data size in bytes.
int32_t compressedFramesInBytes(uint32_t dataSize, uint32_t avgBytesPerSecond, uint32_t sampleRate);

// The length in frames a source of this file reports before any reading.
int32_t wavLengthFrames(const WavHeader& header);

// The 46-byte PCM header for a file of the given format and length.
void buildPcmHeader(uint8_t (&header)[kPcmHeaderBytes], uint32_t sampleRate, uint16_t channels, int bytesPerSample,
                    int32_t lengthFrames);

// Opens and reads the header of a file; Ok only for a file that a source can
// be made of.
WavParseResult readWavFileHeader(const std::string& path, WavHeader& header);

}  // namespace vantr
