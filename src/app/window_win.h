// Window classes as small C++ objects: the static procedure finds the object
// stored at WM_NCCREATE (or WM_INITDIALOG for dialogs) in GWLP_USERDATA and
// hands every message to its HandleMessage.
#pragma once

#include <windows.h>

namespace vantr {

template <class Derived>
class Window {
 public:
  HWND hwnd() const { return m_hwnd; }

 protected:
  static LRESULT CALLBACK StaticProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    Derived* self = nullptr;
    if (msg == WM_NCCREATE) {
      self = static_cast<Derived*>(reinterpret_cast<CREATESTRUCTA*>(lParam)->lpCreateParams);
      self->m_hwnd = hwnd;
      SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    } else {
      self = reinterpret_cast<Derived*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    }
    if (!self) return DefWindowProcA(hwnd, msg, wParam, lParam);
    const LRESULT result = self->HandleMessage(msg, wParam, lParam);
    if (msg == WM_NCDESTROY) {
      SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
      self->m_hwnd = nullptr;
    }
    return result;
  }

  LRESULT DefaultProc(UINT msg, WPARAM wParam, LPARAM lParam) { return DefWindowProcA(m_hwnd, msg, wParam, lParam); }

  HWND m_hwnd = nullptr;
};

template <class Derived>
class Dialog {
 public:
  HWND hwnd() const { return m_hwnd; }

 protected:
  // HandleMessage returns whether it handled the message; a result for the
  // dialog manager goes through DWLP_MSGRESULT.
  static INT_PTR CALLBACK StaticProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    Derived* self = nullptr;
    if (msg == WM_INITDIALOG) {
      self = reinterpret_cast<Derived*>(lParam);
      self->m_hwnd = hwnd;
      SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    } else {
      self = reinterpret_cast<Derived*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    }
    if (!self) return FALSE;
    const INT_PTR handled = self->HandleMessage(msg, wParam, lParam);
    if (msg == WM_NCDESTROY) {
      SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
      self->m_hwnd = nullptr;
    }
    return handled;
  }

  HWND m_hwnd = nullptr;
};

// Owns an HMENU made at run time (a popup menu) and destroys it.
class OwnedMenu {
 public:
  explicit OwnedMenu(HMENU menu) : m_menu(menu) {}
  ~OwnedMenu() {
    if (m_menu) DestroyMenu(m_menu);
  }
  OwnedMenu(const OwnedMenu&) = delete;
  OwnedMenu& operator=(const OwnedMenu&) = delete;
  HMENU get() const { return m_menu; }

 private:
  HMENU m_menu;
};

}  // namespace vantr
