#include "audio/data/wav_header.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <utility>

namespace vantr {
namespace {

uint16_t le16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }
uint32_t le32(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) | (static_cast<uint32_t>(p[2]) << 16) |
         (static_cast<uint32_t>(p[3]) << 24);
}
void put16(uint8_t* p, uint32_t v) {
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
}
void put32(uint8_t* p, uint32_t v) {
  put16(p, v);
  put16(p + 2, v >> 16);
}
bool isId(const uint8_t* p, const char* id) { return std::memcmp(p, id, 4) == 0; }

// A chunk size rounded up to even, taken as signed: a size with the top bit
// set comes out negative, and so is refused wherever a minimum applies.
int32_t roundedChunkSize(uint32_t size) { return static_cast<int32_t>((size + 1u) & ~1u); }

// A chunk id as it reads in a message: printable characters as they are, any
// other byte as '?', trailing blanks dropped ("fmt " reads "fmt").
std::string idText(const void* id) {
  const auto* p = static_cast<const uint8_t*>(id);
  std::string text;
  for (int i = 0; i < 4; ++i) text += p[i] >= 0x20 && p[i] < 0x7F ? static_cast<char>(p[i]) : '?';
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

std::string atOffset(int64_t offset) { return " at offset " + std::to_string(offset); }

WavParseResult refused(std::string reason) { return {WavParse::Unreadable, std::move(reason)}; }

// Why a file holds no RIFF/WAVE chunk, told from its first bytes (got of the
// twelve of a RIFF header, read at start): the scan that skips other
// top-level chunks ends somewhere in the file, but what the user needs to
// know is what the file begins with.
std::string notWaveReason(const uint8_t* first, size_t got, int64_t start) {
  if (got < 4 || !isId(first, "RIFF")) return "not a RIFF file" + atOffset(start);
  if (got < 12) return "RIFF header cut short by end of file" + atOffset(start + static_cast<int64_t>(got));
  return "WAVE tag missing" + atOffset(start + 8);
}

// Reads chunk headers until one has the wanted id, skipping the others, and
// leaves the input at the found chunk's body. Unknown chunks must have a size
// (an empty one cannot be told from damage). Empty when found, else why not.
std::string findChunk(WavByteInput& input, const char* id, uint32_t& size) {
  uint8_t chunk[8];
  std::string skipped;  // "LIST chunk: size 40 " of the chunk skipped last
  int64_t skippedSizeAt = 0;
  for (;;) {
    const int64_t start = input.position();
    if (input.read(chunk, sizeof chunk) != sizeof chunk) {
      // A skipped chunk that claims more than the file holds is the fault,
      // not the chunk that could not be found after it.
      const int64_t end = input.size();
      if (!skipped.empty() && end >= 0 && start > end)
        return skipped + "runs past end of file" + atOffset(skippedSizeAt);
      return "no " + idText(id) + " chunk before end of file" + atOffset(start);
    }
    size = le32(chunk + 4);
    if (isId(chunk, id)) return {};
    const std::string sizeText = idText(chunk) + " chunk: size " + std::to_string(size);
    const int32_t skip = roundedChunkSize(size);
    if (skip < 1) return sizeText + atOffset(start + 4);
    skipped = sizeText + ' ';
    skippedSizeAt = start + 4;
    input.skip(skip);
  }
}

}  // namespace

size_t WavFileInput::read(void* data, size_t n) {
  const size_t got = m_file.read(data, n);
  m_position += static_cast<int64_t>(got);
  return got;
}

void WavFileInput::skip(int64_t n) {
  m_position += n;
  m_file.seek(m_position);
}

size_t WavMemoryInput::read(void* data, size_t n) {
  const size_t at = static_cast<size_t>(std::min<int64_t>(m_position, static_cast<int64_t>(m_size)));
  const size_t got = std::min(n, m_size - at);
  if (got > 0) std::memcpy(data, m_data + at, got);
  m_position += static_cast<int64_t>(got);
  return got;
}

void WavMemoryInput::skip(int64_t n) { m_position += n; }

