#include "ui/play_control_win.h"

#include <commctrl.h>

#include <optional>
#include <string>

#include "base/time_position.h"
#include "resource.h"
#include "ui/db_controls_win.h"
#include "ui/play_control.h"
#include "win/handles_win.h"
#include "win/window_win.h"

namespace vantr {

namespace {

struct HookTraits {
  using Handle = HHOOK;
  static Handle empty() { return nullptr; }
  static void close(Handle h) { UnhookWindowsHookEx(h); }
};
using WindowsHook = UniqueHandle<HookTraits>;

struct Button {
  int id;
  PlayCommand command;
  const char* bitmap;
  const char* tip;
};
constexpr Button kButtons[] = {
    {IDC_PC_PLAY, PlayCommand::Play, "PlayBitmap", "Play (F9)"},
    {IDC_PC_SCRUB, PlayCommand::Scrub, "ScrubBitmap", "Scrub (Space Bar)"},
    {IDC_PC_PAUSE, PlayCommand::Pause, "PauseBitmap", "Pause (Pause/Break)"},
    {IDC_PC_START, PlayCommand::Start, "StartBitmap", "Go to Start (Home)"},
    {IDC_PC_REWIND, PlayCommand::Rewind, "RewindBitmap", "Rewind (<-)"},
    {IDC_PC_FORWARD, PlayCommand::Forward, "ForwardBitmap", "Fast Forward (->)"},
};
constexpr size_t kButtonCount = sizeof kButtons / sizeof kButtons[0];
constexpr int kBitmapWidth = 32, kBitmapHeight = 24;

constexpr struct {
  WPARAM key;
  int button;
} kKeys[] = {{VK_F9, IDC_PC_PLAY},    {VK_SPACE, IDC_PC_SCRUB}, {VK_PAUSE, IDC_PC_PAUSE},
             {VK_HOME, IDC_PC_START}, {VK_LEFT, IDC_PC_REWIND}, {VK_RIGHT, IDC_PC_FORWARD}};

std::optional<PlayCommand> commandOf(int id) {
  for (const Button& b : kButtons)
    if (b.id == id) return b.command;
  return std::nullopt;
}

class PlayControlDialog;
// The window open on this thread, for the keyboard hook; one at a time.
thread_local PlayControlDialog* t_open = nullptr;

class PlayControlDialog : public Dialog<PlayControlDialog>, private LSoundPlayerNotify {
 public:
  PlayControlDialog(HINSTANCE instance, ChannelBank& bank) : m_instance(instance), m_bank(bank), m_control(bank) {}
  ~PlayControlDialog() override = default;
  PlayControlDialog(const PlayControlDialog&) = delete;
  PlayControlDialog& operator=(const PlayControlDialog&) = delete;

  void run(HWND owner) {
    DialogBoxParamA(m_instance, MAKEINTRESOURCEA(IDD_PLAY_CONTROL), owner, &StaticProc, reinterpret_cast<LPARAM>(this));
  }

  INT_PTR HandleMessage(UINT msg, WPARAM wParam, LPARAM) {
    switch (msg) {
      case WM_INITDIALOG: OnInitDialog(); return TRUE;
      case WM_COMMAND: OnCommand(LOWORD(wParam), HIWORD(wParam)); return TRUE;
      case WM_DESTROY: OnDestroy(); return TRUE;
      default: return FALSE;
    }
  }

 private:
  void OnInitDialog();
  void OnCommand(UINT id, UINT code);
  void OnDestroy();
  void addTooltips();
  void loadBitmaps();
  // The keys, caught before the dialog's own handling (arrows and Space would
  // otherwise move the focus or press the focused button).
  static LRESULT CALLBACK keyHook(int code, WPARAM wParam, LPARAM lParam);
  bool OnKey(const MSG& msg);
  void runCommand(int id);
  // The channel in hand changed: its buttons, position and an empty meter.
  void showChannel();
  void refreshButtons();
  void showPosition(int32_t time);

