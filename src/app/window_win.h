// Window classes as small C++ objects: the static procedure finds the object
// stored at WM_NCCREATE (or WM_INITDIALOG for dialogs) in GWLP_USERDATA and
// hands every message to its HandleMessage.
#pragma once

#include <windows.h>

namespace vantr {

// The object of a window: stored in GWLP_USERDATA when the window is being
// created (created is not null), looked up there afterwards.
template <class T>
T* attachedObject(HWND hwnd, T* created) {
  if (created) {
    created->m_hwnd = hwnd;
    SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
    return created;
  }
  return reinterpret_cast<T*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
}

// The window is gone: the object no longer has one.
template <class T>
void detachObject(HWND hwnd, T* self) {
  SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
  self->m_hwnd = nullptr;
}

template <class Derived>
class Window {
 public:
  HWND hwnd() const { return m_hwnd; }

 protected:
  static LRESULT CALLBACK StaticProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    Derived* self = attachedObject<Derived>(
        hwnd,
        msg == WM_NCCREATE ? static_cast<Derived*>(reinterpret_cast<CREATESTRUCTA*>(lParam)->lpCreateParams) : nullptr);
    if (!self) return DefWindowProcA(hwnd, msg, wParam, lParam);
    const LRESULT result = self->HandleMessage(msg, wParam, lParam);
    if (msg == WM_NCDESTROY) detachObject(hwnd, self);
    return result;
  }

  LRESULT DefaultProc(UINT msg, WPARAM wParam, LPARAM lParam) { return DefWindowProcA(m_hwnd, msg, wParam, lParam); }

  template <class T>
  friend T* attachedObject(HWND, T*);
  template <class T>
  friend void detachObject(HWND, T*);
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
    Derived* self = attachedObject<Derived>(hwnd, msg == WM_INITDIALOG ? reinterpret_cast<Derived*>(lParam) : nullptr);
    if (!self) return FALSE;
    const INT_PTR handled = self->HandleMessage(msg, wParam, lParam);
    if (msg == WM_NCDESTROY) detachObject(hwnd, self);
    return handled;
  }

  template <class T>
  friend T* attachedObject(HWND, T*);
  template <class T>
  friend void detachObject(HWND, T*);
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
