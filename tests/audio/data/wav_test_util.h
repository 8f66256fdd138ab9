// Helpers shared by the WAV tests: the sox-made files in tests/data/wav, a
// builder for hand-made WAV byte layouts, and reading a source to its end.
#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "audio/data/sound_stream.h"
#include "test_support/child_process.h"

namespace vantr::wavtest {

inline std::string dataFile(const std::string& name) { return nativePath(std::string(VANTR_WAV_DATA) + "/" + name); }

inline std::string fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
inline void writeBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// The little-endian 32-bit field at offset.
inline uint32_t u32At(const std::string& bytes, size_t offset) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data() + offset);
  return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

// Samples as sox decodes them: raw signed 32-bit little-endian.
inline std::vector<int32_t> soxSamples(const std::string& name) {
  const std::string bytes = fileBytes(dataFile(name + ".s32"));
  std::vector<int32_t> samples(bytes.size() / 4);
  for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<int32_t>(u32At(bytes, 4 * i));
  return samples;
}

inline std::string le16(uint32_t v) { return {static_cast<char>(v), static_cast<char>(v >> 8)}; }
inline std::string le32(uint32_t v) { return le16(v) + le16(v >> 16); }
inline std::string chunk(const char* id, uint32_t size, const std::string& body) {
  return std::string(id, 4) + le32(size) + body;
}
inline std::string riff(const std::string& chunks) {
  return "RIFF" + le32(uint32_t(chunks.size() + 4)) + "WAVE" + chunks;
}

// A PCM fmt chunk, header included, whose body is cut or padded to fmtSize.
inline std::string fmtChunk(uint16_t channels, uint32_t rate, uint16_t bits, uint32_t fmtSize = 16) {
  const uint32_t block = channels * ((bits + 7u) / 8u);
  std::string body = le16(1) + le16(channels) + le32(rate) + le32(rate * block) + le16(block) + le16(bits);
  body.resize(fmtSize, '\0');
  return chunk("fmt ", fmtSize, body);
}

// Every value a source delivers from its position on, read n frames at a time.
inline std::vector<int32_t> readAll(LSoundSourceBase& source, int32_t n) {
  std::vector<int32_t> all, buffer(static_cast<size_t>(n) * source.channels());
  for (int32_t got; (got = source.read(buffer.data(), n)) > 0;)
    all.insert(all.end(), buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(got) * source.channels());
  return all;
}

}  // namespace vantr::wavtest
