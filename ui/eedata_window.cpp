#include "ui/eedata_window.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QVBoxLayout>
#include <memory>

#include "core/image.h"
#include "ui/main_window.h"

namespace lk::ui {

EedataWindow::EedataWindow(MainWindow& window) : QDialog(&window), window_(window) {
  Name(this, "FrmEedata");
  setWindowTitle("EEDATA");
  setAttribute(Qt::WA_DeleteOnClose);

  load_ = new QPushButton(QStringLiteral("导入HEX文件..."), this);
  Name(load_, "Command1");
  read_ = new QPushButton(QStringLiteral("读取EEDATA"), this);
  Name(read_, "cmdReadEedata");
  write_ = new QPushButton(QStringLiteral("烧录EEDATA"), this);
  Name(write_, "CmdWriteEedata");
  connect(load_, &QPushButton::clicked, this, &EedataWindow::LoadHexFile);
  connect(read_, &QPushButton::clicked, this,
          [this] { window_.RunEedataCommand("mnuReadEeprom", false, true); });
  connect(write_, &QPushButton::clicked, this,
          [this] { window_.RunEedataCommand("mnuWriteEeprom", true, true); });

  text_ = new QPlainTextEdit(this);
  Name(text_, "TextMain");
  text_->setFont(MonospaceFont());
  text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  text_->setUndoRedoEnabled(false);
  connect(text_, &QPlainTextEdit::cursorPositionChanged, this, &EedataWindow::CaretMoved);
  const QFontMetrics metrics(text_->font());
  // Sixteen bytes a line and, for the usual 256 bytes, every line at once.
  text_->setMinimumSize(metrics.horizontalAdvance(QString(54, '0')) + 40,
                        metrics.lineSpacing() * 17 + 12);

  autoProgram_ = new QCheckBox(QStringLiteral("自动烧录EEDATA(需保存lkx文件)"), this);
  Name(autoProgram_, "Check1");
  watchBox_ = new QCheckBox(QStringLiteral("监视数据文件"), this);
  Name(watchBox_, "Check2");
  watchPath_ = new QLineEdit(this);
  Name(watchPath_, "Text1");
  watchPath_->setPlaceholderText(QStringLiteral("数据EEDATA文件路径"));
  connect(watchBox_, &QCheckBox::toggled, this, &EedataWindow::WatchToggled);

  ok_ = new QPushButton(QStringLiteral("确定"), this);
  Name(ok_, "CmdOk");
  cancel_ = new QPushButton(QStringLiteral("取消"), this);
  Name(cancel_, "CmdCancel");
  connect(ok_, &QPushButton::clicked, this, &EedataWindow::TakeText);
  connect(cancel_, &QPushButton::clicked, this, &EedataWindow::reject);

  auto* bar = new QStatusBar(this);
  Name(bar, "StatusBar1");
  bar->setSizeGripEnabled(false);
  address_ = new QLabel(bar);
  Name(address_, "StatusBar1Panel1");
  address_->setMinimumWidth(address_->fontMetrics().horizontalAdvance("Address:0000H") + 12);
  status_ = new QLabel(bar);
  Name(status_, "StatusBar1Panel2");
  bar->addWidget(address_);
  bar->addWidget(status_, 1);

  auto* commands = new QHBoxLayout;
  commands->addWidget(load_);
  commands->addWidget(read_);
  commands->addWidget(write_);
  commands->addStretch(1);
  auto* watch = new QHBoxLayout;
  watch->addWidget(watchBox_);
  watch->addWidget(watchPath_, 1);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(commands);
  layout->addWidget(text_, 1);
  layout->addWidget(autoProgram_);
  layout->addLayout(watch);
  layout->addLayout(buttons);
  layout->addWidget(bar);

  timer1_.setObjectName("Timer1");
  timer1_.setInterval(500);
  connect(&timer1_, &QTimer::timeout, this, &EedataWindow::WatchTick);

  ProjectReplaced();
}

void EedataWindow::ShowText() {
  QString text = Q(EedataHexText(window_.CurrentProject().Chip));
  text.remove(QLatin1Char('\r'));
  text_->setPlainText(text);
}

void EedataWindow::ProjectReplaced() {
  autoProgram_->setChecked(window_.CurrentProject().Chip.EeFlag == kEeFlagPresent);
  ShowText();
}

void EedataWindow::reject() {
  // A command of this window (or of the menu) works on the project until it ends.
  if (window_.CommandRunning()) return;
  QDialog::reject();
}

void EedataWindow::ShowStatus(const QString& text) {
  status_->setText(text);
  emit statusShown(text);
}

void EedataWindow::hideEvent(QHideEvent* event) {
  // Closing ends the watch; minimising (a hide the window system sends) does not.
  if (!event->spontaneous()) {
    timer1_.stop();
    watch_.On = false;
  }
  QDialog::hideEvent(event);
}

void EedataWindow::LoadHexFile() {
  const QString path =
      window_.Prompts().OpenFileName(this, "Open", QString(), DialogFilter("hex(*.hex)|*.hex"));
  if (path.isEmpty()) return;  // the chooser was cancelled
  if (ops::LoadEedataHex(window_.UiHost(), window_.CurrentProject().Chip, path.toStdString()) ==
      ops::EedataLoad::Loaded) {
    ShowText();
  }
}

void EedataWindow::TakeText() {
  QString text = text_->toPlainText();
  text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
  ops::TakeEedataText(window_.CurrentProject().Chip, text.toStdString(), autoProgram_->isChecked());
  accept();
}

void EedataWindow::WatchToggled(bool on) {
  if (on && !ops::StartEedataWatch(window_.UiHost(), watch_, watchPath_->text().toStdString())) {
    const QSignalBlocker quiet(watchBox_);
    watchBox_->setChecked(false);
    on = false;
  }
  watch_.On = on;
  watchPath_->setReadOnly(on);
  if (on) {
    timer1_.start();
  } else {
    timer1_.stop();
  }
}

// Each tick looks at the file on the writer's thread, when nothing else holds it; a tick
// that finds the thread busy is skipped.
void EedataWindow::WatchTick() {
  if (!watch_.On || tickPosted_ || !window_.WriterIdle()) return;
  tickPosted_ = true;
  auto watch = std::make_shared<ops::EedataWatch>(watch_);
  const ops::EedataReport report = window_.EedataStatus();
  QPointer<EedataWindow> self(this);
  window_.PostWriterJob(
      [watch, report](ops::Station& st) { ops::EedataWatchTick(st, *watch, report); },
      [self, watch] {
        if (!self) return;
        self->tickPosted_ = false;
        self->watch_.LastSeen = watch->LastSeen;
        // The file went away: the tick has shown its message and stopped the watch.
        if (!watch->On && self->watch_.On) self->watchBox_->setChecked(false);
      });
}

void EedataWindow::CaretMoved() {
  const QTextCursor caret = text_->textCursor();
  address_->setText(Q(ops::EedataCaretText(caret.blockNumber(), caret.positionInBlock())));
}

}  // namespace lk::ui
