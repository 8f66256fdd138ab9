// Sinks that write uncompressed (PCM) WAV files, one per stored sample type.
//
// The header is written when the file is made, rewritten every 441000 frames
// while recording, and made final when the sink is destroyed: a reader sees a
// recording grow, and a crash loses at most the frames since the last rewrite
// from the file's declared length.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio/data/sample_format.h"
#include "audio/data/sound_stream.h"
#include "audio/data/wav_header.h"
#include "base/file.h"

namespace vantr {

// Frames written after which the header is brought up to date.
constexpr int32_t kHeaderRewriteFrames = 441000;

class LSNKPCMFileBase : public LSoundSinkBase {
 public:
  ~LSNKPCMFileBase() override;

  void write(const int32_t* values, int32_t frames) override;
  void setLength(int32_t frames) override;

 protected:
  LSNKPCMFileBase(const std::string& path, uint32_t sampleRate, uint8_t channels, int32_t initialFrames,
                  uint32_t fullScale, int bytesPerSample);
  // Converts samples values (not frames) to stored samples.
  virtual void fromValues(const int32_t* values, uint8_t* bytes, size_t samples) const = 0;

 private:
  int32_t frameBytes() const { return channels() * m_bytesPerSample; }
  int64_t endOfData() const { return static_cast<int64_t>(kPcmHeaderBytes) + int64_t{m_length} * frameBytes(); }
  // Writes the header for the current length at offset 0 and goes back to
  // the end of the data.
  void writeHeader();

  File m_file;
  int m_bytesPerSample;
  int32_t m_framesSinceHeader = 0;
  std::vector<uint8_t> m_buffer;  // one chunk of stored frames
};

template <class SampleType>
class LSNKPCMFile final : public LSNKPCMFileBase {
 public:
  LSNKPCMFile(const std::string& path, uint32_t sampleRate, uint8_t channels, int32_t initialFrames)
      : LSNKPCMFileBase(path, sampleRate, channels, initialFrames, SampleType::kFullScale,
                        SampleType::kBytesPerSample) {}

 protected:
  void fromValues(const int32_t* values, uint8_t* bytes, size_t samples) const override {
    SampleType::fromValues(values, bytes, samples);
  }
};

// Creates a PCM file sink of the stored type for the bits per sample (1 to 8,
// 9 to 16, more), keeping the first initialFrames frames of an existing file
// (a recording that goes on from a point inside it). A sink whose file could
// not be made is failed: it counts frames and writes nothing.
LSoundSink createPcmSink(const std::string& path, uint32_t sampleRate, uint8_t channels, int bitsPerSample,
                         int32_t initialFrames);

}  // namespace vantr
