// A modal dialog box of vantr.exe as another process drives it: found by
// its title, its controls read and set through their ids, its buttons
// pressed. Texts are read as UTF-16: ANSI reads across processes are broken
// in Wine 8.
#pragma once

#include <windows.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "vantr_process.h"

namespace vantr::e2e {

// A modal box of the program, found by its title or its window.
class Box {
 public:
  explicit Box(const char* title) {
    waitFor([&] { return (m_hwnd = findBox(title)) != nullptr; });
  }
  explicit Box(HWND hwnd) : m_hwnd(hwnd) {}
  explicit operator bool() const { return m_hwnd != nullptr; }
  HWND hwnd() const { return m_hwnd; }
  HWND item(int id) const { return GetDlgItem(m_hwnd, id); }
  std::string text(int id) const { return textOf(item(id)); }
  static std::string textOf(HWND window) {
    wchar_t wide[512] = {};
    SendMessageW(window, WM_GETTEXT, 512, reinterpret_cast<LPARAM>(wide));
    char narrow[1024] = {};
    WideCharToMultiByte(CP_ACP, 0, wide, -1, narrow, sizeof narrow, nullptr, nullptr);
    return narrow;
  }
  void set(int id, const std::string& text) const {
    SendMessageA(item(id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
  }
  bool checked(int id) const { return SendMessageA(item(id), BM_GETCHECK, 0, 0) == BST_CHECKED; }
  bool enabled(int id) const { return IsWindowEnabled(item(id)) != FALSE; }
  // A click, so radio buttons clear their partners and the dialog hears it.
  // Only for buttons whose command opens no modal box.
  void click(int id) const { SendMessageA(item(id), BM_CLICK, 0, 0); }
  // A click whose command opens a modal box: posted, so this process does
  // not wait inside the box's message loop.
  void post(int id) const { PostMessageA(item(id), BM_CLICK, 0, 0); }
  int selection(int id) const { return static_cast<int>(SendMessageA(item(id), CB_GETCURSEL, 0, 0)); }
  std::vector<std::string> entries(int id) const { return comboEntries(item(id)); }
  static std::vector<std::string> comboEntries(HWND combo) {
    std::vector<std::string> out;
    const LRESULT count = SendMessageW(combo, CB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
      wchar_t wide[256] = {};
      SendMessageW(combo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(wide));
      char narrow[512] = {};
      WideCharToMultiByte(CP_ACP, 0, wide, -1, narrow, sizeof narrow, nullptr, nullptr);
      out.push_back(narrow);
    }
    return out;
  }
  void choose(int id, int index) const { SendMessageA(item(id), CB_SETCURSEL, index, 0); }
  // Presses a button and waits for the box to close.
  bool press(int id) const {
    PostMessageA(item(id), BM_CLICK, 0, 0);
    return waitFor([&] { return !IsWindow(m_hwnd) || !IsWindowVisible(m_hwnd); });
  }

 private:
  HWND m_hwnd = nullptr;
};

// A whole file as bytes ("" when it cannot be read).
inline std::string fileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace vantr::e2e