  bool current(uint32_t channel) const { return m_hwnd && static_cast<int>(channel) == m_control.channel(); }
  void playing(uint32_t channel) override {
    if (current(channel)) refreshButtons();
  }
  void stopped(uint32_t channel) override {
    if (!current(channel)) return;
    setDbDisplayLevels(GetDlgItem(m_hwnd, IDC_PC_METER), nullptr, 0);
    refreshButtons();
  }
  void cueStarted(uint32_t channel) override {
    if (current(channel)) refreshButtons();
  }
  void paused(uint32_t channel) override {
    if (current(channel)) refreshButtons();
  }
  void position(int32_t time, uint32_t channel) override {
    if (current(channel)) showPosition(time);
  }
  void levels(const LevelList& levels, uint32_t channel) override {
    if (current(channel)) setDbDisplayLevels(GetDlgItem(m_hwnd, IDC_PC_METER), levels.data(), levels.size());
  }

  HINSTANCE m_instance;
  ChannelBank& m_bank;
  PlayControl m_control;
  HWND m_tooltip = nullptr;
  WindowsHook m_hook;
  std::string m_shownPosition;
  // The buttons show these but do not own them: deleted with the object,
  // after DialogBoxParamA has destroyed the window.
  GdiObject<HBITMAP> m_bitmaps[kButtonCount];
};

void PlayControlDialog::OnInitDialog() {
  t_open = this;
  m_hook.reset(SetWindowsHookExA(WH_MSGFILTER, &keyHook, nullptr, GetCurrentThreadId()));

  HWND list = GetDlgItem(m_hwnd, IDC_PC_LIST);
  for (const PlayControl::Line& line : m_control.lines()) {
    const LRESULT at = SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.name.c_str()));
    if (at >= 0) SendMessageA(list, LB_SETITEMDATA, at, line.channel);
  }
  // The first channel in use is in hand from the start, so that Play (F9)
  // followed by Pause acts on what was just started; with none, channel 0.
  if (SendMessageA(list, LB_SETCURSEL, 0, 0) != LB_ERR) m_control.select(SendMessageA(list, LB_GETITEMDATA, 0, 0));
  m_bank.setPlayListener(this);

  addTooltips();
  loadBitmaps();
  showChannel();
}

void PlayControlDialog::addTooltips() {
  INITCOMMONCONTROLSEX classes{sizeof classes, ICC_WIN95_CLASSES};
  InitCommonControlsEx(&classes);
  m_tooltip = CreateWindowExA(WS_EX_TOPMOST, TOOLTIPS_CLASSA, nullptr, WS_POPUP | TTS_ALWAYSTIP, CW_USEDEFAULT,
                              CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, m_hwnd, nullptr, m_instance, nullptr);
  if (!m_tooltip) return;
  const auto add = [&](int id, const char* text) {
    TOOLINFOA tool{};
    // The version 2 size, which every version of the common controls takes.
    tool.cbSize = TTTOOLINFOA_V2_SIZE;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = m_hwnd;
    tool.uId = reinterpret_cast<UINT_PTR>(GetDlgItem(m_hwnd, id));
    tool.lpszText = const_cast<char*>(text);
    SendMessageA(m_tooltip, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&tool));
  };
  add(IDC_PC_LIST, "List of play channels");
  for (const Button& b : kButtons) add(b.id, b.tip);
}

void PlayControlDialog::loadBitmaps() {
  for (size_t i = 0; i < kButtonCount; ++i) {
    m_bitmaps[i].reset(static_cast<HBITMAP>(
        LoadImageA(m_instance, kButtons[i].bitmap, IMAGE_BITMAP, kBitmapWidth, kBitmapHeight, LR_LOADMAP3DCOLORS)));
    // A missing bitmap leaves the button as the template made it.
    if (!m_bitmaps[i]) continue;
    HWND button = GetDlgItem(m_hwnd, kButtons[i].id);
    SetWindowLongPtrA(button, GWL_STYLE, GetWindowLongPtrA(button, GWL_STYLE) | BS_BITMAP);
    SendMessageA(button, BM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(m_bitmaps[i].get()));
  }
}

