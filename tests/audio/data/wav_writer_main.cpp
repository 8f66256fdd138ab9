// Helper for the crash test: records a 16-bit stereo 44100 Hz file, about 40
// times faster than real time (a header rewrite every 250 ms), until it is
// killed. Frame f holds f & 0x7FFF on the left and its negation on the right.
#include <chrono>
#include <thread>
#include <vector>

#include "audio/data/pcm_file_sink.h"

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  constexpr int32_t kBlockFrames = 4410;
  vantr::LSoundSink sink = vantr::createPcmSink(argv[1], 44100, 2, 16, 0);
  if (sink->failed()) return 1;
  std::vector<int32_t> block(2 * kBlockFrames);
  for (int32_t frame = 0;; frame += kBlockFrames) {
    for (size_t i = 0; i < block.size(); ++i)
      block[i] = ((frame + static_cast<int32_t>(i / 2)) & 0x7FFF) * (i % 2 ? -16 : 16);
    sink->write(block.data(), kBlockFrames);
    std::this_thread::sleep_for(std::chrono::microseconds(2500));
  }
}
