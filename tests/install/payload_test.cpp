// The installer's payload: what the builder writes, the copy reads back
// exactly, a step never reads more than its bound of a file, and any damage
// fails the check without writing outside the install folder.
#include "install/payload.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace vantr {
namespace {

class StringSource : public PayloadSource {
 public:
  explicit StringSource(std::string bytes) : m_bytes(std::move(bytes)) {}
  size_t read(void* into, size_t size) override {
    const size_t n = std::min(size, m_bytes.size() - m_at);
    m_bytes.copy(static_cast<char*>(into), n, m_at);
    m_at += n;
    largest = std::max(largest, size);
    return n;
  }
  size_t largest = 0;

 private:
  std::string m_bytes;
  size_t m_at = 0;
};

// Files as written; names in refuse cannot be created.
class MapTarget : public PayloadTarget {
 public:
  bool create(const std::string& name) override {
    if (refuse.count(name)) return false;
    m_current = &files[name];
    m_current->clear();
    return true;
  }
  void write(const void* data, size_t size) override { m_current->append(static_cast<const char*>(data), size); }
  void close() override { m_current = nullptr; }
  std::map<std::string, std::string> files;
  std::map<std::string, int> refuse;

 private:
  std::string* m_current = nullptr;
};

struct Unpacked {
  bool intact;
  int steps;
  int lastPercent;
  MapTarget target;
};

// Unpacks payload-with-trailer bytes as the installer does.
Unpacked unpack(const std::string& withTrailer, MapTarget target = {}) {
  Unpacked out{false, 0, -1, std::move(target)};
  const PayloadTrailer trailer =
      decodeTrailer(reinterpret_cast<const unsigned char*>(withTrailer.data() + withTrailer.size() - kTrailerBytes));
  StringSource source(withTrailer.substr(0, withTrailer.size() - kTrailerBytes));
  PayloadCopy copy(source, out.target, trailer);
  while (copy.step()) {
    ++out.steps;
    EXPECT_GE(copy.percent(), out.lastPercent) << "the bar never goes back";
    out.lastPercent = copy.percent();
  }
  EXPECT_LE(source.largest, kCopyStepBytes);
  out.intact = copy.intact();
  out.lastPercent = copy.percent();
  return out;
}

std::string randomBytes(size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& b : bytes) b = static_cast<char>(random());
  return bytes;
}

TEST(Payload, TrailerCarriesLengthAndByteSum) {
  const std::vector<PayloadFile> files{{"vantr.exe", "MZ\xff"}, {"manual\\index.html", ""}};
  const std::string bytes = payloadWithTrailer(files);
  const PayloadTrailer trailer =
      decodeTrailer(reinterpret_cast<const unsigned char*>(bytes.data() + bytes.size() - kTrailerBytes));
  EXPECT_EQ(trailer.payloadBytes, bytes.size() - kTrailerBytes);
  EXPECT_EQ(trailer.checkValue, byteSum(bytes.data(), bytes.size() - kTrailerBytes));
  // A sum above 2^32 wraps; bytes count as unsigned.
  const std::string ones(16843010, '\xff');
  EXPECT_EQ(byteSum(ones.data(), ones.size()), static_cast<uint32_t>(16843010ull * 255));
  const auto encoded = encodeTrailer({0x0102030405060708ull, 0xa1b2c3d4u});
  EXPECT_EQ(encoded[0], 0x08);
  EXPECT_EQ(encoded[7], 0x01);
  EXPECT_EQ(encoded[8], 0xd4);
  EXPECT_EQ(decodeTrailer(encoded.data()).payloadBytes, 0x0102030405060708ull);
  EXPECT_EQ(decodeTrailer(encoded.data()).checkValue, 0xa1b2c3d4u);
}

