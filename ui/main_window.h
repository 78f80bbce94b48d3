// FrmMain: the main window. Menus, the toolbar, the status bar and the three child
// windows; every chip command and every tick of the connection monitor runs on the
// writer's thread (Worker) through the operations layer, while this window stays live.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPointer>
#include <QTimer>
#include <QToolButton>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/home.h"
#include "core/project.h"
#include "link/writer.h"
#include "ops/connection_monitor.h"
#include "ops/device.h"
#include "ops/eedata_operations.h"
#include "ops/station.h"
#include "rolling/roll_settings.h"
#include "ui/child_windows.h"
#include "ui/dialogs.h"
#include "ui/gui_host.h"
#include "ui/result_panel.h"
#include "ui/worker.h"

namespace lk::prod {
class Database;
struct RecordRow;
}  // namespace lk::prod

namespace lk::ui {

class ConfigDialog;
class RollDialog;
class EedataWindow;
class WriterIdDialog;

class MainWindow : public QMainWindow, private HostView {
  Q_OBJECT

 public:
  using Command = std::function<ops::CommandResult(ops::Station&)>;

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
  const Home& ProgramHome() const { return home_; }
  Dialogs& Prompts() { return *dialogs_; }
  // The models of the chip database, in its order, as the model chooser offers them.
  const std::vector<std::string>& Models() const { return modelList_; }

  // The handler of a toolbar button by its key; an unknown key does nothing.
  void ToolbarButtonClick(const QString& key);
  // The open dispatcher for a path (Open dialog, recent files, reload, command line).
  void OpenDocumentAt(const std::string& path);
  // Save to a chosen name: the program words come from the document's text.
  void SaveDocumentAs(const std::string& chosenName);
  // Selects a chip model: its record, loaded afresh, taken as AcceptChip takes it.
  bool SelectModel(const std::string& model);
  // The configuration editor's OK: `chip` (model and image) becomes the project's chip,
  // its configuration words go through the rules again, and the menus and views follow.
  // False while a command runs.
  bool AcceptChip(ChipParams chip);

  // Runs a chip command (named after its menu entry) on the writer's thread; `ended`
  // runs on the window's thread once it is over. False when a command already runs.
  bool RunCommand(const QString& name, Command command,
                  std::function<void(const ops::CommandResult&)> ended = {});
  // The EEDATA read or write, from the menu or from the EEDATA window's buttons (which
  // add their status texts); their lines go to the EEDATA window's status.
  bool RunEedataCommand(const QString& name, bool write, bool fromWindow);
  // Where the EEDATA operations' lines go: the EEDATA window's status while it is open,
  // else the main status bar. Callable from the writer's thread.
  ops::EedataReport EedataStatus();
  // A dialog's job on the writer's thread, after what is queued there, on a copy of the
  // project (a job never changes the project); `ended` runs on the window's thread.
  // False (and nothing runs) before the writer is built.
  bool PostWriterJob(std::function<void(ops::Station&)> job, std::function<void()> ended);
  // No command, tick or job holds the writer's thread.
  bool WriterIdle() const { return !busy_ && !tickInFlight_ && jobsInFlight_ == 0; }
  // What the writer said of itself when the monitor last found it; nothing while no
  // writer is connected.
  const std::optional<ops::WriterFacts>& ConnectedWriter() const { return writerFacts_; }
  void WriterIdChanged(std::uint32_t id);

  // The dialogs, as their menu entries open them.
  void ShowConfigDialog();
  // The rolling-code dialog, filled from the settings file, or with `fill` when the open
  // dispatcher has read it already.
  void ShowRollDialog(const std::optional<RollDialogInput>& fill = std::nullopt);
  void ShowEedataWindow();
  void ShowWriterIdDialog();
  void ShowAbout();
  // The open project's rolling-code settings file; empty when no project is open.
  std::filesystem::path RollSettingsFile() const;

  // The production database every chip command uses: a URL (sqlite:PATH,
  // postgresql://...), or "none" or empty for none; `series` names the serial series
  // (empty: the project file's name). Takes effect at the next command.
  void SetProduction(const std::string& url, const std::string& series);
  const std::string& ProductionUrl() const { return dbUrl_; }
  // Settings > production database: asks for the URL and keeps it in dat/data.dat.
  void ShowDatabaseSetting();
  // The records window: the last records, filtered.
  void ShowRecordsWindow();
  // The last `count` records holding `filter`, read on the writer's thread; `done` gets
  // them (or an error text) on the window's thread.
  void QueryRecords(const std::string& filter, int count,
                    std::function<void(std::vector<prod::RecordRow>, std::string)> done);

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
  void ShowEedataImage();
  // After a command, a tick or a job: a close or a reload that waited for the writer.
  void AfterWriterJob();
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
  void CommandEnded(const QString& name, const ops::CommandResult& result,
                    const std::string& faultText,
                    const std::function<void(const ops::CommandResult&)>& ended);
  void TickEnded(const ops::WatchedFile& file, const ops::TickResult& result, bool polling,
                 bool connected);

  // On the writer's thread: the writer exists and the simulated socket holds `model`.
  bool EnsureWriter(const std::string& model);
  // On the writer's thread: the production database of `url`, opened on first use;
  // nullptr when there is none (error empty) or it cannot be used (error says why).
  prod::Database* ProductionDatabase(const std::string& url, std::string& error);
  // Posts a count of this station's passes and failures to the result panel.
  void PostRecordCounts();

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
  int jobsInFlight_ = 0;
  bool closeWhenIdle_ = false;
  bool reloadWhenIdle_ = false;
  bool inputEnabled_ = true;
  bool fitted_ = false;
  ops::WatchedFile watched_;
  std::string fileModifyStatus_;  // status panel 3 of the file last opened
  std::optional<ops::WriterFacts> writerFacts_;
  std::vector<std::string> modelList_;
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
  QPointer<ConfigDialog> configDialog_;
  QPointer<RollDialog> rollDialog_;
  QPointer<EedataWindow> eedata_;
  QPointer<WriterIdDialog> idDialog_;
  QPointer<QDialog> about_;
  QPointer<QDialog> records_;

  // The production database: its URL and series on the window's thread; the connection
  // is the writer's thread's.
  std::string dbUrl_;
  std::string series_;
  std::unique_ptr<prod::Database> db_;
  std::string dbOpenedUrl_;

  // The writer's thread is the last thing to go: declared last, destroyed first.
  Worker worker_;
};

}  // namespace lk::ui
