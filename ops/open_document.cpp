#include "ops/open_document.h"

namespace lk::ops {

OpenedDocument OpenDocument(Host& host, const Home& home, Project& project, std::string path) {
  OpenedDocument doc;
  doc.Open = OpenPath(host, home, project, path);
  if (!doc.Open.Opened) return doc;
  if (doc.Open.ShowRollDialog) {
    doc.RollDialog = LoadRollDialog(host, doc.Open.RollSettingsPath);
    project.RollingEnabled = doc.RollDialog->Enable;
  } else {
    project.RollingEnabled = false;
  }
  return doc;
}

std::string RefusalToSend(const OpenResult& open, const std::string& path) {
  if (!open.Opened) return path + ": the file did not open";
  if (open.ReservedWiped) return path + ": the program uses reserved words and was wiped";
  if (!open.ImageLoaded) return path + ": not a program image of a known kind";
  return "";
}

}  // namespace lk::ops
