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

// Registers a window class unless one of that name is registered already in
// this module (a second window of the class, or a second start of the same
// object's class in one process).
inline bool registerWindowClass(const WNDCLASSEXA& wc) {
  WNDCLASSEXA existing{};
  existing.cbSize = sizeof existing;
  if (GetClassInfoExA(wc.hInstance, wc.lpszClassName, &existing)) return true;
  WNDCLASSEXA copy = wc;
  copy.cbSize = sizeof copy;
  return RegisterClassExA(&copy) != 0;
}

// What the window templates share: the handle, which the lookup above sets.
class WindowObject {
 public:
  HWND hwnd() const { return m_hwnd; }

 protected:
  template <class T>
  friend T* attachedObject(HWND, T*);
  template <class T>
  friend void detachObject(HWND, T*);
  LRESULT DefaultProc(UINT msg, WPARAM wParam, LPARAM lParam) { return DefWindowProcA(m_hwnd, msg, wParam, lParam); }
  HWND m_hwnd = nullptr;
};

template <class Derived>
class Window : public WindowObject {
 protected:
  // A hidden top-level window (no style, no parent, no title) of a class
  // registered here once per process with 4 bytes of window data; engines use
  // one to receive their devices' and workers' messages on their own thread.
  bool createHidden(HINSTANCE instance, const char* className) {
    WNDCLASSEXA wc{};
    wc.lpfnWndProc = &Window::StaticProc;
    wc.cbWndExtra = 4;
    wc.hInstance = instance;
    wc.lpszClassName = className;
    if (!registerWindowClass(wc)) return false;
    return CreateWindowExA(0, className, "", 0, 0, 0, 0, 0, nullptr, nullptr, instance, static_cast<Derived*>(this)) !=
           nullptr;
  }

  static LRESULT CALLBACK StaticProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    Derived* self = attachedObject<Derived>(
        hwnd,
        msg == WM_NCCREATE ? static_cast<Derived*>(reinterpret_cast<CREATESTRUCTA*>(lParam)->lpCreateParams) : nullptr);
    if (!self) return DefWindowProcA(hwnd, msg, wParam, lParam);
    const LRESULT result = self->HandleMessage(msg, wParam, lParam);
    if (msg == WM_NCDESTROY) detachObject(hwnd, self);
    return result;
  }
};

template <class Derived>
class Dialog : public WindowObject {
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
};

// A modal dialog that edits settings: open() fills its controls, OK calls
// save() and closes, Cancel closes, any other command goes to command(id),
// and closing() runs as the window goes, however it was closed.
template <class Derived>
class FormDialog : public Dialog<Derived> {
 public:
  bool runForm(HWND owner, HINSTANCE instance, int resource) {
    return DialogBoxParamA(instance, MAKEINTRESOURCEA(resource), owner, &Dialog<Derived>::StaticProc,
                           reinterpret_cast<LPARAM>(static_cast<Derived*>(this))) == IDOK;
  }
  INT_PTR HandleMessage(UINT msg, WPARAM wParam, LPARAM) {
    Derived& self = static_cast<Derived&>(*this);
    switch (msg) {
      case WM_INITDIALOG: self.open(); return TRUE;
      case WM_DESTROY: self.closing(); return TRUE;
      case WM_COMMAND: break;
      default: return FALSE;
    }
    const int id = LOWORD(wParam);
    if (id == IDOK) {
      self.save();
      EndDialog(this->m_hwnd, IDOK);
    } else if (id == IDCANCEL) {
      EndDialog(this->m_hwnd, IDCANCEL);
    } else {
      self.command(id);
    }
    return TRUE;
  }

 protected:
  void command(int) {}
  void closing() {}
};

// A custom control that dialog templates create by class name: its object is
// made at WM_NCCREATE and deleted at WM_NCDESTROY, and lives in the first
// bytes of the window's extra data (GWLP_USERDATA stays free for whoever uses
// the control). The class must reserve at least a pointer's worth of extra data.
template <class Derived>
class Control : public WindowObject {
 public:
  // The object of one of these controls, or null for any other window.
  static Derived* of(HWND hwnd) {
    char name[64];
    if (!hwnd || !GetClassNameA(hwnd, name, sizeof name) || lstrcmpiA(name, Derived::kClassName) != 0) return nullptr;
    return reinterpret_cast<Derived*>(GetWindowLongPtrA(hwnd, 0));
  }

 protected:
  static LRESULT CALLBACK StaticProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    Derived* self = reinterpret_cast<Derived*>(GetWindowLongPtrA(hwnd, 0));
    if (msg == WM_NCCREATE && !self) {
      self = new Derived;
      self->m_hwnd = hwnd;
      SetWindowLongPtrA(hwnd, 0, reinterpret_cast<LONG_PTR>(self));
    }
    if (!self) return DefWindowProcA(hwnd, msg, wParam, lParam);
    const LRESULT result = self->HandleMessage(msg, wParam, lParam);
    if (msg == WM_NCDESTROY) {
      SetWindowLongPtrA(hwnd, 0, 0);
      delete self;
    }
    return result;
  }

  // WM_PAINT and WM_PRINTCLIENT (a DC in wParam) both end in Derived::paint.
  LRESULT OnPaint(UINT msg, WPARAM wParam) {
    if (msg == WM_PRINTCLIENT) {
      static_cast<Derived*>(this)->paint(reinterpret_cast<HDC>(wParam));
      return 0;
    }
    PAINTSTRUCT ps;
    HDC dc = BeginPaint(m_hwnd, &ps);
    static_cast<Derived*>(this)->paint(dc);
    EndPaint(m_hwnd, &ps);
    return 0;
  }
};

}  // namespace vantr
