// Builds without the audio compression manager have no decoders: compressed
// files open as failed sources.
#include "audio/data/compressed_decoder.h"

namespace vantr {

std::unique_ptr<CompressedDecoder> openCompressedDecoder(const std::vector<uint8_t>&, int32_t) { return nullptr; }

}  // namespace vantr
