// FrmMain: the main window. Menus, the toolbar, the status bar and the three child
// windows; every chip command and every tick of the connection monitor runs on the
// writer's thread (Worker) through the operations layer, while this window stays live.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QTimer>
#include <QToolButton>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/home.h"
#include "core/project.h"
#include "link/writer.h"
#include "ops/connection_monitor.h"
#include "ops/device.h"
#include "ops/station.h"
#include "ui/child_windows.h"
#include "ui/gui_host.h"
#include "ui/result_panel.h"
#include "ui/worker.h"

namespace lk::ui {

// How message boxes and questions reach the operator; tests put a recorder in.
class Dialogs {
 public:
  virtual ~Dialogs() = default;
  virtual void Message(QWidget* parent, Icon icon, const QString& text, const QString& caption);
  virtual bool Ask(QWidget* parent, const QString& text, const QString& caption);
};

class MainWindow : public QMainWindow, private HostView {
  Q_OBJECT

 public:
  // dialogs: how message boxes and questions are shown (message boxes when null).
  MainWindow(const Home& home, const ops::DeviceOptions& device,
             std::unique_ptr<Dialogs> dialogs = nullptr, QWidget* parent = nullptr);
  ~MainWindow() override;

  // Builds the writer the device options select and starts the connection monitor.
  // False (after a message) when the options cannot be used.
  bool Start();
  // The same with a writer built elsewhere (a test's own bus); the device options then
  // only say whether it is simulated.
  bool Start(std::unique_ptr<Writer> writer);

  Host& UiHost() { return host_; }
  Project& CurrentProject() { return project_; }

  // The handler of a toolbar button by its key; an unknown key does nothing.
  void ToolbarButtonClick(const QString& key);
  // The open dispatcher for a path (Open dialog, recent files, reload, command line).
  void OpenDocumentAt(const std::string& path);
  // Save to a chosen name: the program words come from the document's text.
  void SaveDocumentAs(const std::string& chosenName);
  // Selects a chip model as the configuration editor's OK does.
  bool SelectModel(const std::string& model);
  // Posts one tick of the connection monitor when the writer's thread is free.
  void PostMonitorTick();
  // Asks the running command to stop at its next packet.
  void StopCommand();

  bool CommandRunning() const { return busy_; }
  bool WindowInputEnabled() const { return inputEnabled_; }
  bool MonitorRunning() const { return timer1_.isActive(); }
  std::vector<std::string> LogLines() const { return message_->Lines(); }
  DocWindow* Document() const { return doc_; }
  ConfigWindow* ConfigDisplay() const { return config_; }
  QString StatusPanel(int panel) const;
  ResultPanel* Results() const { return results_; }
  std::vector<std::string> OpenWindowNames() const;

 signals:
  // A chip command has ended and the window is the operator's again.
  void commandFinished(const QString& name, int outcome);
  // A tick of the connection monitor has ended.
  void tickFinished();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  class Frame;
  using Command = std::function<ops::CommandResult(ops::Station&)>;

  // HostView
  void ShowMessage(Icon icon, const std::string& text, const std::string& caption) override;
  bool AskQuestion(const std::string& text, const std::string& caption) override;
  void AppendLog(const std::string& line) override;
  void ReplaceLastLogLine(const std::string& line) override;
  void ClearLogLines() override;
  void SetProgress(long value, long maximum) override;
  void SetStatusPanel(int panel, const std::string& text) override;

  void BuildMenus();
  void BuildToolbar();
  void BuildStatusBar();
  void BuildChildWindows();
  void LoadSession();
  void FitChildWindows();
  void SaveSession();

  // The views that follow from the image.
  void ShowProjectImage();
  void ShowDocument();
  void ShowConfigOptions();
  void SetBlankEraseCaptions();
  void UpdateEedataMenus();
  void RebuildRecentMenu();
  void BuildDocumentMenu();
  void SetAutoBlankMode(bool withBlank);
  void SetModifyMode(bool enabled);

  // The frame's duties, on the window's thread.
  void SetInputEnabled(bool enabled);
  void ResetProgress();

  void NewDocument();
  void OpenDocumentDialog();
  void SaveDocumentDialog();
  void OpenChipDocument(const QString& name);
  void RunCommand(const QString& name, Command command);
  void RunEedataCommand(const QString& name, bool write);
  void CommandEnded(const QString& name, const ops::CommandResult& result,
                    const std::string& faultText);
  void TickEnded(const ops::WatchedFile& file, const ops::TickResult& result, bool polling);

  // On the writer's thread: the writer exists and the simulated socket holds `model`.
  bool EnsureWriter(const std::string& model);

  Home home_;
  ops::DeviceOptions device_;
  Project project_;
  GuiHost host_;
  std::unique_ptr<Frame> frame_;
  std::unique_ptr<Dialogs> dialogs_;

  // Owned by the writer's thread once Start has run.
  std::unique_ptr<Writer> writer_;
  std::string socketModel_;
  ops::MonitorState monitor_;
  std::atomic<bool> stop_{false};

  // The window's thread only.
  bool writerReady_ = false;  // Start has built the writer (writer_ is the thread's then)
  bool busy_ = false;
  bool tickInFlight_ = false;
  bool closeWhenIdle_ = false;
  bool reloadWhenIdle_ = false;
  bool inputEnabled_ = true;
  bool fitted_ = false;
  ops::WatchedFile watched_;
  std::string fileModifyStatus_;  // status panel 3 of the file last opened
  QTimer timer1_;

  QMdiArea* mdi_ = nullptr;
  QMdiSubWindow* docSub_ = nullptr;
  QMdiSubWindow* configSub_ = nullptr;
  QMdiSubWindow* messageSub_ = nullptr;
  DocWindow* doc_ = nullptr;
  ConfigWindow* config_ = nullptr;
  MessageWindow* message_ = nullptr;
  ResultPanel* results_ = nullptr;
  QComboBox* models_ = nullptr;
  QToolButton* stopButton_ = nullptr;
  QToolBar* toolbar_ = nullptr;
  std::map<QString, QAction*> actions_;
  std::map<QString, QToolButton*> buttons_;
  std::vector<QAction*> recentActions_;
  QMenu* autoMenu_ = nullptr;
  QMenu* docMenu_ = nullptr;
  std::vector<QLabel*> panels_;

  // The writer's thread is the last thing to go: declared last, destroyed first.
  Worker worker_;
};

}  // namespace lk::ui