WavParseResult parseWavHeader(WavByteInput& input, WavHeader& header) {
  // Top level: skip chunks until RIFF/WAVE.
  const int64_t fileStart = input.position();
  uint8_t first[12] = {};
  const size_t firstGot = input.read(first, sizeof first);
  uint8_t top[12];
  std::memcpy(top, first, sizeof top);
  for (size_t got = firstGot;; got = input.read(top, sizeof top)) {
    if (got != sizeof top) return refused(notWaveReason(first, firstGot, fileStart));
    if (isId(top, "RIFF") && isId(top + 8, "WAVE")) break;
    const int32_t size = roundedChunkSize(le32(top + 4));
    if (size < 5) return refused(notWaveReason(first, firstGot, fileStart));
    input.skip(size - 4);  // the 4 bytes after the size are already read
  }

  uint32_t fmtSize = 0;
  std::string missing = findChunk(input, "fmt ", fmtSize);
  if (!missing.empty()) return refused(std::move(missing));
  const int64_t fmtStart = input.position() - 8;
  const int64_t fmtBody = fmtStart + 8;
  if (fmtSize < kMinFmtBytes)
    return refused("fmt chunk too short (" + std::to_string(fmtSize) + " bytes)" + atOffset(fmtStart));
  if (fmtSize > kMaxFmtBytes)
    return refused("fmt chunk too long (" + std::to_string(fmtSize) + " bytes)" + atOffset(fmtStart));
  header.format.assign(std::max<size_t>(fmtSize, kWaveFormatRecordBytes), 0);
  const size_t fmtGot = input.read(header.format.data(), fmtSize);
  if (fmtGot != fmtSize)
    return refused("fmt chunk cut short by end of file" + atOffset(fmtBody + static_cast<int64_t>(fmtGot)));
  // The fmt chunk's size is not rounded up: the next chunk header is read
  // right after its last byte.
  const uint8_t* f = header.format.data();
  header.formatTag = le16(f);
  header.channels = le16(f + 2);
  header.sampleRate = le32(f + 4);
  header.avgBytesPerSecond = le32(f + 8);
  header.blockAlign = le16(f + 12);
  header.bitsPerSample = le16(f + 14);

  missing = findChunk(input, "data", header.dataSize);
  if (!missing.empty()) return refused(std::move(missing));
  header.dataOffset = input.position();

  if (header.channels < 1 || header.channels > 255)
    return {WavParse::Invalid, "fmt chunk: channels " + std::to_string(header.channels) + atOffset(fmtBody + 2)};
  if (header.sampleRate < 1 || header.sampleRate > kMaxSampleRate)
    return {WavParse::Invalid, "fmt chunk: sample rate " + std::to_string(header.sampleRate) + atOffset(fmtBody + 4)};
  return {};
}

int bytesPerPcmSample(uint16_t bitsPerSample) {
  if (bitsPerSample <= 8) return 1;
  if (bitsPerSample <= 16) return 2;
  return 4;
}

int32_t pcmFramesInBytes(uint32_t dataSize, uint16_t channels, int bytesPerSample) {
  const uint32_t frameBytes = static_cast<uint32_t>(channels) * static_cast<uint32_t>(bytesPerSample);
  if (frameBytes == 0) return 0;
  return static_cast<int32_t>(std::min<uint32_t>(dataSize / frameBytes, INT32_MAX));
}

int32_t compressedFramesInBytes(uint32_t dataSize, uint32_t avgBytesPerSecond, uint32_t sampleRate) {
  if (avgBytesPerSecond == 0) return static_cast<int32_t>(std::min<uint32_t>(dataSize, INT32_MAX));
  // Whole seconds and the rest apart, so that no product overflows.
  const uint64_t frames = static_cast<uint64_t>(dataSize / avgBytesPerSecond) * sampleRate +
                          static_cast<uint64_t>(dataSize % avgBytesPerSecond) * sampleRate / avgBytesPerSecond;
  return static_cast<int32_t>(std::min<uint64_t>(frames, INT32_MAX));
}

int32_t wavLengthFrames(const WavHeader& header) {
  if (header.formatTag == kWaveFormatPcm)
    return pcmFramesInBytes(header.dataSize, header.channels, bytesPerPcmSample(header.bitsPerSample));
  return compressedFramesInBytes(header.dataSize, header.avgBytesPerSecond, header.sampleRate);
}

void buildPcmHeader(uint8_t (&header)[kPcmHeaderBytes], uint32_t sampleRate, uint16_t channels, int bytesPerSample,
                    int32_t lengthFrames) {
  const uint32_t blockAlign = static_cast<uint32_t>(channels) * static_cast<uint32_t>(bytesPerSample);
  const uint32_t dataBytes = blockAlign * static_cast<uint32_t>(std::max(lengthFrames, 0));
  std::memcpy(header, "RIFF", 4);
  put32(header + 4, dataBytes + 38);
  std::memcpy(header + 8, "WAVEfmt ", 8);
  put32(header + 16, 18);  // a full wave format record, extra size 0
  put16(header + 20, kWaveFormatPcm);
  put16(header + 22, channels);
  put32(header + 24, sampleRate);
  put32(header + 28, blockAlign * sampleRate);
  put16(header + 32, blockAlign);
  put16(header + 34, static_cast<uint32_t>(bytesPerSample) * 8);
  put16(header + 36, 0);
  std::memcpy(header + 38, "data", 4);
  put32(header + 42, dataBytes);
}

WavParseResult readWavFileHeader(const std::string& path, WavHeader& header) {
  File file(path, FileMode::Read);
  if (!file.isOpen()) return refused("cannot open the file");
  WavFileInput input(file);
  return parseWavHeader(input, header);
}

}  // namespace vantr
