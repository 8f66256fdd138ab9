// "Print Schedules..." on the test bed's printer: the print dialog answered as
// an operator would, the job's PostScript made into a PDF and its text read
// back with pdftotext, page by page.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "dialog_box.h"
#include "program_test.h"
#include "resource.h"

namespace vantr::e2e {
namespace {

// The print dialog's range choices.
constexpr int kAllChoice = 0x420, kSelectionChoice = 0x421, kPagesChoice = 0x422;

// Where the test bed's printer leaves each job, as job-N.ps.
std::string printedFolder() {
  const char* out = std::getenv("VANTR_PRINT_OUT");
  return out ? out : "";
}

// A line as pdftotext gives it back: spaces at either end are not kept.
std::string trimmed(std::string line) {
  while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.pop_back();
  return line.substr(std::min(line.find_first_not_of(' '), line.size()));
}

// Every text line of a PDF page, blank lines left out.
std::vector<std::string> pageLines(const std::string& page) {
  std::vector<std::string> lines;
  size_t at = 0;
  while (at <= page.size()) {
    size_t end = page.find('\n', at);
    if (end == std::string::npos) end = page.size();
    const std::string line = trimmed(page.substr(at, end - at));
    if (!line.empty()) lines.push_back(line);
    at = end + 1;
  }
  return lines;
}

class PrintSchedulesTest : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    ASSERT_FALSE(printedFolder().empty()) << "the test bed's printer is not set up";
    ASSERT_TRUE(hostOutput("rm -f '" + printedFolder() + "'/job-*"));
  }

  // The files' names and schedule lines as the window lists them.
  std::vector<std::vector<std::string>> shownBlocks(const MainWindow& window) const {
    std::vector<std::vector<std::string>> blocks;
    const std::vector<std::string> names = window.lines(IDC_FILES_LIST);
    for (size_t i = 0; i < names.size(); ++i) {
      window.select(IDC_FILES_LIST, static_cast<int>(i));
      std::vector<std::string> block{"[" + names[i] + "]"};
      for (const std::string& line : window.lines(IDC_SCHEDULE_LIST)) block.push_back(line);
      blocks.push_back(block);
    }
    return blocks;
  }

  // Prints from the menu, answering the print dialog with OK, and answers the
  // job's pages as text (pdftotext's pages); empty when no job came.
  std::vector<std::vector<std::string>> printPages(const MainWindow& window, double* okToJobMs = nullptr) const {
    window.command(CM_PRINT_SCHEDULES);
    Box dialog("Print");
    if (!dialog) return {};
    // The choices of a selection and of page numbers are not offered.
    EXPECT_FALSE(dialog.enabled(kSelectionChoice));
    EXPECT_FALSE(dialog.enabled(kPagesChoice));
    EXPECT_TRUE(dialog.enabled(kAllChoice));
    const auto ok = std::chrono::steady_clock::now();
    if (!dialog.press(IDOK)) return {};
    // The backend renames a job into place once it is whole.
    const std::string jobs = "cd '" + printedFolder() + "' && ls job-*.ps 2>/dev/null";
    if (!waitFor([&] { return !hostOutput(jobs).value_or("").empty(); }, 60000)) return {};
    if (okToJobMs)
      *okToJobMs = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - ok).count();
    const std::optional<std::string> text = hostOutput(
        "cd '" + printedFolder() + "' && ps2pdf job-*.ps job.pdf && pdftotext job.pdf - && rm job.pdf", 60000);
    if (!text) return {};
    std::vector<std::vector<std::string>> pages;
    size_t at = 0;
    while (at < text->size()) {
      size_t end = text->find('\f', at);
      if (end == std::string::npos) end = text->size();
      pages.push_back(pageLines(text->substr(at, end - at)));
      at = end + 1;
    }
    return pages;
  }

  // Each block on one page, in order, under the page's heading.
  static void expectBlocksWhole(const std::vector<std::vector<std::string>>& pages,
                                const std::vector<std::vector<std::string>>& blocks) {
    size_t block = 0;
    for (size_t page = 0; page < pages.size(); ++page) {
      const std::vector<std::string>& lines = pages[page];
      ASSERT_FALSE(lines.empty()) << "page " << page + 1 << " is empty";
      EXPECT_EQ(lines[0],
                page == 0 ? "Vantorel Schedules" : "VANTOREL SCHEDULES (page " + std::to_string(page + 1) + ")");
      size_t at = 1;
      while (at < lines.size()) {
        ASSERT_LT(block, blocks.size()) << "page " << page + 1 << " has more than the files: " << lines[at];
        for (const std::string& expected : blocks[block]) {
          ASSERT_LT(at, lines.size()) << blocks[block][0] << " is split at the end of page " << page + 1;
          EXPECT_EQ(lines[at], trimmed(expected)) << "page " << page + 1;
          ++at;
        }
        ++block;
      }
    }
    EXPECT_EQ(block, blocks.size()) << "files printed";
  }
};

