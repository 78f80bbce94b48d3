// FrmRoll: the rolling-code settings of the open project (the settings file beside it).
// The checks of OK, the file and the log lines are the rolling library's; nothing is
// written until OK passes every check, and Cancel writes nothing.
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "rolling/roll_settings.h"

namespace lk::ui {

class MainWindow;

class RollDialog : public QDialog {
 public:
  RollDialog(MainWindow& window, const RollDialogInput& fill);

  // What the controls hold now.
  RollDialogInput Input() const;

 private:
  void Accept();  // CmdOK

  MainWindow& window_;
  QRadioButton* enable_;
  QRadioButton* disable_;
  QGroupBox* settings_;
  QLineEdit* address_;
  QLineEdit* length_;
  QLineEdit* count_;
  QLineEdit* step_;
  QCheckBox* mode2262_;
  QPushButton* ok_;
  QPushButton* cancel_;
};

}  // namespace lk::ui
