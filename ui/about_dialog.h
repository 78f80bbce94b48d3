// The About box: the program's version, its program folder, the chip database in use and
// the writer, when one is connected.
#pragma once

#include <QDialog>

namespace lk::ui {

class MainWindow;

class AboutDialog : public QDialog {
 public:
  explicit AboutDialog(MainWindow& window);
};

}  // namespace lk::ui
