// frmID: sets the writer's own identifier, counting up for the next writer when asked,
// and reads it back. Both run on the writer's thread; the dialog stays live meanwhile.
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>

namespace lk::ui {

class MainWindow;

class WriterIdDialog : public QDialog {
 public:
  explicit WriterIdDialog(MainWindow& window);

  // A set or read is on its way.
  bool Working() const { return working_; }

 protected:
  void reject() override;  // Command3, Esc and the close button; not while working

 private:
  void Set();   // Command1
  void Read();  // Command2
  void SetWorking(bool working);
  void UpdateButtons();

  MainWindow& window_;
  bool working_ = false;
  QLineEdit* id_;
  QCheckBox* increment_;
  QPushButton* set_;
  QPushButton* read_;
  QPushButton* close_;
};

}  // namespace lk::ui
