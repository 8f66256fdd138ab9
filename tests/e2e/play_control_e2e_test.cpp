// The play control window as an operator uses it, driven from another
// process: opened by F10 with nothing playing and by Play, its buttons and
// keys on the channel in hand, the position text following the player, and
// what closing it does to a paused and to a scrubbing channel.
#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "base/time_position.h"
#include "program_test.h"
#include "resource.h"

namespace vantr::e2e {
namespace {

constexpr char kTitle[] = "Vantorel Play Control";

// The window as another process sees it.
class PlayControlWindow {
 public:
  explicit PlayControlWindow(HWND box) : m_box(box) {}
  HWND box() const { return m_box; }
  HWND item(int id) const { return GetDlgItem(m_box, id); }
  std::vector<std::string> lines() const { return listLines(item(IDC_PC_LIST)); }
  std::string position() const {
    char text[64] = {};
    SendMessageA(item(IDC_PC_POSITION), WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
  }
  // "P" play, "S" scrub, "Z" pause for each button shown pressed.
  std::string pressed() const {
    std::string shown;
    if (SendMessageA(item(IDC_PC_PLAY), BM_GETCHECK, 0, 0) == BST_CHECKED) shown += 'P';
    if (SendMessageA(item(IDC_PC_SCRUB), BM_GETCHECK, 0, 0) == BST_CHECKED) shown += 'S';
    if (SendMessageA(item(IDC_PC_PAUSE), BM_GETCHECK, 0, 0) == BST_CHECKED) shown += 'Z';
    return shown;
  }
  void click(int id) const { PostMessageA(item(id), BM_CLICK, 0, 0); }
  // A key pressed and released over the list, as the operator types it.
  void key(WPARAM vk) const {
    PostMessageA(item(IDC_PC_LIST), WM_KEYDOWN, vk, 1);
    PostMessageA(item(IDC_PC_LIST), WM_KEYUP, vk, 0xC0000001);
  }
  // Esc or the close box: the dialog's Cancel.
  void close() const { PostMessageA(m_box, WM_COMMAND, IDCANCEL, 0); }

 private:
  HWND m_box;
};

// The tooltip windows the dialog owns.
std::vector<HWND> tooltipsOf(HWND box) {
  struct Search {
    HWND owner;
    std::vector<HWND> found;
  } search{box, {}};
  EnumThreadWindows(
      GetWindowThreadProcessId(box, nullptr),
      [](HWND hwnd, LPARAM data) -> BOOL {
        auto* s = reinterpret_cast<Search*>(data);
        char name[64] = {};
        GetClassNameA(hwnd, name, sizeof name);
        if (lstrcmpiA(name, TOOLTIPS_CLASSA) == 0 && GetWindow(hwnd, GW_OWNER) == s->owner) s->found.push_back(hwnd);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

class PlayControl : public ProgramTest {
 protected:
  // A named file with a tone of `seconds`.
  void file(const std::string& name, int seconds) {
    m_library.schedule(name, "");
    m_library.tone(name, seconds);
  }
  PlayControlWindow waitForWindow() {
    HWND box = nullptr;
    waitFor([&] { return (box = findBox(kTitle)) != nullptr; });
    return PlayControlWindow(box);
  }
  std::string asRun() const { return m_library.asRun(); }
};

TEST_F(PlayControl, NothingPlayingF10ShowsAnEmptyListAndChannelZero) {
  file("Idle", 5);
  MainWindow main = start();
  ASSERT_TRUE(main.dialog());
  PostMessageA(main.item(IDC_FILES_LIST), WM_KEYDOWN, VK_F10, 1);
  PlayControlWindow window = waitForWindow();
  ASSERT_TRUE(window.box()) << "F10 opens the play control window";
  EXPECT_TRUE(window.lines().empty());
  EXPECT_EQ(window.pressed(), "Z") << "channel 0 is not open: only Pause shows pressed";
  EXPECT_EQ(window.position(), " 0:00:00.0");
  for (int id : {IDC_PC_PLAY, IDC_PC_SCRUB, IDC_PC_PAUSE, IDC_PC_START, IDC_PC_REWIND, IDC_PC_FORWARD})
    EXPECT_TRUE(SendMessageA(window.item(id), BM_GETIMAGE, IMAGE_BITMAP, 0)) << "button " << id << " has its bitmap";
  const std::vector<HWND> tips = tooltipsOf(window.box());
  ASSERT_EQ(tips.size(), 1u);
  EXPECT_EQ(SendMessageA(tips[0], TTM_GETTOOLCOUNT, 0, 0), 7) << "the list and the six buttons";

  // Channel 0 has no file: every button and key does nothing at all.
  for (int id : {IDC_PC_PLAY, IDC_PC_SCRUB, IDC_PC_PAUSE, IDC_PC_START, IDC_PC_REWIND, IDC_PC_FORWARD})
    window.click(id);
  for (WPARAM vk : {VK_F9, VK_SPACE, VK_PAUSE, VK_HOME, VK_LEFT, VK_RIGHT}) window.key(vk);
  Sleep(500);
  EXPECT_EQ(window.pressed(), "Z");
  EXPECT_EQ(window.position(), " 0:00:00.0");
  EXPECT_EQ(main.text(IDC_PLAY_STATUS), "");
  EXPECT_EQ(asRun(), "");

  window.close();
  EXPECT_TRUE(waitFor([&] { return !findBox(kTitle); }));
  EXPECT_FALSE(IsWindow(tips[0])) << "the tooltip window goes with it";
  EXPECT_FALSE(m_process->wait(0)) << "the program ended";
}

// Play opens the window with the file in hand; its position text follows the
// player; paused and closed, the file stops.
TEST_F(PlayControl, PlayOpensTheWindowAndPauseThenCloseStopsTheFile) {
  file("Show", 30);
  MainWindow main = start();
  ASSERT_EQ(main.lines(IDC_FILES_LIST), std::vector<std::string>{"Show"});
  main.command(IDC_PLAY);
  PlayControlWindow window = waitForWindow();
  ASSERT_TRUE(window.box()) << "Play opens the play control window";
  EXPECT_EQ(window.lines(), std::vector<std::string>{"Show"});
  EXPECT_TRUE(waitFor([&] { return window.pressed() == "P"; })) << window.pressed();
  EXPECT_EQ(main.text(IDC_PLAY_STATUS), "[play] Show") << "the work window's status follows under the dialog";

  // How often the position text changes while the file plays. The player
  // reports one position a block (0.1 s of sound) played, so the text can
  // change no more often than the device plays blocks; it must change at
  // every one of them.
  // Measured from the third second on, past the device's start.
  ASSERT_TRUE(waitFor([&] { return parsePosition(window.position()) >= 20000; }));
  const auto begin = std::chrono::steady_clock::now();
  const int32_t first = parsePosition(window.position());
  std::string last = window.position();
  int changes = 0;
  while (std::chrono::steady_clock::now() - begin < std::chrono::seconds(6)) {
    const std::string now = window.position();
    if (now != last) ++changes;
    last = now;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  const double played = (parsePosition(last) - first) / 10000.0;
  std::printf(
      "position text: %d changes in %.2f s (%.1f a second); %.2f s of sound played (%.1f changes a second of it)\n",
      changes, seconds, changes / seconds, played, changes / played);
  RecordProperty("position_changes_per_second", std::to_string(changes / seconds));
  RecordProperty("position_changes_per_second_played", std::to_string(changes / played));
  EXPECT_GE(changes / played, 9.5) << "the text skips positions the player reported";
  EXPECT_GE(changes / seconds, 8.0) << "the device plays far slower than real time";

  window.click(IDC_PC_PAUSE);
  ASSERT_TRUE(waitFor([&] { return window.pressed() == "PZ"; })) << window.pressed();
  // A block that finished just before the pause may still be reported.
  Sleep(300);
  const std::string held = window.position();
  Sleep(600);
  EXPECT_EQ(window.position(), held) << "paused: the position holds";
  window.close();
  ASSERT_TRUE(waitFor([&] { return !findBox(kTitle); }));
  EXPECT_TRUE(waitFor([&] { return main.text(IDC_PLAY_STATUS).empty(); })) << main.text(IDC_PLAY_STATUS);
  EXPECT_TRUE(waitFor([&] { return asRun().find("\tplay end\tShow\toperator\tdone") != std::string::npos; }))
      << asRun();
}

// The keys on the channel in hand: Home, Right (3 s, or 0.1 s while
// scrubbing), Left past the start; closed while scrubbing, the file plays on.
TEST_F(PlayControl, StepsFollowScrubbingAndCloseKeepsAScrubbedFilePlaying) {
  file("Tune", 30);
  MainWindow main = start();
  main.command(IDC_PLAY);
  PlayControlWindow window = waitForWindow();
  ASSERT_TRUE(window.box());
  ASSERT_TRUE(waitFor([&] { return window.pressed() == "P"; })) << window.pressed();

  struct Step {
    WPARAM key;
    const char* position;  // the text once the key has acted
    const char* pressed;
  };
  const Step steps[] = {
      {VK_PAUSE, nullptr, "PZ"},
      {VK_HOME, " 0:00:00.0", "PZ"},
      {VK_RIGHT, " 0:00:03.0", "PZ"},  // paused: 3 s
      {VK_RIGHT, " 0:00:06.0", "PZ"},
      {VK_LEFT, " 0:00:03.0", "PZ"},
      {VK_SPACE, " 0:00:03.0", "PS"},  // scrubbing from where it stands
      {VK_RIGHT, " 0:00:03.1", "PS"},  // scrubbing: 0.1 s
      {VK_RIGHT, " 0:00:03.2", "PS"},
      {VK_LEFT, " 0:00:03.1", "PS"},
      {VK_HOME, " 0:00:00.0", "PS"},
      {VK_LEFT, "-0:00:00.1", "PS"},  // before the start: the player takes the negative frame
  };
  for (const Step& s : steps) {
    SCOPED_TRACE("key " + std::to_string(s.key));
    window.key(s.key);
    EXPECT_TRUE(waitFor([&] { return window.pressed() == s.pressed; }, 5000)) << window.pressed();
    if (s.position) {
      EXPECT_TRUE(waitFor([&] { return window.position() == s.position; }, 5000)) << window.position();
    }
  }
  Sleep(500);
  EXPECT_EQ(window.position(), "-0:00:00.1") << "scrubbing holds the position";

  window.close();
  ASSERT_TRUE(waitFor([&] { return !findBox(kTitle); }));
  Sleep(1500);
  EXPECT_EQ(main.text(IDC_PLAY_STATUS), "[play] Tune") << "the scrubbed file plays on";
  EXPECT_EQ(asRun().find("\tplay end\t"), std::string::npos) << asRun();

  // Opened again, the window shows it playing: its position moves.
  PostMessageA(main.item(IDC_FILES_LIST), WM_KEYDOWN, VK_F10, 1);
  window = waitForWindow();
  ASSERT_TRUE(window.box());
  EXPECT_EQ(window.lines(), std::vector<std::string>{"Tune"});
  EXPECT_EQ(window.pressed(), "P");
  const std::string at = window.position();
  EXPECT_TRUE(waitFor([&] { return window.position() != at; }, 5000)) << "the position does not move";
  window.click(IDC_PC_SCRUB);
  EXPECT_TRUE(waitFor([&] { return window.pressed() == "PS"; })) << window.pressed();
  window.click(IDC_PC_PLAY);
  EXPECT_TRUE(waitFor([&] { return window.pressed() == "P"; })) << window.pressed();
  window.close();
  ASSERT_TRUE(waitFor([&] { return !findBox(kTitle); }));
  EXPECT_EQ(main.text(IDC_PLAY_STATUS), "[play] Tune");
}

}  // namespace
}  // namespace vantr::e2e
