// The level meter and the level slider as real windows: what they paint, what
// they invalidate, and what their parent hears.
#include <windows.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "ui/db_controls_win.h"
#include "win/handles_win.h"

// RECT lives in the global namespace, so its comparison for the checks does too.
bool operator==(const RECT& a, const RECT& b) {
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}
std::ostream& operator<<(std::ostream& os, const RECT& r) {
  return os << '{' << r.left << ',' << r.top << ',' << r.right << ',' << r.bottom << '}';
}

namespace vantr {
namespace {

constexpr int kEditId = 112;
constexpr int kMeterId = 1093;

struct Notification {
  int id;
  int code;
  HWND from;
};
std::vector<Notification> g_heard;

LRESULT CALLBACK parentProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
  if (msg == WM_COMMAND) {
    g_heard.push_back({LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam)});
    return 0;
  }
  return DefWindowProcA(hwnd, msg, wParam, lParam);
}

// What a control paints into a bitmap of its client size (WM_PRINTCLIENT).
class Picture {
 public:
  explicit Picture(HWND control) {
    RECT client;
    GetClientRect(control, &client);
    m_width = client.right;
    m_height = client.bottom;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = m_width;
    info.bmiHeader.biHeight = -m_height;  // top row first
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    MemoryDc dc(CreateCompatibleDC(nullptr));
    GdiObject<HBITMAP> bitmap(CreateDIBSection(dc.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    SelectedObject selected(dc.get(), bitmap.get());
    SendMessageA(control, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc.get()), PRF_CLIENT);
    GdiFlush();
    const auto* pixels = static_cast<const uint32_t*>(bits);
    m_pixels.assign(pixels, pixels + m_width * m_height);
  }
  // As RGB(r, g, b).
  COLORREF at(int x, int y) const {
    const uint32_t p = m_pixels[y * m_width + x];
    return RGB((p >> 16) & 0xFF, (p >> 8) & 0xFF, p & 0xFF);
  }

 private:
  int m_width = 0, m_height = 0;
  std::vector<uint32_t> m_pixels;
};

bool greenish(COLORREF c) { return GetGValue(c) > 2 * GetRValue(c) && GetGValue(c) > 2 * GetBValue(c); }
bool reddish(COLORREF c) { return GetRValue(c) > 2 * GetGValue(c) && GetRValue(c) > 2 * GetBValue(c); }

// What one pixel must show: an exact colour, or the green or red of the
// pattern bitmaps, whose shade changes by row.
constexpr COLORREF kGreenish = 0xFF000001, kReddish = 0xFF000002;
struct Pixel {
  int x, y;
  COLORREF colour;
};

void expectPixels(const Picture& p, std::initializer_list<Pixel> pixels) {
  for (const Pixel& px : pixels) {
    const COLORREF got = p.at(px.x, px.y);
    const bool ok = px.colour == kGreenish ? greenish(got) : px.colour == kReddish ? reddish(got) : got == px.colour;
    EXPECT_TRUE(ok) << "pixel " << px.x << "," << px.y << " is " << std::hex << got << ", wanted " << px.colour;
  }
}

class DbControls : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    ASSERT_TRUE(registerDbControls(instance));
    ASSERT_TRUE(registerDbControls(instance)) << "a second registration finds the classes there";
    WNDCLASSA wc{};
    wc.lpfnWndProc = parentProc;
    wc.hInstance = instance;
    wc.lpszClassName = "DbControlsTestParent";
    ASSERT_TRUE(RegisterClassA(&wc));
  }

  void SetUp() override {
    m_parent = CreateWindowExA(0, "DbControlsTestParent", "", WS_POPUP | WS_VISIBLE, 0, 0, 400, 200, nullptr, nullptr,
                               GetModuleHandleA(nullptr), nullptr);
    ASSERT_NE(m_parent, nullptr);
    g_heard.clear();
  }
  void TearDown() override { DestroyWindow(m_parent); }

  HWND child(const char* cls, int id, int width, int height, DWORD style = 0) {
    HWND hwnd = CreateWindowExA(0, cls, "", WS_CHILD | WS_VISIBLE | style, 10, 10, width, height, m_parent,
                                reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleA(nullptr), nullptr);
    EXPECT_NE(hwnd, nullptr) << cls;
    ValidateRect(hwnd, nullptr);
    return hwnd;
  }

  // The invalidated rectangle since the last look, then validated again.
  static RECT invalidated(HWND hwnd) {
    RECT r{};
    if (!GetUpdateRect(hwnd, &r, FALSE)) r = RECT{};
    ValidateRect(hwnd, nullptr);
    return r;
  }
  static std::string text(HWND hwnd) {
    char buffer[64] = {};
    GetWindowTextA(hwnd, buffer, sizeof buffer);
    return buffer;
  }

  HWND m_parent = nullptr;
};

