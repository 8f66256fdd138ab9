// The program's system integration under Wine, in the test bed's own prefix:
// the Run and RunServices entries and the install folder read back from the
// registry, the service from the service control manager, the desktop path
// from its registry value, and the Program Manager conversation both against
// Wine's shell (which turns the group into a Start-menu folder) and against a
// small DDE server of the test's own that records what it is sent. Every
// registry value a test changes is put back afterwards.
#include "install/system_integration_win.h"

#include <windows.h>

#include <dde.h>
#include <shlobj.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "win/handles_win.h"

namespace vantr {
namespace {

// --- Registry values as raw bytes --------------------------------------------

struct RegValue {
  bool present = false;
  DWORD type = REG_SZ;
  std::string bytes;
};

RegValue text(const std::string& s) { return RegValue{true, REG_SZ, s + '\0'}; }

RegValue readValue(HKEY root, const char* path, const char* name) {
  RegValue value;
  RegKey key;
  if (RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, key.put()) != ERROR_SUCCESS) return value;
  DWORD size = 0;
  if (RegQueryValueExA(key.get(), name, nullptr, &value.type, nullptr, &size) != ERROR_SUCCESS) return value;
  value.bytes.resize(size);
  if (RegQueryValueExA(key.get(), name, nullptr, &value.type, reinterpret_cast<BYTE*>(&value.bytes[0]), &size) !=
      ERROR_SUCCESS)
    return value;
  value.bytes.resize(size);
  value.present = true;
  return value;
}

void writeValue(HKEY root, const char* path, const char* name, const RegValue& value) {
  RegKey key;
  ASSERT_EQ(RegCreateKeyExA(root, path, 0, nullptr, 0, KEY_SET_VALUE, nullptr, key.put(), nullptr), ERROR_SUCCESS);
  if (value.present)
    ASSERT_EQ(RegSetValueExA(key.get(), name, 0, value.type, reinterpret_cast<const BYTE*>(value.bytes.data()),
                             static_cast<DWORD>(value.bytes.size())),
              ERROR_SUCCESS);
  else
    RegDeleteValueA(key.get(), name);
}

bool keyExists(HKEY root, const char* path) {
  RegKey key;
  return RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, key.put()) == ERROR_SUCCESS;
}

DWORD valueCount(HKEY root, const char* path) {
  RegKey key;
  if (RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, key.put()) != ERROR_SUCCESS) return 0;
  DWORD count = 0;
  RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                   nullptr);
  return count;
}

// Keeps a value (and whether its key existed) and puts both back at the end.
class SavedValue {
 public:
  SavedValue(HKEY root, const char* path, const char* name)
      : m_root(root),
        m_path(path),
        m_name(name),
        m_keyExisted(keyExists(root, path)),
        m_saved(readValue(root, path, name)) {}
  ~SavedValue() {
    writeValue(m_root, m_path, m_name, m_saved);
    if (!m_keyExisted) RegDeleteKeyA(m_root, m_path);
  }
  SavedValue(const SavedValue&) = delete;
  SavedValue& operator=(const SavedValue&) = delete;
  void set(const RegValue& value) { writeValue(m_root, m_path, m_name, value); }

 private:
  HKEY m_root;
  const char* m_path;
  const char* m_name;
  bool m_keyExisted;
  RegValue m_saved;
};

