// The fixture of the end-to-end tests: a fresh program folder and library
// for each test, and vantr.exe started in it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "vantr_process.h"

namespace vantr::e2e {

// A fresh program folder with its library for each test, and no other copy
// of the program running before or after it.
class ProgramTest : public ::testing::Test {
 protected:
  static constexpr int kClockId = 1095;  // the work window's clock

  void SetUp() override { endRunningCopies(); }
  void TearDown() override { endRunningCopies(); }

  // Starts vantr.exe and waits until its work window is up and has run its
  // first scheduler tick (the clock shows), so its lists are filled.
  MainWindow start(const std::vector<std::string>& args = {}) {
    m_process = m_folder.start(args);
    HWND frame = nullptr;
    waitFor(
        [&] {
          frame = findFrame();
          return frame && MainWindow(frame).dialog() && !MainWindow(frame).text(kClockId).empty();
        },
        30000);
    return MainWindow(frame);
  }

  ProgramFolder m_folder;
  Library m_library{m_folder};
  std::unique_ptr<ChildProcess> m_process;
};

}  // namespace vantr::e2e
