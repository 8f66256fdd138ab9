#include "ui/small_dialogs_win.h"

#include "resource.h"
#include "store/settings.h"
#include "ui/main_commands.h"
#include "ui/product_text.h"
#include "win/window_win.h"

namespace vantr {

std::string itemText(HWND dialog, int id, int limit) {
  std::string text(static_cast<size_t>(limit) + 1, '\0');
  text.resize(static_cast<size_t>(GetDlgItemTextA(dialog, id, text.data(), limit + 1)));
  return text;
}

void fillComboBox(HWND dialog, int id, const std::vector<std::string>& texts, int selected) {
  HWND list = GetDlgItem(dialog, id);
  SendMessageA(list, WM_SETREDRAW, FALSE, 0);
  for (const std::string& text : texts) SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
  SendMessageA(list, WM_SETREDRAW, TRUE, 0);
  SendMessageA(list, CB_SETCURSEL, static_cast<WPARAM>(selected), 0);
}

int comboSelection(HWND dialog, int id) {
  return static_cast<int>(SendDlgItemMessageA(dialog, id, CB_GETCURSEL, 0, 0));
}

std::string comboText(HWND dialog, int id) {
  const int index = comboSelection(dialog, id);
  if (index < 0) return {};
  const LRESULT length = SendDlgItemMessageA(dialog, id, CB_GETLBTEXTLEN, index, 0);
  if (length <= 0) return {};
  std::string text(static_cast<size_t>(length) + 1, '\0');
  SendDlgItemMessageA(dialog, id, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<size_t>(length));
  return text;
}

namespace {

constexpr int kMaxPassword = 255;

class TextEditDialog : public Dialog<TextEditDialog> {
 public:
  TextEditDialog(const std::string& title, std::string& text) : m_title(title), m_text(text) {}
  bool run(HWND owner, HINSTANCE instance) {
    return DialogBoxParamA(instance, MAKEINTRESOURCEA(IDD_TEXT_EDIT), owner, &StaticProc,
                           reinterpret_cast<LPARAM>(this)) == IDOK;
  }
  INT_PTR HandleMessage(UINT msg, WPARAM wParam, LPARAM) {
    if (msg == WM_INITDIALOG) {
      SetWindowTextA(m_hwnd, m_title.c_str());
      SetDlgItemTextA(m_hwnd, IDC_TEXT_EDIT, m_text.c_str());
      return TRUE;
    }
    if (msg != WM_COMMAND) return FALSE;
    if (LOWORD(wParam) == IDOK) {
      m_text = itemText(m_hwnd, IDC_TEXT_EDIT, 1024);
      EndDialog(m_hwnd, IDOK);
    } else if (LOWORD(wParam) == IDCANCEL) {
      EndDialog(m_hwnd, IDCANCEL);
    }
    return TRUE;
  }

 private:
  const std::string& m_title;
  std::string& m_text;
};

class PasswordPrompt : public Dialog<PasswordPrompt> {
 public:
  explicit PasswordPrompt(const std::string& expected) : m_expected(expected) {}
  bool run(HWND owner, HINSTANCE instance) {
    return DialogBoxParamA(instance, MAKEINTRESOURCEA(IDD_PASSWORD), owner, &StaticProc,
                           reinterpret_cast<LPARAM>(this)) == IDOK;
  }
  INT_PTR HandleMessage(UINT msg, WPARAM wParam, LPARAM) {
    if (msg == WM_INITDIALOG) {
      SendDlgItemMessageA(m_hwnd, IDC_PASSWORD_EDIT, EM_LIMITTEXT, kMaxPassword, 0);
      return TRUE;
    }
    if (msg != WM_COMMAND) return FALSE;
    if (LOWORD(wParam) == IDOK) {
      if (itemText(m_hwnd, IDC_PASSWORD_EDIT, kMaxPassword) == m_expected) {
        EndDialog(m_hwnd, IDOK);
      } else {
        MessageBoxA(m_hwnd, "The password you entered is not correct.", "Invalid Password", MB_OK | MB_ICONEXCLAMATION);
        SetDlgItemTextA(m_hwnd, IDC_PASSWORD_EDIT, "");
        SetFocus(GetDlgItem(m_hwnd, IDC_PASSWORD_EDIT));
      }
    } else if (LOWORD(wParam) == IDCANCEL) {
      EndDialog(m_hwnd, IDCANCEL);
    }
    return TRUE;
  }

