// The operator's manual as shipped: every link and image of every page leads
// somewhere inside the manual (a page that exists, and an anchor that page
// has), no page is left unreachable from the contents, and the pages the
// program opens by name are there.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "test_support/child_process.h"

namespace {

namespace fs = std::filesystem;

struct Page {
  std::set<std::string> ids;
  std::vector<std::string> links;  // href and src values, in order
};

// Every value of the attribute in the text, in order.
std::vector<std::string> attributeValues(const std::string& text, const std::string& attribute) {
  std::vector<std::string> values;
  const std::string opening = " " + attribute + "=\"";
  for (size_t at = text.find(opening); at != std::string::npos; at = text.find(opening, at)) {
    at += opening.size();
    const size_t end = text.find('"', at);
    if (end == std::string::npos) break;
    values.push_back(text.substr(at, end - at));
  }
  return values;
}

std::map<std::string, Page> readManual(const fs::path& folder) {
  std::map<std::string, Page> pages;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() != ".html") continue;
    std::ifstream in(entry.path());
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Page& page = pages[entry.path().filename().string()];
    for (const std::string& id : attributeValues(text, "id")) page.ids.insert(id);
    for (const char* attribute : {"href", "src"})
      for (const std::string& link : attributeValues(text, attribute)) page.links.push_back(link);
  }
  return pages;
}

TEST(Manual, EveryLinkResolvesAndEveryPageIsReachable) {
  const fs::path folder = vantr::nativePath(VANTR_MANUAL);
  const std::map<std::string, Page> pages = readManual(folder);
  // The pages the program opens: F1, the dialogs' Help buttons, the home page entry.
  for (const char* opened : {"index.html", "files.html", "settings.html", "home.html"})
    EXPECT_EQ(pages.count(opened), 1u) << opened;

  std::set<std::string> reached{"index.html"};
  std::vector<std::string> queue{"index.html"};
  int links = 0;
  while (!queue.empty()) {
    const std::string name = queue.back();
    queue.pop_back();
    for (const std::string& link : pages.at(name).links) {
      ++links;
      EXPECT_EQ(link.find("://"), std::string::npos) << name << ": " << link << " leaves the manual";
      EXPECT_NE(link.rfind("mailto:", 0), 0u) << name << ": " << link;
      const size_t hash = link.find('#');
      const std::string target = hash == 0 ? name : link.substr(0, hash);
      const std::string anchor = hash == std::string::npos ? "" : link.substr(hash + 1);
      if (!fs::exists(folder / target)) {
        ADD_FAILURE() << name << ": " << link << " leads nowhere";
        continue;
      }
      const auto page = pages.find(target);
      if (page == pages.end()) {
        EXPECT_TRUE(anchor.empty()) << name << ": " << link;
        continue;
      }
      if (!anchor.empty()) {
        EXPECT_EQ(page->second.ids.count(anchor), 1u) << name << ": no #" << anchor << " in " << target;
      }
      if (reached.insert(target).second) queue.push_back(target);
    }
  }
  EXPECT_GT(links, 100);
  for (const auto& [name, page] : pages) EXPECT_EQ(reached.count(name), 1u) << name << " cannot be reached";
}

}  // namespace
