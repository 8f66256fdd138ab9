#include "app/installer_win.h"

#include <commctrl.h>
#include <objbase.h>
#include <shlobj.h>

#include <vector>

#include "install/payload.h"
#include "install/system_integration_win.h"
#include "resource.h"
#include "ui/product_text.h"
#include "win/handles_win.h"

namespace vantr {

namespace {

// The payload as read from this executable's own file.
class FileSource : public PayloadSource {
 public:
  explicit FileSource(HANDLE file) : m_file(file) {}
  size_t read(void* into, size_t size) override {
    DWORD got = 0;
    if (!ReadFile(m_file, into, static_cast<DWORD>(size), &got, nullptr)) return 0;
    return got;
  }

 private:
  HANDLE m_file;
};

// The install folder as the payload's destination. Folders inside a name are
// made as needed; a file that cannot be made is skipped.
class FolderTarget : public PayloadTarget {
 public:
  explicit FolderTarget(std::string folder) : m_folder(std::move(folder)) {}
  ~FolderTarget() override { close(); }
  bool create(const std::string& name) override {
    close();
    const std::string path = m_folder + "\\" + name;
    for (size_t at = path.find('\\', m_folder.size() + 1); at != std::string::npos; at = path.find('\\', at + 1))
      CreateDirectoryA(path.substr(0, at).c_str(), nullptr);
    m_file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    return m_file != INVALID_HANDLE_VALUE;
  }
  void write(const void* data, size_t size) override {
    DWORD wrote = 0;
    if (m_file != INVALID_HANDLE_VALUE) WriteFile(m_file, data, static_cast<DWORD>(size), &wrote, nullptr);
  }
  void close() override {
    if (m_file != INVALID_HANDLE_VALUE) CloseHandle(m_file);
    m_file = INVALID_HANDLE_VALUE;
  }

 private:
  std::string m_folder;
  HANDLE m_file = INVALID_HANDLE_VALUE;
};

// The trailer at the end of the open file, with the file positioned at the
// payload's start. A file too short for what its trailer claims gets a
// trailer that fails the check at once.
PayloadTrailer openPayload(HANDLE file) {
  const PayloadTrailer broken{0, 1};
  LARGE_INTEGER size{};
  if (!GetFileSizeEx(file, &size) || size.QuadPart < static_cast<LONGLONG>(kTrailerBytes)) return broken;
  LARGE_INTEGER at{};
  at.QuadPart = size.QuadPart - static_cast<LONGLONG>(kTrailerBytes);
  unsigned char bytes[kTrailerBytes];
  DWORD got = 0;
  if (!SetFilePointerEx(file, at, nullptr, FILE_BEGIN) || !ReadFile(file, bytes, sizeof bytes, &got, nullptr) ||
      got != sizeof bytes)
    return broken;
  const PayloadTrailer trailer = decodeTrailer(bytes);
  if (trailer.payloadBytes > static_cast<uint64_t>(at.QuadPart)) return broken;
  at.QuadPart -= static_cast<LONGLONG>(trailer.payloadBytes);
  if (!SetFilePointerEx(file, at, nullptr, FILE_BEGIN)) return broken;
  return trailer;
}

// The installer window's procedure; its user data is the flag Cancel sets.
INT_PTR CALLBACK installerProc(HWND dialog, UINT msg, WPARAM wParam, LPARAM lParam) {
  auto* cancelled = reinterpret_cast<bool*>(GetWindowLongPtrA(dialog, DWLP_USER));
  switch (msg) {
    case WM_INITDIALOG: SetWindowLongPtrA(dialog, DWLP_USER, lParam); return TRUE;
    case WM_COMMAND:
      if (LOWORD(wParam) == IDCANCEL && cancelled) *cancelled = true;
      return TRUE;
    case WM_CLOSE:
      if (cancelled) *cancelled = true;
      return TRUE;
    default: return FALSE;
  }
}

// Handles every message waiting, so the window repaints and Cancel works
// between copy steps.
void pumpMessages(HWND dialog, bool& cancelled) {
  MSG msg;
  while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
    if (msg.message == WM_QUIT) {
      cancelled = true;
      continue;
    }
    if (!IsDialogMessageA(dialog, &msg)) {
      TranslateMessage(&msg);
      DispatchMessageA(&msg);
    }
  }
}

// Adds a group item, by the target's short name when the shell refuses the
// long one (some shells cut an item's command at its first space).
void addGroupItem(ProgramManagerConversation& shell, const std::string& target, const char* name) {
  if (addToProgramGroup(shell, target, name)) return;
  char shortPath[MAX_PATH + 1] = {};
  const DWORD length = GetShortPathNameA(target.c_str(), shortPath, sizeof shortPath);
  if (length > 0 && length < sizeof shortPath && target != shortPath) addToProgramGroup(shell, shortPath, name);
}

// name = value under root\\key, the key made when missing (null name: the
// key's default value).
void setText(HKEY root, const std::string& key, const char* name, const std::string& value) {
  RegSetKeyValueA(root, key.c_str(), name, REG_SZ, value.c_str(), static_cast<DWORD>(value.size() + 1));
}

std::vector<std::string> subkeyNames(HKEY key) {
  std::vector<std::string> names;
  char name[256];
  DWORD length = sizeof name;
  for (DWORD index = 0; RegEnumKeyExA(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
       ++index, length = sizeof name)
    names.emplace_back(name, length);
  return names;
}

// Every registration of a completed installation, in this order.
void registerInstallation(const std::string& folder) {
  const std::string program = programPath();
  {
    ProgramManagerConversation shell;
    addGroupItem(shell, program, kOpenItem);
    addGroupItem(shell, installedManualPath(folder), kManualItem);
  }
  const std::string uninstaller = folder + "\\uninst.exe";
  CopyFileA(program.c_str(), uninstaller.c_str(), FALSE);
  setText(HKEY_LOCAL_MACHINE, kUninstallKey, "DisplayName", "Vantorel Uninstall");
  setText(HKEY_LOCAL_MACHINE, kUninstallKey, "UninstallString", uninstaller);
  createShortcut(desktopShortcutPath(), program, "/open", "Vantorel");
  addRunAtStartup();
  switchSoundSchemeOff();
  std::string commandLine = program + " /install";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  if (CreateProcessA(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(), &startup,
                     &info)) {
    CloseHandle(info.hThread);
    CloseHandle(info.hProcess);
  }
}

}  // namespace

std::string installedManualPath(const std::string& folder) {
  const std::string help = folder + "\\vantr.hlp";
  if (GetFileAttributesA(help.c_str()) != INVALID_FILE_ATTRIBUTES) return help;
  return folder + "\\manual\\index.html";
}

bool createShortcut(const std::string& linkPath, const std::string& target, const std::string& arguments,
                    const std::string& description) {
  const HRESULT initialized = CoInitialize(nullptr);
  bool saved = false;
  IShellLinkA* link = nullptr;
  if (SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                                 reinterpret_cast<void**>(&link)))) {
    link->SetPath(target.c_str());
    link->SetArguments(arguments.c_str());
    link->SetDescription(description.c_str());
    IPersistFile* file = nullptr;
    if (SUCCEEDED(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file)))) {
      wchar_t wide[MAX_PATH + 1] = {};
      MultiByteToWideChar(CP_ACP, 0, linkPath.c_str(), -1, wide, MAX_PATH);
      saved = SUCCEEDED(file->Save(wide, TRUE));
      file->Release();
    }
    link->Release();
  }
  if (SUCCEEDED(initialized)) CoUninitialize();
  return saved;
}