bool folderExists(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool fileExists(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

std::string windowsDrive() {
  char windows[MAX_PATH] = "";
  GetWindowsDirectoryA(windows, MAX_PATH);
  return std::string(windows, 2);
}

// --- Message boxes on the test's thread ---------------------------------------

struct SeenBox {
  std::string title;
  std::string text;
  HWND owner;
  bool hasCancel;
};

// Records every message box that opens on this thread and answers it with OK.
class BoxWatcher {
 public:
  BoxWatcher() {
    s_current = this;
    m_hook = SetWindowsHookExA(WH_CBT, &hook, nullptr, GetCurrentThreadId());
  }
  ~BoxWatcher() {
    UnhookWindowsHookEx(m_hook);
    s_current = nullptr;
  }
  std::vector<SeenBox> take() { return std::exchange(m_seen, {}); }

 private:
  static LRESULT CALLBACK hook(int code, WPARAM wParam, LPARAM lParam) {
    const HWND window = reinterpret_cast<HWND>(wParam);
    char className[32] = "";
    if (code == HCBT_ACTIVATE && s_current && GetClassNameA(window, className, sizeof className) &&
        std::string(className) == "#32770") {
      char title[256] = "";
      char body[1024] = "";
      GetWindowTextA(window, title, sizeof title);
      GetDlgItemTextA(window, 0xFFFF, body, sizeof body);  // a message box's text control
      s_current->m_seen.push_back({title, body, GetWindow(window, GW_OWNER), GetDlgItem(window, IDCANCEL) != nullptr});
      PostMessageA(window, WM_COMMAND, IDOK, 0);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
  }

  static BoxWatcher* s_current;
  HHOOK m_hook;
  std::vector<SeenBox> m_seen;
};
BoxWatcher* BoxWatcher::s_current = nullptr;

const char kInstallText[] =
    "To fully install this software as a service in Windows NT, Administrator Access is required. You can run the "
    "software now but please install the software again once you have logged in as an administrator.";
const char kUninstallText[] =
    "To uninstall this software as a service in Windows NT, Administrator Access is required. You can run the "
    "software now but please install the software again once you have logged in as an administrator.";

// --- The service control manager and stand-ins for it --------------------------

struct ServiceConfig {
  bool exists = false;
  DWORD type = 0, startType = 0, errorControl = 0;
  std::string binaryPath, displayName, dependencies, account;
};

ServiceConfig queryService() {
  ServiceConfig config;
  ServiceHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT));
  ServiceHandle service(manager ? OpenServiceA(manager.get(), kServiceName, SERVICE_QUERY_CONFIG) : nullptr);
  if (!service) return config;
  DWORD needed = 0;
  QueryServiceConfigA(service.get(), nullptr, 0, &needed);
  std::vector<char> buffer(needed);
  auto* data = reinterpret_cast<QUERY_SERVICE_CONFIGA*>(buffer.data());
  if (!QueryServiceConfigA(service.get(), data, needed, &needed)) return config;
  config.exists = true;
  config.type = data->dwServiceType;
  config.startType = data->dwStartType;
  config.errorControl = data->dwErrorControl;
  config.binaryPath = data->lpBinaryPathName ? data->lpBinaryPathName : "";
  config.displayName = data->lpDisplayName ? data->lpDisplayName : "";
  config.dependencies = data->lpDependencies ? data->lpDependencies : "";
  config.account = data->lpServiceStartName ? data->lpServiceStartName : "";
  return config;
}

// Every access the stand-in managers were asked for, in order.
std::vector<DWORD> g_managerRequests;

SC_HANDLE refusingManager(DWORD access) {
  g_managerRequests.push_back(access);
  SetLastError(ERROR_ACCESS_DENIED);
  return nullptr;
}
// What an account without administrator rights gets: it may look, not change.
SC_HANDLE lookOnlyManager(DWORD access) {
  g_managerRequests.push_back(access);
  if (access == SC_MANAGER_ALL_ACCESS) {
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
  }
  return OpenSCManagerA(nullptr, nullptr, access);
}
SC_HANDLE countingManager(DWORD access) {
  g_managerRequests.push_back(access);
  return OpenSCManagerA(nullptr, nullptr, access);
}

// A window to own the message boxes.
class OwnerWindow {
 public:
  OwnerWindow()
      : m_hwnd(CreateWindowExA(0, "STATIC", "owner", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                               GetModuleHandleA(nullptr), nullptr)) {}
  ~OwnerWindow() { DestroyWindow(m_hwnd); }
  HWND get() const { return m_hwnd; }

 private:
  HWND m_hwnd;
};

// --- Run at startup ----------------------------------------------------------------

TEST(SystemIntegration, RunEntryIsWrittenOnceAndRemovedQuietly) {
  SavedValue saved(HKEY_LOCAL_MACHINE, kRunKey, kRunValue);
  saved.set(RegValue{});
  const DWORD othersBefore = valueCount(HKEY_LOCAL_MACHINE, kRunKey);
  const std::string expected = programPath() + " /logon";

  struct Step {
    const char* what;
    LONG (*action)();
    bool present;
  } steps[] = {
      {"add", &addRunAtStartup, true},
      {"add again", &addRunAtStartup, true},
      {"remove", &removeRunAtStartup, false},
      {"remove when absent", &removeRunAtStartup, false},
      {"set on", [] { return setRunAtStartup(true); }, true},
      {"set on again", [] { return setRunAtStartup(true); }, true},
      {"set off", [] { return setRunAtStartup(false); }, false},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    EXPECT_EQ(step.action(), ERROR_SUCCESS);
    EXPECT_EQ(isRunAtStartup(), step.present);
    EXPECT_EQ(valueCount(HKEY_LOCAL_MACHINE, kRunKey), othersBefore + (step.present ? 1 : 0));
    const RegValue value = readValue(HKEY_LOCAL_MACHINE, kRunKey, kRunValue);
    EXPECT_EQ(value.present, step.present);
    if (value.present) {
      EXPECT_EQ(value.type, static_cast<DWORD>(REG_SZ));
      EXPECT_EQ(value.bytes, expected + '\0');
    }
  }
}

TEST(SystemIntegration, AddingKeepsARunEntryThatIsThereAlready) {
  SavedValue saved(HKEY_LOCAL_MACHINE, kRunKey, kRunValue);
  saved.set(text("D:\\elsewhere\\vantr.exe /logon"));
  EXPECT_TRUE(isRunAtStartup());
  EXPECT_EQ(addRunAtStartup(), ERROR_SUCCESS);
  EXPECT_EQ(readValue(HKEY_LOCAL_MACHINE, kRunKey, kRunValue).bytes,
            std::string("D:\\elsewhere\\vantr.exe /logon") + '\0');
}

// --- Run as a service ----------------------------------------------------------------

class Service : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(isWindowsNTPlatform());
    removeLeftover();
    g_managerRequests.clear();
  }
  void TearDown() override { removeLeftover(); }
  static void removeLeftover() {
    ServiceHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    ServiceHandle service(manager ? OpenServiceA(manager.get(), kServiceName, DELETE) : nullptr);
    if (service) DeleteService(service.get());
  }

  OwnerWindow m_owner;
  BoxWatcher m_boxes;
};

