// The installer's payload: the files it installs, stored behind its own
// program image, and the copy that unpacks them a step at a time.
//
// Layout of SETUP.EXE:
//
//   program image | payload | trailer (12 bytes)
//
//   payload  = "VNTRPAY1" then, for every file, its name's length (2 bytes),
//              its name (relative to the install folder, '\' between
//              folders), its length (4 bytes) and its bytes. Numbers are
//              little-endian.
//   trailer  = the payload's length in bytes (8 bytes), then the check value
//              (4 bytes): the sum, modulo 2^32, of every payload byte taken
//              as an unsigned number.
//
// The check covers the names and lengths as well as the files, so any
// changed byte of the payload is caught; the mark at its start makes a file
// with no payload (or a cut one) fail before anything is written.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vantr {

inline constexpr size_t kTrailerBytes = 12;
inline constexpr char kPayloadMark[] = "VNTRPAY1";
inline constexpr size_t kPayloadMarkBytes = 8;
// The most a copy step reads of a file between window messages.
inline constexpr size_t kCopyStepBytes = 16384;
// The longest name a payload file may have.
inline constexpr size_t kPayloadNameMax = 200;

struct PayloadTrailer {
  uint64_t payloadBytes = 0;
  uint32_t checkValue = 0;
};

std::array<unsigned char, kTrailerBytes> encodeTrailer(const PayloadTrailer& trailer);
PayloadTrailer decodeTrailer(const unsigned char* bytes);

// The sum, modulo 2^32, of the bytes, added to start.
uint32_t byteSum(const void* data, size_t size, uint32_t start = 0);

struct PayloadFile {
  std::string name;  // relative to the install folder
  std::string bytes;
};

// A name the installer will write: relative, made of folder and file names
// that are neither empty nor "." nor "..", with no drive, no '/' and no
// control characters.
bool isPayloadName(const std::string& name);

// The payload and its trailer, to be appended to the program image.
std::string payloadWithTrailer(const std::vector<PayloadFile>& files);

// Where a copy reads the payload from: bytes in order from the payload's
// start. read answers how many bytes it gave (fewer only at the end).
class PayloadSource {
 public:
  virtual ~PayloadSource() = default;
  virtual size_t read(void* into, size_t size) = 0;
};

// Where a copy writes the files. create replaces any file of that name and
// answers false when it cannot be made; the copy then goes on without
// writing that file's bytes.
class PayloadTarget {
 public:
  virtual ~PayloadTarget() = default;
  virtual bool create(const std::string& name) = 0;
  virtual void write(const void* data, size_t size) = 0;
  virtual void close() = 0;
};

// Unpacks a payload of a known length and check value, one step per call.
class PayloadCopy {
 public:
  PayloadCopy(PayloadSource& source, PayloadTarget& target, const PayloadTrailer& trailer);

  // One step: the next file's name and length when a file has ended, and at
  // most kCopyStepBytes of the current file. False once nothing is left.
  bool step();
  bool finished() const { return m_finished; }
  // Copied bytes × 100 / payload bytes.
  int percent() const;
  // Finished with every byte accounted for and the check value come to 0.
  bool intact() const { return m_finished && !m_broken && m_check == 0; }
  uint64_t copied() const { return m_copied; }

 private:
  // Reads exactly size bytes of the payload into `into`, counting them;
  // false (and broken) when the payload ends first.
  bool take(void* into, size_t size);
  bool startNextFile();
  void finish(bool broken);

  PayloadSource& m_source;
  PayloadTarget& m_target;
  uint64_t m_total;
  uint64_t m_copied = 0;
  uint32_t m_check;
  uint64_t m_fileLeft = 0;
  bool m_fileOpen = false;
  bool m_markSeen = false;
  bool m_finished = false;
  bool m_broken = false;
};

}  // namespace vantr
