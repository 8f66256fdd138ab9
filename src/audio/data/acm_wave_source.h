// The source for compressed WAV files (any format tag but 1). On Windows the
// audio compression manager decodes them to 16-bit PCM of the same channels
// and rate; where no decoder exists (no manager, or no codec for the tag) the
// source is failed and plays nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "audio/data/compressed_decoder.h"
#include "audio/data/sound_stream.h"
#include "audio/data/wav_header.h"
#include "base/file.h"

namespace vantr {

// Byte offset within the data where frame p of a compressed stream begins,
// estimated from the average bytes per second and rounded down to a whole
// block, and the frame that a byte offset stands for (the inverse estimate).
int64_t compressedByteOffsetOfFrame(int32_t frame, uint32_t avgBytesPerSecond, uint32_t sampleRate,
                                    uint16_t blockAlign);
int32_t compressedFrameAtByteOffset(int64_t offset, uint32_t avgBytesPerSecond, uint32_t sampleRate);

class LSRCACMWave final : public LSoundSourceBase {
 public:
  LSRCACMWave(File file, const WavHeader& header);
  ~LSRCACMWave() override;

  int32_t read(int32_t* values, int32_t frames) override;
  void seek(int32_t frame) override;
  int32_t position() override { return m_position; }
  int32_t length() override { return m_length; }

 private:
  // Tops up the input from the file and decodes the next chunk; false once
  // the data is exhausted.
  bool refill();

  File m_file;
  uint32_t m_dataSize;
  uint32_t m_consumed = 0;  // compressed bytes taken from the data so far
  int64_t m_firstDataByte;
  std::unique_ptr<CompressedDecoder> m_decoder;
  size_t m_inputFill = 0;      // compressed bytes waiting in the decoder's input
  int32_t m_outputFrames = 0;  // decoded frames in the decoder's output
  int32_t m_outputUsed = 0;    // of which already delivered
  bool m_startPending = true;  // the next conversion begins the stream afresh
  bool m_endOfData = false;
  uint32_t m_avgBytesPerSecond;
  uint32_t m_formatRate;
  uint16_t m_blockAlign;
  int32_t m_position = 0;
  int32_t m_length;
  std::vector<int32_t> m_discard;  // frames decoded and dropped after a seek
};

}  // namespace vantr
