// Sound sources deliver samples, sound sinks take them; all audio of the
// program flows through these two counted stream interfaces, as interleaved
// signed 32-bit values on the common scale (see sample_format.h).
//
// A stream that could not be built carries the failed flag: its operations do
// nothing, and whoever holds it decides what to tell the user. A failed source
// also says why, in words fit for a log or a console line.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

namespace vantr {

constexpr uint8_t kStreamFailed = 0x01;

// A counted reference: copies share the object, the last release destroys it
// (which, for file streams, closes the file). Empty when an open failed.
template <class T>
class LCountedRef {
 public:
  LCountedRef() = default;
  // Takes the first reference to a newly made object.
  explicit LCountedRef(T* object) : m_object(object) {
    if (m_object) m_object->addRef();
  }
  LCountedRef(const LCountedRef& other) : LCountedRef(other.m_object) {}
  LCountedRef(LCountedRef&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
  template <class U>
  LCountedRef(const LCountedRef<U>& other) : LCountedRef(other.get()) {}
  LCountedRef& operator=(LCountedRef other) noexcept {
    std::swap(m_object, other.m_object);
    return *this;
  }
  ~LCountedRef() { reset(); }

  void reset() {
    if (T* object = std::exchange(m_object, nullptr)) object->release();
  }
  T* get() const { return m_object; }
  T* operator->() const { return m_object; }
  T& operator*() const { return *m_object; }
  explicit operator bool() const { return m_object != nullptr; }

 private:
  T* m_object = nullptr;
};

// Reference counting shared by sources and sinks.
class LCounted {
 public:
  LCounted() = default;
  LCounted(const LCounted&) = delete;
  LCounted& operator=(const LCounted&) = delete;
  virtual ~LCounted() = default;

  void addRef() { m_references.fetch_add(1, std::memory_order_relaxed); }
  void release() {
    if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  uint16_t references() const { return m_references.load(std::memory_order_relaxed); }

 private:
  std::atomic<uint16_t> m_references{0};
};

class LSoundSourceBase : public LCounted {
 public:
  // A rate below 1 becomes 44100 and 0 channels become 1; either marks the
  // source failed.
  LSoundSourceBase(int32_t sampleRate, uint32_t fullScale, uint8_t channels);

  int32_t sampleRate() const { return m_sampleRate; }
  uint32_t fullScale() const { return m_fullScale; }
  uint8_t channels() const { return m_channels; }
  uint8_t flags() const { return m_flags; }
  bool failed() const { return (m_flags & kStreamFailed) != 0; }
  // Why the source failed ("fmt chunk: channels 0 at offset 22"); empty while
  // it has not.
  const std::string& failure() const { return m_failure; }

  // Fills values with up to frames frames (channels() values each) from the
  // current position on, advances the position, and returns how many frames
  // were delivered. Frames before frame 0 are delivered as silence.
  virtual int32_t read(int32_t* values, int32_t frames) = 0;
  virtual void seek(int32_t frame) = 0;
  virtual int32_t position() = 0;
  virtual int32_t length() = 0;

 protected:
  // The first reason given is kept: later ones are mostly its consequences.
  void markFailed(const std::string& why) {
    m_flags |= kStreamFailed;
    if (m_failure.empty()) m_failure = why;
  }

 private:
  int32_t m_sampleRate;
  uint32_t m_fullScale;
  uint8_t m_channels;
  uint8_t m_flags = 0;
  std::string m_failure;
};

using LSoundSource = LCountedRef<LSoundSourceBase>;

// A sink on its own is tied to no file: it counts the frames it is given and
// keeps none (the test-tone recorder writes into one). File sinks derive from
// it.
class LSoundSinkBase : public LCounted {
 public:
  LSoundSinkBase(uint32_t sampleRate, uint32_t fullScale, uint8_t channels);

  int32_t length() const { return m_length; }
  uint32_t sampleRate() const { return m_sampleRate; }
  uint32_t fullScale() const { return m_fullScale; }
  uint8_t channels() const { return m_channels; }
  uint8_t flags() const { return m_flags; }
  bool failed() const { return (m_flags & kStreamFailed) != 0; }

  // Takes frames frames of values (channels() values each).
  virtual void write(const int32_t* values, int32_t frames);
  // Cuts what was written back to frames frames; nothing to cut here.
  virtual void setLength(int32_t frames);

 protected:
  void markFailed() { m_flags |= kStreamFailed; }
  int32_t m_length = 0;

 private:
  uint32_t m_sampleRate;
  uint32_t m_fullScale;
  uint8_t m_channels;
  uint8_t m_flags = 0;
};

using LSoundSink = LCountedRef<LSoundSinkBase>;

}  // namespace vantr