TEST_F(Service, IsInstalledOnceWithItsConfigurationAndRemovedQuietly) {
  const ServiceSystem system = currentServiceSystem();
  const std::string expectedPath = programPath() + " /service";
  struct Step {
    const char* what;
    bool add;
    bool installed;
  } steps[] = {
      {"add", true, true},
      {"add again", true, true},
      {"remove", false, false},
      {"remove when absent", false, false},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    const DWORD result = step.add ? addRunAsService(m_owner.get(), system) : removeRunAsService(m_owner.get(), system);
    EXPECT_EQ(result, static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_TRUE(m_boxes.take().empty());
    EXPECT_EQ(isRunAsService(system), step.installed);
    const ServiceConfig config = queryService();
    ASSERT_EQ(config.exists, step.installed);
    if (!config.exists) continue;
    EXPECT_EQ(config.type, 272u);
    EXPECT_EQ(config.startType, 2u);
    EXPECT_EQ(config.errorControl, 0u);
    EXPECT_EQ(config.binaryPath, expectedPath);
    EXPECT_EQ(config.displayName, "VANTRService");
    EXPECT_EQ(config.dependencies, "");
    EXPECT_EQ(config.account, "LocalSystem");
  }
}

TEST_F(Service, AnInstalledServiceIsNotCreatedAgain) {
  ASSERT_EQ(addRunAsService(m_owner.get()), static_cast<DWORD>(ERROR_SUCCESS));
  // Only a look at the service: the manager is never opened for changes.
  g_managerRequests.clear();
  EXPECT_EQ(addRunAsService(m_owner.get(), ServiceSystem{true, &countingManager}), static_cast<DWORD>(ERROR_SUCCESS));
  EXPECT_EQ(std::count(g_managerRequests.begin(), g_managerRequests.end(), SC_MANAGER_ALL_ACCESS), 0);
  EXPECT_FALSE(g_managerRequests.empty());
  EXPECT_TRUE(m_boxes.take().empty());
}

TEST_F(Service, ARefusedManagerShowsTheAdministratorMessage) {
  struct Row {
    const char* what;
    SC_HANDLE (*openManager)(DWORD);
    bool installedBefore;
    bool add;
    const char* message;  // null: no box
    DWORD result;
    bool installedAfter;
  } rows[] = {
      {"install, manager refused", &refusingManager, false, true, kInstallText, ERROR_ACCESS_DENIED, false},
      {"uninstall, manager refused", &refusingManager, true, false, kUninstallText, ERROR_ACCESS_DENIED, true},
      {"uninstall of nothing, manager refused", &refusingManager, false, false, kUninstallText, ERROR_ACCESS_DENIED,
       false},
      {"install, may only look", &lookOnlyManager, false, true, kInstallText, ERROR_ACCESS_DENIED, false},
      {"install of an installed service, may only look", &lookOnlyManager, true, true, nullptr, ERROR_SUCCESS, true},
      {"uninstall, may only look", &lookOnlyManager, true, false, kUninstallText, ERROR_ACCESS_DENIED, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    removeLeftover();
    if (row.installedBefore) {
      ASSERT_EQ(addRunAsService(m_owner.get()), static_cast<DWORD>(ERROR_SUCCESS));
    }
    const ServiceSystem system{true, row.openManager};
    const DWORD result = row.add ? addRunAsService(m_owner.get(), system) : removeRunAsService(m_owner.get(), system);
    EXPECT_EQ(result, row.result);
    const std::vector<SeenBox> boxes = m_boxes.take();
    if (!row.message) {
      EXPECT_TRUE(boxes.empty());
    } else {
      ASSERT_EQ(boxes.size(), 1u);
      EXPECT_EQ(boxes[0].text, row.message);
      EXPECT_EQ(boxes[0].title, "Vantorel");
      EXPECT_EQ(boxes[0].owner, m_owner.get());
      EXPECT_FALSE(boxes[0].hasCancel);
    }
    EXPECT_EQ(queryService().exists, row.installedAfter);
  }
}

TEST_F(Service, Windows9xUsesTheRunServicesEntryAndNeverTheManager) {
  SavedValue saved(HKEY_LOCAL_MACHINE, kRunServicesKey, kServiceName);
  saved.set(RegValue{});
  const DWORD othersBefore = valueCount(HKEY_LOCAL_MACHINE, kRunServicesKey);
  const ServiceSystem system{false, &refusingManager};
  const std::string expected = programPath() + " /service";
  struct Step {
    const char* what;
    bool add;
    bool present;
  } steps[] = {
      {"add", true, true}, {"add again", true, true}, {"remove", false, false}, {"remove again", false, false}};
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    EXPECT_EQ(setRunAsService(m_owner.get(), step.add, system), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_EQ(isRunAsService(system), step.present);
    EXPECT_EQ(valueCount(HKEY_LOCAL_MACHINE, kRunServicesKey), othersBefore + (step.present ? 1 : 0));
    const RegValue value = readValue(HKEY_LOCAL_MACHINE, kRunServicesKey, kServiceName);
    ASSERT_EQ(value.present, step.present);
    if (value.present) {
      EXPECT_EQ(value.bytes, expected + '\0');
    }
  }
  EXPECT_TRUE(g_managerRequests.empty());
  EXPECT_TRUE(m_boxes.take().empty());
  EXPECT_FALSE(queryService().exists);
}

// --- Install folder and desktop shortcut ----------------------------------------------

TEST(SystemIntegration, InstallFolderComesFromProgramFilesOrTheWindowsDrive) {
  char temp[MAX_PATH] = "";
  GetTempPathA(MAX_PATH, temp);
  const std::string base = std::string(temp) + "vantr-install-" + std::to_string(GetCurrentProcessId());
  ASSERT_TRUE(CreateDirectoryA(base.c_str(), nullptr));
  const std::string fallback = windowsDrive() + "\\Vantorel";
  const bool fallbackExisted = folderExists(fallback);

  SavedValue saved(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kProgramFilesValue);
  struct Row {
    const char* what;
    RegValue programFiles;
    std::string expected;
  } rows[] = {
      {"ProgramFilesDir set", text(base), base + "\\Korvel Works\\Vantorel"},
      {"ProgramFilesDir set, folders there already", text(base), base + "\\Korvel Works\\Vantorel"},
      {"ProgramFilesDir missing", RegValue{}, fallback},
      {"ProgramFilesDir not a text", RegValue{true, REG_DWORD, std::string(4, '\1')}, fallback},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    saved.set(row.programFiles);
    EXPECT_EQ(installFolder(), row.expected);
    EXPECT_TRUE(folderExists(row.expected));
    EXPECT_EQ(programPath(), row.expected + "\\vantr.exe");
  }
  RemoveDirectoryA((base + "\\Korvel Works\\Vantorel").c_str());
  RemoveDirectoryA((base + "\\Korvel Works").c_str());
  RemoveDirectoryA(base.c_str());
  if (!fallbackExisted) RemoveDirectoryA(fallback.c_str());
}

TEST(SystemIntegration, DesktopShortcutPathComesFromTheShellFoldersOrTheOldDesktop) {
  SavedValue saved(HKEY_CURRENT_USER, kShellFoldersKey, kDesktopValue);
  const std::string longest = "C:\\" + std::string(257, 'd');  // 260 characters
  struct Row {
    const char* what;
    RegValue desktop;
    std::string expected;
  } rows[] = {
      {"set", text("C:\\users\\tester\\Desktop"), "C:\\users\\tester\\Desktop\\Vantorel.lnk"},
      {"stored without a terminator", RegValue{true, REG_SZ, "E:\\Desk"}, "E:\\Desk\\Vantorel.lnk"},
      {"260 characters", text(longest), longest + "\\Vantorel.lnk"},
      {"261 characters", text(longest + "x"), "c:\\Windows\\Desktop\\Vantorel.lnk"},
      {"missing", RegValue{}, "c:\\Windows\\Desktop\\Vantorel.lnk"},
      {"not a text", RegValue{true, REG_DWORD, std::string(4, '\1')}, "c:\\Windows\\Desktop\\Vantorel.lnk"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    saved.set(row.desktop);
    EXPECT_EQ(desktopShortcutPath(), row.expected);
  }
}

// --- The Program Manager conversation ------------------------------------------------

// A DDE server of the test's own on a thread of its own, answering one
// application name: it records every command text and every WM_DDE_TERMINATE,
// and accepts, refuses or ignores commands as told.
class TestShell {
 public:
  enum class Answer { Accept, Refuse, Ignore };

  TestShell(const std::string& name, Answer answer) : m_name(name), m_answer(answer) {
    m_thread = std::thread([this] { run(); });
    WaitForSingleObject(m_ready.get(), 5000);
  }
  ~TestShell() {
    PostThreadMessageA(m_threadId, WM_QUIT, 0, 0);
    m_thread.join();
  }
  HWND hwnd() const { return m_hwnd; }
  std::vector<std::string> commands() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_commands;
  }
  std::vector<HWND> terminatesFrom() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_terminates;
  }

 private:
  void run() {
    m_threadId = GetCurrentThreadId();
    WNDCLASSA wc{};
    wc.lpfnWndProc = &proc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.lpszClassName = "VantorelTestShellWindow";
    RegisterClassA(&wc);
    // Top-level, so that the broadcast of WM_DDE_INITIATE reaches it.
    m_hwnd = CreateWindowExA(0, wc.lpszClassName, "", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, wc.hInstance, nullptr);
    SetWindowLongPtrA(m_hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetEvent(m_ready.get());
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) DispatchMessageA(&msg);
    DestroyWindow(m_hwnd);
  }

  static LRESULT CALLBACK proc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<TestShell*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    const HWND client = reinterpret_cast<HWND>(wParam);
    if (!self) return DefWindowProcA(hwnd, msg, wParam, lParam);
    switch (msg) {
      case WM_DDE_INITIATE: {
        char application[64] = "";
        char topic[64] = "";
        GlobalGetAtomNameA(LOWORD(lParam), application, sizeof application);
        GlobalGetAtomNameA(HIWORD(lParam), topic, sizeof topic);
        if (self->m_name == application && self->m_name == topic && client != hwnd)
          SendMessageA(client, WM_DDE_ACK, reinterpret_cast<WPARAM>(hwnd),
                       MAKELPARAM(GlobalAddAtomA(application), GlobalAddAtomA(topic)));
        return 0;
      }
      case WM_DDE_EXECUTE: {
        UINT_PTR unused = 0;
        UINT_PTR memory = 0;
        UnpackDDElParam(WM_DDE_EXECUTE, lParam, &unused, &memory);
        const HGLOBAL handle = reinterpret_cast<HGLOBAL>(memory);
        {
          std::lock_guard<std::mutex> lock(self->m_mutex);
          const char* commands = static_cast<const char*>(GlobalLock(handle));
          self->m_commands.push_back(commands ? commands : "<unreadable>");
          GlobalUnlock(handle);
        }
        if (self->m_answer != Answer::Ignore) {
          const UINT_PTR status = self->m_answer == Answer::Accept ? 0x8000 : 0;
          PostMessageA(client, WM_DDE_ACK, reinterpret_cast<WPARAM>(hwnd), PackDDElParam(WM_DDE_ACK, status, memory));
        }
        return 0;
      }
      case WM_DDE_TERMINATE: {
        std::lock_guard<std::mutex> lock(self->m_mutex);
        self->m_terminates.push_back(client);
        PostMessageA(client, WM_DDE_TERMINATE, reinterpret_cast<WPARAM>(hwnd), 0);
        return 0;
      }
      default: return DefWindowProcA(hwnd, msg, wParam, lParam);
    }
  }

  const std::string m_name;
  const Answer m_answer;
  KernelHandle m_ready{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
  std::thread m_thread;
  DWORD m_threadId = 0;
  HWND m_hwnd = nullptr;
  std::mutex m_mutex;
  std::vector<std::string> m_commands;
  std::vector<HWND> m_terminates;
};

// The name the test's server answers to, of this run only: global atoms live
// as long as the wineserver, so a name shared between runs would carry the
// references another run left behind.
const std::string kTestShell = "VantorelTestShell" + std::to_string(GetCurrentProcessId());

// The command memory that comes back with each WM_DDE_ACK this thread takes
// from its queue. That is the client's own handle (a server in another thread
// or process reads a copy), which the client must free once answered.
class AckWatcher {
 public:
  AckWatcher() {
    s_current = this;
    m_hook = SetWindowsHookExA(WH_GETMESSAGE, &hook, nullptr, GetCurrentThreadId());
  }
  ~AckWatcher() {
    UnhookWindowsHookEx(m_hook);
    s_current = nullptr;
  }
  std::vector<HGLOBAL> take() { return std::exchange(m_memory, {}); }

 private:
  static LRESULT CALLBACK hook(int code, WPARAM wParam, LPARAM lParam) {
    const MSG* msg = reinterpret_cast<const MSG*>(lParam);
    UINT_PTR status = 0;
    UINT_PTR memory = 0;
    if (code == HC_ACTION && wParam == PM_REMOVE && s_current && msg->message == WM_DDE_ACK &&
        UnpackDDElParam(WM_DDE_ACK, msg->lParam, &status, &memory))
      s_current->m_memory.push_back(reinterpret_cast<HGLOBAL>(memory));
    return CallNextHookEx(nullptr, code, wParam, lParam);
  }

  static AckWatcher* s_current;
  HHOOK m_hook;
  std::vector<HGLOBAL> m_memory;
};
AckWatcher* AckWatcher::s_current = nullptr;

// Whether the answered commands' memory was freed: GlobalSize knows no such
// handle any more.
void expectFreed(const std::vector<HGLOBAL>& memory) {
  ASSERT_EQ(memory.size(), 1u);
  EXPECT_EQ(GlobalSize(memory[0]), 0u);
}

// Handles this thread's messages until done() holds or five seconds passed.
template <class Done>
bool pumpUntil(Done done) {
  const DWORD start = GetTickCount();
  while (!done()) {
    if (GetTickCount() - start > 5000) return false;
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&msg);
    Sleep(10);
  }
  return true;
}

