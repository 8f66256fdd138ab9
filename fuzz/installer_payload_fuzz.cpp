// Unpacks arbitrary bytes as an installer's payload and trailer. The copy must
// end, never read more than a step's bound at once nor past the payload, only
// create names inside the install folder, and call the result intact only
// when every byte was read and the sum matched.
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz_check.h"
#include "install/payload.h"

using vantr::fuzz::check;

namespace {

class Source : public vantr::PayloadSource {
 public:
  Source(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
  size_t read(void* into, size_t size) override {
    check(size <= vantr::kCopyStepBytes);
    const size_t n = size < m_size - m_at ? size : m_size - m_at;
    if (n) std::memcpy(into, m_data + m_at, n);
    m_at += n;
    return n;
  }
  size_t at() const { return m_at; }

 private:
  const uint8_t* m_data;
  size_t m_size;
  size_t m_at = 0;
};

class Target : public vantr::PayloadTarget {
 public:
  bool create(const std::string& name) override {
    check(vantr::isPayloadName(name));
    check(!m_open);
    m_open = name.size() % 3 != 0;  // some files cannot be made
    return m_open;
  }
  void write(const void*, size_t size) override {
    check(m_open);
    check(size <= vantr::kCopyStepBytes);
  }
  void close() override { m_open = false; }

 private:
  bool m_open = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < vantr::kTrailerBytes) return 0;
  const size_t body = size - vantr::kTrailerBytes;
  vantr::PayloadTrailer trailer = vantr::decodeTrailer(data + body);
  // The installer refuses a length beyond its file before copying.
  if (trailer.payloadBytes > body) return 0;
  Source source(data + body - trailer.payloadBytes, trailer.payloadBytes);
  Target target;
  vantr::PayloadCopy copy(source, target, trailer);
  for (size_t steps = 0; copy.step(); ++steps) check(steps <= size);
  check(copy.finished());
  check(copy.percent() >= 0 && copy.percent() <= 100);
  if (copy.intact()) {
    check(source.at() == trailer.payloadBytes);
    check(vantr::byteSum(data + body - trailer.payloadBytes, trailer.payloadBytes) == trailer.checkValue);
  }
  return 0;
}
