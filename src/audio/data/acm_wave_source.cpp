#include "audio/data/acm_wave_source.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "audio/data/sample_format.h"

namespace vantr {

int64_t compressedByteOffsetOfFrame(int32_t frame, uint32_t avgBytesPerSecond, uint32_t sampleRate,
                                    uint16_t blockAlign) {
  if (frame <= 0 || sampleRate == 0) return 0;
  const int64_t p = frame;
  int64_t offset = (p / sampleRate) * avgBytesPerSecond + ((p % sampleRate) * avgBytesPerSecond) / sampleRate;
  if (blockAlign > 0) offset -= offset % blockAlign;
  return offset;
}

int32_t compressedFrameAtByteOffset(int64_t offset, uint32_t avgBytesPerSecond, uint32_t sampleRate) {
  if (offset <= 0) return 0;
  if (avgBytesPerSecond == 0) return static_cast<int32_t>(std::min<int64_t>(offset, INT32_MAX));
  const int64_t frames =
      (offset / avgBytesPerSecond) * sampleRate + ((offset % avgBytesPerSecond) * sampleRate) / avgBytesPerSecond;
  return static_cast<int32_t>(std::min<int64_t>(frames, INT32_MAX));
}

LSRCACMWave::LSRCACMWave(File file, const WavHeader& header)
    : LSoundSourceBase(static_cast<int32_t>(header.sampleRate), LSF16::kFullScale,
                       static_cast<uint8_t>(header.channels)),
      m_file(std::move(file)),
      m_dataSize(header.dataSize),
      m_firstDataByte(header.dataOffset),
      m_avgBytesPerSecond(header.avgBytesPerSecond),
      m_formatRate(header.sampleRate),
      m_blockAlign(header.blockAlign),
      m_length(compressedFramesInBytes(header.dataSize, header.avgBytesPerSecond, header.sampleRate)) {
  if (!failed() && m_file.isOpen()) m_decoder = openCompressedDecoder(header.format, kFramesPerChunk);
  if (!m_file.isOpen())
    markFailed("file not open");
  else if (!m_decoder)
    markFailed("no decoder for format tag " + std::to_string(header.formatTag) + " on this system");
  else if (!m_file.seek(m_firstDataByte))
    markFailed("cannot seek to the data at offset " + std::to_string(m_firstDataByte));
  if (failed()) {
    m_decoder.reset();
    m_length = 0;
  }
}

// The decoder's stream is closed before the file, whatever the member order.
LSRCACMWave::~LSRCACMWave() { m_decoder.reset(); }

bool LSRCACMWave::refill() {
  if (m_endOfData) return false;
  const size_t valuesPerFrame = channels();
  for (;;) {
    // Top up the input, never past the end of the data.
    const size_t room = m_decoder->inputCapacity() - m_inputFill;
    const size_t wanted = std::min<size_t>(room, m_dataSize - m_consumed);
    if (wanted > 0) {
      const size_t got = m_file.read(m_decoder->input() + m_inputFill, wanted);
      m_consumed += static_cast<uint32_t>(got);
      m_inputFill += got;
      if (got < wanted) m_dataSize = m_consumed;  // the file ends before its data does
    }
    if (m_inputFill == 0) break;

    size_t used = 0;
    size_t outputBytes = 0;
    if (!m_decoder->convert(m_inputFill, m_startPending, used, outputBytes)) break;
    m_startPending = false;
    used = std::min(used, m_inputFill);
    // Unused bytes (a partial block) stay at the start for the next round.
    std::memmove(m_decoder->input(), m_decoder->input() + used, m_inputFill - used);
    m_inputFill -= used;
    m_outputFrames = static_cast<int32_t>(outputBytes / (valuesPerFrame * sizeof(int16_t)));
    m_outputUsed = 0;
    if (m_outputFrames > 0) return true;
    // Nothing decoded: stop unless more input can still come.
    const bool moreInput = m_consumed < m_dataSize && m_inputFill < m_decoder->inputCapacity();
    if (!moreInput) break;
  }
  m_endOfData = true;
  return false;
}

int32_t LSRCACMWave::read(int32_t* values, int32_t frames) {
  if (failed() || frames <= 0) return 0;
  const int64_t start = m_position;
  int64_t end = start + frames;
  if (end > m_length) end = std::max<int64_t>(start, m_length);
  m_position = static_cast<int32_t>(end);

  const size_t valuesPerFrame = channels();
  const int64_t silentFrames = std::min<int64_t>(end - start, std::max<int64_t>(0, -start));
  int64_t frame = start + silentFrames;
  int32_t* out = values;
  std::fill_n(out, static_cast<size_t>(silentFrames) * valuesPerFrame, 0);
  out += static_cast<size_t>(silentFrames) * valuesPerFrame;

  while (frame < end) {
    if (m_outputUsed == m_outputFrames && !refill()) {
      // The data is exhausted before the estimated length: silence.
      std::fill_n(out, static_cast<size_t>(end - frame) * valuesPerFrame, 0);
      break;
    }
    const int32_t take = static_cast<int32_t>(std::min<int64_t>(end - frame, m_outputFrames - m_outputUsed));
    const int16_t* decoded = m_decoder->output() + static_cast<size_t>(m_outputUsed) * valuesPerFrame;
    const size_t samples = static_cast<size_t>(take) * valuesPerFrame;
    for (size_t i = 0; i < samples; ++i) out[i] = sample_bits::shiftLeft(decoded[i], 4);
    out += samples;
    m_outputUsed += take;
    frame += take;
  }
  return static_cast<int32_t>(end - start);
}

void LSRCACMWave::seek(int32_t frame) {
  if (failed()) return;
  m_startPending = true;
  m_inputFill = 0;
  m_outputFrames = 0;
  m_outputUsed = 0;
  m_endOfData = false;

  int64_t offset = 0;
  m_position = frame;
  if (frame >= m_length && frame >= 1) {
    offset = m_dataSize;
    m_endOfData = true;
  } else if (frame >= 1) {
    offset = std::min<int64_t>(compressedByteOffsetOfFrame(frame, m_avgBytesPerSecond, m_formatRate, m_blockAlign),
                               m_dataSize);
    m_position = compressedFrameAtByteOffset(offset, m_avgBytesPerSecond, m_formatRate);
  }
  m_consumed = static_cast<uint32_t>(offset);
  m_file.seek(m_firstDataByte + offset);

  // The block boundary lies a little before the wanted frame: decode up to it
  // and drop what lies between.
  const int64_t gap = static_cast<int64_t>(frame) - m_position;
  if (gap >= 1 && gap <= kFramesPerChunk) {
    m_discard.resize(static_cast<size_t>(gap) * channels());
    read(m_discard.data(), static_cast<int32_t>(gap));
  }
}

}  // namespace vantr
