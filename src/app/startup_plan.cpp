#include "app/startup_plan.h"

#include "base/text.h"

namespace vantr {

AppKind appKindFor(const std::string& baseName) {
  if (equalsNoCase(baseName, "SETUP")) return AppKind::Installer;
  if (equalsNoCase(baseName, "UNINST")) return AppKind::Uninstaller;
  return AppKind::RecordingSystem;
}

RunMode runModeFor(const std::vector<std::string>& args) {
  if (args.empty()) return RunMode::Normal;
  if (args.front() == "/service") return RunMode::Service;
  if (args.front() == "/logon") return RunMode::Logon;
  return RunMode::Normal;
}

int secondStartShowFlag(RunMode mode) { return mode == RunMode::Normal ? 1 : 0; }

bool startsHidden(RunMode mode) { return mode != RunMode::Normal; }

}  // namespace vantr
