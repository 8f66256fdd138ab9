#include "install/payload.h"

#include <cstring>

namespace vantr {

namespace {

void putLittle(std::string& out, uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out += static_cast<char>((value >> (8 * i)) & 0xff);
}

uint64_t little(const unsigned char* bytes, int count) {
  uint64_t value = 0;
  for (int i = count - 1; i >= 0; --i) value = (value << 8) | bytes[i];
  return value;
}

}  // namespace

std::array<unsigned char, kTrailerBytes> encodeTrailer(const PayloadTrailer& trailer) {
  std::string bytes;
  putLittle(bytes, trailer.payloadBytes, 8);
  putLittle(bytes, trailer.checkValue, 4);
  std::array<unsigned char, kTrailerBytes> out{};
  std::memcpy(out.data(), bytes.data(), kTrailerBytes);
  return out;
}

PayloadTrailer decodeTrailer(const unsigned char* bytes) {
  return {little(bytes, 8), static_cast<uint32_t>(little(bytes + 8, 4))};
}

uint32_t byteSum(const void* data, size_t size, uint32_t start) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  for (size_t i = 0; i < size; ++i) start += bytes[i];
  return start;
}

bool isPayloadName(const std::string& name) {
  if (name.empty() || name.size() > kPayloadNameMax) return false;
  size_t at = 0;
  while (at <= name.size()) {
    size_t end = name.find('\\', at);
    if (end == std::string::npos) end = name.size();
    const std::string part = name.substr(at, end - at);
    if (part.empty() || part == "." || part == "..") return false;
    for (unsigned char c : part)
      if (c < 32 || c == '/' || c == ':' || c == '*' || c == '?' || c == '"' || c == '<' || c == '>' || c == '|')
        return false;
    at = end + 1;
  }
  return true;
}

std::string payloadWithTrailer(const std::vector<PayloadFile>& files) {
  std::string payload(kPayloadMark, kPayloadMarkBytes);
  for (const PayloadFile& file : files) {
    putLittle(payload, file.name.size(), 2);
    payload += file.name;
    putLittle(payload, file.bytes.size(), 4);
    payload += file.bytes;
  }
  const auto trailer = encodeTrailer({payload.size(), byteSum(payload.data(), payload.size())});
  payload.append(reinterpret_cast<const char*>(trailer.data()), trailer.size());
  return payload;
}

PayloadCopy::PayloadCopy(PayloadSource& source, PayloadTarget& target, const PayloadTrailer& trailer)
    : m_source(source), m_target(target), m_total(trailer.payloadBytes), m_check(trailer.checkValue) {}

int PayloadCopy::percent() const {
  if (m_total == 0) return m_finished ? 100 : 0;
  return static_cast<int>(m_copied * 100 / m_total);
}

bool PayloadCopy::take(void* into, size_t size) {
  if (m_total - m_copied < size) {
    finish(true);
    return false;
  }
  const size_t got = m_source.read(into, size);
  m_check -= byteSum(into, got);
  m_copied += got;
  if (got < size) {
    finish(true);
    return false;
  }
  return true;
}

bool PayloadCopy::startNextFile() {
  unsigned char number[4];
  if (!take(number, 2)) return false;
  const size_t nameLength = static_cast<size_t>(little(number, 2));
  if (nameLength == 0 || nameLength > kPayloadNameMax) {
    finish(true);
    return false;
  }
  std::string name(nameLength, '\0');
  if (!take(name.data(), nameLength) || !take(number, 4)) return false;
  if (!isPayloadName(name)) {
    finish(true);
    return false;
  }
  m_fileLeft = little(number, 4);
  m_fileOpen = m_target.create(name);
  return true;
}

void PayloadCopy::finish(bool broken) {
  if (m_fileOpen) m_target.close();
  m_fileOpen = false;
  m_broken = m_broken || broken;
  m_finished = true;
}

bool PayloadCopy::step() {
  if (m_finished) return false;
  if (!m_markSeen) {
    char mark[kPayloadMarkBytes];
    if (!take(mark, sizeof mark)) return false;
    if (std::memcmp(mark, kPayloadMark, kPayloadMarkBytes) != 0) {
      finish(true);
      return false;
    }
    m_markSeen = true;
  }
  if (m_fileLeft == 0) {
    if (m_fileOpen) m_target.close();
    m_fileOpen = false;
    if (m_copied == m_total) {
      finish(false);
      return false;
    }
    if (!startNextFile()) return false;
  }
  char buffer[kCopyStepBytes];
  const size_t size = static_cast<size_t>(m_fileLeft < kCopyStepBytes ? m_fileLeft : kCopyStepBytes);
  if (size > 0) {
    if (!take(buffer, size)) return false;
    if (m_fileOpen) m_target.write(buffer, size);
    m_fileLeft -= size;
  }
  return true;
}

}  // namespace vantr
