#include "ui/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QHeaderView>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QUrl>
#include <cmath>
#include <filesystem>
#include <tuple>

#include "core/chip_database.h"
#include "core/config_defs.h"
#include "core/config_rules.h"
#include "core/image.h"
#include "core/session.h"
#include "files/open_path.h"
#include "files/project_file.h"
#include "ops/auto_sequence.h"
#include "ops/chip_commands.h"
#include "ops/config_commands.h"
#include "ops/documents.h"
#include "ops/download.h"
#include "ops/eedata_operations.h"
#include "ops/open_document.h"
#include "ops/production.h"
#include "prod/chip_records.h"
#include "prod/database.h"
#include "prod/station.h"
#include "ui/about_dialog.h"
#include "ui/records_window.h"
#include "ui/config_dialog.h"
#include "ui/eedata_window.h"
#include "ui/on_gui.h"
#include "ui/roll_dialog.h"
#include "ui/writer_id_dialog.h"
#include "ops/result_lines.h"

namespace lk::ui {
namespace {

// Window geometry is kept in twips: 15 to a (device-independent) pixel.
constexpr double kTwipsPerPixel = 15.0;

int Pixels(float twips) { return static_cast<int>(std::lround(twips / kTwipsPerPixel)); }
float Twips(int pixels) { return static_cast<float>(pixels * kTwipsPerPixel); }

QRect RectOf(const WindowGeometry& g) {
  return QRect(Pixels(g.Left), Pixels(g.Top), Pixels(g.Width), Pixels(g.Height));
}

WindowGeometry GeometryOf(const QRect& r) {
  return {Twips(r.x()), Twips(r.y()), Twips(r.width()), Twips(r.height())};
}

}  // namespace

// The frame's duties, called by the operations on the writer's thread and carried out
// on the window's thread while the operation waits.
class MainWindow::Frame : public ops::FrameUi {
 public:
  explicit Frame(MainWindow& window) : w_(window) {}
  // What only changes the window's state is posted, in order with the log lines; what
  // reads the project waits, since the operation goes on to change it.
  void PauseMonitor() override {
    Post([this] { w_.timer1_.stop(); });
  }
  void ResumeMonitor() override {
    Post([this] { w_.timer1_.start(); });
  }
  void SetWindowEnabled(bool enabled) override {
    Post([this, enabled] { w_.SetInputEnabled(enabled); });
  }
  void ResetProgress() override {
    Post([this] { w_.ResetProgress(); });
  }
  // The window paints itself while the command runs: there is nothing to let through.
  void PumpEvents() override {}
  void RefreshDocument() override {
    Wait([this] { w_.ShowDocument(); });
  }
  void RefreshConfigDisplay() override {
    Wait([this] { w_.ShowConfigOptions(); });
  }
  void RefreshEedataView() override {
    Wait([this] { w_.ShowEedataImage(); });
  }
  std::vector<std::string> OpenWindowNames() const override {
    std::vector<std::string> names;
    Wait([this, &names] { names = w_.OpenWindowNames(); });
    return names;
  }

 private:
  void Post(std::function<void()> work) const { OnGuiThread(&w_, std::move(work), false); }
  void Wait(std::function<void()> work) const { OnGuiThread(&w_, std::move(work), true); }
  MainWindow& w_;
};

MainWindow::MainWindow(const Home& home, const ops::DeviceOptions& device,
                       std::unique_ptr<Dialogs> dialogs, QWidget* parent)
    : QMainWindow(parent),
      home_(home),
      device_(device),
      host_(this, *this, home.Dat("lkwriter-diagnostic.log")),
      frame_(std::make_unique<Frame>(*this)),
      dialogs_(dialogs ? std::move(dialogs) : std::make_unique<Dialogs>()) {
  Name(this, "FrmMain");
  const std::string caption =
      "LKMCU Writer v" + std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor);
  setWindowTitle(Q(caption));
  timer1_.setObjectName("Timer1");
  timer1_.setInterval(1000);
  connect(&timer1_, &QTimer::timeout, this, &MainWindow::PostMonitorTick);

  BuildChildWindows();
  BuildMenus();
  BuildToolbar();
  BuildStatusBar();
  SetStatusPanel(5, caption);
  LoadSession();
  SetAutoBlankMode(true);
  SetModifyMode(false);
  UpdateEedataMenus();
  ShowProjectImage();
}

MainWindow::~MainWindow() = default;

bool MainWindow::Start() {
  return Start(ops::MakeDeviceWriter(host_, home_, device_, project_.Chip.Name));
}

bool MainWindow::Start(std::unique_ptr<Writer> writer) {
  if (!writer) return false;
  writer_ = std::move(writer);
  writerReady_ = true;
  socketModel_ = project_.Chip.Name;
  writer_->SetStopFlag(&stop_);
  timer1_.start();
  PostMonitorTick();  // the status panel need not wait a second
  return true;
}

// ---------------------------------------------------------------------------------------
// Building the window

void MainWindow::BuildChildWindows() {
  mdi_ = new QMdiArea(this);
  Name(mdi_, "MDIClient");
  setCentralWidget(mdi_);

  doc_ = new DocWindow;
  config_ = new ConfigWindow;
  message_ = new MessageWindow;
  auto add = [this](QWidget* content, const QString& name, const QString& caption) {
    QMdiSubWindow* sub = mdi_->addSubWindow(content, Qt::SubWindow);
    Name(sub, name);
    sub->setWindowTitle(caption);
    sub->setAttribute(Qt::WA_DeleteOnClose, false);
    sub->setWindowFlags(Qt::SubWindow | Qt::WindowTitleHint | Qt::WindowMinMaxButtonsHint);
    sub->show();
    return sub;
  };
  docSub_ = add(doc_, "FrmDoc", "");
  configSub_ = add(config_, "FrmConfigDisp", QStringLiteral("配置"));
  messageSub_ = add(message_, "FrmMessage", "Message");
}