void switchSoundSchemeOff() {
  setText(HKEY_CURRENT_USER, "AppEvents\\Schemes", nullptr, ".None");
  RegKey apps;
  if (RegOpenKeyExA(HKEY_CURRENT_USER, "AppEvents\\Schemes\\Apps", 0, KEY_READ, apps.put()) != ERROR_SUCCESS) return;
  for (const std::string& app : subkeyNames(apps.get())) {
    RegKey events;
    if (RegOpenKeyExA(apps.get(), app.c_str(), 0, KEY_READ, events.put()) != ERROR_SUCCESS) continue;
    for (const std::string& event : subkeyNames(events.get())) setText(events.get(), event + "\\.Current", nullptr, "");
  }
}

int InstallApplication(HINSTANCE instance) {
  INITCOMMONCONTROLSEX controls{sizeof controls, ICC_PROGRESS_CLASS};
  InitCommonControlsEx(&controls);
  bool cancelled = false;
  HWND dialog = CreateDialogParamA(instance, MAKEINTRESOURCEA(IDD_INSTALLER), nullptr, installerProc,
                                   reinterpret_cast<LPARAM>(&cancelled));
  if (!dialog) return 1;
  SetDlgItemTextA(dialog, IDC_INSTALL_VERSION, infoLine(0).c_str());
  SendDlgItemMessageA(dialog, IDC_INSTALL_PROGRESS, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
  SendDlgItemMessageA(dialog, IDC_INSTALL_PROGRESS, PBM_SETPOS, 0, 0);
  ShowWindow(dialog, SW_SHOW);
  UpdateWindow(dialog);

  const std::string folder = installFolder();
  CreateDirectoryA((folder + "\\Schedules").c_str(), nullptr);
  CreateDirectoryA((folder + "\\Recordings").c_str(), nullptr);

  char self[MAX_PATH + 1] = {};
  GetModuleFileNameA(nullptr, self, MAX_PATH);
  KernelHandle file = fileHandle(CreateFileA(self, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
  FileSource source(file ? file.get() : INVALID_HANDLE_VALUE);
  FolderTarget target(folder);
  PayloadCopy copy(source, target, file ? openPayload(file.get()) : PayloadTrailer{0, 1});
  int shown = -1;
  while (!copy.finished() && !cancelled) {
    pumpMessages(dialog, cancelled);
    if (cancelled) break;
    copy.step();
    if (copy.percent() != shown) {
      shown = copy.percent();
      SendDlgItemMessageA(dialog, IDC_INSTALL_PROGRESS, PBM_SETPOS, static_cast<WPARAM>(shown), 0);
    }
  }
  target.close();
  file.reset();
  int result = 1;
  if (cancelled) {
    // Nothing is registered; what was copied stays.
  } else if (!copy.intact()) {
    MessageBoxA(dialog, kInstallErrorText, kInstallErrorTitle, MB_OK | MB_ICONEXCLAMATION);
  } else {
    registerInstallation(folder);
    result = 0;
  }
  DestroyWindow(dialog);
  return result;
}

int UninstallApplication(HINSTANCE /*instance*/) {
  if (MessageBoxA(nullptr, kUninstallQuestion, kUninstallTitle, MB_YESNO | MB_ICONSTOP) != IDYES) return 0;
  removeRunAsService(nullptr);
  removeRunAtStartup();
  DeleteFileA(desktopShortcutPath().c_str());
  RegDeleteKeyA(HKEY_LOCAL_MACHINE, kUninstallKey);
  {
    ProgramManagerConversation shell;
    removeFromProgramGroup(shell, kOpenItem);
    removeFromProgramGroup(shell, kManualItem);
    if (shell.connected()) shell.execute("[DeleteGroup(\"Vantorel\")]");
  }
  MessageBoxA(nullptr, kUninstallDoneText, kUninstallDoneTitle, MB_OK | MB_ICONINFORMATION);
  return 0;
}

}  // namespace vantr