TEST(ProgramManager, SendsTheGroupCommandsAndEndsTheConversation) {
  TestShell shell(kTestShell, TestShell::Answer::Accept);
  AckWatcher acks;
  HWND client = nullptr;
  {
    ProgramManagerConversation conversation(kTestShell.c_str(), kTestShell.c_str());
    ASSERT_TRUE(conversation.connected());
    EXPECT_EQ(conversation.server(), shell.hwnd());
    client = conversation.hwnd();
    struct Row {
      bool add;
      const char* itemCommand;
      const char* itemName;
      const char* expected;
    } rows[] = {
        {true, "C:\\Program Files\\Korvel Works\\Vantorel\\vantr.exe", "Vantorel",
         "[CreateGroup(\"Vantorel\")][AddItem(\"C:\\Program Files\\Korvel Works\\Vantorel\\vantr.exe\",\"Vantorel\")]"},
        {true, "C:\\V\\vantr.exe /logon", "Vantorel at log-on",
         "[CreateGroup(\"Vantorel\")][AddItem(\"C:\\V\\vantr.exe /logon\",\"Vantorel at log-on\")]"},
        {false, nullptr, "Vantorel", "[CreateGroup(\"Vantorel\")][DeleteItem(\"Vantorel\")]"},
        {false, nullptr, "Uninstall Vantorel", "[CreateGroup(\"Vantorel\")][DeleteItem(\"Uninstall Vantorel\")]"},
    };
    std::vector<std::string> expected;
    for (const Row& row : rows) {
      SCOPED_TRACE(row.expected);
      EXPECT_TRUE(row.add ? addToProgramGroup(conversation, row.itemCommand, row.itemName)
                          : removeFromProgramGroup(conversation, row.itemName));
      expectFreed(acks.take());
      expected.push_back(row.expected);
    }
    EXPECT_EQ(shell.commands(), expected);
  }
  // The conversation ended once, from the client's window, before the
  // destructor returned.
  EXPECT_EQ(shell.terminatesFrom(), std::vector<HWND>{client});
  // The names were given back: the broadcast's and the answer's.
  EXPECT_EQ(GlobalFindAtomA(kTestShell.c_str()), 0);
}

