#include "install/system_integration_win.h"

#include <windows.h>

#include <dde.h>

#include <cstring>

#include "win/handles_win.h"

namespace vantr {

namespace {

constexpr char kInstallNeedsAdministrator[] =
    "To fully install this software as a service in Windows NT, Administrator Access is required. You can run the "
    "software now but please install the software again once you have logged in as an administrator.";
constexpr char kUninstallNeedsAdministrator[] =
    "To uninstall this software as a service in Windows NT, Administrator Access is required. You can run the "
    "software now but please install the software again once you have logged in as an administrator.";

// The shell answers WM_DDE_INITIATE at once; the limit only keeps a hung
// top-level window from holding the caller for good.
constexpr UINT kInitiateTimeoutMs = 2000;
// How long the end of a conversation waits for the server's WM_DDE_TERMINATE.
constexpr DWORD kTerminateTimeoutMs = 2000;

constexpr char kConversationClass[] = "VantorelProgramManagerConversation";

// A REG_SZ value of fewer than bufferChars characters; false when the key or
// the value cannot be read, the value is of another type, or it is longer.
bool readString(HKEY root, const char* path, const char* name, DWORD bufferChars, std::string& out) {
  RegKey key;
  if (RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, key.put()) != ERROR_SUCCESS) return false;
  std::string buffer(bufferChars, '\0');
  DWORD type = 0;
  DWORD bytes = bufferChars;
  if (RegQueryValueExA(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&buffer[0]), &bytes) != ERROR_SUCCESS ||
      type != REG_SZ)
    return false;
  // The stored bytes may or may not end in a terminator.
  buffer.resize(bytes);
  buffer.resize(std::strlen(buffer.c_str()));
  if (buffer.size() >= bufferChars) return false;
  out = buffer;
  return true;
}

bool valueExists(HKEY root, const char* path, const char* name) {
  RegKey key;
  if (RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, key.put()) != ERROR_SUCCESS) return false;
  return RegQueryValueExA(key.get(), name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

// Writes name = text under HKEY_LOCAL_MACHINE\path unless the value is there.
LONG addStartValue(const char* path, const char* name, const std::string& text) {
  RegKey key;
  LONG result = RegCreateKeyExA(HKEY_LOCAL_MACHINE, path, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                KEY_QUERY_VALUE | KEY_SET_VALUE, nullptr, key.put(), nullptr);
  if (result != ERROR_SUCCESS) return result;
  if (RegQueryValueExA(key.get(), name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS) return ERROR_SUCCESS;
  return RegSetValueExA(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                        static_cast<DWORD>(text.size() + 1));
}

// Deletes the value; a value (or key) that is not there is already removed.
LONG removeStartValue(const char* path, const char* name) {
  RegKey key;
  LONG result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_SET_VALUE, key.put());
  if (result == ERROR_SUCCESS) result = RegDeleteValueA(key.get(), name);
  return result == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : result;
}

// Creates the folder unless it exists; a failure shows later, when something
// is written there.
std::string ensureFolder(const std::string& folder) {
  CreateDirectoryA(folder.c_str(), nullptr);
  return folder;
}

SC_HANDLE openServiceControlManager(DWORD access) { return OpenSCManagerA(nullptr, nullptr, access); }

// The error of a failed call, never "success" even where the system left none.
DWORD lastErrorOr(DWORD fallback) {
  const DWORD error = GetLastError();
  return error != ERROR_SUCCESS ? error : fallback;
}

}  // namespace

std::string installFolder() {
  std::string base;
  if (readString(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kProgramFilesValue, MAX_PATH, base))
    return ensureFolder(ensureFolder(base + "\\Korvel Works") + "\\Vantorel");
  char windows[MAX_PATH] = "";
  const UINT length = GetWindowsDirectoryA(windows, MAX_PATH);
  const std::string drive = length >= 2 && length < MAX_PATH && windows[1] == ':' ? std::string(windows, 2) : "C:";
  return ensureFolder(drive + "\\Vantorel");
}

std::string programPath() { return installFolder() + "\\vantr.exe"; }

bool isRunAtStartup() { return valueExists(HKEY_LOCAL_MACHINE, kRunKey, kRunValue); }

LONG addRunAtStartup() { return addStartValue(kRunKey, kRunValue, programPath() + " /logon"); }

LONG removeRunAtStartup() { return removeStartValue(kRunKey, kRunValue); }

LONG setRunAtStartup(bool on) { return on ? addRunAtStartup() : removeRunAtStartup(); }

bool isWindowsNTPlatform() {
  OSVERSIONINFOA version{};
  version.dwOSVersionInfoSize = sizeof version;
  return GetVersionExA(&version) && version.dwPlatformId == VER_PLATFORM_WIN32_NT;
}

ServiceSystem currentServiceSystem() { return ServiceSystem{isWindowsNTPlatform(), &openServiceControlManager}; }

