// The page layout of the printed schedules over a surface that records every
// call and measures text as lines of fixed height, wrapped by a fixed character
// width.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "schedule/print_layout.h"

namespace vantr {
namespace {

constexpr int kHeadingLine = 30;
constexpr int kBodyLine = 10;
constexpr int kCharWidth = 10;

// The four edges, so rectangles compare and print as arrays.
std::array<int, 4> edges(const PrintRect& r) { return {r.left, r.top, r.right, r.bottom}; }

struct Draw {
  std::string text;
  PrintRect rect;
  PrintFont font;
};

class RecordingSurface : public PrintSurface {
 public:
  int measure(const std::string& text, int width, PrintFont font) override {
    measureWidths.push_back(width);
    return height(text, width, font);
  }
  int draw(const std::string& text, const PrintRect& rect, PrintFont font) override {
    draws.push_back({text, rect, font});
    events.push_back((font == PrintFont::Heading ? "H@" : "B@") + std::to_string(rect.top) + " " + firstText(text));
    return height(text, rect.right - rect.left, font);
  }
  void startPage() override { events.push_back("start"); }
  void endPage() override { events.push_back("end"); }

  // Each "\r\n"-ended line (and an unended last one) wraps to as many lines as
  // its characters need at kCharWidth, an empty line taking one.
  static int height(const std::string& text, int width, PrintFont font) {
    const int perLine = font == PrintFont::Heading ? kHeadingLine : kBodyLine;
    int lines = 0;
    size_t start = 0;
    while (start < text.size()) {
      size_t end = text.find("\r\n", start);
      if (end == std::string::npos) end = text.size();
      const int chars = static_cast<int>(end - start);
      lines += chars == 0 ? 1 : (chars * kCharWidth + width - 1) / width;
      start = end + 2;
    }
    return lines * perLine;
  }
  // The first non-empty line, to name a draw in the event list.
  static std::string firstText(const std::string& text) {
    size_t start = text.find_first_not_of("\r\n");
    if (start == std::string::npos) return "";
    return text.substr(start, text.find("\r\n", start) - start);
  }