TEST(ProgramManager, ARefusedOrUnansweredCommandFails) {
  struct Row {
    const char* what;
    TestShell::Answer answer;
  } rows[] = {{"refused", TestShell::Answer::Refuse}, {"never answered", TestShell::Answer::Ignore}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    TestShell shell(kTestShell, row.answer);
    AckWatcher acks;
    {
      ProgramManagerConversation conversation(kTestShell.c_str(), kTestShell.c_str());
      ASSERT_TRUE(conversation.connected());
      // A refusal comes at once; silence is waited out for a short while only.
      EXPECT_FALSE(
          conversation.execute(deleteItemCommand("Vantorel"), row.answer == TestShell::Answer::Ignore ? 300 : 5000));
      if (row.answer == TestShell::Answer::Refuse) expectFreed(acks.take());
      // One command at a time: the unanswered one blocks the next.
      if (row.answer == TestShell::Answer::Ignore) {
        EXPECT_FALSE(conversation.execute(deleteItemCommand("Other"), 300));
      }
    }
    EXPECT_EQ(shell.commands().size(), 1u);
    EXPECT_EQ(shell.terminatesFrom().size(), 1u);
  }
}

TEST(ProgramManager, KeepsTheFirstServerAndLetsTheOthersGo) {
  TestShell first(kTestShell, TestShell::Answer::Accept);
  TestShell second(kTestShell, TestShell::Answer::Accept);
  HWND client = nullptr;
  HWND server = nullptr;
  {
    ProgramManagerConversation conversation(kTestShell.c_str(), kTestShell.c_str());
    ASSERT_TRUE(conversation.connected());
    client = conversation.hwnd();
    server = conversation.server();
    EXPECT_TRUE(server == first.hwnd() || server == second.hwnd());
    EXPECT_TRUE(removeFromProgramGroup(conversation, "Vantorel"));
    TestShell& other = server == first.hwnd() ? second : first;
    EXPECT_TRUE(pumpUntil([&] { return !other.terminatesFrom().empty(); }));
    EXPECT_EQ(other.terminatesFrom(), std::vector<HWND>{client});
    EXPECT_TRUE(other.commands().empty());
  }
  TestShell& kept = server == first.hwnd() ? first : second;
  EXPECT_EQ(kept.commands().size(), 1u);
  EXPECT_EQ(kept.terminatesFrom(), std::vector<HWND>{client});
}