namespace {

QAction* MakeAction(QObject* owner, std::map<QString, QAction*>& actions, const QString& name,
                    const QString& text, const QKeySequence& keys = {}) {
  auto* action = new QAction(text, owner);
  action->setObjectName(name);
  if (!keys.isEmpty()) {
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WindowShortcut);
  }
  actions[name] = action;
  return action;
}

// A toolbar icon drawn to fill exactly `size`. The theme has some icons only in smaller
// sizes, and a smaller pixmap sits small and at the top of its button among full-sized
// neighbours; the largest one is scaled to the toolbar's size instead.
QIcon ToolbarIcon(const QIcon& icon, const QSize& size, qreal ratio) {
  const QSize target = size * ratio;
  QPixmap largest = icon.pixmap(target * 4);
  largest.setDevicePixelRatio(1.0);
  if (largest.isNull() || largest.size() == target) return icon;
  QPixmap fitted = largest.scaled(target, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  QPixmap framed(target);
  framed.fill(Qt::transparent);
  QPainter painter(&framed);
  painter.drawPixmap((target.width() - fitted.width()) / 2,
                     (target.height() - fitted.height()) / 2, fitted);
  painter.end();
  framed.setDevicePixelRatio(ratio);
  return QIcon(framed);
}

}  // namespace

void MainWindow::BuildMenus() {
  auto act = [this](const QString& name, const QString& text, const QKeySequence& keys = {}) {
    return MakeAction(this, actions_, name, text, keys);
  };
  auto heading = [this](const QString& name, const QString& title) {
    QMenu* menu = menuBar()->addMenu(title);
    Name(menu, name);
    return menu;
  };

  QMenu* file = heading("mnuFile", QStringLiteral("文件(&F)"));
  auto item = [file](QAction* action) {
    file->addAction(action);
    return action;
  };
  connect(item(act("mnuNew", QStringLiteral("新建(&N)"), QKeySequence::New)), &QAction::triggered,
          this, &MainWindow::NewDocument);
  connect(item(act("mnuOpen", QStringLiteral("打开(&O)..."), QKeySequence::Open)),
          &QAction::triggered, this, &MainWindow::OpenDocumentDialog);
  connect(item(act("mnuSave", QStringLiteral("保存(&S)..."), QKeySequence::Save)),
          &QAction::triggered, this, &MainWindow::SaveDocumentDialog);
  file->addSeparator();
  for (int i = 0; i < 5; ++i) {
    auto* recent = new QAction(this);
    recent->setObjectName("mnuOpenList");
    recent->setProperty("index", i);
    recent->setVisible(false);
    connect(recent, &QAction::triggered, this, [this, i] {
      // A copy: opening rewrites the list the entry lives in.
      const std::string path = project_.RecentFiles[static_cast<std::size_t>(i)];
      OpenDocumentAt(path);
    });
    file->addAction(recent);
    recentActions_.push_back(recent);
  }
  file->addSeparator();
  connect(item(act("mnuExit", QStringLiteral("退出(&X)"))), &QAction::triggered, this,
          &QWidget::close);

  QMenu* run = heading("mnuRun", QStringLiteral("操作(&R)"));
  auto command = [this, run, act](const QString& name, const QString& text,
                                  const QKeySequence& keys, Command body) {
    QAction* action = act(name, text, keys);
    run->addAction(action);
    connect(action, &QAction::triggered, this, [this, name, body] { RunCommand(name, body); });
    return action;
  };
  command("mnuProgram", QStringLiteral("编程"), Qt::Key_F6, ops::Program);
  command("mnuVerify", QStringLiteral("校验"), Qt::Key_F7, ops::Verify);
  command("mnuRead", QStringLiteral("读取"), Qt::Key_F8, ops::Read);
  command("mnuBlank", QStringLiteral("空检"), Qt::Key_F9, ops::BlankCheck);
  run->addSeparator();
  QAction* autoRun = act("mnuAuto", QStringLiteral("自动烧录"), Qt::Key_F5);
  run->addAction(autoRun);
  connect(autoRun, &QAction::triggered, this, [this] {
    const bool withBlank = actions_["mnuAutoBlank"]->isChecked();
    RunCommand("mnuAuto", [withBlank](ops::Station& st) { return ops::Auto(st, withBlank); });
  });
  autoMenu_ = run->addMenu(QStringLiteral("自动烧录方式"));
  Name(autoMenu_, "mnuAutoMode");
  QAction* autoBlank = act("mnuAutoBlank", QStringLiteral("包含空检"));
  QAction* autoNoBlank = act("mnuAutoNoBlank", QStringLiteral("不包含空检"));
  autoBlank->setCheckable(true);
  autoNoBlank->setCheckable(true);
  autoMenu_->addAction(autoBlank);
  autoMenu_->addAction(autoNoBlank);
  connect(autoBlank, &QAction::triggered, this, [this] { SetAutoBlankMode(true); });
  connect(autoNoBlank, &QAction::triggered, this, [this] { SetAutoBlankMode(false); });
  run->addSeparator();
  command("mnuOption", QStringLiteral("写配置字"), QKeySequence(Qt::CTRL | Qt::Key_F6),
          ops::ConfigWrite);
  command("mnuReadConfig", QStringLiteral("读配置字"), QKeySequence(Qt::CTRL | Qt::Key_F8),
          ops::ConfigRead);
  run->addSeparator();
  QAction* readEe = act("mnuReadEeprom", QStringLiteral("读取 EEDATA"),
                        QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F8));
  QAction* writeEe = act("mnuWriteEeprom", QStringLiteral("写入 EEDATA"),
                         QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F6));
  run->addAction(readEe);
  run->addAction(writeEe);
  connect(readEe, &QAction::triggered, this,
          [this] { RunEedataCommand("mnuReadEeprom", false, false); });
  connect(writeEe, &QAction::triggered, this,
          [this] { RunEedataCommand("mnuWriteEeprom", true, false); });
  run->addSeparator();
  command("mnuDownload", QStringLiteral("下载到烧录器"), QKeySequence(Qt::CTRL | Qt::Key_D),
          ops::Download);

  QMenu* setting = heading("mnuSetting", QStringLiteral("设置(&S)"));
  for (const auto& [name, text, show] :
       std::initializer_list<std::tuple<QString, QString, void (MainWindow::*)()>>{
           {"mnuConfigset", QStringLiteral("配置字设置..."), &MainWindow::ShowConfigDialog},
           {"mnuRollingCode", QStringLiteral("滚动码设置..."), nullptr},
           {"mnuEeprom", QStringLiteral("EEDATA 窗口..."), &MainWindow::ShowEedataWindow},
           {"mnuWriterID", QStringLiteral("烧录器 ID..."), &MainWindow::ShowWriterIdDialog},
           {"mnuDatabase", QStringLiteral("生产数据库..."), &MainWindow::ShowDatabaseSetting},
           {"mnuRecords", QStringLiteral("生产记录..."), &MainWindow::ShowRecordsWindow}}) {
    QAction* action = act(name, text);
    setting->addAction(action);
    if (show != nullptr) connect(action, &QAction::triggered, this, show);
  }
  connect(actions_["mnuRollingCode"], &QAction::triggered, this, [this] { ShowRollDialog(); });

  QMenu* modify = heading("mnuFilemodify", QStringLiteral("编辑(&E)"));
  QMenu* modeset = modify->addMenu(QStringLiteral("文件修改"));
  Name(modeset, "mnumodeset");
  QAction* enable = act("mnuModifyEnable", QStringLiteral("允许修改"));
  QAction* disable = act("mnuModifyDisable", QStringLiteral("禁止修改"));
  enable->setCheckable(true);
  disable->setCheckable(true);
  modeset->addAction(enable);
  modeset->addAction(disable);
  connect(enable, &QAction::triggered, this, [this] { SetModifyMode(true); });
  connect(disable, &QAction::triggered, this, [this] { SetModifyMode(false); });

  QMenu* help = heading("mnuHelp", QStringLiteral("帮助(&H)"));
  docMenu_ = help->addMenu(QStringLiteral("芯片资料"));
  Name(docMenu_, "mnuDoc");
  QAction* about = act("mnuAbout", QStringLiteral("关于(&A)..."));
  help->addAction(about);
  connect(about, &QAction::triggered, this, &MainWindow::ShowAbout);
}