  std::vector<std::string> events;
  std::vector<Draw> draws;
  std::vector<int> measureWidths;
};

PrintFile fileOf(const std::string& name, int lines) {
  PrintFile file{name, {}};
  for (int i = 1; i <= lines; ++i) file.lines.push_back("L" + std::to_string(i));
  return file;
}

TEST(PrintLayout, PageTextRect) {
  // The right edge moves by a thirtieth of the width left after the left edge
  // moved, not of the printable width; all divisions round down.
  const struct {
    PrintRect printable;
    PrintRect text;
  } rows[] = {
      {{0, 0, 2000, 1000}, {100, 50, 1937, 1000}},  {{0, 0, 600, 400}, {30, 20, 581, 400}},  // 600/30 would give 580
      {{0, 0, 4959, 7016}, {247, 350, 4802, 7016}}, {{30, 40, 1030, 840}, {80, 80, 999, 840}},
      {{10, 10, 71, 53}, {13, 12, 70, 53}},         {{0, 0, 19, 29}, {0, 1, 19, 29}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(edges(pageTextRect(row.printable)), edges(row.text)) << testing::PrintToString(edges(row.printable));
}

TEST(PrintLayout, ScheduleBlock) {
  const struct {
    PrintFile file;
    std::string block;
  } rows[] = {
      {{"Morning", {}}, "\r\n[Morning]\r\n"},
      {{"News", {"08:00:00 Play", "09:30:00 Record"}}, "\r\n[News]\r\n08:00:00 Play\r\n09:30:00 Record\r\n"},
      {{"100% %s Hits", {"%d %n"}}, "\r\n[100% %s Hits]\r\n%d %n\r\n"},
      {{"", {""}}, "\r\n[]\r\n\r\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(scheduleBlock(row.file), row.block) << row.file.name;
}

TEST(PrintLayout, BlockBound) {
  // "\r\n[A]\r\n" is 7 bytes; each line adds its length and 2. A block that fits
  // the buffer with its terminator is whole, a longer one keeps the first
  // kPrintBufferBytes - 1 bytes.
  const size_t limit = kPrintBufferBytes - 1;
  const struct {
    size_t lineLength;
    int lines;
    size_t expected;
  } rows[] = {
      {limit - 7 - 2, 1, limit},                             // exactly fills
      {limit - 7 - 2 + 1, 1, limit},                         // one byte over
      {limit - 7 - 2 - 1, 1, limit - 1}, {998, 256, limit},  // every slot with a long line
      {40, 256, 7 + 256 * 42},
  };
  for (const auto& row : rows) {
    PrintFile file{"A", std::vector<std::string>(row.lines, std::string(row.lineLength, 'x'))};
    std::string full = "\r\n[A]\r\n";
    for (const std::string& line : file.lines) full += line + "\r\n";
    const std::string block = scheduleBlock(file);
    EXPECT_EQ(block.size(), row.expected) << row.lineLength << " x " << row.lines;
    EXPECT_EQ(block, full.substr(0, row.expected)) << row.lineLength << " x " << row.lines;
  }
}

TEST(PrintLayout, Pages) {
  // With a printable area of 2000 x 1000 the text runs from 50 to 1000, the
  // first heading takes 30 and leaves 920 (92 body lines); a block of N lines
  // is N + 2 body lines. Printing 1001 high leaves 921.
  const PrintRect area{0, 0, 2000, 1000};
  const PrintRect tall{0, 0, 2000, 1001};
  const std::string first = "H@50 Vantorel Schedules";
  const std::string page2 = "H@50 VANTOREL SCHEDULES (page 2)";
  const std::string page3 = "H@50 VANTOREL SCHEDULES (page 3)";
  const struct {
    const char* name;
    PrintRect printable;
    std::vector<PrintFile> files;
    int pages;
    std::vector<std::string> events;
  } rows[] = {
      {"no files", area, {}, 1, {"start", first, "end"}},
      {"an empty file", area, {fileOf("Empty", 0)}, 1, {"start", first, "B@80 [Empty]", "end"}},
      {"blocks stack", area, {fileOf("A", 10), fileOf("B", 3)}, 1, {"start", first, "B@80 [A]", "B@200 [B]", "end"}},
      {"exactly fills the rest",
       area,
       {fileOf("A", 90)},
       2,
       {"start", first, "end", "start", page2, "B@80 [A]", "end"}},
      {"one pixel short of it", tall, {fileOf("A", 90)}, 1, {"start", first, "B@80 [A]", "end"}},
      {"last fitting block after another",
       tall,
       {fileOf("A", 40), fileOf("B", 48)},
       1,
       {"start", first, "B@80 [A]", "B@500 [B]", "end"}},
      {"taller than a page",
       area,
       {fileOf("Small", 1), fileOf("Huge", 200), fileOf("After", 1)},
       3,
       {"start", first, "B@80 [Small]", "end", "start", page2, "B@80 [Huge]", "end", "start", page3, "B@80 [After]",
        "end"}},
      {"three pages",
       area,
       {fileOf("A", 50), fileOf("B", 50), fileOf("C", 50)},
       3,
       {"start", first, "B@80 [A]", "end", "start", page2, "B@80 [B]", "end", "start", page3, "B@80 [C]", "end"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    RecordingSurface surface;
    EXPECT_EQ(printSchedules(surface, row.printable, row.files), row.pages);
    EXPECT_EQ(surface.events, row.events);
    // Every draw spans the page's text rectangle from its current top down, and
    // the blocks are the files' blocks in order, each measured at that width.
    const PrintRect text = pageTextRect(row.printable);
    size_t block = 0;
    for (const Draw& draw : surface.draws) {
      EXPECT_EQ(draw.rect.left, text.left);
      EXPECT_EQ(draw.rect.right, text.right);
      EXPECT_EQ(draw.rect.bottom, text.bottom);
      if (draw.font == PrintFont::Heading) continue;
      ASSERT_LT(block, row.files.size());
      EXPECT_EQ(draw.text, scheduleBlock(row.files[block]));
      ++block;
    }
    EXPECT_EQ(block, row.files.size());
    EXPECT_EQ(surface.measureWidths, std::vector<int>(row.files.size(), text.right - text.left));
  }
}

TEST(PrintLayout, BlocksWrapToTheTextWidth) {
  // The text rectangle is 1837 wide: a name line of 186 characters takes two
  // lines there (it would fit the printable width of 2000 on one), so its block
  // is 30 high and the next block starts at 110.
  const PrintRect area{0, 0, 2000, 1000};
  const std::string wide(184, 'w');
  const std::vector<PrintFile> files = {fileOf(wide, 0), fileOf("Next", 1), fileOf("Fits", 0)};
  RecordingSurface surface;
  EXPECT_EQ(printSchedules(surface, area, files), 1);
  const std::vector<std::string> events = {
      "start", "H@50 Vantorel Schedules", "B@80 [" + wide + "]", "B@110 [Next]", "B@140 [Fits]", "end"};
  EXPECT_EQ(surface.events, events);
}

}  // namespace
}  // namespace vantr
