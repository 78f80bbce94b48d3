#include "ops/open_document.h"

namespace lk::ops {

OpenedDocument OpenDocument(Host& host, const Home& home, Project& project,
                            const std::string& path) {
  OpenedDocument doc;
  doc.open = OpenPath(host, home, project, path);
  if (!doc.open.opened) return doc;
  if (doc.open.showRollDialog) {
    doc.rollDialog = LoadRollDialog(host, doc.open.rollSettingsPath);
    project.RollingEnabled = doc.rollDialog->Enable;
  } else {
    project.RollingEnabled = false;
  }
  return doc;
}

std::string RefusalToSend(const OpenResult& open, const std::string& path) {
  if (!open.opened) return path + ": the file did not open";
  if (open.reservedWiped) return path + ": the program uses reserved words and was wiped";
  if (!open.imageLoaded) return path + ": not a program image of a known kind";
  return "";
}

}  // namespace lk::ops
