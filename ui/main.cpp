// lkwriter: the desktop program.
#include <QApplication>

#include "core/home.h"
#include "ui/main_window.h"
#include "ui/options.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("LKMCU Writer");
  int status = 0;
  const std::optional<lk::ui::StartOptions> options =
      lk::ui::ParseStartOptions(QApplication::arguments(), &status);
  if (!options) return status;

  lk::ui::MainWindow window(lk::Home::Resolve(options->home), options->device);
  if (!window.Start()) return 2;
  window.show();
  if (!options->file.empty()) window.OpenDocumentAt(options->file);
  return QApplication::exec();
}
