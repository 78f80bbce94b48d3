// The desktop program's figures:
//   start    from the process start (and from main) to the first painted hex view, with
//            the simulated writer and an example project open; median of fresh processes
//   open     a 65,536-word image opened into the hex view until it is painted; then a
//            scroll to its end and an edit in its middle, each until painted
//   auto     the same Auto through the window and as the command line runs it (the
//            operations with no window), both on the simulator's timing model; the ratio
//            command line / window (goal: at least 0.97)
//   rss      the peak resident set of this process after all of the above
// Without a display it runs on Qt's offscreen platform.
#include <sys/resource.h>
#include <unistd.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "core/quiet_host.h"
#include "files/image_writers.h"
#include "ops/auto_sequence.h"
#include "ops/connection_monitor.h"
#include "ops/device.h"
#include "ops/open_document.h"
#include "ui/main_window.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double Ms(Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); }

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v.empty() ? 0 : v[v.size() / 2];
}

class QuietDialogs : public lk::ui::Dialogs {
 public:
  void Message(QWidget*, lk::Icon, const QString&, const QString&) override {}
  bool Ask(QWidget*, const QString&, const QString&) override { return true; }
};

// Notes the first paint of a widget after Arm().
class PaintWatch : public QObject {
 public:
  explicit PaintWatch(QWidget* widget) { widget->installEventFilter(this); }
  void Arm() { painted_ = false; }
  bool Wait(int timeoutMs = 5000) {
    QElapsedTimer t;
    t.start();
    while (!painted_ && t.elapsed() < timeoutMs) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return painted_;
  }
  Clock::time_point When() const { return when_; }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint && !painted_) {
      painted_ = true;
      when_ = Clock::now();
    }
    return false;
  }

 private:
  bool painted_ = false;
  Clock::time_point when_;
};

// A program folder of its own: a copy of the built one.
fs::path CopyProgramFolder() {
  std::string tmpl = (fs::temp_directory_path() / "lkuibench-XXXXXX").string();
  if (::mkdtemp(tmpl.data()) == nullptr) std::exit(2);
  const fs::path dir = tmpl;
  for (const char* folder : {"dat", "cfg", "doc", "examples"}) {
    fs::copy(fs::path(LK_PROGRAM_DIR) / folder, dir / folder, fs::copy_options::recursive);
  }
  return dir;
}

double ProcessAgeMs() {
  std::ifstream stat("/proc/self/stat");
  std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
  std::istringstream fields(text.substr(text.rfind(')') + 2));
  std::string field;
  for (int i = 3; i <= 22; ++i) fields >> field;  // field 22: start time in clock ticks
  double uptime = 0;
  std::ifstream("/proc/uptime") >> uptime;
  return uptime * 1000.0 - std::stod(field) * 1000.0 / static_cast<double>(sysconf(_SC_CLK_TCK));
}

long PeakRssKb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// One fresh process on the program folder argv[2]: prints "<ms since main> <ms since
// process start> <peak rss kB>".
int StartChild(const Clock::time_point mainStart, int argc, char** argv) {
  QApplication app(argc, argv);
  // A copy of the program folder made by the parent: opening writes the recent files.
  if (argc < 3) return 2;
  const fs::path dir = argv[2];
  lk::ops::DeviceOptions device;
  device.device = "sim";
  lk::ui::MainWindow window(lk::Home(dir), device, std::make_unique<QuietDialogs>());
  PaintWatch paint(window.Document()->Text()->viewport());
  if (!window.Start()) return 2;
  window.show();
  window.OpenDocumentAt((dir / "examples" / "qvm50p99.lkx").string());
  if (!paint.Wait()) return 1;
  const double sinceMain = Ms(paint.When() - mainStart);
  const double sinceProcess = ProcessAgeMs() - Ms(Clock::now() - paint.When());
  std::printf("%.1f %.1f %ld\n", sinceMain, sinceProcess, PeakRssKb());
  std::fflush(stdout);
  std::_Exit(0);  // the figures are out; no close, so the session files stay untouched
}

void StartFigures(const char* self) {
  const fs::path dir = CopyProgramFolder();
  std::vector<double> main, process;
  long rss = 0;
  for (int i = 0; i < 7; ++i) {
    const std::string command = std::string(self) + " start " + dir.string();
    FILE* child = popen(command.c_str(), "r");
    double a = 0, b = 0;
    long kb = 0;
    if (child != nullptr && std::fscanf(child, "%lf %lf %ld", &a, &b, &kb) == 3) {
      main.push_back(a);
      process.push_back(b);
      rss = std::max(rss, kb);
    }
    if (child != nullptr) pclose(child);
  }
  std::error_code ec;
  fs::remove_all(dir, ec);
  std::printf("start: first painted hex view %.1f ms after main, %.1f ms after the process "
              "start (median of %zu; goal 300 ms); peak RSS of a started window %.1f MB\n",
              Median(main), Median(process), main.size(), rss / 1024.0);
}