void MainWindow::BuildToolbar() {
  toolbar_ = addToolBar(QStringLiteral("工具栏"));
  Name(toolbar_, "Toolbar1");
  toolbar_->setMovable(false);
  toolbar_->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
  toolbar_->setIconSize(QSize(24, 24));
  struct ButtonDef {
    const char* key;
    const char* text;
    QStyle::StandardPixmap icon;
  };
  const ButtonDef defs[] = {
      {"new", "新建", QStyle::SP_FileIcon},
      {"open", "打开", QStyle::SP_DialogOpenButton},
      {"save", "保存", QStyle::SP_DialogSaveButton},
      {"", nullptr, QStyle::SP_CustomBase},
      {"auto", "自动", QStyle::SP_MediaPlay},
      {"blank", "空检", QStyle::SP_DialogResetButton},
      {"read", "读取", QStyle::SP_ArrowUp},
      {"program", "编程", QStyle::SP_ArrowDown},
      {"verify", "校验", QStyle::SP_DialogApplyButton},
      {"", nullptr, QStyle::SP_CustomBase},
      {"option", "写配置", QStyle::SP_FileDialogDetailedView},
      {"ReadConfig", "读配置", QStyle::SP_FileDialogInfoView},
      {"download", "下载", QStyle::SP_DriveHDIcon},
      {"", nullptr, QStyle::SP_CustomBase},
      {"setting", "设置", QStyle::SP_ComputerIcon},
      {"about", "关于", QStyle::SP_MessageBoxInformation},
  };
  for (const ButtonDef& def : defs) {
    if (def.text == nullptr) {
      toolbar_->addSeparator();
      continue;
    }
    auto* button = new QToolButton(toolbar_);
    const QString key = def.key;
    Name(button, key);
    button->setProperty("key", key);
    ShowText(button, QString::fromUtf8(def.text));
    button->setIcon(ToolbarIcon(style()->standardIcon(def.icon), toolbar_->iconSize(),
                                devicePixelRatio()));
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setAutoRaise(true);
    connect(button, &QToolButton::clicked, this, [this, key] { ToolbarButtonClick(key); });
    toolbar_->addWidget(button);
    buttons_[key] = button;
  }
  // The auto button's arrow offers the two ways of the auto sequence.
  QToolButton* autoButton = buttons_["auto"];
  auto* drop = new QMenu(autoButton);
  Name(drop, "autoDropDown");
  drop->addAction(actions_["mnuAutoBlank"]);
  drop->addAction(actions_["mnuAutoNoBlank"]);
  autoButton->setMenu(drop);
  autoButton->setPopupMode(QToolButton::MenuButtonPopup);

  // The second row: the chip model, and what stays live while a command runs, Stop and
  // the verdict of the last command.
  addToolBarBreak();
  QToolBar* production = addToolBar(QStringLiteral("生产"));
  Name(production, "ProductionBar");
  production->setMovable(false);
  production->addWidget(new QLabel(QStringLiteral(" 芯片型号 "), production));
  models_ = new QComboBox(production);
  Name(models_, "ModelChooser");
  models_->setToolTip(QStringLiteral("选择芯片型号"));
  models_->setMaxVisibleItems(20);
  models_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  production->addWidget(models_);
  connect(models_, &QComboBox::activated, this,
          [this](int index) { SelectModel(models_->itemText(index).toStdString()); });
  production->addSeparator();
  stopButton_ = new QToolButton(production);
  Name(stopButton_, "Stop");
  stopButton_->setText(QStringLiteral("停止"));
  stopButton_->setIcon(style()->standardIcon(QStyle::SP_BrowserStop));
  stopButton_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  stopButton_->setShortcut(Qt::Key_Escape);
  stopButton_->setToolTip(QStringLiteral("停止当前操作 (Esc)"));
  stopButton_->setEnabled(false);
  connect(stopButton_, &QToolButton::clicked, this, &MainWindow::StopCommand);
  production->addWidget(stopButton_);
  results_ = new ResultPanel(production);
  production->addWidget(results_);
}

