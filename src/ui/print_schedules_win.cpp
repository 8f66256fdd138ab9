#include "ui/print_schedules_win.h"

#include <commdlg.h>

#include <string>

namespace vantr {

namespace {

// Arial at a height in points, for the printer's vertical resolution.
HFONT arial(HDC dc, int points, int weight) {
  const int height = -MulDiv(points, GetDeviceCaps(dc, LOGPIXELSY), 72);
  return CreateFontA(height, 0, 0, 0, weight, FALSE, FALSE, FALSE, ANSI_CHARSET, OUT_DEFAULT_PRECIS,
                     CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_SWISS, "Arial");
}

// The layout's surface on a printer's device context: text is word-wrapped
// with DrawText, '&' printed as it is.
class GdiPrintSurface : public PrintSurface {
 public:
  explicit GdiPrintSurface(HDC dc) : m_dc(dc), m_heading(arial(dc, 12, FW_BOLD)), m_body(arial(dc, 10, FW_NORMAL)) {
    m_oldFont = SelectObject(m_dc, m_body);
  }
  ~GdiPrintSurface() override {
    SelectObject(m_dc, m_oldFont);
    if (m_heading) DeleteObject(m_heading);
    if (m_body) DeleteObject(m_body);
  }
  GdiPrintSurface(const GdiPrintSurface&) = delete;
  GdiPrintSurface& operator=(const GdiPrintSurface&) = delete;

  int measure(const std::string& text, int width, PrintFont font) override {
    RECT rect{0, 0, width, 0};
    use(font);
    return DrawTextA(m_dc, text.c_str(), static_cast<int>(text.size()), &rect,
                     DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
  }
  int draw(const std::string& text, const PrintRect& at, PrintFont font) override {
    RECT rect{at.left, at.top, at.right, at.bottom};
    use(font);
    return DrawTextA(m_dc, text.c_str(), static_cast<int>(text.size()), &rect, DT_WORDBREAK | DT_NOPREFIX);
  }
  void startPage() override { m_failed = StartPage(m_dc) <= 0 || m_failed; }
  void endPage() override { m_failed = EndPage(m_dc) <= 0 || m_failed; }
  bool failed() const { return m_failed; }

 private:
  void use(PrintFont font) { SelectObject(m_dc, font == PrintFont::Heading ? m_heading : m_body); }

  HDC m_dc;
  HFONT m_heading;
  HFONT m_body;
  HGDIOBJ m_oldFont = nullptr;
  bool m_failed = false;
};

}  // namespace

HDC choosePrinter(HWND owner) {
  PRINTDLGA dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner;
  dialog.Flags = PD_RETURNDC | PD_NOSELECTION | PD_NOPAGENUMS;
  if (!PrintDlgA(&dialog)) return nullptr;
  if (dialog.hDevMode) GlobalFree(dialog.hDevMode);
  if (dialog.hDevNames) GlobalFree(dialog.hDevNames);
  return dialog.hDC;
}

bool printOnPrinter(HDC dc, const std::vector<PrintFile>& files) {
  DOCINFOA document{};
  document.cbSize = sizeof document;
  document.lpszDocName = kPrintDocumentName;
  bool done = false;
  if (StartDocA(dc, &document) > 0) {
    const int oldMapMode = SetMapMode(dc, MM_TEXT);
    {
      GdiPrintSurface surface(dc);
      const PrintRect printable{0, 0, GetDeviceCaps(dc, HORZRES), GetDeviceCaps(dc, VERTRES)};
      printSchedules(surface, printable, files);
      done = !surface.failed();
    }
    SetMapMode(dc, oldMapMode);
    if (done) {
      done = EndDoc(dc) > 0;
    } else {
      AbortDoc(dc);
    }
  }
  DeleteDC(dc);
  return done;
}

}  // namespace vantr
