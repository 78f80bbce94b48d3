#include "ui/gui_host.h"

#include <QDateTime>

#include "ui/on_gui.h"

namespace lk::ui {

GuiHost::GuiHost(QObject* context, HostView& view, std::filesystem::path diagnosticFile)
    : context_(context), view_(view), diagnosticPath_(std::move(diagnosticFile)) {
  clock_.start();
}

void GuiHost::Post(std::function<void()> work) { OnGuiThread(context_, std::move(work), false); }
void GuiHost::Wait(std::function<void()> work) { OnGuiThread(context_, std::move(work), true); }

void GuiHost::Message(Icon icon, const std::string& text, const std::string& caption) {
  Wait([&] { view_.ShowMessage(icon, text, caption); });
}

bool GuiHost::Ask(const std::string& text, const std::string& caption) {
  bool ok = false;
  Wait([&] { ok = view_.AskQuestion(text, caption); });
  return ok;
}

void GuiHost::Log(const std::string& line) {
  Post([this, line] { view_.AppendLog(line); });
}

void GuiHost::ReplaceLastLog(const std::string& line) {
  Post([this, line] { view_.ReplaceLastLogLine(line); });
}

void GuiHost::ClearLog() {
  Post([this] { view_.ClearLogLines(); });
}

void GuiHost::Progress(long value, long maximum) {
  const qint64 now = clock_.elapsed();
  const bool edge = value <= 0 || value >= maximum;
  if (!edge && now - lastProgressMs_.load() < kProgressIntervalMs) return;
  lastProgressMs_.store(now);
  Post([this, value, maximum] { view_.SetProgress(value, maximum); });
}

void GuiHost::Status(int panel, const std::string& text) {
  Post([this, panel, text] { view_.SetStatusPanel(panel, text); });
}

void GuiHost::Diagnostic(const std::string& line) {
  std::lock_guard lock(diagnosticMutex_);
  if (!diagnostic_.is_open()) diagnostic_.open(diagnosticPath_, std::ios::app);
  if (!diagnostic_) return;
  diagnostic_ << QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toStdString() << ' '
              << line << '\n';
  diagnostic_.flush();
}

}  // namespace lk::ui
