// Scoped owners of the Windows handles the program makes: each closes, frees,
// unlocks or deselects what it holds in its destructor, so every path out of a
// function (an early return, a failed step) gives the handle back exactly once.
#pragma once

#include <windows.h>

#include <utility>

namespace vantr {

// Owns one handle and gives it back through Traits::close. Traits names the
// handle type and its empty value (what "no handle" looks like for that kind).
template <class Traits>
class UniqueHandle {
 public:
  using Handle = typename Traits::Handle;

  UniqueHandle() = default;
  explicit UniqueHandle(Handle handle) : m_handle(handle) {}
  ~UniqueHandle() { reset(); }
  UniqueHandle(UniqueHandle&& other) noexcept : m_handle(other.release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;

  void reset(Handle handle = Traits::empty()) {
    if (m_handle != Traits::empty()) Traits::close(m_handle);
    m_handle = handle;
  }
  // Hands the handle over to someone else, who gives it back from now on.
  Handle release() { return std::exchange(m_handle, Traits::empty()); }
  Handle get() const { return m_handle; }
  explicit operator bool() const { return m_handle != Traits::empty(); }
  // For functions that hand back a handle through a pointer.
  Handle* put() {
    reset();
    return &m_handle;
  }

 private:
  Handle m_handle = Traits::empty();
};

struct KernelHandleTraits {
  using Handle = HANDLE;
  static Handle empty() { return nullptr; }
  static void close(Handle h) { CloseHandle(h); }
};
template <class Handle_>
struct GdiObjectTraits {
  using Handle = Handle_;
  static Handle empty() { return nullptr; }
  static void close(Handle h) { DeleteObject(h); }
};
struct MemoryDcTraits {
  using Handle = HDC;
  static Handle empty() { return nullptr; }
  static void close(Handle h) { DeleteDC(h); }
};
struct MenuTraits {
  using Handle = HMENU;
  static Handle empty() { return nullptr; }
  static void close(Handle h) { DestroyMenu(h); }
};
struct RegKeyTraits {
  using Handle = HKEY;
  static Handle empty() { return nullptr; }
  static void close(Handle h) { RegCloseKey(h); }
};
struct ServiceHandleTraits {
  using Handle = SC_HANDLE;
  static Handle empty() { return nullptr; }
  static void close(Handle h) { CloseServiceHandle(h); }
};
struct GlobalAtomTraits {
  using Handle = ATOM;
  static Handle empty() { return 0; }
  static void close(Handle h) { GlobalDeleteAtom(h); }
};

using KernelHandle = UniqueHandle<KernelHandleTraits>;
// CreateFile and a few others answer INVALID_HANDLE_VALUE, not null, for "none".
inline KernelHandle fileHandle(HANDLE h) { return KernelHandle(h == INVALID_HANDLE_VALUE ? nullptr : h); }
// A brush, bitmap, pen or font made at run time.
template <class Handle>
using GdiObject = UniqueHandle<GdiObjectTraits<Handle>>;
// A DC made by CreateCompatibleDC.
using MemoryDc = UniqueHandle<MemoryDcTraits>;
// A menu made at run time (a popup menu) or loaded and not yet given to a window.
using OwnedMenu = UniqueHandle<MenuTraits>;
using RegKey = UniqueHandle<RegKeyTraits>;
using ServiceHandle = UniqueHandle<ServiceHandleTraits>;
// A global atom that this side deletes unless it hands it on (release()).
using GlobalAtom = UniqueHandle<GlobalAtomTraits>;

// Selects a GDI object into a DC for one scope and puts the old one back, so
// that the DC never holds a deleted object.
class SelectedObject {
 public:
  SelectedObject(HDC dc, HGDIOBJ object) : m_dc(dc), m_old(SelectObject(dc, object)) {}
  ~SelectedObject() { SelectObject(m_dc, m_old); }
  SelectedObject(const SelectedObject&) = delete;
  SelectedObject& operator=(const SelectedObject&) = delete;

 private:
  HDC m_dc;
  HGDIOBJ m_old;
};

// Global memory allocated movable and kept locked for its whole life, as wave
// devices want their buffers: unlocked and freed by the destructor.
class GlobalBuffer {
 public:
  GlobalBuffer() = default;
  explicit GlobalBuffer(size_t bytes) {
    m_memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_SHARE, bytes);
    m_data = m_memory ? GlobalLock(m_memory) : nullptr;
    if (!m_data) reset();
  }
  ~GlobalBuffer() { reset(); }
  GlobalBuffer(GlobalBuffer&& other) noexcept
      : m_memory(std::exchange(other.m_memory, nullptr)), m_data(std::exchange(other.m_data, nullptr)) {}
  GlobalBuffer& operator=(GlobalBuffer&& other) noexcept {
    if (this != &other) {
      reset();
      m_memory = std::exchange(other.m_memory, nullptr);
      m_data = std::exchange(other.m_data, nullptr);
    }
    return *this;
  }
  GlobalBuffer(const GlobalBuffer&) = delete;
  GlobalBuffer& operator=(const GlobalBuffer&) = delete;

  void reset() {
    if (m_data) GlobalUnlock(m_memory);
    if (m_memory) GlobalFree(m_memory);
    m_memory = nullptr;
    m_data = nullptr;
  }
  // The locked bytes, or null when the allocation failed.
  void* data() const { return m_data; }
  explicit operator bool() const { return m_data != nullptr; }

 private:
  HGLOBAL m_memory = nullptr;
  void* m_data = nullptr;
};

}  // namespace vantr
