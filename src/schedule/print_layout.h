// The page layout of the printed schedules: for every named file its name and
// the lines of its schedule list as the main window shows them, page after
// page. The layout is decided here over a surface that measures and draws
// text; the Windows side implements the surface on a printer's device context.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vantr {

// A rectangle in device pixels.
struct PrintRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
};

enum class PrintFont { Heading, Body };

// What the layout needs of a printer. Text is word-wrapped to the width it is
// given; lines are separated by "\r\n".
class PrintSurface {
 public:
  virtual ~PrintSurface() = default;
  // The height the text takes when wrapped to width.
  virtual int measure(const std::string& text, int width, PrintFont font) = 0;
  // Draws the text from the rectangle's top left, wrapped to its width, and
  // returns the height drawn.
  virtual int draw(const std::string& text, const PrintRect& rect, PrintFont font) = 0;
  virtual void startPage() = 0;
  virtual void endPage() = 0;
};

// One named file as it is printed: its name and the lines of its schedule list
// in list order.
struct PrintFile {
  std::string name;
  std::vector<std::string> lines;
};

// The bound of one file's block, terminator included.
constexpr size_t kPrintBufferBytes = 32768;

// The text rectangle of a page within the printable area: the left edge moved
// in by a twentieth of the width, then the right edge by a thirtieth of what is
// left, the top down by a twentieth of the height; the bottom stays.
PrintRect pageTextRect(const PrintRect& printable);

// "\r\n[NAME]\r\n" and "LINE\r\n" for every line, cut to the first
// kPrintBufferBytes - 1 bytes when longer.
std::string scheduleBlock(const PrintFile& file);

// Prints the files in order and returns the number of pages. The first page
// starts with "Vantorel Schedules", every further page with "VANTOREL
// SCHEDULES (page N)". A file's block is never split: a block that does not fit
// above the bottom goes to a fresh page, where it is drawn even when it is
// taller than the page and runs off its end.
int printSchedules(PrintSurface& surface, const PrintRect& printable, const std::vector<PrintFile>& files);

}  // namespace vantr
