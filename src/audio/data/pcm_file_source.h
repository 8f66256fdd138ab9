// Sources that read uncompressed (PCM) WAV files, one per stored sample type.
// They can follow a file that is still being written: when a read or a length
// question reaches the known end, the data size is read again from the header.
#pragma once

#include <cstdint>
#include <vector>

#include "audio/data/sample_format.h"
#include "audio/data/sound_stream.h"
#include "audio/data/wav_header.h"
#include "base/file.h"

namespace vantr {

class LSRCPCMFileBase : public LSoundSourceBase {
 public:
  int32_t read(int32_t* values, int32_t frames) override;
  void seek(int32_t frame) override;
  int32_t position() override { return m_position; }
  int32_t length() override;

 protected:
  LSRCPCMFileBase(File file, const WavHeader& header, uint32_t fullScale, int bytesPerSample);
  // Converts samples stored samples (not frames) to values.
  virtual void toValues(const uint8_t* bytes, int32_t* values, size_t samples) const = 0;

 private:
  int32_t frameBytes() const { return channels() * m_bytesPerSample; }
  // Reads the data size from the header again: a writer may have added data.
  void refreshLength();

  File m_file;
  int64_t m_firstDataByte;
  int64_t m_dataSizeField;  // offset of the data chunk's size, m_firstDataByte - 4
  int32_t m_position = 0;
  int32_t m_length;
  int m_bytesPerSample;
  std::vector<uint8_t> m_buffer;  // one chunk of stored frames
};

template <class SampleType>
class LSRCPCMFile final : public LSRCPCMFileBase {
 public:
  LSRCPCMFile(File file, const WavHeader& header)
      : LSRCPCMFileBase(std::move(file), header, SampleType::kFullScale, SampleType::kBytesPerSample) {}

 protected:
  void toValues(const uint8_t* bytes, int32_t* values, size_t samples) const override {
    SampleType::toValues(bytes, values, samples);
  }
};

// Opens a WAV file the way the player does: a PCM source of the stored type
// for format tag 1, the compressed-file source for any other tag. Never empty:
// a file that cannot be opened or is not a WAV file the program can use gives
// a failed source whose failure() says why.
LSoundSource openWavSource(const std::string& path);

// The source for an opened file whose header has been read (file positioned
// anywhere). Used by openWavSource and by tests that read from memory.
LSoundSource makeWavSource(File file, const WavHeader& header);

}  // namespace vantr