TEST_F(PrintSchedulesTest, PrintsEveryFilesListAndLeavesTheLastSelected) {
  m_library.schedule("Breakfast & News", "[sch0]\ntype=2\ntime=06:00:00\n[sch1]\ntype=1\ntime=07:30:00\n");
  m_library.schedule("Empty", "");
  m_library.schedule("Sport 100%", "[sch0]\ntype=4\ntime=18:00:00\nduration=0:30:00\n");
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());
  const std::vector<std::vector<std::string>> blocks = shownBlocks(window);
  ASSERT_EQ(blocks.size(), 3u);
  ASSERT_EQ(blocks[0].size(), 3u);  // the name and two items
  ASSERT_EQ(blocks[1].size(), 1u);  // no items: the name alone
  window.select(IDC_FILES_LIST, 0);

  const auto pages = printPages(window);
  ASSERT_EQ(pages.size(), 1u);
  expectBlocksWhole(pages, blocks);
  EXPECT_EQ(hostOutput("grep -a '^%%Title' '" + printedFolder() + "'/job-*.ps").value_or(""),
            "%%Title: Vantorel Print Schedules");
  EXPECT_EQ(window.selected(IDC_FILES_LIST), std::vector<int>{2});
  EXPECT_EQ(window.lines(IDC_SCHEDULE_LIST), std::vector<std::string>(blocks[2].begin() + 1, blocks[2].end()));
}

TEST_F(PrintSchedulesTest, ALongLibraryBreaksPagesBetweenFiles) {
  // Files of one to seven items, enough for three pages.
  for (int f = 0; f < 36; ++f) {
    std::string items;
    for (int i = 0; i <= f % 7; ++i)
      items += "[sch" + std::to_string(i) + "]\ntype=2\ntime=" + std::to_string(10 + i) + ":" + std::to_string(10 + f) +
               ":00\n";
    char name[16];
    std::snprintf(name, sizeof name, "File %02d", f);
    m_library.schedule(name, items);
  }
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());
  const std::vector<std::vector<std::string>> blocks = shownBlocks(window);
  ASSERT_EQ(blocks.size(), 36u);

  const auto pages = printPages(window);
  ASSERT_GE(pages.size(), 3u);
  expectBlocksWhole(pages, blocks);
}

TEST_F(PrintSchedulesTest, NoFilesPrintsTheHeadingAloneAndCancelPrintsNothing) {
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());

  window.command(CM_PRINT_SCHEDULES);
  ASSERT_TRUE(Box("Print").press(IDCANCEL));
  SendMessageA(window.dialog(), WM_NULL, 0, 0);
  Sleep(1000);
  EXPECT_EQ(hostOutput("ls '" + printedFolder() + "'").value_or("<no answer>"), "");

  const auto pages = printPages(window);
  ASSERT_EQ(pages.size(), 1u);
  EXPECT_EQ(pages[0], std::vector<std::string>{"Vantorel Schedules"});
}

// 256 files of four items: every block printed whole, and the time from the
// dialog's OK until the printer has the job reported.
TEST_F(PrintSchedulesTest, TwoHundredFiftySixFiles) {
  std::string items;
  for (int i = 0; i < 4; ++i)
    items += "[sch" + std::to_string(i) + "]\ntype=2\ntime=0" + std::to_string(i) + ":15:00\n";
  for (int f = 0; f < 256; ++f) m_library.schedule("Programme " + std::to_string(1000 + f), items);
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());
  ASSERT_EQ(window.lines(IDC_FILES_LIST).size(), 256u);
  window.select(IDC_FILES_LIST, 0);
  const std::vector<std::string> firstItems = window.lines(IDC_SCHEDULE_LIST);
  ASSERT_EQ(firstItems.size(), 4u);

  double ms = 0;
  const auto pages = printPages(window, &ms);
  ASSERT_FALSE(pages.empty());
  std::vector<std::vector<std::string>> blocks;
  for (const std::string& name : window.lines(IDC_FILES_LIST)) {
    blocks.push_back({"[" + name + "]"});
    blocks.back().insert(blocks.back().end(), firstItems.begin(), firstItems.end());
  }
  expectBlocksWhole(pages, blocks);
  std::cout << "printing 256 files of 4 items: " << ms << " ms from OK to the job at the printer, " << pages.size()
            << " pages\n";
}

}  // namespace
}  // namespace vantr::e2e
