// lkwriter: the desktop program.
#include <QApplication>
#include <QMessageBox>

#include "core/home.h"
#include "core/profile.h"
#include "core/quiet_host.h"
#include "prod/database.h"
#include "ui/main_window.h"
#include "ui/options.h"

namespace {

// Before the window exists: the program folder's own messages (a per-user folder that
// cannot be made) in a plain message box; nothing else is asked of it.
class StartupHost : public lk::QuietHost {
 public:
  void Message(lk::Icon, const std::string& text, const std::string& caption) override {
    QMessageBox::information(nullptr, QString::fromStdString(caption),
                             QString::fromStdString(text));
  }
};

}  // namespace

int main(int argc, char** argv) {
  // The command line first: --help and a bad option need no display.
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
  int status = 0;
  const std::optional<lk::ui::StartOptions> options =
      lk::ui::ParseStartOptions(arguments, &status);
  if (!options) return status;

  QApplication app(argc, argv);
  QApplication::setApplicationName("LKMCU Writer");
  // The desktop entry's name: the desktop matches the window to its entry and icon.
  QGuiApplication::setDesktopFileName("org.lkmcu.lkwriter");

  StartupHost startup;
  const lk::Home home = lk::Home::Resolve(startup, options->home);
  lk::ui::MainWindow window(home, options->device);
  // The production database: --db, else the one chosen under Settings, else the program
  // folder's SQLite file.
  lk::QuietHost quiet;
  std::string db =
      options->db.value_or(lk::GetValue(quiet, home.DataDat(), "Production", "Database"));
  if (db.empty()) db = lk::prod::DefaultDatabaseUrl(home.SessionRoot());
  window.SetProduction(db, options->series);
  if (!window.Start()) return 2;
  window.show();
  if (!options->file.empty()) window.OpenDocumentAt(options->file);
  return QApplication::exec();
}
