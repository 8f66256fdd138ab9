#include "schedule/print_layout.h"

#include <string>

namespace vantr {

namespace {

constexpr const char kFirstHeading[] = "Vantorel Schedules\r\n";

std::string pageHeading(int page) { return "VANTOREL SCHEDULES (page " + std::to_string(page) + ")\r\n"; }

// Draws a heading at the top of the rectangle and moves the top below it.
void drawHeading(PrintSurface& surface, PrintRect& rect, const std::string& text) {
  rect.top += surface.draw(text, rect, PrintFont::Heading);
}

}  // namespace

PrintRect pageTextRect(const PrintRect& printable) {
  const int width = printable.right - printable.left;
  const int height = printable.bottom - printable.top;
  PrintRect rect = printable;
  rect.left += width / 20;
  rect.right -= (rect.right - rect.left) / 30;
  rect.top += height / 20;
  return rect;
}

std::string scheduleBlock(const PrintFile& file) {
  // Built by appending rather than formatting, so a '%' in a name or line is
  // printed as it is.
  std::string block = "\r\n[" + file.name + "]\r\n";
  for (const std::string& line : file.lines) {
    if (block.size() >= kPrintBufferBytes) break;
    block += line;
    block += "\r\n";
  }
  // A block is bounded by the text buffer it was always made in; what does not
  // fit (only possible with hundreds of very long lines) is left off rather
  // than let the block grow without limit.
  if (block.size() > kPrintBufferBytes - 1) block.resize(kPrintBufferBytes - 1);
  return block;
}

int printSchedules(PrintSurface& surface, const PrintRect& printable, const std::vector<PrintFile>& files) {
  int pages = 1;
  surface.startPage();
  PrintRect rect = pageTextRect(printable);
  drawHeading(surface, rect, kFirstHeading);
  for (const PrintFile& file : files) {
    const std::string block = scheduleBlock(file);
    const int height = surface.measure(block, rect.right - rect.left, PrintFont::Body);
    // A block that would reach the bottom exactly counts as not fitting.
    if (rect.bottom <= rect.top + height) {
      surface.endPage();
      surface.startPage();
      ++pages;
      rect = pageTextRect(printable);
      drawHeading(surface, rect, pageHeading(pages));
    }
    rect.top += surface.draw(block, rect, PrintFont::Body);
  }
  surface.endPage();
  return pages;
}

}  // namespace vantr
