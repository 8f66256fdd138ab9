// Reads arbitrary bytes as a WAV file. The header reader must accept or refuse
// them without reading outside its buffers, and whatever it accepts must read
// as a source: a file of the same bytes opens the same way, and reads from
// before the start, across the end and after seeks stay within the data.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "audio/data/pcm_file_source.h"
#include "audio/data/wav_header.h"
#include "base/file.h"
#include "fuzz_check.h"

using vantr::fuzz::check;

namespace {

std::string scratchFile() {
  const char* dir = std::getenv("TMPDIR");
  return std::string(dir ? dir : "/tmp") + "/wav_header_fuzz." + std::to_string(getpid()) + ".wav";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vantr::WavHeader header;
  vantr::WavMemoryInput memory(data, size);
  const vantr::WavParseResult parsed = vantr::parseWavHeader(memory, header);
  // A refusal always says why, and an acceptance has nothing to say.
  check(parsed.ok() == parsed.reason.empty());
  if (!parsed.ok()) return 0;
  check(header.channels >= 1 && header.channels <= 255);
  check(header.sampleRate >= 1 && header.sampleRate <= vantr::kMaxSampleRate);
  check(header.dataOffset >= 43 && header.dataOffset <= static_cast<int64_t>(size));
  check(header.format.size() >= vantr::kWaveFormatRecordBytes);

  // Only files that the reader accepts go to disk: refused ones may keep
  // their handle open for the life of the process, by design.
  static const std::string path = scratchFile();
  {
    vantr::File file(path, vantr::FileMode::Write);
    check(file.write(data, size));
  }
  vantr::LSoundSource source = vantr::openWavSource(path);
  if (source->failed()) {
    check(header.formatTag != vantr::kWaveFormatPcm && !source->failure().empty());
    return 0;  // compressed, with no decoder here
  }
  check(source->length() == vantr::wavLengthFrames(header));
  std::vector<int32_t> values(static_cast<size_t>(300) * source->channels());
  const int64_t available = (static_cast<int64_t>(size) - header.dataOffset) /
                            (source->channels() * vantr::bytesPerPcmSample(header.bitsPerSample));
  for (int32_t start : {-100, 0, source->length() - 7, 1 << 30}) {
    source->seek(start);
    const int32_t got = source->read(values.data(), 300);
    check(got >= 0 && got <= 300);
    if (start >= 0) check(got <= available - start || got == 0);
  }
  return 0;
}
