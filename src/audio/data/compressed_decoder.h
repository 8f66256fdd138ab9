// A decoder from a compressed wave format to 16-bit PCM of the same channels
// and rate. On Windows it is a stream of the audio compression manager; where
// there is none, no decoder can be opened.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vantr {

class CompressedDecoder {
 public:
  virtual ~CompressedDecoder() = default;

  // The buffer the compressed bytes go into, and how many it holds.
  virtual uint8_t* input() = 0;
  virtual size_t inputCapacity() const = 0;
  // The decoded 16-bit samples of the last conversion.
  virtual const int16_t* output() const = 0;

  // Converts the first inputBytes of input() (whole blocks only). start begins
  // the stream afresh, forgetting any state carried from earlier blocks. Sets
  // how many input bytes were used and how many output bytes were produced;
  // false when the decoder failed.
  virtual bool convert(size_t inputBytes, bool start, size_t& inputUsed, size_t& outputBytes) = 0;
};

// Opens a decoder for the wave format record of a fmt chunk whose output
// holds outputFrames frames. Null when no decoder exists for the format, or
// when it names no input size for that output.
std::unique_ptr<CompressedDecoder> openCompressedDecoder(const std::vector<uint8_t>& format, int32_t outputFrames);

}  // namespace vantr
