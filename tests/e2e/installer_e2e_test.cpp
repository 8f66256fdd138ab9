// SETUP.EXE and the uninstaller as a station would run them, in a Wine prefix
// made fresh for this run (the test runs inside it): what lands on disk, in
// the registry and in the shell, the program it starts, broken installers,
// a running copy made to quit, and the uninstaller run more than once.
#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>
#include <objbase.h>
#include <shlobj.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "app/installer_win.h"
#include "dialog_box.h"
#include "install/payload.h"
#include "resource.h"
#include "vantr_process.h"
#include "win/handles_win.h"

namespace vantr::e2e {
namespace {

constexpr char kRunKeyPath[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";

std::string folderOf(int csidl) {
  char path[MAX_PATH] = {};
  SHGetFolderPathA(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, path);
  return path;
}

// The install folder as the program computes it, without creating it.
std::string installFolderPath() {
  return registryText(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Windows\\CurrentVersion", "ProgramFilesDir") +
         "\\Korvel Works\\Vantorel";
}
std::string installedProgram() { return installFolderPath() + "\\vantr.exe"; }
std::string desktopLink() {
  return registryText(HKEY_CURRENT_USER, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                      "Desktop") +
         "\\Vantorel.lnk";
}
std::string groupItem(const char* name) { return folderOf(CSIDL_PROGRAMS) + "\\Vantorel\\" + name + ".lnk"; }

std::string longPath(const std::string& path) {
  char full[MAX_PATH + 1] = {};
  const DWORD length = GetLongPathNameA(path.c_str(), full, MAX_PATH);
  return length > 0 && length <= MAX_PATH ? std::string(full) : path;
}

struct Link {
  bool loaded = false;
  std::string path, arguments, description;
};

// A shortcut read back through the shell's link object.
Link readLink(const std::string& file) {
  Link link;
  IShellLinkA* shell = nullptr;
  if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                              reinterpret_cast<void**>(&shell))))
    return link;
  IPersistFile* persist = nullptr;
  if (SUCCEEDED(shell->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&persist)))) {
    wchar_t wide[MAX_PATH + 1] = {};
    MultiByteToWideChar(CP_ACP, 0, file.c_str(), -1, wide, MAX_PATH);
    if (SUCCEEDED(persist->Load(wide, STGM_READ))) {
      char text[MAX_PATH + 1] = {};
      link.loaded = SUCCEEDED(shell->GetPath(text, MAX_PATH, nullptr, SLGP_RAWPATH));
      link.path = longPath(text);
      text[0] = 0;
      shell->GetArguments(text, MAX_PATH);
      link.arguments = text;
      text[0] = 0;
      shell->GetDescription(text, MAX_PATH);
      link.description = text;
    }
    persist->Release();
  }
  shell->Release();
  return link;
}

std::string imageOf(HWND window) {
  DWORD pid = 0;
  GetWindowThreadProcessId(window, &pid);
  KernelHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid));
  char path[MAX_PATH + 1] = {};
  DWORD size = MAX_PATH;
  if (!process || !QueryFullProcessImageNameA(process.get(), 0, path, &size)) return "";
  return longPath(path);
}

std::string shippedProgram() { return fileText(nativePath(VANTR_SHIPPED_EXE)); }