TEST(Payload, UnpacksEveryFileExactlyInBoundedSteps) {
  const std::vector<PayloadFile> files{{"vantr.exe", randomBytes(70000, 1)},
                                       {"empty.txt", ""},
                                       {"manual\\images\\main.png", randomBytes(kCopyStepBytes, 2)},
                                       {"one", "x"}};
  const Unpacked got = unpack(payloadWithTrailer(files));
  EXPECT_TRUE(got.intact);
  EXPECT_EQ(got.lastPercent, 100);
  ASSERT_EQ(got.target.files.size(), files.size());
  for (const PayloadFile& file : files) EXPECT_TRUE(got.target.files.at(file.name) == file.bytes) << file.name;
  // 70000 bytes take five steps; the others one each.
  EXPECT_EQ(got.steps, 5 + 1 + 1 + 1);
}

TEST(Payload, AFileThatCannotBeMadeIsSkippedAndStillCounted) {
  MapTarget target;
  target.refuse["locked.exe"] = 1;
  const Unpacked got =
      unpack(payloadWithTrailer({{"locked.exe", randomBytes(40000, 3)}, {"after.txt", "ok"}}), std::move(target));
  EXPECT_TRUE(got.intact);
  EXPECT_EQ(got.target.files.count("locked.exe"), 0u);
  EXPECT_EQ(got.target.files.at("after.txt"), "ok");
}

TEST(Payload, AnyChangedByteFailsTheCheck) {
  const std::string good = payloadWithTrailer({{"vantr.exe", randomBytes(5000, 4)}, {"b\\c.txt", "text"}});
  // Every byte of the payload and of the trailer, changed by one bit.
  for (size_t at = 0; at < good.size(); ++at) {
    std::string bad = good;
    bad[at] = static_cast<char>(bad[at] ^ 0x10);
    const Unpacked got = unpack(bad);
    EXPECT_FALSE(got.intact) << "byte " << at;
    for (const auto& [name, bytes] : got.target.files) EXPECT_TRUE(isPayloadName(name)) << name;
  }
}

// Damage found before a file starts writes nothing; a file cut short stays as
// far as it came (the installer leaves copied files where they are).
TEST(Payload, DamagedLayoutsFail) {
  const std::string good = payloadWithTrailer({{"vantr.exe", randomBytes(3000, 5)}});
  const std::string payload = good.substr(0, good.size() - kTrailerBytes);
  const auto withTrailer = [](const std::string& body, uint64_t length) {
    const auto t = encodeTrailer({length, byteSum(body.data(), body.size())});
    return body + std::string(reinterpret_cast<const char*>(t.data()), t.size());
  };
  std::string dots = std::string(kPayloadMark, kPayloadMarkBytes) + std::string("\x05\x00..\\x\x01\x00\x00\x00y", 12);
  std::string absolute = std::string(kPayloadMark, kPayloadMarkBytes) + std::string(
                                                                            "\x04\x00"
                                                                            "C:\\x\x00\x00\x00\x00",
                                                                            10);
  struct Case {
    const char* what;
    std::string bytes;
    size_t written;
  } cases[] = {
      {"no mark", withTrailer("XXXXXXXX", 8), 0},
      {"nothing", withTrailer("", 0), 0},
      {"a file longer than the payload", withTrailer(payload.substr(0, payload.size() - 1), payload.size() - 1), 1},
      {"a name longer than the payload", withTrailer(payload.substr(0, 12), 12), 0},
      {"a climbing name", withTrailer(dots, dots.size()), 0},
      {"a drive in the name", withTrailer(absolute, absolute.size()), 0},
  };
  for (const Case& c : cases) {
    const Unpacked got = unpack(c.bytes);
    EXPECT_FALSE(got.intact) << c.what;
    EXPECT_EQ(got.target.files.size(), c.written) << c.what;
  }
}

TEST(Payload, Names) {
  for (const char* good : {"vantr.exe", "manual\\index.html", "a b\\c d.txt"}) EXPECT_TRUE(isPayloadName(good)) << good;
  for (const char* bad : {"", "\\x", "x\\", "a\\\\b", "..", "a\\..\\b", ".\\a", "C:x", "a/b", "a\tb", "a*b"})
    EXPECT_FALSE(isPayloadName(bad)) << bad;
  EXPECT_FALSE(isPayloadName(std::string(kPayloadNameMax + 1, 'a')));
}

}  // namespace
}  // namespace vantr