bool isRunAsService(const ServiceSystem& system) {
  if (!system.windowsNT) return valueExists(HKEY_LOCAL_MACHINE, kRunServicesKey, kServiceName);
  ServiceHandle manager(system.openManager(SC_MANAGER_CONNECT));
  if (!manager) return false;
  return ServiceHandle(OpenServiceA(manager.get(), kServiceName, SERVICE_QUERY_STATUS)) ? true : false;
}

DWORD addRunAsService(HWND owner, const ServiceSystem& system) {
  if (isRunAsService(system)) return ERROR_SUCCESS;
  const std::string command = programPath() + " /service";
  if (!system.windowsNT) return static_cast<DWORD>(addStartValue(kRunServicesKey, kServiceName, command));

  ServiceHandle manager(system.openManager(SC_MANAGER_ALL_ACCESS));
  if (!manager) {
    const DWORD error = lastErrorOr(ERROR_ACCESS_DENIED);
    MessageBoxA(owner, kInstallNeedsAdministrator, kSystemIntegrationTitle, MB_OK);
    return error;
  }
  ServiceHandle service(CreateServiceA(manager.get(), kServiceName, kServiceName, SERVICE_ALL_ACCESS,
                                       SERVICE_WIN32_OWN_PROCESS | SERVICE_INTERACTIVE_PROCESS, SERVICE_AUTO_START,
                                       SERVICE_ERROR_IGNORE, command.c_str(), nullptr, nullptr, nullptr, nullptr,
                                       nullptr));
  if (service) return ERROR_SUCCESS;
  // A service that exists, though this account could not open it just now, is
  // what was asked for.
  const DWORD error = lastErrorOr(ERROR_ACCESS_DENIED);
  return error == ERROR_SERVICE_EXISTS ? ERROR_SUCCESS : error;
}

DWORD removeRunAsService(HWND owner, const ServiceSystem& system) {
  if (!system.windowsNT) return static_cast<DWORD>(removeStartValue(kRunServicesKey, kServiceName));

  ServiceHandle manager(system.openManager(SC_MANAGER_ALL_ACCESS));
  if (!manager) {
    const DWORD error = lastErrorOr(ERROR_ACCESS_DENIED);
    MessageBoxA(owner, kUninstallNeedsAdministrator, kSystemIntegrationTitle, MB_OK);
    return error;
  }
  ServiceHandle service(OpenServiceA(manager.get(), kServiceName, DELETE));
  if (!service) {
    const DWORD error = lastErrorOr(ERROR_ACCESS_DENIED);
    return error == ERROR_SERVICE_DOES_NOT_EXIST ? ERROR_SUCCESS : error;
  }
  return DeleteService(service.get()) ? ERROR_SUCCESS : lastErrorOr(ERROR_ACCESS_DENIED);
}

DWORD setRunAsService(HWND owner, bool on, const ServiceSystem& system) {
  return on ? addRunAsService(owner, system) : removeRunAsService(owner, system);
}

std::string desktopShortcutPath() {
  std::string desktop;
  // Up to MAX_PATH characters of folder; a longer value counts as unreadable.
  if (!readString(HKEY_CURRENT_USER, kShellFoldersKey, kDesktopValue, MAX_PATH + 1, desktop))
    desktop = "c:\\Windows\\Desktop";
  return desktop + "\\Vantorel.lnk";
}

// --- The Program Manager conversation ---------------------------------------

ProgramManagerConversation::ProgramManagerConversation(const char* application, const char* topic) {
  if (!createHidden(GetModuleHandleA(nullptr), kConversationClass)) return;
  // The atoms are ours for the length of the broadcast; servers that answer
  // send atoms of their own, which the acknowledgement handler deletes.
  GlobalAtom applicationAtom(GlobalAddAtomA(application));
  GlobalAtom topicAtom(GlobalAddAtomA(topic));
  if (!applicationAtom || !topicAtom) return;
  m_initiating = true;
  DWORD_PTR ignored = 0;
  SendMessageTimeoutA(HWND_BROADCAST, WM_DDE_INITIATE, reinterpret_cast<WPARAM>(m_hwnd),
                      MAKELPARAM(applicationAtom.get(), topicAtom.get()), SMTO_ABORTIFHUNG, kInitiateTimeoutMs,
                      &ignored);
  m_initiating = false;
}

ProgramManagerConversation::~ProgramManagerConversation() {
  if (m_server && m_hwnd) {
    // The server answers with its own WM_DDE_TERMINATE; only then is the
    // conversation over on both sides.
    m_closing = true;
    if (PostMessageA(m_server, WM_DDE_TERMINATE, reinterpret_cast<WPARAM>(m_hwnd), 0))
      waitFor([this] { return m_serverTerminated; }, kTerminateTimeoutMs);
  }
  // A command the server never answered: once the server has ended the
  // conversation it no longer reads it. Without that answer it is left alone,
  // since the server may still be reading it.
  if (m_pending && m_serverTerminated) GlobalFree(m_pending);
  if (m_hwnd) DestroyWindow(m_hwnd);
}

