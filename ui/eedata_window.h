// FrmEedata: the open project's EEDATA as hex text, loaded from a HEX file, read from and
// written to the chip, and taken into the project with its EEDATA flag; and the watch of
// a data file that writes the chip each time the file changes. A window beside the main
// window: the chip commands of the main window go on while it is open.
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <cstdint>
#include <vector>

#include "ops/eedata_window.h"

namespace lk::ui {

class MainWindow;

class EedataWindow : public QDialog {
  Q_OBJECT

 public:
  explicit EedataWindow(MainWindow& window);

  // The text built again from the project's EEDATA.
  void ShowText();
  // Another project or model under the window: its EEDATA and flag shown.
  void ProjectReplaced();
  // A status text (the operations' lines and the buttons' texts).
  void ShowStatus(const QString& text);

  QString StatusText() const { return status_->text(); }
  bool Watching() const { return watch_.On; }

  // CmdCancel and the window's close button (and a model without EEDATA): the window
  // closes and the text not taken is dropped; what Command1 loaded is in the project
  // already and stays.
  void reject() override;

 signals:
  void statusShown(const QString& text);

 protected:
  void hideEvent(QHideEvent* event) override;  // the watch ends when the window closes

 private:
  void LoadHexFile();          // Command1
  void TakeText();             // CmdOk
  void WatchToggled(bool on);  // Check2
  void WatchTick();            // Timer1
  void CaretMoved();

  MainWindow& window_;
  ops::EedataWatch watch_;
  bool tickPosted_ = false;
  QTimer timer1_;

  QPlainTextEdit* text_;
  QCheckBox* autoProgram_;
  QCheckBox* watchBox_;
  QLineEdit* watchPath_;
  QPushButton* load_;
  QPushButton* read_;
  QPushButton* write_;
  QPushButton* ok_;
  QPushButton* cancel_;
  QLabel* address_;
  QLabel* status_;
};

}  // namespace lk::ui
