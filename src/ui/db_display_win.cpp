// The level meter: up to eight horizontal bars, green up to 0 dB, red above,
// black to the right, painted with the pattern bitmaps "LDBDisplayGreen" and
// "LDBDisplayRed". Meters are updated many times a second, so a change repaints
// only the span between a bar's old and new level, and nothing is erased first.
#include "ui/db_controls_internal_win.h"
#include "ui/db_controls_win.h"
#include "ui/db_geometry.h"
#include "win/handles_win.h"
#include "win/window_win.h"

namespace vantr {

namespace {

class DbDisplay : public Control<DbDisplay> {
 public:
  static constexpr const char* kClassName = "LDBDisplay";
  using Control::StaticProc;

  LRESULT HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam);
  void setLevels(const int8_t* levels, size_t count);
  void paint(HDC dc);

 private:
  void OnCreate();
  bool raised() const;
  // The bars' area: the client rectangle, less its bottom row under a raised edge.
  void barArea(int& width, int& height) const;

  DbMeter m_meter;
  // Members go in reverse order: the brushes before the bitmaps they were made from.
  GdiObject<HBITMAP> m_greenBitmap, m_redBitmap;
  GdiObject<HBRUSH> m_green, m_red;
};

// Made when a bitmap resource is missing, so the meter still shows levels.
constexpr COLORREF kPlainGreen = RGB(0, 192, 0);
constexpr COLORREF kPlainRed = RGB(224, 0, 0);

HBRUSH patternBrush(HINSTANCE module, const char* bitmapName, COLORREF fallback, GdiObject<HBITMAP>& bitmap) {
  bitmap.reset(LoadBitmapA(module, bitmapName));
  return bitmap.get() ? CreatePatternBrush(bitmap.get()) : CreateSolidBrush(fallback);
}

}  // namespace

LRESULT DbDisplay::HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
  switch (msg) {
    case WM_CREATE: OnCreate(); return 0;
    case WM_ERASEBKGND: return 1;
    case WM_PAINT:
    case WM_PRINTCLIENT: return OnPaint(msg, wParam);
    case WM_ENABLE: InvalidateRect(m_hwnd, nullptr, FALSE); return 0;
    default: return DefaultProc(msg, wParam, lParam);
  }
}

void DbDisplay::OnCreate() {
  const auto module = reinterpret_cast<HINSTANCE>(GetClassLongPtrA(m_hwnd, GCLP_HMODULE));
  m_green.reset(patternBrush(module, "LDBDisplayGreen", kPlainGreen, m_greenBitmap));
  m_red.reset(patternBrush(module, "LDBDisplayRed", kPlainRed, m_redBitmap));
}

bool DbDisplay::raised() const { return (GetWindowLongA(m_hwnd, GWL_STYLE) & kDbRaisedEdge) != 0; }

void DbDisplay::barArea(int& width, int& height) const {
  RECT client;
  GetClientRect(m_hwnd, &client);
  width = client.right;
  height = client.bottom - (raised() ? 1 : 0);
}

void DbDisplay::setLevels(const int8_t* levels, size_t count) {
  int width, height;
  barArea(width, height);
  const DbMeter::Update update = m_meter.setLevels(levels, count, width, height);
  if (update.whole) {
    InvalidateRect(m_hwnd, nullptr, FALSE);
    return;
  }
  for (const PixelRect& span : update.spans) {
    const RECT r{span.left, span.top, span.right, span.bottom};
    InvalidateRect(m_hwnd, &r, FALSE);
  }
}

void DbDisplay::paint(HDC dc) {
  RECT client;
  GetClientRect(m_hwnd, &client);
  int width, height;
  barArea(width, height);
  if (!IsWindowEnabled(m_hwnd) || m_meter.bars() == 0) {
    FillRect(dc, &client, static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH)));
  } else {
    const auto black = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    for (int bar = 0; bar < m_meter.bars(); ++bar) {
      const PixelRect rows = m_meter.barRect(bar, width, height);
      const MeterBarFills fills = meterBarFills(m_meter.level(bar), width);
      // Every bar shows its pattern from the pattern's first row.
      SetBrushOrgEx(dc, 0, rows.top, nullptr);
      const RECT green{0, rows.top, fills.greenEnd, rows.bottom};
      const RECT red{fills.greenEnd, rows.top, fills.redEnd, rows.bottom};
      const RECT rest{fills.redEnd, rows.top, width, rows.bottom};
      FillRect(dc, &green, m_green.get());
      if (fills.redEnd > fills.greenEnd) FillRect(dc, &red, m_red.get());
      FillRect(dc, &rest, black);
    }
    SetBrushOrgEx(dc, 0, 0, nullptr);
  }
  if (raised()) {
    const auto white = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    const RECT bottom{0, client.bottom - 1, client.right, client.bottom};
    const RECT right{client.right - 1, 0, client.right, client.bottom};
    FillRect(dc, &bottom, white);
    FillRect(dc, &right, white);
  }
}

bool registerDbDisplayClass(HINSTANCE instance) {
  return registerControlClass(instance, DbDisplay::kClassName, &DbDisplay::StaticProc, 34);
}

void setDbDisplayLevel(HWND meter, int8_t level) { setDbDisplayLevels(meter, &level, 1); }

void setDbDisplayLevels(HWND meter, const int8_t* levels, size_t count) {
  if (DbDisplay* display = DbDisplay::of(meter)) display->setLevels(levels, count);
}

}  // namespace vantr