TEST(ProgramManager, WithoutAServerNothingIsSent) {
  ProgramManagerConversation conversation("VantorelNoSuchShell", "VantorelNoSuchShell");
  EXPECT_FALSE(conversation.connected());
  EXPECT_FALSE(addToProgramGroup(conversation, "C:\\V\\vantr.exe", "Vantorel"));
  EXPECT_FALSE(removeFromProgramGroup(conversation, "Vantorel"));
  EXPECT_EQ(GlobalFindAtomA("VantorelNoSuchShell"), 0);
}

// Wine's shell opens the group's folder window for every CreateGroup, each in
// an explorer process of its own. A window left open keeps Wine's desktop
// process alive, and with it the test runner's output, so each is closed: the
// first is waited for, and the others until none has shown for a second.
void closeGroupWindows() {
  std::set<HWND> closed;
  const DWORD start = GetTickCount();
  DWORD lastSeen = start;
  for (;;) {
    HWND window = nullptr;
    for (const char* className : {"ExplorerWClass", "CabinetWClass"})
      while ((window = FindWindowExA(nullptr, window, className, "Vantorel")) != nullptr) {
        lastSeen = GetTickCount();
        if (closed.insert(window).second) PostMessageA(window, WM_CLOSE, 0, 0);
      }
    const DWORD now = GetTickCount();
    if (now - start > 10000 || (closed.empty() ? now - start > 5000 : now - lastSeen > 1000)) return;
    Sleep(50);
  }
}

