#include "ui/automation_target_win.h"

#include "win/handles_win.h"
#include "win/messages.h"

namespace vantr {

namespace {

// The longest name an atom holds.
constexpr size_t kMaxAtomName = 255;
// Atoms below this are integer atoms ("#123"), which hold a number, not text.
constexpr ATOM kFirstStringAtom = 0xC000;

std::string atomName(ATOM atom) {
  char text[kMaxAtomName + 1] = {};
  const UINT length = GlobalGetAtomNameA(atom, text, sizeof text);
  return std::string(text, length);
}

}  // namespace

bool WindowAutomationTarget::post(int command, const std::string& name) {
  if (name.empty() || name.size() > kMaxAtomName) return false;
  GlobalAtom atom(GlobalAddAtomA(name.c_str()));
  if (!atom) return false;
  // "#" and a number make an integer atom; its text comes back as "#" and
  // the number as written without leading zeros, which may be another name
  // ("#007" returns as "#7"). Such a name is dropped rather than changed.
  if (atom.get() < kFirstStringAtom && atomName(atom.get()) != name) return false;
  if (!PostMessageA(m_window, kMsgAutomationInput, static_cast<WPARAM>(command), static_cast<LPARAM>(atom.get())))
    return false;
  // The window deletes it once it has read the name.
  atom.release();
  return true;
}

bool takeAutomationName(LPARAM atom, std::string& name) {
  const ATOM value = static_cast<ATOM>(atom);
  if (value == 0 || static_cast<LPARAM>(value) != atom) return false;
  name = atomName(value);
  GlobalDeleteAtom(value);
  return !name.empty();
}

}  // namespace vantr
