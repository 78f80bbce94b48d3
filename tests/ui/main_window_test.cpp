// The main window driven as an operator drives it, against the simulated writer in a
// temporary copy of the program folder.
#include <QAccessible>
#include <QAction>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QMdiSubWindow>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QToolButton>
#include <QTableWidget>
#include <QTreeWidget>
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "core/chip_database.h"
#include "core/config_defs.h"
#include "core/image.h"
#include "core/profile.h"
#include "core/quiet_host.h"
#include "tests/ui/ui_rig.h"

namespace fs = std::filesystem;
using lk::ui::MainWindow;
using namespace lk::test;

namespace {

// After every command the window is the operator's again.
void VerifyWindowGivenBack(const MainWindow& w) {
  QVERIFY(!w.CommandRunning());
  QVERIFY(w.WindowInputEnabled());
  QVERIFY(w.MonitorRunning());
  QCOMPARE(w.Document()->Progress()->value(), 0);
}

// A writer that is on the bus and takes every packet but never answers.
class SilentBus : public lk::WriterBus {
  class Silent : public lk::Transport {
   public:
    bool Send(const lk::Report&, int) override { return true; }
    bool Receive(lk::Report&, int timeoutMs) override {
      QThread::msleep(static_cast<unsigned long>(timeoutMs));
      return false;
    }
    std::string LastError() const override { return "no answer"; }
  };

 public:
  bool Present() override { return true; }
  std::unique_ptr<lk::Transport> Open() override { return std::make_unique<Silent>(); }
  std::string Describe() const override { return "silent writer"; }
};


QString DocText(const MainWindow& w) { return w.Document()->Text()->toPlainText(); }

}  // namespace

class MainWindowTest : public QObject {
  Q_OBJECT

 private slots:
  // Geometry of the four windows, the column widths and the model come back at the next
  // start; a missing session file gives its messages and the defaults.
  void startupAndCloseRoundTrip() {
    Rig rig;
    lk::QuietHost quiet;
    const fs::path frm = rig.dir.Path() / "dat" / "frm.dat";
    lk::WriteValue(quiet, frm, "FrmDoc", "Left", "1500");
    lk::WriteValue(quiet, frm, "FrmDoc", "Width", "6000");
    lk::WriteValue(quiet, frm, "FrmConfigDisp", "CHeader1", "3000");
    lk::WriteValue(quiet, rig.dir.Path() / "dat" / "data.dat", "Data", "McuType", "QVM50F96A");

    MainWindow& w = rig.Open();
    auto* doc = w.findChild<QMdiSubWindow*>("FrmDoc");
    QCOMPARE(doc->geometry().x(), 100);
    QCOMPARE(doc->geometry().width(), 400);
    QCOMPARE(w.ConfigDisplay()->List()->columnWidth(0), 200);
    QCOMPARE(w.CurrentProject().Chip.Name, std::string("QVM50F96A"));
    // The start-up adjustment of this model: bit 8 clear in every program word.
    QVERIFY(DocText(w).startsWith("000000: FEFF FEFF"));
    QVERIFY(rig.dialogs->messages.empty());

    QVERIFY(w.SelectModel("QVM75P82"));
    doc->move(50, 40);
    w.ConfigDisplay()->List()->setColumnWidth(1, 150);
    QVERIFY(CloseWindow(w));
    QCOMPARE(rig.Value("frm.dat", "FrmDoc", "Left"), std::string("750"));
    QCOMPARE(rig.Value("frm.dat", "FrmDoc", "Top"), std::string("600"));
    QCOMPARE(rig.Value("frm.dat", "FrmConfigDisp", "CHeader2"), std::string("2250"));
    QCOMPARE(rig.Value("data.dat", "Data", "McuType"), std::string("QVM75P82"));

    MainWindow& again = rig.Open();
    QCOMPARE(again.CurrentProject().Chip.Name, std::string("QVM75P82"));
    QCOMPARE(again.findChild<QMdiSubWindow*>("FrmDoc")->geometry().topLeft(), QPoint(50, 40));
    QVERIFY(CloseWindow(again));

    fs::remove(frm);
    fs::remove(rig.dir.Path() / "dat" / "data.dat");
    MainWindow& bare = rig.Open();
    const auto notFound = std::count_if(
        rig.dialogs->messages.begin(), rig.dialogs->messages.end(),
        [](const Shown& m) { return m.text.endsWith("Not Found!"); });
    // One per value read: four per window (16), the two column widths, five recent
    // files and the model.
    QCOMPARE(notFound, 24L);
    QCOMPARE(notFound, static_cast<long>(rig.dialogs->messages.size()));
    lk::QuietHost quiet2;
    QCOMPARE(bare.CurrentProject().Chip.Name,
             lk::ListModels(quiet2, lk::Home(LK_PROGRAM_DIR)).front());
    rig.dialogs->messages.clear();
    QVERIFY(CloseWindow(bare));
    QVERIFY(!rig.dialogs->messages.empty());
    for (const Shown& m : rig.dialogs->messages) {
      QVERIFY2(m.text.endsWith(" not found.") && m.caption == "File Not Found",
               qPrintable(m.text));
    }
  }

