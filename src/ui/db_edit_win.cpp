// The level slider: a text box 32 pixels wide at the left in which a level can
// be typed, and a slider to its right that is dragged with the mouse. Either
// way the parent hears EN_CHANGE with the control's id, as from an edit box.
#include <string>

#include "base/level.h"
#include "ui/db_controls_internal_win.h"
#include "ui/db_controls_win.h"
#include "ui/db_geometry.h"
#include "win/window_win.h"

namespace vantr {

namespace {

constexpr int kTextBoxId = 100;
constexpr int kTextLimit = 7;
constexpr COLORREF kDarkGreen = RGB(0, 128, 0);
constexpr COLORREF kRed = RGB(192, 0, 0);
constexpr COLORREF kGrey = RGB(128, 128, 128);
constexpr COLORREF kThumbGrey = RGB(192, 192, 192);
constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kBlack = RGB(0, 0, 0);

void fill(HDC dc, int left, int top, int right, int bottom, COLORREF colour) {
  if (right <= left || bottom <= top) return;
  const RECT r{left, top, right, bottom};
  // ExtTextOut with an opaque rectangle fills with the DC's background colour
  // without making a brush for every fill.
  SetBkColor(dc, colour);
  ExtTextOutA(dc, 0, 0, ETO_OPAQUE, &r, nullptr, 0, nullptr);
}

class DbEdit : public Control<DbEdit> {
 public:
  static constexpr const char* kClassName = "LDBEdit";
  using Control::StaticProc;

  LRESULT HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam);
  void paint(HDC dc);

  int8_t value() const { return m_slider.value(); }
  void setRange(int minimum, int maximum);
  // A value from the owner or the mouse: the text box then shows it.
  void setValue(int value) {
    applyValue(value);
    showValue();
  }

 private:
  void OnCreate();
  void OnSize();
  void OnTextChanged();
  void OnMouse(UINT msg, int x);
  bool raised() const { return (GetWindowLongA(m_hwnd, GWL_STYLE) & kDbRaisedEdge) != 0; }
  int sliderWidth() const;
  void applyValue(int value);
  void showValue();
  void notifyParent();

  DbSlider m_slider;
  HWND m_text = nullptr;  // a child: destroyed with the control
  bool m_writingText = false;
};

}  // namespace

LRESULT DbEdit::HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
  switch (msg) {
    case WM_CREATE: OnCreate(); return 0;
    case WM_SIZE: OnSize(); return 0;
    case WM_ERASEBKGND: return 1;
    case WM_PAINT:
    case WM_PRINTCLIENT: return OnPaint(msg, wParam);
    case WM_ENABLE:
      if (m_text) EnableWindow(m_text, static_cast<BOOL>(wParam));
      InvalidateRect(m_hwnd, nullptr, FALSE);
      return 0;
    case WM_COMMAND:
      if (LOWORD(wParam) == kTextBoxId && HIWORD(wParam) == EN_CHANGE) OnTextChanged();
      return 0;
    case WM_LBUTTONDOWN:
    case WM_MOUSEMOVE:
    case WM_LBUTTONUP: OnMouse(msg, static_cast<short>(LOWORD(lParam))); return 0;
    case WM_SETFOCUS:
      if (m_text) {
        SetFocus(m_text);
        SendMessageA(m_text, EM_SETSEL, 0, -1);
      }
      return 0;
    case WM_NCHITTEST: return HTCLIENT;
    default: return DefaultProc(msg, wParam, lParam);
  }
}

void DbEdit::OnCreate() {
  m_text = CreateWindowExA(0, "EDIT", "", WS_CHILD | WS_VISIBLE | ES_RIGHT | ES_AUTOHSCROLL, 0, 0,
                           DbSlider::kTextBoxWidth, 0, m_hwnd, reinterpret_cast<HMENU>(kTextBoxId),
                           reinterpret_cast<HINSTANCE>(GetWindowLongPtrA(m_hwnd, GWLP_HINSTANCE)), nullptr);
  if (!m_text) return;
  SendMessageA(m_text, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(ANSI_VAR_FONT)), FALSE);
  SendMessageA(m_text, EM_LIMITTEXT, kTextLimit, 0);
  OnSize();
  showValue();
}

void DbEdit::OnSize() {
  if (!m_text) return;
  RECT client;
  GetClientRect(m_hwnd, &client);
  if (raised())
    MoveWindow(m_text, 1, 1, DbSlider::kTextBoxWidth, client.bottom - 2, TRUE);
  else
    MoveWindow(m_text, 0, 0, DbSlider::kTextBoxWidth, client.bottom, TRUE);
}