TEST(ProgramManager, WineShellMakesAndRemovesTheStartMenuLink) {
  char programs[MAX_PATH] = "";
  ASSERT_EQ(SHGetFolderPathA(nullptr, CSIDL_PROGRAMS, nullptr, 0, programs), S_OK);
  const std::string link = std::string(programs) + "\\Vantorel\\Vantorel Test Item.lnk";
  DeleteFileA(link.c_str());
  // Wine's shell makes a link only to a program it finds, and reads the
  // command up to its first space: a program without spaces in its path.
  char system[MAX_PATH] = "";
  GetSystemDirectoryA(system, MAX_PATH);
  const std::string target = std::string(system) + "\\notepad.exe";
  ASSERT_TRUE(fileExists(target));

  {
    ProgramManagerConversation conversation;
    // In this test bed the shell answers; a silent one is a failure.
    ASSERT_TRUE(conversation.connected());
    EXPECT_TRUE(addToProgramGroup(conversation, target, "Vantorel Test Item"));
    EXPECT_TRUE(fileExists(link));
    EXPECT_TRUE(removeFromProgramGroup(conversation, "Vantorel Test Item"));
    EXPECT_FALSE(fileExists(link));
    // Deleting what is not there is refused by the shell.
    EXPECT_FALSE(removeFromProgramGroup(conversation, "Vantorel Test Item"));
  }
  closeGroupWindows();
  RemoveDirectoryA((std::string(programs) + "\\Vantorel").c_str());
}

}  // namespace
}  // namespace vantr