bool ProgramManagerConversation::execute(const std::string& commands, DWORD timeoutMs) {
  if (!m_server || m_pending) return false;
  HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_DDESHARE, commands.size() + 1);
  if (!memory) return false;
  void* text = GlobalLock(memory);
  if (!text) {
    GlobalFree(memory);
    return false;
  }
  std::memcpy(text, commands.c_str(), commands.size() + 1);
  GlobalUnlock(memory);

  const LPARAM packed = PackDDElParam(WM_DDE_EXECUTE, 0, reinterpret_cast<UINT_PTR>(memory));
  m_pending = memory;
  m_answered = false;
  m_accepted = false;
  if (!PostMessageA(m_server, WM_DDE_EXECUTE, reinterpret_cast<WPARAM>(m_hwnd), packed)) {
    FreeDDElParam(WM_DDE_EXECUTE, packed);
    GlobalFree(memory);
    m_pending = nullptr;
    return false;
  }
  waitFor([this] { return m_answered || !m_server; }, timeoutMs);
  return m_answered && m_accepted;
}

template <class Done>
bool ProgramManagerConversation::waitFor(Done done, DWORD timeoutMs) {
  const DWORD start = GetTickCount();
  for (;;) {
    // Only this window's DDE messages: whatever else the thread has queued
    // waits for its own loop. Sent messages are handled inside PeekMessage.
    MSG msg;
    while (PeekMessageA(&msg, m_hwnd, WM_DDE_FIRST, WM_DDE_LAST, PM_REMOVE)) DispatchMessageA(&msg);
    if (done()) return true;
    const DWORD waited = GetTickCount() - start;
    if (waited >= timeoutMs) return false;
    // Short slices, so that a wake-up taken by another queue check is never
    // waited out in full.
    const DWORD slice = timeoutMs - waited < 50 ? timeoutMs - waited : 50;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, slice, QS_POSTMESSAGE | QS_SENDMESSAGE);
  }
}

LRESULT ProgramManagerConversation::HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
  const HWND from = reinterpret_cast<HWND>(wParam);
  switch (msg) {
    case WM_DDE_ACK:
      if (m_initiating)
        onInitiateAck(from, lParam);
      else
        onExecuteAck(from, lParam);
      return 0;
    case WM_DDE_TERMINATE: onTerminate(from); return 0;
    default: return DefaultProc(msg, wParam, lParam);
  }
}

void ProgramManagerConversation::onInitiateAck(HWND from, LPARAM lParam) {
  // The answer's atoms were made for this side, which deletes them.
  GlobalDeleteAtom(LOWORD(lParam));
  GlobalDeleteAtom(HIWORD(lParam));
  if (!m_server) {
    m_server = from;
    return;
  }
  // One conversation is enough: every further server is let go at once.
  if (from != m_server) PostMessageA(from, WM_DDE_TERMINATE, reinterpret_cast<WPARAM>(m_hwnd), 0);
}

void ProgramManagerConversation::onExecuteAck(HWND from, LPARAM lParam) {
  UINT_PTR status = 0;
  UINT_PTR memory = 0;
  UnpackDDElParam(WM_DDE_ACK, lParam, &status, &memory);
  FreeDDElParam(WM_DDE_ACK, lParam);
  if (from != m_server || !m_pending) return;
  // The server hands the command's memory back with its answer, accepted or
  // not, and never frees it: the client does.
  GlobalFree(m_pending);
  m_pending = nullptr;
  m_answered = true;
  m_accepted = (status & 0x8000) != 0;  // DDEACK's fAck bit
}

void ProgramManagerConversation::onTerminate(HWND from) {
  // Servers let go after the initiate answer here too; they are not ours.
  if (from != m_server) return;
  m_serverTerminated = true;
  if (!m_closing) {
    // The server ended the conversation: answer, and talk to it no more.
    PostMessageA(from, WM_DDE_TERMINATE, reinterpret_cast<WPARAM>(m_hwnd), 0);
    m_server = nullptr;
  }
}

// --- Program Manager group commands -----------------------------------------

std::string addItemCommand(const std::string& itemCommand, const std::string& itemName) {
  return "[CreateGroup(\"Vantorel\")][AddItem(\"" + itemCommand + "\",\"" + itemName + "\")]";
}

std::string deleteItemCommand(const std::string& itemName) {
  return "[CreateGroup(\"Vantorel\")][DeleteItem(\"" + itemName + "\")]";
}

bool addToProgramGroup(ProgramManagerConversation& conversation, const std::string& itemCommand,
                       const std::string& itemName) {
  return conversation.connected() && conversation.execute(addItemCommand(itemCommand, itemName));
}

bool removeFromProgramGroup(ProgramManagerConversation& conversation, const std::string& itemName) {
  return conversation.connected() && conversation.execute(deleteItemCommand(itemName));
}

}  // namespace vantr