  // Open shows the image: hex text, checksum panels, configuration display, caption;
  // a refused file leaves the previous image in place.
  void openShowsTheImage() {
    Rig rig;
    MainWindow& w = rig.Open();
    const std::string path = rig.Example("qvm50p99.lkx");
    w.OpenDocumentAt(path);
    const lk::ChipParams& chip = w.CurrentProject().Chip;
    QCOMPARE(chip.Name, std::string("QVM50P99"));
    QCOMPARE(w.findChild<QMdiSubWindow*>("FrmDoc")->windowTitle(), QString::fromStdString(path));
    QString expected = QString::fromStdString(lk::HexText(chip));
    expected.remove('\r');
    QCOMPARE(DocText(w), expected);
    QCOMPARE(DocText(w).count('\n'), 2048 / 8 - 1);
    const QString checksum = QString::fromStdString(lk::ChecksumText(lk::ProgramChecksum(chip)));
    QCOMPARE(w.Document()->Checksum()->text(), checksum);
    QCOMPARE(w.StatusPanel(2), checksum);
    QVERIFY(w.StatusPanel(3).startsWith("File Modify:20"));
    QCOMPARE(w.StatusPanel(1), QString("Rolling Code:Disable"));
    lk::QuietHost quiet;
    const auto rows = lk::ShowConfigOptions(quiet, lk::Home(rig.dir.Path()), chip);
    QTreeWidget* list = w.ConfigDisplay()->List();
    QVERIFY(!rows.empty());
    QCOMPARE(list->topLevelItemCount(), static_cast<int>(rows.size()));
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
      QCOMPARE(list->topLevelItem(i)->text(0).toStdString(), rows[i].Option);
      QCOMPARE(list->topLevelItem(i)->text(1).toStdString(), rows[i].Value);
    }

    // A project with a rolling-code settings file turns the rolling code on; the panel
    // keeps its text until the settings dialog's OK.
    w.OpenDocumentAt(rig.Example("rolling/project.lkx"));
    QCOMPARE(w.StatusPanel(1), QString("Rolling Code:Disable"));
    QVERIFY(w.CurrentProject().RollingEnabled);
    w.OpenDocumentAt(path);
    QCOMPARE(w.StatusPanel(1), QString("Rolling Code:Disable"));

    const QString before = DocText(w);
    rig.dir.Write("broken.lkx", "QVM50P99!too short");
    w.OpenDocumentAt((rig.dir.Path() / "broken.lkx").string());
    QCOMPARE(rig.dialogs->messages.back().text, QString("Open File Error!"));
    QCOMPARE(DocText(w), before);
    QVERIFY(w.WindowInputEnabled());
    // The refused file is named all the same: the dispatcher did so before reading it.
    auto* docWindow = w.findChild<QMdiSubWindow*>("FrmDoc");
    QCOMPARE(docWindow->windowTitle(), QString::fromStdString((rig.dir.Path() / "broken.lkx").string()));

