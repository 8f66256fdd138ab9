// The program's place in the system: its install folder, its start with
// Windows (at log-on through the Run key, or before any log-on as a service)
// and its entries in the shell (the desktop shortcut's path and the Program
// Manager group). The settings dialog, the installer and the uninstaller call
// these to write and remove the entries.
//
// Registry failures are silent: an operation returns the system's error code
// and changes nothing else. The only messages are the two administrator boxes
// of the service operations on Windows NT.
#pragma once

#include <windows.h>

#include <string>

#include "win/window_win.h"

namespace vantr {

// Where the entries live; the tests read them back from the same places.
inline constexpr char kCurrentVersionKey[] = "Software\\Microsoft\\Windows\\CurrentVersion";
inline constexpr char kProgramFilesValue[] = "ProgramFilesDir";
inline constexpr char kRunKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr char kRunValue[] = "VANTRRun";
inline constexpr char kRunServicesKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunServices";
inline constexpr char kServiceName[] = "VANTRService";
inline constexpr char kShellFoldersKey[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
inline constexpr char kDesktopValue[] = "Desktop";
// The title of the administrator boxes, by which a caller (or a test) finds them.
inline constexpr char kSystemIntegrationTitle[] = "Vantorel";

// The install folder: ProgramFilesDir + "\Korvel Works\Vantorel", or, when that
// value cannot be read, the drive of the Windows folder + "\Vantorel". Every
// level below the base is created when missing.
std::string installFolder();
// The install folder + "\vantr.exe": what the start entries run.
std::string programPath();

// The Run entry: the program starts at every log-on with "/logon".
bool isRunAtStartup();
// Writes the entry unless it is there already.
LONG addRunAtStartup();
// Deletes the entry; an entry that is not there is no failure.
LONG removeRunAtStartup();
LONG setRunAtStartup(bool on);

// How the service operations reach the system. windowsNT chooses between the
// service control manager and the RunServices entry of Windows 95/98;
// openManager opens this machine's service control manager with the access
// asked for (null with the reason in GetLastError when refused). The program
// uses currentServiceSystem(); tests replace a part to see the other branch or
// a refusing manager.
struct ServiceSystem {
  bool windowsNT;
  SC_HANDLE (*openManager)(DWORD access);
};
ServiceSystem currentServiceSystem();
// Whether this system is of the Windows NT family (by its platform id).
bool isWindowsNTPlatform();

// On NT: whether the service "VANTRService" can be opened; on 95/98: whether
// the RunServices entry exists.
bool isRunAsService(const ServiceSystem& system = currentServiceSystem());
// Installs the service (NT) or writes the RunServices entry (95/98) unless it
// is there already. When NT's service control manager refuses full access,
// the administrator box shows over owner and the manager's error returns.
DWORD addRunAsService(HWND owner, const ServiceSystem& system = currentServiceSystem());
// Deletes the service (NT) or the RunServices entry (95/98). One that is not
// there is removed already; a service that exists but cannot be opened is
// left alone and its error returns. A refused manager shows the
// administrator box, as above.
DWORD removeRunAsService(HWND owner, const ServiceSystem& system = currentServiceSystem());
DWORD setRunAsService(HWND owner, bool on, const ServiceSystem& system = currentServiceSystem());

// Where the desktop shortcut goes: the user's Desktop shell folder (a value
// of up to 260 characters; "c:\Windows\Desktop" when it cannot be read) +
// "\Vantorel.lnk".
std::string desktopShortcutPath();

// A DDE conversation with the Program Manager (or whatever shell answers its
// name). The constructor asks every top-level window for "PROGMAN" and keeps
// the first that answers; the destructor ends the conversation. It owns a
// hidden window, through which the server's answers arrive, so it lives on a
// thread that pumps messages (any thread that owns windows does).
class ProgramManagerConversation : public Window<ProgramManagerConversation> {
 public:
  // application and topic are "PROGMAN" for the shell; a test may talk to a
  // server of its own under another name.
  explicit ProgramManagerConversation(const char* application = "PROGMAN", const char* topic = "PROGMAN");
  ~ProgramManagerConversation();
  ProgramManagerConversation(const ProgramManagerConversation&) = delete;
  ProgramManagerConversation& operator=(const ProgramManagerConversation&) = delete;

  // Whether a server answered; every other call is refused without one.
  bool connected() const { return m_server != nullptr; }
  HWND server() const { return m_server; }
  // Sends one command text and waits (up to timeoutMs, handling the
  // conversation's messages) for the server's answer; true when the server
  // accepted it. One command at a time: while one is unanswered, the next is
  // refused.
  bool execute(const std::string& commands, DWORD timeoutMs = 5000);

 private:
  friend class Window<ProgramManagerConversation>;
  LRESULT HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam);
  void onInitiateAck(HWND from, LPARAM lParam);
  void onExecuteAck(HWND from, LPARAM lParam);
  void onTerminate(HWND from);
  // Handles this window's DDE messages until done() or the time is up.
  template <class Done>
  bool waitFor(Done done, DWORD timeoutMs);

  HWND m_server = nullptr;
  bool m_initiating = false;
  // The execute in flight: its memory, and the server's answer once it came.
  HGLOBAL m_pending = nullptr;
  bool m_answered = false;
  bool m_accepted = false;
  bool m_serverTerminated = false;
  // Set once this side has posted its WM_DDE_TERMINATE.
  bool m_closing = false;
};

// "[CreateGroup("Vantorel")][AddItem("command","name")]": the group entry
// that starts command under name.
std::string addItemCommand(const std::string& itemCommand, const std::string& itemName);
// "[CreateGroup("Vantorel")][DeleteItem("name")]".
std::string deleteItemCommand(const std::string& itemName);
// Send those to the Program Manager; false when no one answers or the
// command was refused.
bool addToProgramGroup(ProgramManagerConversation& conversation, const std::string& itemCommand,
                       const std::string& itemName);
bool removeFromProgramGroup(ProgramManagerConversation& conversation, const std::string& itemName);

}  // namespace vantr
