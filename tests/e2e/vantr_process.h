// Starts vantr.exe in a fresh program folder and finds its windows the way
// other processes do: by class and title.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "test_support/child_process.h"
#include "test_support/temp_dir.h"

namespace vantr::e2e {

// Polls pred every 20 ms for up to ms milliseconds.
bool waitFor(const std::function<bool()>& pred, int ms = 10000);
HWND findFrame();
// A visible top-level dialog box with that title, and the longest static text in it.
HWND findBox(const char* title);
std::string boxText(HWND box);

class ProgramFolder {
 public:
  ProgramFolder() { CopyFileA(nativePath(VANTR_EXE).c_str(), m_dir.file("vantr.exe").c_str(), FALSE); }
  std::string path() const { return m_dir.path(); }
  std::string file(const std::string& name) const { return m_dir.file(name); }
  // Starts vantr.exe from this folder; null if it cannot.
  std::unique_ptr<ChildProcess> start(const std::vector<std::string>& args) const;

 private:
  TempDir m_dir;
};

// Ends every running copy (quit message, then kill), so each test starts clean.
void endRunningCopies();

// A list box's lines, read as UTF-16 (an ANSI read across processes is
// broken in Wine 8).
std::vector<std::string> listLines(HWND list);

// The work window as another process sees it: the dialog inside the frame,
// its lists and texts, and its commands.
class MainWindow {
 public:
  explicit MainWindow(HWND frame);
  HWND frame() const { return m_frame; }
  HWND dialog() const { return m_dialog; }
  HWND item(int id) const { return GetDlgItem(m_dialog, id); }

  // A list's lines (read as UTF-16: an ANSI read across processes is broken
  // in Wine 8) and which of them are selected.
  std::vector<std::string> lines(int listId) const;
  std::vector<int> selected(int listId) const;
  std::string text(int id) const;
  // Selects exactly line `index` of a list as a click would, with the
  // notification the window acts on.
  void select(int listId, int index) const;
  void selectNone(int listId) const;
  // A menu command, as the frame's menu sends it.
  void command(int id) const;

 private:
  HWND m_frame, m_dialog;
};

// A 16-bit stereo 44100 Hz WAV file of a 1000 Hz tone at `amplitude` (16-bit
// units), written by the program's own PCM sink.
void writeTone(const std::string& path, int seconds, int amplitude = 16384);

bool fileExists(const std::string& path);
// A text value of the registry; "<missing>" when it cannot be read (a null
// value name reads the key's default value).
std::string registryText(HKEY root, const char* key, const char* value);

// The test bed's folder (where its ports, printer output and pid files are),
// from the environment the test bed gives.
std::string testBedFolder();
// Runs a shell command on the host (Wine starts Unix programs given by their
// Z: path) and answers what it wrote to standard output and error, trailing
// line ends cut; nullopt when it did not finish within ms. The command must
// not contain a double quote.
std::optional<std::string> hostOutput(const std::string& script, int ms = 10000);

// Clicks a button of the visible dialog box titled title once it shows;
// false if it does not show within ms.
bool answerBox(const char* title, int button, int ms = 10000);

// The program folder's library as the test makes and reads it: schedule
// files, audio files, the as-run log.
class Library {
 public:
  explicit Library(const ProgramFolder& folder);
  // A schedule file with the given sections (text after "[file]").
  void schedule(const std::string& name, const std::string& items) const;
  // seconds of a 1000 Hz tone at -6 dB, 16-bit stereo at 44100 Hz.
  void tone(const std::string& name, int seconds) const;
  bool has(const std::string& relative) const;
  // Every as-run log's text, oldest first.
  std::string asRun() const;

 private:
  const ProgramFolder& m_folder;
};

}  // namespace vantr::e2e
