// The production records window: the last chip records of the production database,
// newest first, with a filter over their text.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>

namespace lk::ui {

class MainWindow;

class RecordsWindow : public QDialog {
 public:
  explicit RecordsWindow(MainWindow& window);

  // Reads the records again with the filter as it stands.
  void Refresh();
  QTableWidget* Table() const { return table_; }

 private:
  MainWindow& window_;
  QLineEdit* filter_;
  QTableWidget* table_;
  QLabel* status_;
};

}  // namespace lk::ui