int DbEdit::sliderWidth() const {
  RECT client;
  GetClientRect(m_hwnd, &client);
  return client.right - DbSlider::kTextBoxWidth;
}

void DbEdit::setRange(int minimum, int maximum) {
  m_slider.setRange(minimum, maximum);
  setValue(m_slider.value());
  InvalidateRect(m_hwnd, nullptr, FALSE);
}

void DbEdit::applyValue(int value) {
  RECT client;
  GetClientRect(m_hwnd, &client);
  const PixelRect span = m_slider.setValue(value, sliderWidth(), client.bottom);
  if (span.empty()) return;
  const RECT r{span.left + DbSlider::kTextBoxWidth, span.top, span.right + DbSlider::kTextBoxWidth, span.bottom};
  InvalidateRect(m_hwnd, &r, FALSE);
}

void DbEdit::showValue() {
  if (!m_text) return;
  // Our own text change must not read back as typing.
  m_writingText = true;
  SetWindowTextA(m_text, formatLevel(m_slider.value()).c_str());
  m_writingText = false;
}

void DbEdit::notifyParent() {
  SendMessageA(GetParent(m_hwnd), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(m_hwnd), EN_CHANGE),
               reinterpret_cast<LPARAM>(m_hwnd));
}

void DbEdit::OnTextChanged() {
  if (m_writingText) return;
  char text[kTextLimit + 1] = {};
  GetWindowTextA(m_text, text, sizeof text);
  // What the user is typing stays as typed; only the value follows it.
  applyValue(parseLevel(text));
  notifyParent();
}

void DbEdit::OnMouse(UINT msg, int x) {
  switch (msg) {
    case WM_LBUTTONDOWN:
      if (m_text) SetFocus(m_text);
      if (x < DbSlider::kTextBoxWidth) return;
      setValue(m_slider.valueFromControlX(x, sliderWidth()));
      notifyParent();
      SetCapture(m_hwnd);
      return;
    case WM_MOUSEMOVE:
      if (GetCapture() != m_hwnd) return;
      setValue(m_slider.valueFromControlX(x, sliderWidth()));
      notifyParent();
      return;
    default:
      if (GetCapture() == m_hwnd) ReleaseCapture();
      return;
  }
}

void DbEdit::paint(HDC dc) {
  RECT client;
  GetClientRect(m_hwnd, &client);
  const int left = DbSlider::kTextBoxWidth;
  const int w = client.right - left;
  const int h = client.bottom;
  // Around the text box: the dialog's face colour.
  fill(dc, 0, 0, left, h, GetSysColor(COLOR_BTNFACE));
  if (w <= 0) return;

  const bool enabled = IsWindowEnabled(m_hwnd) != FALSE;
  const DbSlider::Fills f = m_slider.fills(w);
  fill(dc, left, 0, left + f.greenEnd, h, enabled ? kDarkGreen : kGrey);
  fill(dc, left + f.greenEnd, 0, left + f.redEnd, h, enabled ? kRed : kGrey);
  fill(dc, left + f.redEnd, 0, client.right, h, enabled ? kBlack : kGrey);

  // The thumb: light grey, white at its left and top, black at its right and bottom.
  const int t = left + f.thumbLeft;
  fill(dc, t, 0, t + DbSlider::kThumbWidth, h, kThumbGrey);
  fill(dc, t, 0, t + 1, h, kWhite);
  fill(dc, t, 0, t + DbSlider::kThumbWidth, 1, kWhite);
  fill(dc, t + DbSlider::kThumbWidth - 1, 0, t + DbSlider::kThumbWidth, h, kBlack);
  fill(dc, t, h - 1, t + DbSlider::kThumbWidth, h, kBlack);

  if (raised()) {
    fill(dc, left, 0, client.right, 1, kWhite);
    fill(dc, left, 0, left + 1, h, kWhite);
    fill(dc, left, h - 1, client.right, h, kBlack);
    fill(dc, client.right - 1, 0, client.right, h, kBlack);
  }
}

bool registerDbEditClass(HINSTANCE instance) {
  return registerControlClass(instance, DbEdit::kClassName, &DbEdit::StaticProc, 12);
}

void setDbEditRange(HWND edit, int minimum, int maximum) {
  if (DbEdit* control = DbEdit::of(edit)) control->setRange(minimum, maximum);
}

void setDbEditValue(HWND edit, int value) {
  if (DbEdit* control = DbEdit::of(edit)) control->setValue(value);
}

int8_t dbEditValue(HWND edit) {
  const DbEdit* control = DbEdit::of(edit);
  return control ? control->value() : 0;
}

}  // namespace vantr