class Installer : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { CoInitialize(nullptr); }
  void SetUp() override { endRunningCopies(); }
  void TearDown() override { endRunningCopies(); }

  // What one run of an installer showed.
  struct SetupRun {
    bool ended = false;
    int exitCode = -1;
    std::set<int> positions;  // the progress bar's positions seen
    double ms = 0;            // start to end
  };

  // Runs the bytes as SETUP.EXE. answer is called each time round while it
  // runs (to answer boxes); the progress bar is sampled in between.
  SetupRun runSetup(
      const std::string& bytes, const std::function<void()>& answer = [] {}) {
    const std::string setup = m_dir.file("SETUP.EXE");
    std::ofstream(setup, std::ios::binary | std::ios::trunc) << bytes;
    SetupRun run;
    ChildProcess process;
    const auto start = std::chrono::steady_clock::now();
    if (!process.start(setup, {})) return run;
    for (int i = 0; i < 60000 && !run.ended; ++i) {
      for (HWND window = nullptr; (window = FindWindowExA(nullptr, window, "#32770", nullptr)) != nullptr;) {
        if (HWND bar = GetDlgItem(window, IDC_INSTALL_PROGRESS); bar && IsWindowVisible(window))
          run.positions.insert(static_cast<int>(SendMessageA(bar, PBM_GETPOS, 0, 0)));
      }
      answer();
      run.ended = process.wait(1, &run.exitCode);
    }
    run.ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    return run;
  }

  // Runs the uninstaller of the install folder, answering its question.
  int runUninstaller(int answer) {
    ChildProcess process;
    EXPECT_TRUE(process.start(installFolderPath() + "\\uninst.exe", {}));
    HWND question = nullptr;
    EXPECT_TRUE(waitFor([&] { return (question = findBox(kUninstallTitle)) != nullptr; }, 20000));
    if (!question) return -1;
    EXPECT_EQ(boxText(question), kUninstallQuestion);
    PostMessageA(GetDlgItem(question, answer), BM_CLICK, 0, 0);
    if (answer == IDYES) {
      HWND done = nullptr;
      EXPECT_TRUE(waitFor([&] { return (done = findBox(kUninstallDoneTitle)) != nullptr; }, 20000));
      if (done) {
        EXPECT_EQ(boxText(done), kUninstallDoneText);
        PostMessageA(GetDlgItem(done, IDOK), BM_CLICK, 0, 0);
      }
    }
    int code = -1;
    EXPECT_TRUE(process.wait(20000, &code));
    return code;
  }

  // The good installer, when the program is not installed yet.
  void installOnce() {
    if (fileExists(installFolderPath() + "\\uninst.exe") &&
        registryText(HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayName") != "<missing>")
      return;
    const SetupRun run = runSetup(fileText(nativePath(VANTR_SETUP)));
    ASSERT_TRUE(run.ended);
    ASSERT_EQ(run.exitCode, 0);
    endRunningCopies();
  }

  TempDir m_dir;
};

// One byte changed anywhere in the payload, a cut file and a program with no
// payload all end with "Install Error" and register nothing.
TEST_F(Installer, BrokenInstallersShowTheErrorAndRegisterNothing) {
  const std::string good = fileText(nativePath(VANTR_SETUP));
  const std::string image = shippedProgram();
  ASSERT_GT(good.size(), image.size() + kTrailerBytes);
  const size_t payloadStart = image.size();
  struct Case {
    const char* what;
    std::string bytes;
  };
  std::vector<Case> cases;
  for (size_t at : {payloadStart + 20, (payloadStart + good.size()) / 2, good.size() - kTrailerBytes - 1}) {
    std::string changed = good;
    changed[at] = static_cast<char>(changed[at] ^ 0x01);
    cases.push_back({"one byte changed", changed});
  }
  cases.push_back({"a cut file", good.substr(0, payloadStart + (good.size() - payloadStart) / 3)});
  cases.push_back({"no payload", image});
  cases.push_back({"a longer payload than the file",
                   good.substr(0, good.size() - 12) + std::string("\xff\xff\xff\xff\xff\xff\xff\x7f\0\0\0\0", 12)});

  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    // Whatever an earlier run left registered goes first.
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, kUninstallKey);
    HKEY run = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kRunKeyPath, 0, KEY_SET_VALUE, &run) == ERROR_SUCCESS) {
      RegDeleteValueA(run, "VANTRRun");
      RegCloseKey(run);
    }
    DeleteFileA(desktopLink().c_str());
    DeleteFileA((installFolderPath() + "\\uninst.exe").c_str());

    bool errorShown = false;
    const SetupRun result = runSetup(c.bytes, [&] {
      if (HWND box = findBox(kInstallErrorTitle)) {
        EXPECT_EQ(boxText(box), kInstallErrorText);
        errorShown = true;
        PostMessageA(GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
      }
    });
    ASSERT_TRUE(result.ended);
    EXPECT_TRUE(errorShown);
    EXPECT_EQ(result.exitCode, 1) << "ended by its own error path, not by a crash";
    EXPECT_EQ(registryText(HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayName"), "<missing>");
    EXPECT_EQ(registryText(HKEY_LOCAL_MACHINE, kRunKeyPath, "VANTRRun"), "<missing>");
    EXPECT_FALSE(fileExists(desktopLink()));
    EXPECT_FALSE(fileExists(installFolderPath() + "\\uninst.exe"));
    EXPECT_EQ(findFrame(), nullptr) << "nothing started";
  }
}

TEST_F(Installer, InstallsRegistersAndStartsTheProgram) {
  // A sound scheme with a sound, to be switched off.
  const char* event = "AppEvents\\Schemes\\Apps\\.Default\\SystemAsterisk\\.Current";
  RegSetKeyValueA(HKEY_CURRENT_USER, event, nullptr, REG_SZ, "chimes.wav", 11);
  RegSetKeyValueA(HKEY_CURRENT_USER, "AppEvents\\Schemes", nullptr, REG_SZ, ".Default", 9);

  const SetupRun run = runSetup(fileText(nativePath(VANTR_SETUP)));
  ASSERT_TRUE(run.ended);
  EXPECT_EQ(run.exitCode, 0);
  std::cout << "installing the build's SETUP.EXE: " << run.ms << " ms, " << run.positions.size()
            << " progress positions seen\n";

  const std::string folder = installFolderPath(), program = installedProgram();
  EXPECT_TRUE(fileText(program) == shippedProgram()) << "vantr.exe is the program, byte for byte";
  EXPECT_TRUE(fileText(folder + "\\uninst.exe") == shippedProgram());
  EXPECT_TRUE(fileExists(folder + "\\Schedules") && fileExists(folder + "\\Recordings"));
  int pages = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(nativePath(VANTR_MANUAL))) {
    if (!entry.is_regular_file()) continue;
    const std::string relative = std::filesystem::relative(entry.path(), nativePath(VANTR_MANUAL)).string();
    EXPECT_TRUE(fileText(folder + "\\manual\\" + relative) == fileText(entry.path().string())) << relative;
    ++pages;
  }
  EXPECT_GT(pages, 8);

  EXPECT_EQ(registryText(HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayName"), "Vantorel Uninstall");
  EXPECT_EQ(registryText(HKEY_LOCAL_MACHINE, kUninstallKey, "UninstallString"), folder + "\\uninst.exe");
  EXPECT_EQ(registryText(HKEY_LOCAL_MACHINE, kRunKeyPath, "VANTRRun"), program + " /logon");

  const Link desktop = readLink(desktopLink());
  EXPECT_TRUE(desktop.loaded) << desktopLink();
  EXPECT_EQ(desktop.path, program);
  EXPECT_EQ(desktop.arguments, "/open");
  EXPECT_EQ(desktop.description, "Vantorel");
  const Link open = readLink(groupItem(kOpenItem));
  EXPECT_TRUE(open.loaded) << groupItem(kOpenItem);
  EXPECT_EQ(open.path, program);
  const Link manual = readLink(groupItem(kManualItem));
  EXPECT_TRUE(manual.loaded) << groupItem(kManualItem);
  EXPECT_EQ(manual.path, folder + "\\manual\\index.html");

  EXPECT_EQ(registryText(HKEY_CURRENT_USER, "AppEvents\\Schemes", nullptr), ".None");
  EXPECT_EQ(registryText(HKEY_CURRENT_USER, event, nullptr), "");

  HWND frame = nullptr;
  ASSERT_TRUE(waitFor([&] { return (frame = findFrame()) != nullptr; }, 20000)) << "the installed program started";
  EXPECT_EQ(imageOf(frame), program);
  EXPECT_TRUE(waitFor([&] { return IsWindowVisible(frame) != FALSE; })) << "\"/install\" is a visible start";
}

// SETUP while the program runs: the running copy is told to quit, and with
// Exit locked it asks for the password first; the new copy starts after.
TEST_F(Installer, SetupMakesTheRunningCopyQuitAfterItsPassword) {
  installOnce();
  std::ofstream(installFolderPath() + "\\settings.ini") << "[security]\npassword=Secret\nflags=64\n";
  ChildProcess running;
  ASSERT_TRUE(running.start(installedProgram(), {}));
  HWND before = nullptr;
  ASSERT_TRUE(waitFor([&] { return (before = findFrame()) != nullptr; }, 20000));

  bool asked = false;
  const SetupRun run = runSetup(fileText(nativePath(VANTR_SETUP)), [&] {
    if (HWND prompt = findBox("Enter Password"); prompt && !asked) {
      asked = true;
      SetDlgItemTextA(prompt, IDC_PASSWORD_EDIT, "Secret");
      PostMessageA(GetDlgItem(prompt, IDOK), BM_CLICK, 0, 0);
    }
  });
  ASSERT_TRUE(run.ended);
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_TRUE(asked) << "the running copy asked for the password";
  EXPECT_TRUE(running.wait(5000)) << "the running copy quit";
  HWND after = nullptr;
  EXPECT_TRUE(waitFor([&] { return (after = findFrame()) != nullptr && after != before; }, 20000))
      << "the installed program started anew";
  DeleteFileA((installFolderPath() + "\\settings.ini").c_str());
}

// No keeps everything; Yes removes the registrations (a running copy quits
// first) and keeps the files; a second Yes finds nothing to remove and says
// the same.
TEST_F(Installer, UninstallerRemovesRegistrationsKeepsFilesAndRunsTwice) {
  installOnce();
  const std::string folder = installFolderPath();
  std::ofstream(folder + "\\Recordings\\News.wav") << "RIFF";

  EXPECT_EQ(runUninstaller(IDNO), 0);
  EXPECT_EQ(registryText(HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayName"), "Vantorel Uninstall");
  EXPECT_TRUE(fileExists(desktopLink()));

  // Run as Service on, as the settings dialog would have set it.
  const auto service = [] {
    SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    SC_HANDLE handle = manager ? OpenServiceA(manager, "VANTRService", SERVICE_QUERY_STATUS) : nullptr;
    if (handle) CloseServiceHandle(handle);
    if (manager) CloseServiceHandle(manager);
    return handle != nullptr;
  };
  if (SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)) {
    const std::string binary = installedProgram() + " /service";
    SC_HANDLE created =
        CreateServiceA(manager, "VANTRService", "VANTRService", SERVICE_ALL_ACCESS, 272, SERVICE_DEMAND_START, 0,
                       binary.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr);
    if (created) CloseServiceHandle(created);
    CloseServiceHandle(manager);
  }
  ASSERT_TRUE(service());

  ChildProcess running;
  ASSERT_TRUE(running.start(installedProgram(), {}));
  ASSERT_TRUE(waitFor([&] { return findFrame() != nullptr; }, 20000));
  for (int pass = 0; pass < 2; ++pass) {
    SCOPED_TRACE(pass == 0 ? "first run" : "second run");
    EXPECT_EQ(runUninstaller(IDYES), 0);
    EXPECT_TRUE(running.wait(0)) << "the running copy was told to quit";
    EXPECT_EQ(registryText(HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayName"), "<missing>");
    EXPECT_EQ(registryText(HKEY_LOCAL_MACHINE, kRunKeyPath, "VANTRRun"), "<missing>");
    EXPECT_FALSE(service());
    EXPECT_FALSE(fileExists(desktopLink()));
    EXPECT_FALSE(fileExists(groupItem(kOpenItem)));
    EXPECT_FALSE(fileExists(groupItem(kManualItem)));
    EXPECT_TRUE(fileExists(folder + "\\vantr.exe"));
    EXPECT_TRUE(fileExists(folder + "\\uninst.exe"));
    EXPECT_TRUE(fileExists(folder + "\\Recordings\\News.wav"));
  }
}

// A 10 MB payload: the time it takes and the window kept painting (the
// progress bar moves through many positions).
TEST_F(Installer, TenMegabytePayloadKeepsTheWindowMoving) {
  std::mt19937 random(7);
  std::string big(10 * 1024 * 1024, '\0');
  for (char& byte : big) byte = static_cast<char>(random());
  const std::string image = shippedProgram();
  const std::string setup = image + payloadWithTrailer({{"vantr.exe", image}, {"big.bin", big}});

  const SetupRun run = runSetup(setup);
  ASSERT_TRUE(run.ended);
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_TRUE(fileText(installFolderPath() + "\\big.bin") == big);
  EXPECT_GE(run.positions.size(), 5u);
  std::cout << "installing a " << setup.size() - image.size() << "-byte payload: " << run.ms << " ms, "
            << run.positions.size() << " distinct progress positions seen\n";
}

// Cancel while copying: the window closes, no message, nothing registered
// and nothing started; what was copied stays.
TEST_F(Installer, CancelStopsTheCopyAndRegistersNothing) {
  RegDeleteKeyA(HKEY_LOCAL_MACHINE, kUninstallKey);
  DeleteFileA(desktopLink().c_str());
  const std::string image = shippedProgram();
  // Large enough that the copy is still going when Cancel arrives.
  const std::string setup =
      image + payloadWithTrailer({{"vantr.exe", image}, {"huge.bin", std::string(400u << 20, 'v')}});

  bool pressed = false, boxShown = false;
  const SetupRun run = runSetup(setup, [&] {
    boxShown = boxShown || findBox(kInstallErrorTitle) != nullptr;
    if (pressed) return;
    for (HWND window = nullptr; (window = FindWindowExA(nullptr, window, "#32770", nullptr)) != nullptr;) {
      HWND bar = GetDlgItem(window, IDC_INSTALL_PROGRESS);
      if (bar && IsWindowVisible(window) && SendMessageA(bar, PBM_GETPOS, 0, 0) > 0) {
        PostMessageA(GetDlgItem(window, IDCANCEL), BM_CLICK, 0, 0);
        pressed = true;
      }
    }
  });
  ASSERT_TRUE(pressed);
  ASSERT_TRUE(run.ended);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_LT(*run.positions.rbegin(), 100) << "stopped before the end";
  EXPECT_FALSE(boxShown);
  EXPECT_EQ(registryText(HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayName"), "<missing>");
  EXPECT_FALSE(fileExists(desktopLink()));
  EXPECT_EQ(findFrame(), nullptr) << "nothing started";
  DeleteFileA((installFolderPath() + "\\huge.bin").c_str());
}

}  // namespace
}  // namespace vantr::e2e
