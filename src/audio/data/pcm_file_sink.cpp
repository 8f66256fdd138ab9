#include "audio/data/pcm_file_sink.h"

#include <algorithm>

namespace vantr {

LSNKPCMFileBase::LSNKPCMFileBase(const std::string& path, uint32_t sampleRate, uint8_t channels, int32_t initialFrames,
                                 uint32_t fullScale, int bytesPerSample)
    : LSoundSinkBase(sampleRate, fullScale, channels),
      m_bytesPerSample(bytesPerSample),
      m_buffer(static_cast<size_t>(this->channels()) * kFramesPerChunk * static_cast<size_t>(bytesPerSample)) {
  if (failed()) return;
  m_length = std::max(initialFrames, 0);
  // Frames kept from an existing file need it opened without truncation. A
  // new file is made when there is none; it then starts with initialFrames
  // frames that read as silence.
  if (m_length > 0) m_file.open(path, FileMode::ReadWrite);
  if (!m_file.isOpen()) m_file.open(path, FileMode::Write);
  if (!m_file.isOpen()) {
    markFailed();
    return;
  }
  // A recording continued from inside an existing file loses what followed.
  writeHeader();
  m_file.truncate();
}

LSNKPCMFileBase::~LSNKPCMFileBase() {
  if (m_file.isOpen()) writeHeader();
}

void LSNKPCMFileBase::writeHeader() {
  uint8_t header[kPcmHeaderBytes];
  buildPcmHeader(header, sampleRate(), channels(), m_bytesPerSample, m_length);
  m_file.seek(0);
  m_file.write(header, sizeof header);
  m_file.seek(endOfData());
  m_framesSinceHeader = 0;
}

void LSNKPCMFileBase::write(const int32_t* values, int32_t frames) {
  if (frames <= 0) return;
  if (failed() || !m_file.isOpen()) {
    m_length += frames;
    return;
  }
  const size_t valuesPerFrame = channels();
  for (int32_t done = 0; done < frames;) {
    const int32_t chunkFrames = std::min(frames - done, kFramesPerChunk);
    const size_t samples = static_cast<size_t>(chunkFrames) * valuesPerFrame;
    fromValues(values + static_cast<size_t>(done) * valuesPerFrame, m_buffer.data(), samples);
    m_file.write(m_buffer.data(), samples * static_cast<size_t>(m_bytesPerSample));
    m_length += chunkFrames;
    m_framesSinceHeader += chunkFrames;
    done += chunkFrames;
    // The data is on its way before the header counts it, so a reader (or a
    // crash) never sees a length that the file does not hold.
    if (m_framesSinceHeader > kHeaderRewriteFrames) writeHeader();
  }
}

void LSNKPCMFileBase::setLength(int32_t frames) {
  if (frames > m_length) return;
  m_length = std::max(frames, 0);
  if (!m_file.isOpen()) return;
  writeHeader();
  m_file.truncate();
}

LSoundSink createPcmSink(const std::string& path, uint32_t sampleRate, uint8_t channels, int bitsPerSample,
                         int32_t initialFrames) {
  if (bitsPerSample <= 8) return LSoundSink(new LSNKPCMFile<LSFU8>(path, sampleRate, channels, initialFrames));
  if (bitsPerSample <= 16) return LSoundSink(new LSNKPCMFile<LSF16>(path, sampleRate, channels, initialFrames));
  return LSoundSink(new LSNKPCMFile<LSF32>(path, sampleRate, channels, initialFrames));
}

}  // namespace vantr