TEST_F(DbControls, MeterPaintsGreenRedAndBlackPerBar) {
  HWND meter = child("LDBDisplay", kMeterId, 96, 20);
  const int8_t levels[] = {-6, 6};  // x 60 and 84 on a 96-pixel meter
  setDbDisplayLevels(meter, levels, 2);
  const Picture p(meter);
  // Bar 0 (rows 0-9) ends at x 60, bar 1 (rows 10-19) at x 84, red from 0 dB (x 72).
  expectPixels(p, {{10, 3, kGreenish},
                   {59, 3, kGreenish},
                   {60, 3, RGB(0, 0, 0)},
                   {71, 13, kGreenish},
                   {72, 13, kReddish},
                   {83, 13, kReddish},
                   {84, 13, RGB(0, 0, 0)},
                   {95, 19, RGB(0, 0, 0)}});
  // The bitmap pattern shades by row, and each bar starts at the pattern's first row.
  EXPECT_NE(p.at(10, 0), p.at(10, 6)) << "the green bitmap was not used";
  EXPECT_EQ(p.at(10, 0), p.at(10, 10));
  EXPECT_EQ(p.at(10, 4), p.at(10, 14));

  ValidateRect(meter, nullptr);
  setDbDisplayLevels(meter, levels, 2);
  EXPECT_EQ(invalidated(meter), (RECT{})) << "the same levels again invalidate nothing";
  const int8_t quieter[] = {-6, 0};
  setDbDisplayLevels(meter, quieter, 2);
  EXPECT_EQ(invalidated(meter), (RECT{72, 10, 84, 20})) << "only the changed span of bar 1";
  setDbDisplayLevel(meter, 0);
  EXPECT_EQ(invalidated(meter), (RECT{0, 0, 96, 20})) << "a new bar count repaints everything";
}

TEST_F(DbControls, MeterGreyWhenEmptyOrDisabledAndRaisedEdge) {
  HWND meter = child("LDBDisplay", kMeterId, 96, 20, kDbRaisedEdge);
  const COLORREF grey = RGB(128, 128, 128);
  EXPECT_EQ(Picture(meter).at(40, 10), grey) << "no bars: an empty grey meter";
  EXPECT_EQ(Picture(meter).at(95, 19), RGB(255, 255, 255)) << "the raised edge's white corner";

  setDbDisplayLevel(meter, 12);
  // The bar stops one row and one column inside the edge.
  expectPixels(Picture(meter), {{90, 18, kReddish}, {50, 19, RGB(255, 255, 255)}, {95, 5, RGB(255, 255, 255)}});

  ValidateRect(meter, nullptr);
  EnableWindow(meter, FALSE);
  EXPECT_EQ(invalidated(meter), (RECT{0, 0, 96, 20})) << "disabling repaints";
  expectPixels(Picture(meter), {{10, 5, grey}, {90, 5, grey}});
}

TEST_F(DbControls, SliderTypedTextBecomesTheValue) {
  struct Row {
    int minimum, maximum;
    const char* typed;
    int value;
  } rows[] = {
      {-127, 12, "--dB", -127}, {-36, 12, "-", 0},     {-36, 12, "abc", 0},        {-36, 12, "-21dB", -21},
      {-60, 0, "12dB", 0},      {-60, 0, "--dB", -60}, {-36, 12, "-1234567", -36},  // only seven characters fit the box
  };
  HWND edit = child("LDBEdit", kEditId, 132, 20);
  HWND box = GetDlgItem(edit, 100);
  ASSERT_NE(box, nullptr);
  for (const Row& r : rows) {
    setDbEditRange(edit, r.minimum, r.maximum);
    setDbEditValue(edit, 5);
    g_heard.clear();
    SendMessageA(box, EM_SETSEL, 0, -1);
    const std::string typed = r.typed;
    for (char c : typed) SendMessageA(box, WM_CHAR, static_cast<unsigned char>(c), 1);
    EXPECT_EQ(dbEditValue(edit), r.value) << r.typed;
    EXPECT_EQ(text(box), typed.substr(0, 7)) << "typed text is not rewritten while typing";
    ASSERT_FALSE(g_heard.empty()) << r.typed;
    for (const Notification& n : g_heard) {
      EXPECT_EQ(n.id, kEditId);
      EXPECT_EQ(n.code, 0x300);
      EXPECT_EQ(n.from, edit);
    }
  }
  // The owner's own values are shown and not reported back.
  g_heard.clear();
  setDbEditRange(edit, -127, 12);
  for (const auto& [set, shown] : {std::pair<int, const char*>{40, "12dB"}, {-126, "-126dB"}, {-127, "--dB"}}) {
    setDbEditValue(edit, set);
    EXPECT_EQ(text(box), shown);
  }
  EXPECT_TRUE(g_heard.empty());
}

