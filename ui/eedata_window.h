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
  // What Cancel goes back to from now on: the project's EEDATA as it is now. Cancel
  // takes back the window's own edits (the text taken, a file loaded, the flag) made
  // since the window opened or a chip command last ended; what a command read or wrote
  // stays, as it would after the same command from the menu.
  void KeepProject();
  // Another project or model under the window: its EEDATA shown and kept.
  void ProjectReplaced();
  // Closes the window and leaves the project as it is (the chip has no EEDATA).
  void Dismiss();
  // A status text (the operations' lines and the buttons' texts).
  void ShowStatus(const QString& text);

  QString StatusText() const { return status_->text(); }
  bool Watching() const { return watch_.On; }

 signals:
  void statusShown(const QString& text);

 protected:
  void reject() override;  // CmdCancel and the window's close button
  void hideEvent(QHideEvent* event) override;  // the watch ends with the window

 private:
  void LoadHexFile();          // Command1
  void TakeText();             // CmdOk
  void WatchToggled(bool on);  // Check2
  void WatchTick();            // Timer1
  void CaretMoved();

  MainWindow& window_;
  // The project's EEDATA as Cancel puts it back.
  std::vector<std::uint8_t> savedBytes_;
  std::uint8_t savedFlag_ = 0;
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
