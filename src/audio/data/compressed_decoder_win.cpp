// Compressed wave decoding through the audio compression manager: one stream
// from the file's format to 16-bit PCM, one stream header whose buffers live
// as long as the stream.
#include <windows.h>
// clang-format off
#include <mmsystem.h>
#include <mmreg.h>
#include <msacm.h>
// clang-format on

#include <algorithm>
#include <cstring>

#include "audio/data/compressed_decoder.h"
#include "audio/data/pcm16_format_win.h"

namespace vantr {
namespace {

class AcmDecoder final : public CompressedDecoder {
 public:
  // Teardown order matters: the header is unprepared while the stream and its
  // buffers still exist, then the stream is closed; the buffers go last.
  ~AcmDecoder() override {
    if (m_prepared) {
      // The manager wants the lengths it saw at preparation back.
      m_header.cbSrcLength = static_cast<DWORD>(m_input.size());
      m_header.cbDstLength = static_cast<DWORD>(m_output.size() * sizeof(int16_t));
      acmStreamUnprepareHeader(m_stream, &m_header, 0);
    }
    if (m_stream) acmStreamClose(m_stream, 0);
  }

  bool open(const std::vector<uint8_t>& format, int32_t outputFrames) {
    // The wave format record with as many extra bytes as it says it has.
    const size_t extra = static_cast<size_t>(format[16] | (format[17] << 8));
    std::vector<uint8_t> record(sizeof(WAVEFORMATEX) + extra, 0);
    std::memcpy(record.data(), format.data(), std::min(record.size(), format.size()));
    auto* source = reinterpret_cast<WAVEFORMATEX*>(record.data());

    WAVEFORMATEX pcm = pcm16Format(static_cast<uint8_t>(source->nChannels), source->nSamplesPerSec);
    if (acmStreamOpen(&m_stream, nullptr, source, &pcm, nullptr, 0, 0, 0) != MMSYSERR_NOERROR) {
      m_stream = nullptr;
      return false;
    }
    const DWORD outputBytes = static_cast<DWORD>(pcm.nBlockAlign) * static_cast<DWORD>(outputFrames);
    DWORD inputBytes = 0;
    if (acmStreamSize(m_stream, outputBytes, &inputBytes, ACM_STREAMSIZEF_DESTINATION) != MMSYSERR_NOERROR ||
        inputBytes == 0)
      return false;
    m_input.assign(inputBytes, 0);
    m_output.assign(outputBytes / sizeof(int16_t), 0);
    m_header.cbStruct = sizeof m_header;
    m_header.pbSrc = m_input.data();
    m_header.cbSrcLength = inputBytes;
    m_header.pbDst = reinterpret_cast<LPBYTE>(m_output.data());
    m_header.cbDstLength = outputBytes;
    if (acmStreamPrepareHeader(m_stream, &m_header, 0) != MMSYSERR_NOERROR) return false;
    m_prepared = true;
    m_header.cbSrcLength = 0;  // from here on: the input's fill level
    return true;
  }

  uint8_t* input() override { return m_input.data(); }
  size_t inputCapacity() const override { return m_input.size(); }
  const int16_t* output() const override { return m_output.data(); }

  bool convert(size_t inputBytes, bool start, size_t& inputUsed, size_t& outputBytes) override {
    m_header.cbSrcLength = static_cast<DWORD>(inputBytes);
    m_header.cbSrcLengthUsed = 0;
    m_header.cbDstLengthUsed = 0;
    const DWORD flags = ACM_STREAMCONVERTF_BLOCKALIGN | (start ? ACM_STREAMCONVERTF_START : 0);
    if (acmStreamConvert(m_stream, &m_header, flags) != MMSYSERR_NOERROR) return false;
    inputUsed = m_header.cbSrcLengthUsed;
    outputBytes = std::min<size_t>(m_header.cbDstLengthUsed, m_output.size() * sizeof(int16_t));
    return true;
  }

 private:
  HACMSTREAM m_stream = nullptr;
  ACMSTREAMHEADER m_header{};
  bool m_prepared = false;
  std::vector<uint8_t> m_input;
  std::vector<int16_t> m_output;
};

}  // namespace

std::unique_ptr<CompressedDecoder> openCompressedDecoder(const std::vector<uint8_t>& format, int32_t outputFrames) {
  if (format.size() < sizeof(WAVEFORMATEX)) return nullptr;
  auto decoder = std::make_unique<AcmDecoder>();
  if (!decoder->open(format, outputFrames)) return nullptr;
  return decoder;
}

}  // namespace vantr