TEST_F(DbControls, SliderFollowsTheMouse) {
  HWND edit = child("LDBEdit", kEditId, 132, 20);  // a 100-pixel slider
  HWND box = GetDlgItem(edit, 100);
  setDbEditRange(edit, -36, 12);
  setDbEditValue(edit, 0);

  SendMessageA(edit, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(32 + 50, 5));
  EXPECT_EQ(dbEditValue(edit), -12);
  EXPECT_EQ(text(box), "-12dB");
  EXPECT_EQ(GetCapture(), edit);
  EXPECT_EQ(GetFocus(), box);

  SendMessageA(edit, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(1000, 5));
  EXPECT_EQ(dbEditValue(edit), 12);
  EXPECT_EQ(text(box), "12dB");
  SendMessageA(edit, WM_LBUTTONUP, 0, MAKELPARAM(1000, 5));
  EXPECT_NE(GetCapture(), edit);
  ASSERT_EQ(g_heard.size(), 2u);
  EXPECT_EQ(g_heard[1].code, 0x300);

  // Without the button held the mouse changes nothing; a click on the text box
  // only gives it the focus.
  SendMessageA(edit, WM_MOUSEMOVE, 0, MAKELPARAM(40, 5));
  SendMessageA(edit, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(10, 5));
  SendMessageA(edit, WM_LBUTTONUP, 0, MAKELPARAM(10, 5));
  EXPECT_EQ(dbEditValue(edit), 12);
  EXPECT_EQ(g_heard.size(), 2u);

  EXPECT_EQ(SendMessageA(edit, WM_NCHITTEST, 0, MAKELPARAM(5000, 5000)), HTCLIENT);

  // Focus given to the control goes to the text box, with its text selected.
  SetFocus(m_parent);
  SetFocus(edit);
  EXPECT_EQ(GetFocus(), box);
  DWORD start = 1, end = 0;
  SendMessageA(box, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
  EXPECT_EQ(start, 0u);
  EXPECT_EQ(end, 4u);  // "12dB"
}

TEST_F(DbControls, SliderPaintsAndRepaintsItsSpan) {
  HWND edit = child("LDBEdit", kEditId, 132, 20);
  setDbEditRange(edit, -36, 12);
  setDbEditValue(edit, 6);  // x 87 of 100; 0 dB at x 75
  invalidated(edit);
  // Green up to 0 dB, red above, the thumb's white left edge, grey face and
  // black right edge at the value, black past it.
  expectPixels(Picture(edit), {{32 + 10, 10, RGB(0, 128, 0)},
                               {32 + 80, 10, RGB(192, 0, 0)},
                               {32 + 87, 10, RGB(255, 255, 255)},
                               {32 + 88, 10, RGB(192, 192, 192)},
                               {32 + 89, 10, RGB(0, 0, 0)},
                               {32 + 95, 10, RGB(0, 0, 0)}});

  setDbEditValue(edit, -12);  // x 50
  EXPECT_EQ(invalidated(edit), (RECT{32 + 48, 0, 32 + 87 + 2 + 3, 20}));
  setDbEditValue(edit, -12);
  EXPECT_EQ(invalidated(edit), (RECT{}));

  EnableWindow(edit, FALSE);
  setDbEditRange(edit, -36, 12);
  setDbEditValue(edit, 6);
  const COLORREF grey = RGB(128, 128, 128);
  expectPixels(Picture(edit), {{32 + 10, 10, grey}, {32 + 80, 10, grey}, {32 + 95, 10, grey}});
}

}  // namespace
}  // namespace vantr
