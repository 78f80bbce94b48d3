// The EEDATA window on a project with EEDATA: a HEX file loaded into the text, the text
// taken into the image with the flag rule, Cancel putting the EEDATA back; the read and
// write buttons on the simulated writer; the watch writing the chip when its file changes.
#include <QCheckBox>
#include <QLineEdit>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QPushButton>
#include <chrono>

#include "core/image.h"
#include "tests/ui/ui_rig.h"
#include "ui/eedata_window.h"

using namespace lk::test;
using lk::ui::EedataWindow;
using lk::ui::MainWindow;

namespace {

EedataWindow* OpenWindow(Rig& rig) {
  ActionNamed(*rig.window, "mnuEeprom")->trigger();
  auto* window = rig.Find<EedataWindow>("FrmEedata");
  if (window == nullptr) qFatal("FrmEedata is not shown");
  return window;
}

template <typename T>
T* Control(EedataWindow* window, const char* name) {
  return window->findChild<T*>(name);
}

void Press(EedataWindow* window, const char* button) {
  QTest::mouseClick(Control<QPushButton>(window, button), Qt::LeftButton);
}

// The text with its first byte replaced.
void TypeFirstByte(EedataWindow* window, const char* digits) {
  QPlainTextEdit* text = Control<QPlainTextEdit>(window, "TextMain");
  QTextCursor cursor(text->document());
  cursor.setPosition(6);
  cursor.setPosition(8, QTextCursor::KeepAnchor);
  cursor.insertText(digits);
}

}  // namespace

class EedataWindowTest : public QObject {
  Q_OBJECT

 private slots:
  void loadTakeAndCancel() {
    Rig rig;
    MainWindow& w = rig.Open();
    w.OpenDocumentAt(rig.Example("qvm50f96a-eedata.lkx"));
    lk::ChipParams& chip = w.CurrentProject().Chip;
    QCOMPARE(chip.EeFlag, lk::kEeFlagPresent);
    const std::vector<std::uint8_t> opened = chip.EeBytes;
    EedataWindow* window = OpenWindow(rig);
    auto* text = Control<QPlainTextEdit>(window, "TextMain");
    auto* autoProgram = Control<QCheckBox>(window, "Check1");
    QCOMPARE(text->toPlainText(), QString::fromStdString(lk::EedataHexText(chip)).remove('\r'));
    QVERIFY(autoProgram->isChecked());

    // The caret's EEDATA address, line 1 and its fourth byte.
    QTextCursor caret(text->document()->findBlockByNumber(1));
    caret.movePosition(QTextCursor::Right, QTextCursor::MoveAnchor, 15);
    text->setTextCursor(caret);
    QCOMPARE(window->findChild<QLabel*>("StatusBar1Panel1")->text(), QString("Address:0013H"));

    // Command1: a file outside the address window changes nothing; a good one is shown;
    // a cancelled chooser does nothing.
    const QString bad = QString::fromStdString(
        rig.dir.Write("low.hex", ":0400000012003400FF\r\n:00000001FF\r\n").string());
    const QString good = QString::fromStdString(
        rig.dir.Write("ee.hex", ":04420000AA00BB00FF\r\n:00000001FF\r\n").string());
    rig.dialogs->files = {bad, good};
    for (int i = 0; i < 3; ++i) Press(window, "Command1");
    QCOMPARE(rig.dialogs->chooser, QStringList(3, "Open|hex(*.hex) (*.hex)"));
    QCOMPARE(rig.dialogs->Texts(), QStringList{"不是有效的EEDATA文件！"});
    QVERIFY(text->toPlainText().startsWith("0000: AA BB "));
    QCOMPARE(chip.EeBytes[0], 0xAA);

    // CmdOk without Check1: the project no longer carries EEDATA; the text is not read.
    TypeFirstByte(window, "12");
    autoProgram->setChecked(false);
    Press(window, "CmdOk");
    QVERIFY(!window->isVisible());
    QCOMPARE(chip.EeFlag, lk::kEeFlagAbsent);
    QCOMPARE(chip.EeBytes[0], 0xAA);

    // With Check1 the text is read back into the bytes.
    window = OpenWindow(rig);
    QVERIFY(!Control<QCheckBox>(window, "Check1")->isChecked());
    TypeFirstByte(window, "12");
    Control<QCheckBox>(window, "Check1")->setChecked(true);
    Press(window, "CmdOk");
    QCOMPARE(chip.EeFlag, lk::kEeFlagPresent);
    QCOMPARE(chip.EeBytes[0], 0x12);
    QCOMPARE(chip.EeBytes[1], 0xBB);
    QCOMPARE(std::vector<std::uint8_t>(chip.EeBytes.begin() + 2, chip.EeBytes.end()),
             std::vector<std::uint8_t>(opened.begin() + 2, opened.end()));

    // Cancel drops the text not taken and the flag not set; a file loaded went into the
    // project as it was read, and stays.
    window = OpenWindow(rig);
    rig.dialogs->files = {good};
    Press(window, "Command1");
    TypeFirstByte(window, "34");
    Control<QCheckBox>(window, "Check1")->setChecked(false);
    Press(window, "CmdCancel");
    QVERIFY(!window->isVisible());
    QCOMPARE(chip.EeBytes[0], 0xAA);
    QCOMPARE(chip.EeFlag, lk::kEeFlagPresent);

    // Another model without EEDATA closes the window.
    window = OpenWindow(rig);
    QVERIFY(w.SelectModel("QVM50P99"));
    QVERIFY(!window->isVisible());
    QVERIFY(!ActionNamed(w, "mnuEeprom")->isEnabled());
  }

