// WAV commands: what the program sees in a file's header, and the samples its
// player would be given.
#include <charconv>
#include <cstdint>
#include <string>
#include <vector>

#include "audio/data/pcm_file_source.h"
#include "audio/data/sample_format.h"
#include "audio/data/wav_header.h"
#include "tools/vantrctl/commands.h"

namespace vantr::ctl {
namespace {

bool parseInt32(const std::string& text, int32_t& value) {
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

// One line on err for a file that the program could not use, with the reason
// the header reader gave.
int cannotOpen(std::ostream& err, const std::string& path, const WavParseResult& why) {
  err << "vantrctl: ";
  if (why.status == WavParse::Invalid)
    err << path << " is not a format the program plays: " << why.reason << '\n';
  else if (!fileExists(path))
    err << "cannot open " << path << '\n';
  else
    err << path << " is not a WAV file the program can read: " << why.reason << '\n';
  return 1;
}

int wavinfo(const Args& args, std::ostream& out, std::ostream& err) {
  if (args.size() != 1) return usageError(err, "wavinfo takes one FILE");
  WavHeader header;
  const WavParseResult parsed = readWavFileHeader(args[0], header);
  if (!parsed.ok()) return cannotOpen(err, args[0], parsed);
  out << "format_tag=" << header.formatTag << '\n'
      << "channels=" << header.channels << '\n'
      << "rate=" << header.sampleRate << '\n'
      << "bits=" << header.bitsPerSample << '\n'
      << "data_offset=" << header.dataOffset << '\n'
      << "data_size=" << header.dataSize << '\n'
      << "length_frames=" << wavLengthFrames(header) << '\n';
  return 0;
}

int samples(const Args& args, std::ostream& out, std::ostream& err) {
  std::string path;
  int32_t from = 0;
  int32_t count = -1;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--from" || args[i] == "--count") {
      int32_t value = 0;
      if (i + 1 >= args.size() || !parseInt32(args[i + 1], value))
        return usageError(err, args[i] + " needs a whole number");
      if (args[i] == "--count" && value < 0) return usageError(err, "--count cannot be negative");
      (args[i] == "--from" ? from : count) = value;
      ++i;
    } else if (path.empty() && args[i].rfind("--", 0) != 0) {
      path = args[i];
    } else {
      return usageError(err, "unexpected argument '" + args[i] + "'");
    }
  }
  if (path.empty()) return usageError(err, "samples needs a FILE");

  LSoundSource source = openWavSource(path);
  if (source->failed()) {
    // A header that reads is a file whose source failed for another reason
    // (a compressed format without a decoder here): the source says which.
    WavHeader header;
    const WavParseResult parsed = readWavFileHeader(path, header);
    if (!parsed.ok()) return cannotOpen(err, path, parsed);
    err << "vantrctl: " << path << ": " << source->failure() << '\n';
    return 1;
  }
  source->seek(from);
  if (count < 0) count = std::max<int32_t>(0, source->length() - from);

  const int channels = source->channels();
  std::vector<int32_t> values(static_cast<size_t>(kFramesPerChunk) * static_cast<size_t>(channels));
  std::string text;
  while (count > 0) {
    const int32_t got = source->read(values.data(), std::min(count, kFramesPerChunk));
    if (got <= 0) break;
    text.clear();
    for (int32_t frame = 0; frame < got; ++frame) {
      for (int c = 0; c < channels; ++c) {
        if (c > 0) text += ' ';
        text += std::to_string(values[static_cast<size_t>(frame) * static_cast<size_t>(channels) + c]);
      }
      text += '\n';
    }
    out << text;
    count -= got;
  }
  return 0;
}

}  // namespace

const Command kWavCommands[] = {
    {"wavinfo", "FILE", wavinfo},
    {"samples", "FILE [--from FRAME] [--count N]", samples},
    {nullptr, nullptr, nullptr},
};

}  // namespace vantr::ctl
