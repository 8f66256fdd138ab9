#include "audio/data/pcm_file_source.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>

#include "audio/data/acm_wave_source.h"

namespace vantr {

LSRCPCMFileBase::LSRCPCMFileBase(File file, const WavHeader& header, uint32_t fullScale, int bytesPerSample)
    : LSoundSourceBase(static_cast<int32_t>(header.sampleRate), fullScale, static_cast<uint8_t>(header.channels)),
      m_file(std::move(file)),
      m_firstDataByte(header.dataOffset),
      m_dataSizeField(header.dataOffset - 4),
      m_length(pcmFramesInBytes(header.dataSize, channels(), bytesPerSample)),
      m_bytesPerSample(bytesPerSample),
      m_buffer(static_cast<size_t>(channels()) * kFramesPerChunk * static_cast<size_t>(bytesPerSample)) {
  if (!m_file.isOpen()) markFailed("file not open");
}

void LSRCPCMFileBase::refreshLength() {
  uint8_t size[4];
  if (!m_file.seek(m_dataSizeField) || m_file.read(size, sizeof size) != sizeof size) return;
  const uint32_t dataSize = static_cast<uint32_t>(size[0]) | (static_cast<uint32_t>(size[1]) << 8) |
                            (static_cast<uint32_t>(size[2]) << 16) | (static_cast<uint32_t>(size[3]) << 24);
  m_length = pcmFramesInBytes(dataSize, channels(), m_bytesPerSample);
}

int32_t LSRCPCMFileBase::length() {
  if (!failed() && m_position >= m_length) refreshLength();
  return m_length;
}

void LSRCPCMFileBase::seek(int32_t frame) {
  if (failed()) return;
  m_position = frame;
  if (frame > m_length) refreshLength();
}

int32_t LSRCPCMFileBase::read(int32_t* values, int32_t frames) {
  if (failed() || frames <= 0) return 0;
  const int64_t start = m_position;
  int64_t end = start + frames;
  if (end > m_length) {
    refreshLength();
    // Cut to what the file holds; a read that starts at or past the end
    // delivers nothing and leaves the position where it was.
    if (end > m_length) end = std::max<int64_t>(start, m_length);
  }
  m_position = static_cast<int32_t>(end);

  const size_t valuesPerFrame = channels();
  // Frames before frame 0 are silence.
  const int64_t silentFrames = std::min<int64_t>(end - start, std::max<int64_t>(0, -start));
  std::fill_n(values, static_cast<size_t>(silentFrames) * valuesPerFrame, 0);
  int32_t delivered = static_cast<int32_t>(silentFrames);

  int64_t frame = start + silentFrames;
  if (frame < end && !m_file.seek(m_firstDataByte + frame * frameBytes())) return delivered;
  while (frame < end) {
    const int32_t chunkFrames = static_cast<int32_t>(std::min<int64_t>(end - frame, kFramesPerChunk));
    const size_t wanted = static_cast<size_t>(chunkFrames) * static_cast<size_t>(frameBytes());
    const size_t got = m_file.read(m_buffer.data(), wanted);
    const int32_t gotFrames = static_cast<int32_t>(got / static_cast<size_t>(frameBytes()));
    toValues(m_buffer.data(), values + static_cast<size_t>(delivered) * valuesPerFrame,
             static_cast<size_t>(gotFrames) * valuesPerFrame);
    delivered += gotFrames;
    frame += gotFrames;
    if (got < wanted) break;  // the file is shorter than its header says
  }
  return delivered;
}

LSoundSource makeWavSource(File file, const WavHeader& header) {
  if (header.formatTag != kWaveFormatPcm) return LSoundSource(new LSRCACMWave(std::move(file), header));
  switch (bytesPerPcmSample(header.bitsPerSample)) {
    case 1: return LSoundSource(new LSRCPCMFile<LSFU8>(std::move(file), header));
    case 2: return LSoundSource(new LSRCPCMFile<LSF16>(std::move(file), header));
    default: return LSoundSource(new LSRCPCMFile<LSF32>(std::move(file), header));
  }
}

namespace {

// A file whose header names an impossible channel count or rate stays open
// until the process ends, as the program has always done; its handle shares
// reading, writing and deleting, so it stands in nobody's way but a new file
// of the same name on Windows while the program runs.
void keepUntilExit(File file) {
  static std::mutex lock;
  static std::vector<File>* kept = new std::vector<File>;
  std::lock_guard<std::mutex> hold(lock);
  kept->push_back(std::move(file));
}

// What openWavSource gives for a file it cannot use: a failed source that
// delivers nothing and says why.
class RefusedSource final : public LSoundSourceBase {
 public:
  explicit RefusedSource(const std::string& why) : LSoundSourceBase(44100, LSF16::kFullScale, 1) { markFailed(why); }
  int32_t read(int32_t*, int32_t) override { return 0; }
  void seek(int32_t) override {}
  int32_t position() override { return 0; }
  int32_t length() override { return 0; }
};

}  // namespace

LSoundSource openWavSource(const std::string& path) {
  File file(path, FileMode::Read);
  if (!file.isOpen()) return LSoundSource(new RefusedSource("cannot open the file"));
  WavHeader header;
  WavFileInput input(file);
  const WavParseResult parsed = parseWavHeader(input, header);
  if (parsed.ok()) return makeWavSource(std::move(file), header);
  if (parsed.status == WavParse::Invalid) keepUntilExit(std::move(file));
  return LSoundSource(new RefusedSource(parsed.reason));
}

}  // namespace vantr