  // The buttons on the simulated writer with their status texts, then the watch: one
  // write on its first tick, none while the file stays as it is, one after a change,
  // and the end of the watch when the file goes.
  void chipAndWatch() {
    Rig rig;
    MainWindow& w = rig.Open();
    w.OpenDocumentAt(rig.Example("qvm50f96a-eedata.lkx"));
    EedataWindow* window = OpenWindow(rig);
    QSignalSpy status(window, &EedataWindow::statusShown);
    auto statusTexts = [&] {
      QStringList texts;
      for (const QList<QVariant>& args : status) texts << args.at(0).toString();
      status.clear();
      return texts;
    };
    const std::vector<std::uint8_t> written = w.CurrentProject().Chip.EeBytes;
    QSignalSpy done(&w, &MainWindow::commandFinished);
    Press(window, "CmdWriteEedata");
    QVERIFY(done.wait(20000));
    QCOMPARE(statusTexts(), QStringList({"烧录EEDATA中...", "Write Eedata OK!", "烧录完成"}));

    std::fill(w.CurrentProject().Chip.EeBytes.begin(), w.CurrentProject().Chip.EeBytes.end(), 0);
    Press(window, "cmdReadEedata");
    QVERIFY(done.wait(20000));
    QCOMPARE(statusTexts(), QStringList({"读取EEDATA中...", "Read Eedata OK!", "读取完成"}));
    QCOMPARE(w.CurrentProject().Chip.EeBytes, written);
    QCOMPARE(Control<QPlainTextEdit>(window, "TextMain")->toPlainText(),
             QString::fromStdString(lk::EedataHexText(w.CurrentProject().Chip)).remove('\r'));
    // An EEDATA read or write is no chip passed: the counters stay.
    QCOMPARE(w.Results()->Passed() + w.Results()->Failed(), 0);

    auto* watch = Control<QCheckBox>(window, "Check2");
    auto* path = Control<QLineEdit>(window, "Text1");
    watch->setChecked(true);
    QVERIFY(!watch->isChecked());
    QCOMPARE(rig.dialogs->Texts(), QStringList{"未找到数据EEDATA文件！"});

    const auto data = rig.dir.Write("data.txt", "1");
    path->setText(QString::fromStdString(data.string()));
    // The ticks run on the writer's thread on a copy of the watch, whose memory of the
    // file's time comes back to the window: no second write until the file changes.
    auto writes = [&] { return statusTexts().count("Write Eedata OK!"); };
    int total = 0;
    watch->setChecked(true);
    QTRY_VERIFY_WITH_TIMEOUT((total += writes()) == 1, 10000);
    QTest::qWait(1500);
    QCOMPARE(writes(), 0);
    std::filesystem::last_write_time(
        data, std::filesystem::last_write_time(data) + std::chrono::seconds(5));
    QTRY_VERIFY_WITH_TIMEOUT((total += writes()) == 2, 10000);

    rig.dialogs->messages.clear();
    std::filesystem::remove(data);
    QTRY_VERIFY_WITH_TIMEOUT(!watch->isChecked(), 5000);
    QCOMPARE(rig.dialogs->Texts(), QStringList{"数据EEDATA文件异常！"});
    QVERIFY(!window->Watching());
  }
};

QTEST_MAIN(EedataWindowTest)
#include "eedata_window_test.moc"
