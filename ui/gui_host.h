// The desktop program's Host. The operations call it from the writer's thread (and the
// window's own code from the window's thread); whatever it does to a widget happens on
// the window's thread. Log lines, progress and status panels are posted and the caller
// goes on; a message box or a question is shown modally while the caller waits for it.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>

#include "core/host.h"

namespace lk::ui {

// What the Host shows, implemented by the main window; called on the window's thread.
class HostView {
 public:
  virtual ~HostView() = default;
  virtual void ShowMessage(Icon icon, const std::string& text, const std::string& caption) = 0;
  virtual bool AskQuestion(const std::string& text, const std::string& caption) = 0;
  virtual void AppendLog(const std::string& line) = 0;
  virtual void ReplaceLastLogLine(const std::string& line) = 0;
  virtual void ClearLogLines() = 0;
  virtual void SetProgress(long value, long maximum) = 0;
  virtual void SetStatusPanel(int panel, const std::string& text) = 0;
};

class GuiHost : public Host {
 public:
  // context: an object of the window's thread; diagnosticFile: where diagnostics go.
  GuiHost(QObject* context, HostView& view, std::filesystem::path diagnosticFile);

  void Message(Icon icon, const std::string& text, const std::string& caption) override;
  bool Ask(const std::string& text, const std::string& caption) override;
  void Log(const std::string& line) override;
  void ReplaceLastLog(const std::string& line) override;
  void ClearLog() override;
  void Progress(long value, long maximum) override;
  void Status(int panel, const std::string& text) override;
  void Diagnostic(const std::string& line) override;

  // Progress reaches the window at most this often (the first and the last value of a
  // transfer always do), so that a fast transfer never waits for the painting.
  static constexpr qint64 kProgressIntervalMs = 33;

 private:
  void Post(std::function<void()> work);
  void Wait(std::function<void()> work);

  QObject* context_;
  HostView& view_;
  QElapsedTimer clock_;
  std::atomic<qint64> lastProgressMs_{-1000};
  std::mutex diagnosticMutex_;
  std::filesystem::path diagnosticPath_;
  std::ofstream diagnostic_;
};

}  // namespace lk::ui
