// A fresh folder for one test, removed with everything in it afterwards.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace vantr {

class TempDir {
 public:
  TempDir() {
    static int serial = 0;
    const auto base = std::filesystem::temp_directory_path();
    for (;;) {
      m_path = base / ("vantr-test-" + std::to_string(reinterpret_cast<uintptr_t>(this) % 100000) + "-" +
                       std::to_string(serial++) + "-" + std::to_string(std::rand()));
      std::error_code ec;
      if (std::filesystem::create_directory(m_path, ec)) break;
    }
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string path() const { return m_path.string(); }
  std::string file(const std::string& name) const { return (m_path / name).string(); }
  static bool isEmpty(const std::string& folder) {
    std::error_code ec;
    return std::filesystem::is_empty(folder, ec) && !ec;
  }
  std::vector<std::string> entries() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_path))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::filesystem::path m_path;
};

}  // namespace vantr