void MainWindow::BuildStatusBar() {
  QStatusBar* bar = statusBar();
  Name(bar, "StatusBar1");
  const int stretch[] = {2, 1, 3, 2, 1};
  for (int i = 0; i < 5; ++i) {
    auto* panel = new QLabel(bar);
    Name(panel, QStringLiteral("StatusBar1Panel%1").arg(i + 1));
    panel->setFrameShape(QFrame::StyledPanel);
    panel->setFrameShadow(QFrame::Sunken);
    bar->addPermanentWidget(panel, stretch[i]);
    panels_.push_back(panel);
  }
  ShowText(panels_[3], ops::kNoDeviceConnected);
}

QString MainWindow::StatusPanel(int panel) const {
  if (panel < 1 || panel > static_cast<int>(panels_.size())) return {};
  return panels_[static_cast<std::size_t>(panel - 1)]->text();
}

// ---------------------------------------------------------------------------------------
// Start-up and close

void MainWindow::LoadSession() {
  // The saved place, kept on the screen as it is now (a smaller screen, a larger scale).
  QRect main = RectOf(ReadGeometry(host_, home_, "FrmMain"));
  if (main.width() < 320 || main.height() < 240) main.setSize({1024, 720});
  if (const QScreen* shown = screen()) {
    const QRect room = shown->availableGeometry();
    main.setSize(main.size().boundedTo(room.size() - QSize(16, 48)));
    main.moveLeft(std::clamp(main.left(), room.left(), room.right() - main.width()));
    main.moveTop(std::clamp(main.top(), room.top(), room.bottom() - main.height()));
  }
  setGeometry(main);
  const std::pair<QMdiSubWindow*, const char*> children[] = {
      {docSub_, "FrmDoc"}, {configSub_, "FrmConfigDisp"}, {messageSub_, "FrmMessage"}};
  for (const auto& [sub, name] : children) {
    const QRect r = RectOf(ReadGeometry(host_, home_, name));
    if (r.width() >= 80 && r.height() >= 60) {
      sub->setGeometry(r);
    } else {
      sub->resize(400, 240);
    }
  }
  const ColumnWidths columns = ReadConfigColumns(host_, home_);
  QTreeWidget* list = config_->List();
  if (Pixels(columns.First) > 0) list->setColumnWidth(0, Pixels(columns.First));
  if (Pixels(columns.Second) > 0) list->setColumnWidth(1, Pixels(columns.Second));

  project_.RecentFiles = ReadRecentFiles(host_, home_);
  RebuildRecentMenu();
  BuildDocumentMenu();

  project_.Chip = LoadStartupChip(host_, home_, ReadMcuType(host_, home_));
  models_->clear();
  modelList_ = ListModels(host_, home_);
  for (const std::string& model : modelList_) models_->addItem(Q(model));
  models_->setCurrentText(Q(project_.Chip.Name));
}

void MainWindow::SaveSession() {
  const std::pair<QWidget*, const char*> windows[] = {{this, "FrmMain"},
                                                      {docSub_, "FrmDoc"},
                                                      {configSub_, "FrmConfigDisp"},
                                                      {messageSub_, "FrmMessage"}};
  for (const auto& [window, name] : windows) {
    WriteGeometry(host_, home_, name, GeometryOf(window->geometry()));
  }
  QTreeWidget* list = config_->List();
  WriteConfigColumns(host_, home_, {Twips(list->columnWidth(0)), Twips(list->columnWidth(1))});
  WriteMcuType(host_, home_, project_.Chip.Name);
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (fitted_) return;
  fitted_ = true;
  // Once the layout has given the child area its size.
  QTimer::singleShot(0, this, &MainWindow::FitChildWindows);
}

// A child window that the saved geometry puts partly outside the child area (a smaller
// screen, a larger toolbar) is brought inside it.
void MainWindow::FitChildWindows() {
  const QSize area = mdi_->viewport()->size();
  for (QMdiSubWindow* sub : {docSub_, configSub_, messageSub_}) {
    QRect g = sub->geometry();
    // Shrink first, so that it keeps its place beside the others; move only if need be.
    if (g.left() + g.width() > area.width()) g.setWidth(std::max(120, area.width() - g.left()));
    if (g.top() + g.height() > area.height()) g.setHeight(std::max(80, area.height() - g.top()));
    g.setWidth(std::min(g.width(), area.width()));
    g.setHeight(std::min(g.height(), area.height()));
    g.moveLeft(std::clamp(g.left(), 0, std::max(0, area.width() - g.width())));
    g.moveTop(std::clamp(g.top(), 0, std::max(0, area.height() - g.height())));
    if (g.bottom() >= area.height() || g.right() >= area.width()) continue;
    if (g != sub->geometry()) sub->setGeometry(g);
  }
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!WriterIdle()) {
    // The writer's thread finishes first (a command is stopped at its next packet and
    // still ends its chip session); the window closes when it is free.
    closeWhenIdle_ = true;
    if (busy_) StopCommand();
    event->ignore();
    return;
  }
  timer1_.stop();
  SaveSession();
  event->accept();
}

