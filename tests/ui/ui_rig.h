// The desktop program under test: a program folder of its own, the main window on the
// simulated writer, and a recorder in place of the message boxes and the file chooser.
#pragma once

#include <QAction>
#include <QSignalSpy>
#include <QTest>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/profile.h"
#include "core/quiet_host.h"
#include "tests/support/temp_dir.h"
#include "ui/main_window.h"

namespace lk::test {

struct Shown {
  lk::Icon icon;
  QString text, caption;
};

// Records every message box and question, answers the questions as told and the file
// chooser with the paths queued for it (cancelled when none is left).
class RecordingDialogs : public lk::ui::Dialogs {
 public:
  void Message(QWidget*, lk::Icon icon, const QString& text, const QString& caption) override {
    messages.push_back({icon, text, caption});
  }
  bool Ask(QWidget*, const QString& text, const QString& caption) override {
    questions.push_back({lk::Icon::Question, text, caption});
    return answer;
  }
  QString OpenFileName(QWidget*, const QString& caption, const QString&,
                       const QString& filter) override {
    chooser.push_back(caption + "|" + filter);
    if (files.empty()) return {};
    const QString path = files.front();
    files.pop_front();
    return path;
  }
  QStringList Texts() const {
    QStringList texts;
    for (const Shown& m : messages) texts << m.text;
    return texts;
  }
  std::vector<Shown> messages, questions;
  std::deque<QString> files;
  QStringList chooser;  // caption|filter of every file chooser shown
  bool answer = true;
};

// A program folder of its own (dat/ is written at close) and a window on it.
class Rig {
 public:
  explicit Rig(const std::string& device = "sim") {
    for (const char* folder : {"dat", "cfg", "doc", "examples"}) {
      std::filesystem::copy(std::filesystem::path(LK_PROGRAM_DIR) / folder, dir.Path() / folder,
                            std::filesystem::copy_options::recursive);
    }
    options.device = device;
  }
  lk::ui::MainWindow& Open(bool start = true) {
    auto recorder = std::make_unique<RecordingDialogs>();
    dialogs = recorder.get();
    window = std::make_unique<lk::ui::MainWindow>(lk::Home(dir.Path()), options,
                                                  std::move(recorder));
    if (start) {
      if (!window->Start()) qFatal("the window did not start");
      window->show();
    }
    return *window;
  }
  std::string Example(const std::string& name) const {
    return (dir.Path() / "examples" / name).string();
  }
  std::string Value(const char* file, const char* section, const char* key) {
    lk::QuietHost quiet;
    return lk::GetValue(quiet, dir.Path() / "dat" / file, section, key);
  }
  // The dialog or window of that name, once the menu entry has opened it.
  template <typename T = QWidget>
  T* Find(const char* name) const {
    for (T* found : window->findChildren<T*>(name)) {
      if (found->isVisible()) return found;
    }
    return nullptr;
  }

  lk::test::TempDir dir;
  lk::ops::DeviceOptions options;
  std::unique_ptr<lk::ui::MainWindow> window;
  RecordingDialogs* dialogs = nullptr;
};

inline QStringList Lines(const lk::ui::MainWindow& w) {
  QStringList lines;
  for (const std::string& line : w.LogLines()) lines << QString::fromStdString(line);
  return lines;
}

inline QAction* ActionNamed(const lk::ui::MainWindow& w, const char* name) {
  return w.findChild<QAction*>(name);
}

// Clicks a toolbar key and waits for the command to end; the outcome, or -1 when no
// command ran.
inline int Click(lk::ui::MainWindow& w, const QString& key, int timeoutMs = 20000) {
  QSignalSpy done(&w, &lk::ui::MainWindow::commandFinished);
  w.ToolbarButtonClick(key);
  if (!done.wait(timeoutMs)) return -1;
  return done.takeFirst().at(1).toInt();
}

// Waits until no tick holds the writer's thread, then runs one tick to its end.
inline void Tick(lk::ui::MainWindow& w) {
  QSignalSpy ticked(&w, &lk::ui::MainWindow::tickFinished);
  QTRY_VERIFY(!w.CommandRunning());
  for (int i = 0; i < 2 && ticked.isEmpty(); ++i) {
    w.PostMonitorTick();
    ticked.wait(5000);
  }
  QVERIFY(!ticked.isEmpty());
}

// Closes the window; a tick still on the writer's thread delays the close until it ends.
inline bool CloseWindow(lk::ui::MainWindow& w) {
  w.close();
  return QTest::qWaitFor([&] { return !w.isVisible(); }, 5000);
}

}  // namespace lk::test
