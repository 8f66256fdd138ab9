// The main window's small modal dialogs: the one-line text dialog, the
// password prompt and the password settings, the Stop dialog, and the
// start-up banner.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vantr {

// The text of a dialog's control, at most limit characters of it.
std::string itemText(HWND dialog, int id, int limit);
// A drop-down list of a dialog: filled with texts and the entry selected (an
// index outside the list selects none); the selected entry's index (-1 for
// none) and text ("" for none).
void fillComboBox(HWND dialog, int id, const std::vector<std::string>& texts, int selected);
int comboSelection(HWND dialog, int id);
std::string comboText(HWND dialog, int id);

// LTextEditDlg: one edit box (100) preset with text, OK and Cancel. True and
// the edited text on OK.
bool LTextEditDlg(HWND owner, HINSTANCE instance, const std::string& title, std::string& text);

// PasswordDialog ("Enter Password", dialog 17): true once the typed text
// equals expected exactly; a wrong one says so, empties the edit and asks
// again until OK with the right text or Cancel.
bool PasswordDialog(HWND owner, HINSTANCE instance, const std::string& expected);

// Whether an action under the protection mask may go on: at once when the
// settings protect nothing of it or no password is set, else after the prompt.
bool CheckPassword(HWND owner, HINSTANCE instance, const std::string& settingsFile, uint32_t mask);

// PasswordSettingsDialog (dialog 16): the current password first, then the
// new password and protections, written after the new password is typed a
// second time.
void PasswordSettingsDialog(HWND owner, HINSTANCE instance, const std::string& settingsFile);

// The "Stop" dialog (resource 13): the lines to choose from; the indexes of
// the chosen lines on "Stop", none on Cancel.
std::vector<int> StopDialog(HWND owner, HINSTANCE instance, const std::vector<std::string>& lines);

// The start-up banner: a small window with the product's name and version.
class Banner {
 public:
  explicit Banner(HINSTANCE instance) : m_instance(instance) {}
  ~Banner() { close(); }
  Banner(const Banner&) = delete;
  Banner& operator=(const Banner&) = delete;

  // Shows the banner centred on owner's screen unless it is shown already;
  // false when it was shown already.
  bool show(HWND owner);
  void close();
  HWND hwnd() const { return m_hwnd; }

 private:
  HINSTANCE m_instance;
  HWND m_hwnd = nullptr;
};

}  // namespace vantr