// ---------------------------------------------------------------------------------------
// The views

void MainWindow::ShowProjectImage() {
  ShowDocument();
  SetBlankEraseCaptions();
  ShowConfigOptions();
}

void MainWindow::ShowDocument() {
  const ChipParams& chip = project_.Chip;
  doc_->SetHexText(HexText(chip));
  const std::string checksum = ChecksumText(ProgramChecksum(chip));
  doc_->SetChecksum(checksum);
  SetStatusPanel(2, checksum);
  doc_->SetInfo(QStringLiteral("%1  %2 words").arg(Q(chip.Name)).arg(chip.RomWords.size()));
  docSub_->setWindowTitle(Q(project_.DocCaption));
}

void MainWindow::ShowConfigOptions() {
  config_->SetRows(lk::ShowConfigOptions(host_, home_, project_.Chip));
}

void MainWindow::SetBlankEraseCaptions() {
  const BlankEraseCaptions c = GetBlankEraseCaptions(project_.Chip);
  actions_["mnuBlank"]->setText(Q(c.Blank));
  actions_["mnuAutoBlank"]->setText(Q(c.AutoBlank));
  actions_["mnuAutoNoBlank"]->setText(Q(c.AutoNoBlank));
  ShowText(buttons_["blank"], Q(c.Blank));
  buttons_["blank"]->setToolTip(Q(c.ButtonTip));
}

void MainWindow::UpdateEedataMenus() {
  const bool enabled = EedataMenusEnabled(project_.Chip);
  for (const char* name : {"mnuReadEeprom", "mnuWriteEeprom", "mnuEeprom"}) {
    actions_[name]->setEnabled(enabled);
  }
  // The EEDATA window follows the project: closed for a chip without EEDATA, else
  // showing the new project's bytes.
  if (eedata_ && eedata_->isVisible()) {
    if (enabled) {
      eedata_->ProjectReplaced();
    } else {
      eedata_->reject();
    }
  }
}

void MainWindow::ShowEedataImage() {
  if (eedata_ && eedata_->isVisible()) eedata_->ShowText();
}

ops::EedataReport MainWindow::EedataStatus() {
  return [this](const std::string& line) {
    OnGuiThread(
        this,
        [this, line] {
          if (eedata_ && eedata_->isVisible()) {
            eedata_->ShowStatus(Q(line));
          } else {
            statusBar()->showMessage(Q(line), 10000);
          }
        },
        false);
  };
}

void MainWindow::RebuildRecentMenu() {
  for (std::size_t i = 0; i < recentActions_.size(); ++i) {
    const std::string& path = project_.RecentFiles[i];
    recentActions_[i]->setText(QStringLiteral("&%1 %2").arg(i + 1).arg(Q(path)));
    recentActions_[i]->setVisible(!path.empty());
  }
}

void MainWindow::BuildDocumentMenu() {
  docMenu_->clear();
  const std::vector<std::string> files = ops::DocumentFiles(home_);
  for (const std::string& name : files) {
    QAction* entry = docMenu_->addAction(Q(name));
    entry->setObjectName("mnuSubDoc");
    connect(entry, &QAction::triggered, this, [this, entry] { OpenChipDocument(entry->text()); });
  }
  docMenu_->menuAction()->setVisible(!files.empty());
}

void MainWindow::OpenChipDocument(const QString& name) {
  const QString path = Q((home_.DocFolder() / name.toStdString()).string());
  ops::DocumentOpen result = ops::DocumentOpen::Opened;
  if (!QFileInfo(path).isFile()) {
    result = ops::DocumentOpen::NotFound;
  } else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path))) {
    result = ops::DocumentOpen::NoProgram;
  }
  const std::string text = ops::DocumentOpenFailureText(name.toStdString(), result);
  if (!text.empty()) host_.Message(Icon::None, text, kAppTitle);  // a plain box: text only
}

void MainWindow::SetAutoBlankMode(bool withBlank) {
  actions_["mnuAutoBlank"]->setChecked(withBlank);
  actions_["mnuAutoNoBlank"]->setChecked(!withBlank);
}

void MainWindow::SetModifyMode(bool enabled) {
  actions_["mnuModifyEnable"]->setChecked(enabled);
  actions_["mnuModifyDisable"]->setChecked(!enabled);
  doc_->SetEditable(enabled);
}

std::vector<std::string> MainWindow::OpenWindowNames() const {
  std::vector<std::string> names;
  for (QMdiSubWindow* sub : mdi_->subWindowList()) {
    if (sub->isVisible()) names.push_back(sub->objectName().toStdString());
  }
  if (eedata_ && eedata_->isVisible()) names.push_back(eedata_->objectName().toStdString());
  return names;
}

// ---------------------------------------------------------------------------------------
// HostView: what the Host shows, on the window's thread

// A message over the dialog that is in front, so that it is seen where the operator looks.
void MainWindow::ShowMessage(Icon icon, const std::string& text, const std::string& caption) {
  QWidget* front = QApplication::activeModalWidget();
  if (front == nullptr && eedata_ && eedata_->isActiveWindow()) front = eedata_;
  dialogs_->Message(front ? front : this, icon, Q(text), Q(caption));
}

bool MainWindow::AskQuestion(const std::string& text, const std::string& caption) {
  QWidget* front = QApplication::activeModalWidget();
  return dialogs_->Ask(front ? front : this, Q(text), Q(caption));
}