void OpenFigures() {
  std::string tmpl = (fs::temp_directory_path() / "lkuibench64k-XXXXXX").string();
  if (::mkdtemp(tmpl.data()) == nullptr) std::exit(2);
  const fs::path dir = tmpl;
  fs::create_directories(dir / "dat");
  std::ofstream(dir / "dat" / "qvmc.ini")
      << "[MCULIST]\nBENCH64K=1\n[BENCH64K]\nPROD=FFFF\nROMSIZE=FFFF\nCONFIGLENTH=1\n"
         "HEXMCU=FFFF\n";
  std::ofstream(dir / "dat" / "cfg.ini");
  std::ofstream(dir / "dat" / "data.dat")
      << "[Data]\nMcuType=BENCH64K\n[RecentFile]\nFile0=\nFile1=\nFile2=\nFile3=\nFile4=\n";
  std::ofstream(dir / "dat" / "frm.dat") << "[FrmMain]\nWidth=15360\nHeight=10800\n";
  const std::vector<std::int32_t> words = lk::bench::RandomWords(65536);
  const fs::path hex = dir / "image.hex";
  std::ofstream(hex, std::ios::binary) << lk::MakeIntelHex(words, 16);

  lk::ops::DeviceOptions device;
  device.device = "sim";
  lk::ui::MainWindow window(lk::Home(dir), device, std::make_unique<QuietDialogs>());
  window.Start();
  window.show();
  QPlainTextEdit* view = window.Document()->Text();
  PaintWatch paint(view->viewport());
  paint.Wait();
  std::vector<double> open, scroll, edit;
  for (int r = 0; r < 9; ++r) {
    paint.Arm();
    const auto t0 = Clock::now();
    window.OpenDocumentAt(hex.string());
    if (!paint.Wait()) std::exit(1);
    open.push_back(Ms(paint.When() - t0));

    paint.Arm();
    const auto t1 = Clock::now();
    view->verticalScrollBar()->setValue(view->verticalScrollBar()->maximum());
    if (!paint.Wait()) std::exit(1);
    scroll.push_back(Ms(paint.When() - t1));

    paint.Arm();
    const auto t2 = Clock::now();
    QTextCursor cursor(view->document()->findBlockByNumber(4096));
    cursor.insertText("1");
    view->setTextCursor(cursor);
    view->ensureCursorVisible();
    if (!paint.Wait()) std::exit(1);
    edit.push_back(Ms(paint.When() - t2));
  }
  const int lines = view->document()->blockCount();
  std::printf("open: 65536-word HEX into the hex view (%d lines) until painted %.1f ms (median "
              "of %zu; goal 150 ms); scroll to the end %.1f ms; an edit in the middle %.1f ms\n",
              lines, Median(open), open.size(), Median(scroll), Median(edit));
  window.close();
  QTest::qWait(1500);  // the start-up tick may still be out
  std::error_code ec;
  fs::remove_all(dir, ec);
}

void AutoFigures() {
  const fs::path dir = CopyProgramFolder();
  const std::string project = (dir / "examples" / "qvm50p99.lkx").string();
  lk::ops::DeviceOptions device;
  device.device = "sim";
  device.simTiming = true;

  lk::ui::MainWindow window(lk::Home(dir), device, std::make_unique<QuietDialogs>());
  window.Start();
  window.show();
  window.OpenDocumentAt(project);
  window.findChild<QAction*>("mnuAutoNoBlank")->trigger();
  QTest::qWait(1500);  // the first ticks have met the writer

  // The command line's way: the operations with no window, the same simulated writer.
  lk::QuietHost quiet;
  const lk::Home home(dir);
  lk::Project cli;
  lk::ops::OpenDocument(quiet, home, cli, project);
  std::unique_ptr<lk::Writer> writer = lk::ops::MakeDeviceWriter(quiet, home, device, "QVM50P99");
  if (writer->FindWriter() && writer->OpenWriterHandles()) {
    lk::ops::QueryWriter(*writer, false);
    writer->CloseWriter();
  }
  lk::ops::NullFrameUi none;
  lk::ops::Station st{quiet, none, home, cli, *writer};

  std::vector<double> gui, line;
  for (int r = 0; r < 5; ++r) {
    QSignalSpy done(&window, &lk::ui::MainWindow::commandFinished);
    const auto t0 = Clock::now();
    window.ToolbarButtonClick("auto");
    if (!done.wait(60000) || done.takeFirst().at(1).toInt() != 0) std::exit(1);
    gui.push_back(Ms(Clock::now() - t0));

    const auto t1 = Clock::now();
    if (lk::ops::Auto(st, false).Verdict != lk::ops::Outcome::Passed) std::exit(1);
    line.push_back(Ms(Clock::now() - t1));
    QTest::qWait(1200);  // a monitor tick between runs, as on the line
  }
  const double g = Median(gui), c = Median(line);
  std::printf("auto: QVM50P99 (2048 words) on the timing model: window %.1f ms, command line "
              "%.1f ms (medians of %zu); ratio command line/window %.3f (goal >= 0.97)\n",
              g, c, gui.size(), c / g);
  window.close();
  QTest::qWait(200);
  std::error_code ec;
  fs::remove_all(dir, ec);
}

}  // namespace

int main(int argc, char** argv) {
  const auto mainStart = Clock::now();
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
      qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  if (argc > 1 && std::strcmp(argv[1], "start") == 0) return StartChild(mainStart, argc, argv);

  StartFigures(argv[0]);
  QApplication app(argc, argv);
  OpenFigures();
  AutoFigures();
  std::printf("rss: peak resident set after all of the above %.1f MB (goal 120 MB)\n",
              PeakRssKb() / 1024.0);
  return 0;
}