void PlayControlDialog::OnDestroy() {
  if (m_tooltip) DestroyWindow(m_tooltip);
  m_tooltip = nullptr;
  // What the window leaves behind: paused channels stopped, scrubbing ones
  // playing. Their notifications still come here while the controls exist.
  m_control.close();
  m_bank.setPlayListener(nullptr);
  m_hook.reset();
  t_open = nullptr;
}

void PlayControlDialog::OnCommand(UINT id, UINT code) {
  if (id == IDC_PC_LIST) {
    if (code != LBN_SELCHANGE) return;
    HWND list = GetDlgItem(m_hwnd, IDC_PC_LIST);
    const LRESULT at = SendMessageA(list, LB_GETCURSEL, 0, 0);
    m_control.select(at == LB_ERR ? 0 : SendMessageA(list, LB_GETITEMDATA, at, 0));
    showChannel();
    return;
  }
  // Esc and the close box close the window; Enter does nothing.
  if (id == IDCANCEL) {
    EndDialog(m_hwnd, IDCANCEL);
    return;
  }
  if (code == BN_CLICKED) runCommand(static_cast<int>(id));
}

void PlayControlDialog::runCommand(int id) {
  if (const std::optional<PlayCommand> command = commandOf(id)) m_control.run(*command);
  refreshButtons();
}

LRESULT CALLBACK PlayControlDialog::keyHook(int code, WPARAM wParam, LPARAM lParam) {
  if (code == MSGF_DIALOGBOX && t_open && t_open->OnKey(*reinterpret_cast<const MSG*>(lParam))) return TRUE;
  return CallNextHookEx(nullptr, code, wParam, lParam);
}

bool PlayControlDialog::OnKey(const MSG& msg) {
  if (msg.message != WM_KEYDOWN && msg.message != WM_KEYUP) return false;
  if (!m_hwnd || (msg.hwnd != m_hwnd && !IsChild(m_hwnd, msg.hwnd))) return false;
  for (const auto& key : kKeys) {
    if (msg.wParam != key.key) continue;
    // The key's release is taken too, so that a focused button never sees
    // half a Space press.
    if (msg.message == WM_KEYDOWN) runCommand(key.button);
    return true;
  }
  return false;
}

void PlayControlDialog::showChannel() {
  setDbDisplayLevels(GetDlgItem(m_hwnd, IDC_PC_METER), nullptr, 0);
  showPosition(m_control.time());
  refreshButtons();
}

void PlayControlDialog::refreshButtons() {
  const PlayButtons shown = m_control.buttons();
  CheckDlgButton(m_hwnd, IDC_PC_PLAY, shown.play ? BST_CHECKED : BST_UNCHECKED);
  CheckDlgButton(m_hwnd, IDC_PC_SCRUB, shown.scrub ? BST_CHECKED : BST_UNCHECKED);
  CheckDlgButton(m_hwnd, IDC_PC_PAUSE, shown.pause ? BST_CHECKED : BST_UNCHECKED);
}

void PlayControlDialog::showPosition(int32_t time) {
  std::string text = formatPosition(time, PositionFormat::Tenths);
  // Set only when it changes: the text is repainted at every block otherwise.
  if (text == m_shownPosition) return;
  m_shownPosition = std::move(text);
  SetDlgItemTextA(m_hwnd, IDC_PC_POSITION, m_shownPosition.c_str());
}

}  // namespace

void LPlayControlDlg(HWND owner, HINSTANCE instance, ChannelBank& bank) {
  if (t_open) {
    SetForegroundWindow(t_open->hwnd());
    return;
  }
  PlayControlDialog(instance, bank).run(owner);
}

}  // namespace vantr