void MainWindow::AppendLog(const std::string& line) { message_->Append(line); }
void MainWindow::ReplaceLastLogLine(const std::string& line) { message_->ReplaceLast(line); }
void MainWindow::ClearLogLines() { message_->Clear(); }

void MainWindow::SetProgress(long value, long maximum) {
  QProgressBar* bar = doc_->Progress();
  const int top = static_cast<int>(std::clamp<long>(maximum, 1, INT_MAX));
  if (bar->maximum() != top) bar->setMaximum(top);
  bar->setValue(static_cast<int>(std::clamp<long>(value, 0, top)));
}

void MainWindow::SetStatusPanel(int panel, const std::string& text) {
  if (panel < 1 || panel > static_cast<int>(panels_.size())) return;
  ShowText(panels_[static_cast<std::size_t>(panel - 1)], Q(text));
}

void MainWindow::SetInputEnabled(bool enabled) {
  inputEnabled_ = enabled;
  menuBar()->setEnabled(enabled);
  toolbar_->setEnabled(enabled);
  models_->setEnabled(enabled);
  docSub_->setEnabled(enabled);
  configSub_->setEnabled(enabled);
  if (eedata_) eedata_->setEnabled(enabled);
}

void MainWindow::ResetProgress() { doc_->Progress()->setValue(0); }

// ---------------------------------------------------------------------------------------
// Files

void MainWindow::NewDocument() {
  if (busy_) return;
  NewFile(project_);
  ShowDocument();
}

void MainWindow::OpenDocumentDialog() {
  if (busy_) return;
  const QString filters = DialogFilter(OpenDialogFilter(project_.Chip)) +
                          ";;hex(*.hex,*.qvm) (*.hex *.qvm);;" + QStringLiteral("所有文件 (*)");
  const QString path = QFileDialog::getOpenFileName(
      this, "Open", QFileInfo(Q(project_.ProjectPath)).absolutePath(), filters);
  if (!path.isEmpty()) OpenDocumentAt(path.toStdString());
}

void MainWindow::OpenDocumentAt(const std::string& path) {
  if (busy_) return;
  const ops::OpenedDocument doc = ops::OpenDocument(host_, home_, project_, path);
  RebuildRecentMenu();
  if (!doc.Open.Opened) {
    // A file that is there but that its reader refused is the document all the same:
    // the dispatcher named it (caption, panel) before reading it, and it is watched.
    if (!doc.Open.FileModifyStatus.empty()) {
      fileModifyStatus_ = doc.Open.FileModifyStatus;
      docSub_->setWindowTitle(Q(project_.DocCaption));
      watched_.Path = project_.ProjectPath;
      watched_.LastSeen = FileModifiedText(project_.ProjectPath);
    }
    return;
  }
  // The dialogs that were editing the previous project's chip or settings close.
  if (configDialog_) configDialog_->reject();
  if (rollDialog_) rollDialog_->reject();
  models_->setCurrentText(Q(project_.Chip.Name));
  UpdateEedataMenus();
  ShowProjectImage();
  fileModifyStatus_ = doc.Open.FileModifyStatus;
  watched_.Path = project_.ProjectPath;
  watched_.LastSeen = FileModifiedText(project_.ProjectPath);
  // With a settings file the panel keeps its text until the dialog's OK sets it.
  if (doc.RollDialog) ShowRollDialog(doc.RollDialog);
}

void MainWindow::SaveDocumentDialog() {
  if (busy_) return;
  const QString name = QFileDialog::getSaveFileName(
      this, "Save", QFileInfo(Q(project_.ProjectPath)).absolutePath(),
      DialogFilter(kSaveDialogFilter), nullptr,
      // An existing file is replaced without a question, as Save always has; the write
      // is atomic, so the old file survives a failed one.
      QFileDialog::DontConfirmOverwrite);
  if (!name.isEmpty()) SaveDocumentAs(name.toStdString());
}

void MainWindow::SaveDocumentAs(const std::string& chosenName) {
  if (busy_) return;
  const std::string path = ProjectSavePath(chosenName);
  if (path.empty()) return;
  if (!WriteProjectFile(host_, project_.Chip, path, doc_->HexText())) return;
  OpenDocumentAt(path);
}

bool MainWindow::SelectModel(const std::string& model) {
  if (busy_) return false;
  ChipParams chip = LoadChipParams(host_, home_, model);
  if (!chip.Loaded()) {
    models_->setCurrentText(Q(project_.Chip.Name));
    return false;
  }
  return AcceptChip(std::move(chip));
}

bool MainWindow::AcceptChip(ChipParams chip) {
  if (busy_) return false;
  chip.ConfigWords = ApplyConfigRules(host_, home_, chip.Name, chip.Prod, chip.ConfigWords);
  project_.Chip = std::move(chip);
  models_->setCurrentText(Q(project_.Chip.Name));
  UpdateEedataMenus();
  ShowProjectImage();
  return true;
}

std::filesystem::path MainWindow::RollSettingsFile() const {
  if (project_.ProjectPath.empty()) return {};
  return RollSettingsPath(project_.ProjectPath);
}

// ---------------------------------------------------------------------------------------
// The dialogs. Each is made when its menu entry is chosen and goes when it closes; a
// dialog that is already open is brought to the front.

namespace {

template <typename Dialog>
bool Raise(const QPointer<Dialog>& dialog) {
  if (!dialog || !dialog->isVisible()) return false;  // closed ones are on their way out
  dialog->show();
  dialog->raise();
  dialog->activateWindow();
  return true;
}

}  // namespace

void MainWindow::ShowConfigDialog() {
  if (busy_ || Raise(configDialog_)) return;
  configDialog_ = new ConfigDialog(*this);
  configDialog_->open();
}