 private:
  const std::string& m_expected;
};

constexpr struct {
  int box;
  uint32_t bit;
} kLockBoxes[] = {{IDC_LOCK_HARDWARE, kLockHardware},
                  {IDC_LOCK_FILES, kLockFileManagement},
                  {IDC_LOCK_SCHEDULING, kLockScheduling},
                  {IDC_LOCK_EXIT, kLockExit}};

class PasswordSettings : public Dialog<PasswordSettings> {
 public:
  PasswordSettings(HINSTANCE instance, const std::string& settingsFile)
      : m_instance(instance), m_settingsFile(settingsFile) {}
  void run(HWND owner) {
    DialogBoxParamA(m_instance, MAKEINTRESOURCEA(IDD_PASSWORD_SETTINGS), owner, &StaticProc,
                    reinterpret_cast<LPARAM>(this));
  }
  INT_PTR HandleMessage(UINT msg, WPARAM wParam, LPARAM) {
    if (msg == WM_INITDIALOG) {
      SendDlgItemMessageA(m_hwnd, IDC_PASSWORD_EDIT, EM_LIMITTEXT, kMaxPassword, 0);
      SetDlgItemTextA(m_hwnd, IDC_PASSWORD_EDIT, readText(m_settingsFile, "security", "password", "").c_str());
      const uint32_t flags = static_cast<uint32_t>(readInt(m_settingsFile, "security", "flags", 0));
      for (const auto& lock : kLockBoxes)
        CheckDlgButton(m_hwnd, lock.box, (flags & lock.bit) ? BST_CHECKED : BST_UNCHECKED);
      return TRUE;
    }
    if (msg != WM_COMMAND) return FALSE;
    if (LOWORD(wParam) == IDOK) {
      uint32_t flags = 0;
      for (const auto& lock : kLockBoxes)
        if (IsDlgButtonChecked(m_hwnd, lock.box) == BST_CHECKED) flags |= lock.bit;
      const std::string password = itemText(m_hwnd, IDC_PASSWORD_EDIT, kMaxPassword);
      // The new password is typed a second time; without it nothing is saved.
      if (PasswordDialog(m_hwnd, m_instance, password)) {
        writeText(m_settingsFile, "security", "password", password);
        writeInt(m_settingsFile, "security", "flags", static_cast<int32_t>(flags));
      }
      EndDialog(m_hwnd, IDOK);
    } else if (LOWORD(wParam) == IDCANCEL) {
      EndDialog(m_hwnd, IDCANCEL);
    }
    return TRUE;
  }

 private:
  HINSTANCE m_instance;
  const std::string& m_settingsFile;
};

class StopChoice : public Dialog<StopChoice> {
 public:
  explicit StopChoice(const std::vector<std::string>& lines) : m_lines(lines) {}
  std::vector<int> run(HWND owner, HINSTANCE instance) {
    DialogBoxParamA(instance, MAKEINTRESOURCEA(IDD_STOP), owner, &StaticProc, reinterpret_cast<LPARAM>(this));
    return m_chosen;
  }
  INT_PTR HandleMessage(UINT msg, WPARAM wParam, LPARAM) {
    if (msg == WM_INITDIALOG) {
      // Added in order (the list is not sorted), so a line's index is its place.
      for (const std::string& line : m_lines)
        SendDlgItemMessageA(m_hwnd, IDC_STOP_LIST, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
      return TRUE;
    }
    if (msg != WM_COMMAND) return FALSE;
    if (LOWORD(wParam) == IDOK) {
      for (int i = 0; i < static_cast<int>(m_lines.size()); ++i)
        if (SendDlgItemMessageA(m_hwnd, IDC_STOP_LIST, LB_GETSEL, i, 0) > 0) m_chosen.push_back(i);
      EndDialog(m_hwnd, IDOK);
    } else if (LOWORD(wParam) == IDCANCEL) {
      EndDialog(m_hwnd, IDCANCEL);
    }
    return TRUE;
  }

 private:
  const std::vector<std::string>& m_lines;
  std::vector<int> m_chosen;
};

INT_PTR CALLBACK bannerProc(HWND, UINT msg, WPARAM, LPARAM) { return msg == WM_INITDIALOG; }

}  // namespace

bool LTextEditDlg(HWND owner, HINSTANCE instance, const std::string& title, std::string& text) {
  std::string edited = text;
  if (!TextEditDialog(title, edited).run(owner, instance)) return false;
  text = edited;
  return true;
}

bool PasswordDialog(HWND owner, HINSTANCE instance, const std::string& expected) {
  return PasswordPrompt(expected).run(owner, instance);
}

bool CheckPassword(HWND owner, HINSTANCE instance, const std::string& settingsFile, uint32_t mask) {
  const uint32_t flags = static_cast<uint32_t>(readInt(settingsFile, "security", "flags", 0));
  const std::string password = readText(settingsFile, "security", "password", "");
  if (!passwordRequired(flags, password, mask)) return true;
  return PasswordDialog(owner, instance, password);
}

void PasswordSettingsDialog(HWND owner, HINSTANCE instance, const std::string& settingsFile) {
  if (!CheckPassword(owner, instance, settingsFile, kLockEverything)) return;
  PasswordSettings(instance, settingsFile).run(owner);
}

std::vector<int> StopDialog(HWND owner, HINSTANCE instance, const std::vector<std::string>& lines) {
  return StopChoice(lines).run(owner, instance);
}

bool Banner::show(HWND owner) {
  if (m_hwnd) return false;
  m_hwnd = CreateDialogParamA(m_instance, MAKEINTRESOURCEA(IDD_BANNER), owner, &bannerProc, 0);
  if (!m_hwnd) return false;
  SetDlgItemTextA(m_hwnd, IDC_BANNER_TEXT, productBanner().c_str());
  RECT r;
  GetWindowRect(m_hwnd, &r);
  const int width = r.right - r.left, height = r.bottom - r.top;
  SetWindowPos(m_hwnd, HWND_TOP, (GetSystemMetrics(SM_CXSCREEN) - width) / 2,
               (GetSystemMetrics(SM_CYSCREEN) - height) / 2, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW | SWP_NOACTIVATE);
  return true;
}

void Banner::close() {
  if (m_hwnd) DestroyWindow(m_hwnd);
  m_hwnd = nullptr;
}

}  // namespace vantr
