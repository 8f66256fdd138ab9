#include "vantr_process.h"

#include <cmath>

#include "audio/data/pcm_file_sink.h"
#include "resource.h"
#include "win/handles_win.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

namespace vantr::e2e {

bool waitFor(const std::function<bool()>& pred, int ms) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
  while (!pred()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

bool fileExists(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

std::string registryText(HKEY root, const char* key, const char* value) {
  char text[1024] = {};
  DWORD size = sizeof text - 1;
  if (RegGetValueA(root, key, value, RRF_RT_REG_SZ, nullptr, text, &size) != ERROR_SUCCESS) return "<missing>";
  return text;
}

std::string testBedFolder() {
  const char* tty = std::getenv("VANTR_TTY_COM1");
  if (!tty) return std::string();
  const std::string path(tty);
  return path.substr(0, path.rfind('/'));
}

std::optional<std::string> hostOutput(const std::string& script, int ms) {
  const std::string out = nativePath(testBedFolder() + "/host-command.out");
  const std::string marker = nativePath(testBedFolder() + "/host-command.done");
  DeleteFileA(marker.c_str());
  std::string commandLine = "Z:\\bin\\sh -c \"(" + script + ") > '" + testBedFolder() +
                            "/host-command.out' 2>&1; touch '" + testBedFolder() + "/host-command.done'\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  if (!CreateProcessA(nullptr, &commandLine[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &info))
    return std::nullopt;
  CloseHandle(info.hThread);
  CloseHandle(info.hProcess);
  const bool done = waitFor([&] { return fileExists(marker); }, ms);
  DeleteFileA(marker.c_str());
  if (!done) return std::nullopt;
  std::ifstream in(out, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  in.close();
  DeleteFileA(out.c_str());
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

HWND findFrame() { return FindWindowA("OWL_Window", "Vantorel"); }

HWND findBox(const char* title) {
  HWND box = FindWindowA("#32770", title);
  return box && IsWindowVisible(box) ? box : nullptr;
}

std::string boxText(HWND box) {
  std::string found;
  for (HWND child = nullptr; (child = FindWindowExA(box, child, "Static", nullptr)) != nullptr;) {
    char text[512] = {};
    GetWindowTextA(child, text, sizeof text);
    if (std::strlen(text) > found.size()) found = text;
  }
  return found;
}

std::unique_ptr<ChildProcess> ProgramFolder::start(const std::vector<std::string>& args) const {
  auto process = std::make_unique<ChildProcess>();
  return process->start(m_dir.file("vantr.exe"), args) ? std::move(process) : nullptr;
}

void endRunningCopies() {
  HWND frame;
  for (int attempt = 0; attempt < 50 && (frame = findFrame()) != nullptr; ++attempt) {
    DWORD pid = 0;
    GetWindowThreadProcessId(frame, &pid);
    PostMessageA(frame, 1044, 0, 0);
    if (waitFor([&] { return findFrame() != frame; }, 3000)) continue;
    if (KernelHandle process{OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, pid)}) {
      TerminateProcess(process.get(), 1);
      WaitForSingleObject(process.get(), 5000);
    }
  }
}

MainWindow::MainWindow(HWND frame)
    : m_frame(frame), m_dialog(frame ? FindWindowExA(frame, nullptr, "#32770", nullptr) : nullptr) {}

std::vector<std::string> listLines(HWND list) {
  std::vector<std::string> out;
  const LRESULT count = SendMessageW(list, LB_GETCOUNT, 0, 0);
  for (LRESULT i = 0; i < count; ++i) {
    const LRESULT length = SendMessageW(list, LB_GETTEXTLEN, i, 0);
    std::wstring wide(static_cast<size_t>(length < 0 ? 0 : length) + 1, L'\0');
    SendMessageW(list, LB_GETTEXT, i, reinterpret_cast<LPARAM>(wide.data()));
    wide.resize(static_cast<size_t>(length < 0 ? 0 : length));
    out.emplace_back(wide.begin(), wide.end());  // the program's texts are ASCII
  }
  return out;
}

std::vector<std::string> MainWindow::lines(int listId) const { return listLines(item(listId)); }

std::vector<int> MainWindow::selected(int listId) const {
  std::vector<int> out;
  const LRESULT count = SendMessageA(item(listId), LB_GETCOUNT, 0, 0);
  for (int i = 0; i < count; ++i)
    if (SendMessageA(item(listId), LB_GETSEL, i, 0) > 0) out.push_back(i);
  return out;
}

std::string MainWindow::text(int id) const {
  char buffer[512] = {};
  SendMessageA(item(id), WM_GETTEXT, sizeof buffer, reinterpret_cast<LPARAM>(buffer));
  return buffer;
}

void MainWindow::select(int listId, int index) const {
  SendMessageA(item(listId), LB_SETSEL, FALSE, -1);
  SendMessageA(item(listId), LB_SETSEL, TRUE, index);
  SendMessageA(m_dialog, WM_COMMAND, MAKEWPARAM(listId, LBN_SELCHANGE), reinterpret_cast<LPARAM>(item(listId)));
}

void MainWindow::selectNone(int listId) const {
  SendMessageA(item(listId), LB_SETSEL, FALSE, -1);
  SendMessageA(m_dialog, WM_COMMAND, MAKEWPARAM(listId, LBN_SELCHANGE), reinterpret_cast<LPARAM>(item(listId)));
}

void MainWindow::command(int id) const { PostMessageA(m_frame, WM_COMMAND, id, 0); }

void writeTone(const std::string& path, int seconds, int amplitude) {
  constexpr int kRate = 44100;
  LSoundSink sink = createPcmSink(path, kRate, 2, 16, 0);
  std::vector<int32_t> frames(2 * kRate);
  for (int second = 0; second < seconds; ++second) {
    for (int i = 0; i < kRate; ++i)
      frames[2 * i] = frames[2 * i + 1] = static_cast<int32_t>(amplitude * std::sin(i * 2 * M_PI * 1000 / kRate)) * 16;
    sink->write(frames.data(), kRate);
  }
}

bool answerBox(const char* title, int button, int ms) {
  HWND box = nullptr;
  if (!waitFor([&] { return (box = findBox(title)) != nullptr; }, ms)) return false;
  PostMessageA(GetDlgItem(box, button), BM_CLICK, 0, 0);
  return waitFor([&] { return findBox(title) != box; }, ms);
}

Library::Library(const ProgramFolder& folder) : m_folder(folder) {
  CreateDirectoryA(folder.file("Schedules").c_str(), nullptr);
  CreateDirectoryA(folder.file("Recordings").c_str(), nullptr);
}

void Library::schedule(const std::string& name, const std::string& items) const {
  std::ofstream(m_folder.file("Schedules\\" + name + ".qsf")) << "[file]\nautotrim=false\n" << items;
}

void Library::tone(const std::string& name, int seconds) const {
  writeTone(m_folder.file("Recordings\\" + name + ".wav"), seconds);
}

bool Library::has(const std::string& relative) const { return fileExists(m_folder.file(relative)); }

std::string Library::asRun() const {
  std::string all;
  WIN32_FIND_DATAA data;
  HANDLE find = FindFirstFileA(m_folder.file("Logs\\asrun-*.log").c_str(), &data);
  if (find == INVALID_HANDLE_VALUE) return all;
  do {
    std::ifstream in(m_folder.file(std::string("Logs\\") + data.cFileName));
    all.append(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  } while (FindNextFileA(find, &data));
  FindClose(find);
  return all;
}

}  // namespace vantr::e2e