void MainWindow::ShowRollDialog(const std::optional<RollDialogInput>& fill) {
  if (rollDialog_) rollDialog_->reject();
  rollDialog_ = new RollDialog(*this, fill ? *fill : LoadRollDialog(host_, RollSettingsFile()));
  rollDialog_->open();
}

void MainWindow::ShowEedataWindow() {
  if (!EedataMenusEnabled(project_.Chip) || Raise(eedata_)) return;
  eedata_ = new EedataWindow(*this);
  eedata_->setEnabled(inputEnabled_);
  eedata_->show();
}

void MainWindow::ShowWriterIdDialog() {
  if (Raise(idDialog_)) return;
  idDialog_ = new WriterIdDialog(*this);
  idDialog_->open();
}

void MainWindow::ShowAbout() {
  if (Raise(about_)) return;
  about_ = new AboutDialog(*this);
  about_->open();
}

void MainWindow::WriterIdChanged(std::uint32_t id) {
  if (writerFacts_) writerFacts_->Id = id;
}

// ---------------------------------------------------------------------------------------
// Chip commands and the connection monitor on the writer's thread

void MainWindow::ToolbarButtonClick(const QString& key) {
  static const std::map<QString, QString> kRuns = {
      {"new", "mnuNew"},           {"open", "mnuOpen"},         {"save", "mnuSave"},
      {"auto", "mnuAuto"},         {"blank", "mnuBlank"},       {"read", "mnuRead"},
      {"program", "mnuProgram"},   {"verify", "mnuVerify"},     {"option", "mnuOption"},
      {"ReadConfig", "mnuReadConfig"}, {"download", "mnuDownload"}, {"setting", "mnuConfigset"},
      {"about", "mnuAbout"}};
  const auto it = kRuns.find(key);
  if (it == kRuns.end()) return;
  actions_[it->second]->trigger();
}

bool MainWindow::EnsureWriter(const std::string& model) {
  if (!writer_) return false;
  // A simulated socket without a chip of its own holds the selected model: choosing
  // another model puts a fresh chip of it into the socket.
  if (!ops::IsSimulated(device_) || !device_.simChip.empty() || model.empty() ||
      model == socketModel_) {
    return true;
  }
  std::unique_ptr<Writer> fresh = ops::MakeDeviceWriter(host_, home_, device_, model);
  if (!fresh) return true;
  fresh->SetStopFlag(&stop_);
  // The monitor asked the old writer for its version; the new one is asked here.
  if (fresh->FindWriter() && fresh->OpenWriterHandles()) {
    ops::QueryWriter(*fresh, false);
    fresh->CloseWriter();
  }
  writer_ = std::move(fresh);
  socketModel_ = model;
  return true;
}

bool MainWindow::RunCommand(const QString& name, Command command,
                            std::function<void(const ops::CommandResult&)> ended) {
  if (busy_ || !writerReady_) return false;
  busy_ = true;
  stop_.store(false);
  // The window is the command's from the click on, even while a tick still holds the
  // writer's thread.
  SetInputEnabled(false);
  timer1_.stop();
  stopButton_->setEnabled(true);
  results_->Started(actions_[name]->text());
  const std::string model = project_.Chip.Name;
  // What the monitor last heard of the writer (the window's; copied for the thread).
  const std::optional<std::uint32_t> version =
      writerFacts_ ? writerFacts_->Version : std::optional<std::uint32_t>();
  worker_.Post([this, name, command, model, ended, url = dbUrl_, series = series_, version] {
    EnsureWriter(model);
    ops::Station st{host_, *frame_, home_, project_, *writer_};
    // A chip never goes out with a serial or a record the database cannot take.
    std::string dbError;
    prod::Database* db = ProductionDatabase(url, dbError);
    std::optional<ops::ProductionRun> production;
    if (db != nullptr) {
      production.emplace(*db, project_, *writer_, series);
      if (version) production->SetWriterVersion(*version);
      st.production = &*production;
    }
    ops::CommandResult result;
    if (!dbError.empty()) {
      host_.Message(Icon::Critical, dbError + "\nThe chip was not programmed.", kAppTitle);
      result.Verdict = ops::Outcome::Refused;
    } else {
      result = command(st);
    }
    std::optional<std::pair<std::int64_t, std::int64_t>> counts;
    if (db != nullptr) {
      if (auto c = prod::ChipRecords(*db).Counts(prod::StationName(), ops::kUncountedCommands); c.Ok()) counts = *c;
    }
    const std::string faultText =
        result.Verdict == ops::Outcome::Failed && result.Why != Fault::None
            ? writer_->LastFaultText()
            : std::string();
    QMetaObject::invokeMethod(
        this,
        [this, name, result, faultText, ended, counts] {
          CommandEnded(name, result, faultText, ended);
          if (counts) {
            results_->SetCounts(static_cast<int>(counts->first), static_cast<int>(counts->second));
          }
        },
        Qt::QueuedConnection);
  });
  return true;
}

prod::Database* MainWindow::ProductionDatabase(const std::string& url, std::string& error) {
  if (url.empty() || url == "none") {
    db_.reset();
    return nullptr;
  }
  if (db_ && dbOpenedUrl_ == url) return db_.get();
  db_.reset();
  auto opened = prod::OpenDatabase(url);
  if (!opened) {
    error = opened.ErrorText();
    return nullptr;
  }
  db_ = std::move(*opened);
  dbOpenedUrl_ = url;
  return db_.get();
}

void MainWindow::SetProduction(const std::string& url, const std::string& series) {
  dbUrl_ = url;
  series_ = series;
  if (writerReady_) PostRecordCounts();
}