    // A screen reader finds each window and panel by its name and reads what it shows.
    const std::pair<QWidget*, QString> shown[] = {
        {&w, w.windowTitle()},
        {docWindow, docWindow->windowTitle()},
        {w.findChild<QWidget*>("StatusBar1Panel3"), w.StatusPanel(3)},
        {w.findChild<QWidget*>("FrmDocPanel2"), w.Document()->Checksum()->text()},
    };
    for (const auto& [widget, text] : shown) {
      QAccessibleInterface* a = QAccessible::queryAccessibleInterface(widget);
      QVERIFY(a != nullptr);
      QCOMPARE(a->text(QAccessible::Name), widget->objectName());
      QCOMPARE(a->text(QAccessible::Description), text);
    }
  }

  // Every chip command from its toolbar key: exactly its log lines, and the window given
  // back. The rows run in order on one simulated chip (OTP: programming only clears bits).
  void chipCommandsFromToolbar() {
    struct Row {
      const char* key;
      bool withBlank;
      QStringList lines;  // a line ending in "*" is matched as a prefix
      lk::ops::Outcome outcome;
    };
    using lk::ops::Outcome;
    const Row rows[] = {
        {"blank", true, {"Blank Check OK!"}, Outcome::Passed},
        {"verify", true, {"Verify Fail!", "Data Address:0000", "File Data:00A5", "MCU Data:3FFF"},
         Outcome::Failed},
        {"program", true, {"Program OK!", "Config OK!"}, Outcome::Passed},
        {"verify", true, {"Verify OK!"}, Outcome::Passed},
        {"read", true, {"Read OK!", "CheckSum In IC is *"}, Outcome::Passed},
        {"option", true, {"Config OK!"}, Outcome::Passed},
        {"ReadConfig", true, {"Read Config OK!"}, Outcome::Passed},
        {"download", true, {"Download OK!"}, Outcome::Passed},
        {"auto", false, {"Program OK!", "Config OK!", "Verify OK!"}, Outcome::Passed},
        {"auto", true, {"Blank Check Fail!"}, Outcome::Failed},
    };
    Rig rig;
    MainWindow& w = rig.Open();
    w.OpenDocumentAt(rig.Example("qvm50p99.lkx"));
    Tick(w);
    QCOMPARE(w.StatusPanel(4), QString("Device Connected"));
    QCOMPARE(Lines(w), QStringList({"烧录器已经连接！版本号： v3.1", "烧录器ID：123456"}));

    int passed = 0, failed = 0;
    for (const Row& row : rows) {
      ActionNamed(w, row.withBlank ? "mnuAutoBlank" : "mnuAutoNoBlank")->trigger();
      const int outcome = Click(w, row.key);
      const QStringList lines = Lines(w);
      QVERIFY2(outcome == static_cast<int>(row.outcome), row.key);
      QVERIFY2(lines.size() == row.lines.size(), qPrintable(row.key + (": " + lines.join(" | "))));
      for (int i = 0; i < lines.size(); ++i) {
        const QString& want = row.lines[i];
        QVERIFY2(want.endsWith('*') ? lines[i].startsWith(want.chopped(1)) : lines[i] == want,
                 qPrintable(row.key + (": " + lines.join(" | "))));
      }
      VerifyWindowGivenBack(w);
      (row.outcome == Outcome::Passed ? passed : failed)++;
    }
    QCOMPARE(w.Results()->Passed(), passed);
    QCOMPARE(w.Results()->Failed(), failed);
    QCOMPARE(w.Results()->Verdict(), QString("FAIL"));
  }

  // Keys the toolbar does not know do nothing; the auto drop-down sets the auto mode;
  // the blank captions follow the chip.
  void toolbarKeysAndCaptions() {
    Rig rig;
    MainWindow& w = rig.Open();
    Tick(w);
    const QStringList before = Lines(w);
    QSignalSpy started(&w, &MainWindow::commandFinished);
    for (const char* key : {"", "Auto", "bogus", "ReadConfig "}) w.ToolbarButtonClick(key);
    QVERIFY(!w.CommandRunning());
    QVERIFY(!started.wait(300));
    QCOMPARE(Lines(w), before);

    auto* autoButton = w.findChild<QToolButton*>("auto");
    QCOMPARE(autoButton->menu()->actions(),
             QList<QAction*>({ActionNamed(w, "mnuAutoBlank"), ActionNamed(w, "mnuAutoNoBlank")}));
    for (bool withBlank : {false, true}) {
      ActionNamed(w, withBlank ? "mnuAutoBlank" : "mnuAutoNoBlank")->trigger();
      QCOMPARE(ActionNamed(w, "mnuAutoBlank")->isChecked(), withBlank);
      QCOMPARE(ActionNamed(w, "mnuAutoNoBlank")->isChecked(), !withBlank);
    }

    struct Captions {
      const char* model;
      QString blank, autoBlank, autoNoBlank, tip, newFirstLine;
      bool eedata;
    };
    for (const Captions& c :
         {Captions{"QVM50P99", "空检", "包含空检", "不包含空检", "Blank Check",
                   "000000: 3FFF 3FFF", false},
          Captions{"QVM50F96A", "擦除", "包含擦除", "不包含擦除", "Erase", "000000: FEFF FEFF",
                   true}}) {
      QVERIFY(w.SelectModel(c.model));
      QCOMPARE(ActionNamed(w, "mnuReadEeprom")->isEnabled(), c.eedata);
      QCOMPARE(ActionNamed(w, "mnuWriteEeprom")->isEnabled(), c.eedata);
      w.ToolbarButtonClick("new");
      QCOMPARE(w.findChild<QMdiSubWindow*>("FrmDoc")->windowTitle(), QString("New File"));
      QVERIFY(DocText(w).startsWith(c.newFirstLine));
      QCOMPARE(ActionNamed(w, "mnuBlank")->text(), c.blank);
      QCOMPARE(ActionNamed(w, "mnuAutoBlank")->text(), c.autoBlank);
      QCOMPARE(ActionNamed(w, "mnuAutoNoBlank")->text(), c.autoNoBlank);
      QCOMPARE(w.findChild<QToolButton*>("blank")->text(), c.blank);
      QCOMPARE(w.findChild<QToolButton*>("blank")->toolTip(), c.tip);
    }
    // The simulated socket follows the chosen model: an erase of the flash chip passes.
    QCOMPARE(Click(w, "blank"), static_cast<int>(lk::ops::Outcome::Passed));
    QCOMPARE(Lines(w), QStringList({"Erase OK!"}));
  }

  // The file watch: a file changed by another program raises the question once; OK
  // reloads it, Cancel keeps the image.
  void fileChangedQuestion() {
    for (const bool answer : {true, false}) {
      Rig rig;
      MainWindow& w = rig.Open();
      rig.dialogs->answer = answer;
      const fs::path hex = rig.dir.Path() / "prog.hex";
      fs::copy_file(rig.Example("qvm50p99.hex"), hex);
      w.OpenDocumentAt(hex.string());
      Tick(w);
      QVERIFY(rig.dialogs->questions.empty());
      const QString before = DocText(w);

      rig.dir.Write("prog.hex", ":0400000034123412FF\n:00000001FF\n");
      fs::last_write_time(hex, fs::last_write_time(hex) + std::chrono::seconds(5));
      Tick(w);
      QCOMPARE(rig.dialogs->questions.size(), std::size_t{1});
      // The question's words are the monitor's (ops tests); it names the open file.
      QVERIFY(rig.dialogs->questions[0].text.startsWith(QString::fromStdString(hex.string())));
      QTRY_COMPARE(DocText(w).startsWith("000000: 1234 1234"), answer);
      if (!answer) QCOMPARE(DocText(w), before);
      Tick(w);
      QCOMPARE(rig.dialogs->questions.size(), std::size_t{1});
    }
  }

  // The recent-file menu shows the project's list (how the list moves and is saved is
  // the open dispatcher's, files tests), and an entry of it opens its file.
  void recentFileMenu() {
    Rig rig;
    MainWindow& w = rig.Open();
    std::vector<std::string> paths;
    for (int i = 1; i <= 6; ++i) {
      const fs::path p = rig.dir.Path() / ("p" + std::to_string(i) + ".lkx");
      fs::copy_file(rig.Example("qvm50p99.lkx"), p);
      w.OpenDocumentAt(paths.emplace_back(p.string()));
    }
    QList<QAction*> recent = w.findChildren<QAction*>("mnuOpenList");
    QCOMPARE(recent.size(), 5);
    for (int i = 0; i < 5; ++i) {
      QVERIFY(recent[i]->isVisible());
      QCOMPARE(recent[i]->text(), QString("&%1 %2").arg(i + 1).arg(QString::fromStdString(
                                                                       paths[5 - i])));
    }
    recent[2]->trigger();
    QCOMPARE(w.CurrentProject().ProjectPath, paths[3]);
    QCOMPARE(w.findChildren<QAction*>("mnuOpenList")[0]->text(),
             "&1 " + QString::fromStdString(paths[3]));
  }

  // Save takes the program words from the document's text, which only the modify mode
  // lets the operator change; a text without its full words is refused on the reopen.
  void saveTakesTheDocumentText() {
    Rig rig;
    MainWindow& w = rig.Open();
    w.OpenDocumentAt(rig.Example("qvm50p99.lkx"));
    QPlainTextEdit* text = w.Document()->Text();
    QVERIFY(text->isReadOnly());

    ActionNamed(w, "mnuModifyEnable")->trigger();
    QVERIFY(!text->isReadOnly());
    QTextCursor cursor(text->document());
    cursor.setPosition(8);
    cursor.setPosition(12, QTextCursor::KeepAnchor);
    cursor.insertText("1234");
    w.SaveDocumentAs((rig.dir.Path() / "edited").string());
    const std::string saved = (rig.dir.Path() / "edited.lkx").string();
    QCOMPARE(w.CurrentProject().ProjectPath, saved);
    QCOMPARE(w.CurrentProject().Chip.RomWords[0], 0x1234);
    QVERIFY(DocText(w).startsWith("000000: 1234 "));

    cursor = QTextCursor(text->document());
    cursor.movePosition(QTextCursor::End);
    cursor.movePosition(QTextCursor::StartOfBlock, QTextCursor::KeepAnchor);
    cursor.movePosition(QTextCursor::PreviousCharacter, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    w.SaveDocumentAs((rig.dir.Path() / "short.lkx").string());
    QCOMPARE(rig.dialogs->messages.back().text, QString("Open File Error!"));
    QCOMPARE(w.CurrentProject().Chip.RomWords[0], 0x1234);

    ActionNamed(w, "mnuModifyDisable")->trigger();
    QVERIFY(text->isReadOnly());
  }

  // A writer that stops answering holds up the writer's thread, never the window; Stop
  // ends a running command at its next packet with its failure line.
  void hungWriterAndStop() {
    {
      Rig rig;
      MainWindow& w = rig.Open(false);
      auto writer = std::make_unique<lk::Writer>(std::make_unique<SilentBus>());
      writer->SetReceiveTimeoutMs(700);
      QVERIFY(w.Start(std::move(writer)));
      w.show();
      QSignalSpy done(&w, &MainWindow::commandFinished);
      w.ToolbarButtonClick("program");
      QElapsedTimer clock;
      clock.start();
      qint64 last = 0, longestGap = 0;
      while (done.isEmpty() && clock.elapsed() < 20000) {
        QTest::qWait(10);
        longestGap = std::max(longestGap, clock.elapsed() - last);
        last = clock.elapsed();
      }
      QCOMPARE(done.size(), 1);
      QVERIFY(clock.elapsed() >= 700);  // at least one answer was awaited in vain
      // Each unanswered packet holds the writer's thread 700 ms: the window never waits that long.
      QVERIFY2(longestGap < 500, qPrintable(QString::number(longestGap)));
      QCOMPARE(Lines(w).last(), QString("MCU Type Error!"));
      VerifyWindowGivenBack(w);
    }
    {
      // Unplugged in the middle of the program memory: the failure line, and the window
      // is the operator's at once.
      Rig rig;
      rig.options.simFault = "unplug@30";
      MainWindow& w = rig.Open();
      w.OpenDocumentAt(rig.Example("qvm50p99.lkx"));
      Tick(w);
      QCOMPARE(Click(w, "program"), static_cast<int>(lk::ops::Outcome::Failed));
      QCOMPARE(Lines(w), QStringList({"Program Fail!"}));
      VerifyWindowGivenBack(w);
      Tick(w);
      QCOMPARE(w.StatusPanel(4), QString("No Device Connected"));
    }
    {
      Rig rig;
      rig.options.simTiming = true;
      MainWindow& w = rig.Open();
      w.OpenDocumentAt(rig.Example("qvm50p99.lkx"));
      Tick(w);
      QSignalSpy done(&w, &MainWindow::commandFinished);
      ActionNamed(w, "mnuAutoNoBlank")->trigger();
      w.ToolbarButtonClick("auto");
      QTRY_VERIFY_WITH_TIMEOUT(w.Document()->Progress()->value() > 0, 10000);
      QVERIFY(!w.WindowInputEnabled());
      w.findChild<QToolButton*>("Stop")->click();
      QVERIFY(done.wait(10000));
      QCOMPARE(done.takeFirst().at(1).toInt(), static_cast<int>(lk::ops::Outcome::Failed));
      QCOMPARE(Lines(w), QStringList({"Program Fail!"}));
      VerifyWindowGivenBack(w);
      // The writer is not left mid-session: the next command runs normally.
      QCOMPARE(Click(w, "ReadConfig"), static_cast<int>(lk::ops::Outcome::Passed));

      // Closing during a command stops it, lets it end its chip session, then closes.
      w.ToolbarButtonClick("auto");
      QTRY_VERIFY_WITH_TIMEOUT(w.Document()->Progress()->value() > 0, 10000);
      QVERIFY(!w.close());
      QVERIFY(w.isVisible());
      QVERIFY(done.wait(10000));
      QTRY_VERIFY(!w.isVisible());
      QCOMPARE(Lines(w), QStringList({"Program Fail!"}));
      QCOMPARE(rig.Value("data.dat", "Data", "McuType"), std::string("QVM50P99"));
    }
  }

  // The documentation menu lists doc/*.pdf and names the reason of a failed open.
  void documentationMenu() {
    Rig rig;
    rig.dir.Write("doc/QVM50P99.pdf", "%PDF-1.4\n");
    rig.dir.Write("doc/LK8P2023.PDF", "%PDF-1.4\n");
    rig.dir.Write("doc/.hidden.pdf", "%PDF-1.4\n");
    rig.dir.Write("doc/notes.txt", "text\n");
    MainWindow& w = rig.Open();
    QList<QAction*> entries = w.findChildren<QAction*>("mnuSubDoc");
    QStringList names;
    for (QAction* entry : entries) names << entry->text();
    QCOMPARE(names, QStringList({"LK8P2023.PDF", "QVM50P99.pdf"}));
    QVERIFY(w.findChild<QMenu*>("mnuDoc")->menuAction()->isVisible());

    fs::remove(rig.dir.Path() / "doc" / "QVM50P99.pdf");
    entries[1]->trigger();
    QCOMPARE(rig.dialogs->messages.back().text,
             QString("打开文件\"QVM50P99.pdf\"失败!\r\n文件不存在或者文件路径错误!"));

    Rig empty;
    QVERIFY(!empty.Open().findChild<QMenu*>("mnuDoc")->menuAction()->isVisible());
  }

  // Every dialog opens from its menu entry (the configuration dialog and About also from
  // their toolbar buttons); the About box names the version, the program folder, the
  // chip database with its model count and the writer as the monitor found it.
  void dialogsFromTheirMenus() {
    Rig rig;
    MainWindow& w = rig.Open();
    w.OpenDocumentAt(rig.Example("qvm50f96a-eedata.lkx"));
    Tick(w);
    const std::pair<const char*, const char*> entries[] = {
        {"mnuConfigset", "Frmconfig"}, {"mnuRollingCode", "FrmRoll"}, {"mnuEeprom", "FrmEedata"},
        {"mnuWriterID", "frmID"},      {"mnuAbout", "FrmAbout"},      {"setting", "Frmconfig"},
        {"about", "FrmAbout"}};
    for (const auto& [entry, name] : entries) {
      if (QAction* action = ActionNamed(w, entry)) {
        QVERIFY2(action->isEnabled(), entry);
        action->trigger();
      } else {
        QVERIFY2(w.findChild<QToolButton*>(entry)->isEnabled(), entry);
        w.ToolbarButtonClick(entry);
      }
      auto* dialog = rig.Find<QDialog>(name);
      QVERIFY2(dialog != nullptr, name);
      QCOMPARE(dialog->accessibleName(), QString(name));
      if (QString(name) == "FrmAbout") {
        auto text = [&](const char* label) { return dialog->findChild<QLabel*>(label)->text(); };
        QCOMPARE(text("LabelTitle"), QString("LKMCU Writer v1.0"));
        QCOMPARE(text("LabelFolder"), QString::fromStdString(rig.dir.Path().string()));
        QVERIFY(text("LabelDatabase").contains(QString(" (%1 ").arg(w.Models().size())));
        QCOMPARE(text("LabelWriter"), QString("烧录器已经连接！版本号： v3.1\n烧录器ID：123456"));
      }
      dialog->reject();
    }
    QVERIFY(w.SelectModel("QVM50P99"));
    QVERIFY(!ActionNamed(w, "mnuEeprom")->isEnabled());

    // Without a writer: the panel says so and a command leaves the not-found line.
    Rig none("usb:/dev/no-such-writer");
    MainWindow& alone = none.Open();
    Tick(alone);
    QCOMPARE(alone.StatusPanel(4), QString("No Device Connected"));
    QCOMPARE(Click(alone, "program"), static_cast<int>(lk::ops::Outcome::NoWriter));
    QCOMPARE(Lines(alone), QStringList({"The Writer for \"" +
                                        QString::fromStdString(alone.CurrentProject().Chip.Name) +
                                        "\" not Found!"}));
    VerifyWindowGivenBack(alone);
    QVERIFY(none.dialogs->messages.empty());
    ActionNamed(alone, "mnuAbout")->trigger();
    QCOMPARE(none.Find("FrmAbout")->findChild<QLabel*>("LabelWriter")->text(),
             QString("No Device Connected"));
  }

  // Under a real display (the Xvfb test): the main window after open, after an Auto,
  // after a failed verify and without a writer, and every dialog as its menu entry opens
  // it, saved as PNG files to look at.
  // With a production database the counters are the records' (they survive a restart
  // and count chip commands only), each chip takes its own serial, and the records
  // window lists them; a database that cannot be used refuses the command.
  void productionRecords() {
    lk::test::TempDir data;
    const std::string url = "sqlite:" + (data / "production.sqlite").string();
    std::vector<std::string> codes;
    for (int start = 0; start < 2; ++start) {
      Rig rig;
      MainWindow& w = rig.Open();
      w.SetProduction(url, "line");
      w.OpenDocumentAt(rig.Example("rolling/project.lkx"));
      rig.Find<QDialog>("FrmRoll")->accept();
      Tick(w);
      QTRY_COMPARE(w.Results()->Passed(), start * 2);  // the first window's chips
      ActionNamed(w, "mnuAutoNoBlank")->trigger();
      for (int chip = 0; chip < 2; ++chip) {
        QVERIFY2(Click(w, "auto") == static_cast<int>(lk::ops::Outcome::Passed),
                 qPrintable(Lines(w).join(" | ")));
        for (const QString& line : Lines(w)) {
          if (line.startsWith("Rolling Code:")) codes.push_back(line.toStdString());
        }
      }
      QCOMPARE(w.Results()->Passed(), start * 2 + 2);
      ActionNamed(w, "mnuRecords")->trigger();
      auto* table = rig.Find<QTableWidget>("lstRecords");
      QVERIFY(table != nullptr);
      QTRY_COMPARE(table->rowCount(), start * 2 + 2);
      QCOMPARE(table->item(0, 5)->text(), QString("passed"));
      rig.Find<QDialog>("frmRecords")->close();
    }
    // Each window's settings file started at the same Count: the database moved past it.
    std::sort(codes.begin(), codes.end());
    QCOMPARE(codes.size(), std::size_t{4});
    QVERIFY(std::adjacent_find(codes.begin(), codes.end()) == codes.end());

    Rig rig;
    MainWindow& w = rig.Open();
    w.SetProduction("sqlite:" + (data / "no" / "folder" / "p.sqlite").string(), "");
    w.OpenDocumentAt(rig.Example("qvm50p99.lkx"));
    Tick(w);
    QCOMPARE(Click(w, "program"), static_cast<int>(lk::ops::Outcome::Refused));
    QVERIFY(rig.dialogs->Texts().join(" ").contains("production database"));
  }

  void screenshots() {
    const QString folder = qEnvironmentVariable("LK_SCREENSHOT_DIR");
    if (folder.isEmpty()) QSKIP("LK_SCREENSHOT_DIR names the folder for the screenshots");
    fs::create_directories(folder.toStdString());
    auto save = [&](QWidget* shown, const char* name) {
      QVERIFY2(shown != nullptr, name);
      QVERIFY(QTest::qWaitForWindowExposed(shown));
      QTest::qWait(200);
      const QImage shot = shown->grab().toImage();
      QVERIFY(!shot.isNull());
      QVERIFY(shot.save(folder + "/" + name));
    };
    {
      Rig rig;
      MainWindow& w = rig.Open();
      QVERIFY(QTest::qWaitForWindowExposed(&w));
      w.OpenDocumentAt(rig.Example("qvm50p99.lkx"));
      Tick(w);
      save(&w, "after-open.png");
      QCOMPARE(Click(w, "verify"), static_cast<int>(lk::ops::Outcome::Failed));
      save(&w, "failed-verify.png");
      QCOMPARE(Click(w, "auto"), static_cast<int>(lk::ops::Outcome::Passed));
      save(&w, "after-auto.png");

      const std::pair<const char*, const char*> dialogs[] = {
          {"mnuWriterID", "frmID"}, {"mnuAbout", "FrmAbout"}};
      for (const auto& [menu, name] : dialogs) {
        ActionNamed(w, menu)->trigger();
        save(rig.Find(name), (QString(name) + ".png").toUtf8().constData());
        rig.Find<QDialog>(name)->reject();
      }
      w.OpenDocumentAt(rig.Example("rolling/project.lkx"));
      save(rig.Find("FrmRoll"), "FrmRoll.png");
      rig.Find<QDialog>("FrmRoll")->reject();

      QVERIFY(w.SelectModel("LK3PW89"));
      ActionNamed(w, "mnuConfigset")->trigger();
      save(rig.Find("Frmconfig"), "Frmconfig.png");
      auto* options = rig.Find<QTreeWidget>("Listconfig");
      options->setCurrentItem(options->topLevelItem(options->topLevelItemCount() - 1));
      save(rig.Find("Frmconfig"), "Frmconfig-field.png");
      rig.Find<QDialog>("Frmconfig")->reject();

      w.OpenDocumentAt(rig.Example("qvm50f96a-eedata.lkx"));
      ActionNamed(w, "mnuEeprom")->trigger();
      save(rig.Find("FrmEedata"), "FrmEedata.png");

      lk::test::TempDir data;
      w.SetProduction("sqlite:" + (data / "production.sqlite").string(), "");
      QCOMPARE(Click(w, "auto"), static_cast<int>(lk::ops::Outcome::Passed));
      ActionNamed(w, "mnuRecords")->trigger();
      QTRY_COMPARE(rig.Find<QTableWidget>("lstRecords")->rowCount(), 1);
      save(rig.Find("frmRecords"), "frmRecords.png");
    }
    {
      Rig rig("usb:/dev/no-such-writer");
      MainWindow& w = rig.Open();
      QVERIFY(QTest::qWaitForWindowExposed(&w));
      w.OpenDocumentAt(rig.Example("qvm50p99.lkx"));
      Tick(w);
      QCOMPARE(Click(w, "program"), static_cast<int>(lk::ops::Outcome::NoWriter));
      save(&w, "no-writer.png");
    }
  }
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