void MainWindow::PostRecordCounts() {
  worker_.Post([this, url = dbUrl_] {
    std::string error;
    prod::Database* db = ProductionDatabase(url, error);
    if (db == nullptr) return;
    auto counts = prod::ChipRecords(*db).Counts(prod::StationName(), ops::kUncountedCommands);
    if (!counts) return;
    const auto [passed, failed] = *counts;
    QMetaObject::invokeMethod(
        this,
        [this, passed, failed] {
          results_->SetCounts(static_cast<int>(passed), static_cast<int>(failed));
        },
        Qt::QueuedConnection);
  });
}

void MainWindow::QueryRecords(const std::string& filter, int count,
                              std::function<void(std::vector<prod::RecordRow>, std::string)> done) {
  worker_.Post([this, filter, count, done, url = dbUrl_] {
    std::string error;
    std::vector<prod::RecordRow> rows;
    if (prod::Database* db = ProductionDatabase(url, error)) {
      auto last = prod::ChipRecords(*db).Last(count, filter);
      if (last) {
        rows = std::move(*last);
      } else {
        error = last.ErrorText();
      }
    } else if (error.empty()) {
      error = "no production database (none)";
    }
    QMetaObject::invokeMethod(
        this, [done, rows = std::move(rows), error] { done(rows, error); }, Qt::QueuedConnection);
  });
}

void MainWindow::ShowDatabaseSetting() {
  bool ok = false;
  const QString url = QInputDialog::getText(
      this, QStringLiteral("生产数据库"),
      QStringLiteral("数据库地址（sqlite:文件路径 或 postgresql://…；none 为不使用）："),
      QLineEdit::Normal, Q(dbUrl_), &ok);
  if (!ok) return;
  const std::string value = url.trimmed().toStdString();
  if (!WriteValue(host_, home_.DataDat(), "Production", "Database", value)) return;
  SetProduction(value.empty() ? prod::DefaultDatabaseUrl(home_.SessionRoot()) : value, series_);
}

void MainWindow::ShowRecordsWindow() {
  if (Raise(records_)) return;
  records_ = new RecordsWindow(*this);
  records_->show();
}

bool MainWindow::RunEedataCommand(const QString& name, bool write, bool fromWindow) {
  const ops::EedataReport report = EedataStatus();
  return RunCommand(name, [report, write, fromWindow](ops::Station& st) {
    if (fromWindow) {
      return write ? ops::WriteEedataButton(st, report) : ops::ReadEedataButton(st, report);
    }
    return write ? ops::WriteEedataToChip(st, report) : ops::ReadEedataFromChip(st, report);
  });
}

bool MainWindow::PostWriterJob(std::function<void(ops::Station&)> job,
                               std::function<void()> ended) {
  if (!writerReady_) return false;
  ++jobsInFlight_;
  const std::string model = project_.Chip.Name;
  worker_.Post([this, job, ended, model, project = project_]() mutable {
    EnsureWriter(model);
    ops::Station st{host_, *frame_, home_, project, *writer_};
    job(st);
    QMetaObject::invokeMethod(
        this,
        [this, ended] {
          --jobsInFlight_;
          if (ended) ended();
          AfterWriterJob();
        },
        Qt::QueuedConnection);
  });
  return true;
}

void MainWindow::CommandEnded(const QString& name, const ops::CommandResult& result,
                              const std::string& faultText,
                              const std::function<void(const ops::CommandResult&)>& ended) {
  busy_ = false;
  stopButton_->setEnabled(false);
  // The frame gave the window back already; this holds even if a command did not.
  if (!inputEnabled_) SetInputEnabled(true);
  if (!timer1_.isActive()) timer1_.start();
  ResetProgress();
  const bool eedata = name == "mnuReadEeprom" || name == "mnuWriteEeprom";
  results_->Ended(actions_[name]->text(), result.Verdict, Q(faultText), !eedata);
  if (ended) ended(result);
  emit commandFinished(name, static_cast<int>(result.Verdict));
  AfterWriterJob();
}

void MainWindow::AfterWriterJob() {
  if (closeWhenIdle_) {
    if (WriterIdle()) close();
    return;
  }
  if (reloadWhenIdle_ && !busy_) {
    reloadWhenIdle_ = false;
    OpenDocumentAt(watched_.Path);
  }
}

void MainWindow::StopCommand() {
  if (busy_) stop_.store(true);
}

void MainWindow::PostMonitorTick() {
  if (busy_ || tickInFlight_ || !writerReady_) return;
  tickInFlight_ = true;
  const std::string model = project_.Chip.Name;
  worker_.Post([this, file = watched_, model]() mutable {
    ops::TickResult result;
    // Polling is on while ticks are posted; the tick switches it off on a bad identity.
    monitor_.Polling = true;
    if (EnsureWriter(model)) result = ops::MonitorTick(host_, *writer_, monitor_, file);
    const bool polling = monitor_.Polling;
    const bool connected = monitor_.WriterConnected;
    QMetaObject::invokeMethod(
        this,
        [this, file, result, polling, connected] { TickEnded(file, result, polling, connected); },
        Qt::QueuedConnection);
  });
}

void MainWindow::TickEnded(const ops::WatchedFile& file, const ops::TickResult& result,
                           bool polling, bool connected) {
  tickInFlight_ = false;
  if (result.Arrived) writerFacts_ = *result.Arrived;
  if (!connected) writerFacts_.reset();
  if (file.Path == watched_.Path) {
    watched_.LastSeen = file.LastSeen;
  } else if (!watched_.Path.empty()) {
    // A file was opened while the tick looked at the one before: the panel is the
    // newer file's.
    SetStatusPanel(3, fileModifyStatus_);
  }
  // A bad identity answer ends the polling until a command restarts it.
  if (!polling) timer1_.stop();
  if (result.Reload && file.Path == watched_.Path) {
    if (busy_) {
      reloadWhenIdle_ = true;
    } else {
      OpenDocumentAt(file.Path);
    }
  }
  emit tickFinished();
  AfterWriterJob();
}

}  // namespace lk::ui
