// The writer-ID dialog on the simulated writer: the stored identifier shown, a set with
// the increment (the next number in the box and in data.dat), a read. The messages of
// every failure are the operation's (ops tests); the dialog shows them as it shows these.
#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>

#include "tests/ui/ui_rig.h"
#include "ui/writer_id_dialog.h"

using namespace lk::test;
using lk::ui::MainWindow;
using lk::ui::WriterIdDialog;

namespace {

// Clicks a button and waits until its job on the writer's thread has ended.
void PressAndWait(WriterIdDialog* dialog, const char* button) {
  QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
  QTRY_VERIFY_WITH_TIMEOUT(!dialog->Working(), 20000);
}

}  // namespace

class WriterIdDialogTest : public QObject {
  Q_OBJECT

 private slots:
  void setWithIncrementAndRead() {
    Rig rig;
    lk::QuietHost quiet;
    lk::WriteValue(quiet, rig.dir.Path() / "dat" / "data.dat", "Setting", "ID", "41");
    MainWindow& w = rig.Open();
    Tick(w);
    ActionNamed(w, "mnuWriterID")->trigger();
    auto* dialog = rig.Find<WriterIdDialog>("frmID");
    QVERIFY(dialog != nullptr);
    auto* id = dialog->findChild<QLineEdit*>("Text1");
    QCOMPARE(id->text(), QString("000041"));

    // A set without the increment leaves the box and the stored number alone.
    rig.dialogs->messages.clear();
    PressAndWait(dialog, "Command1");
    QCOMPARE(rig.dialogs->Texts(), QStringList{"设置成功！\r\n烧录器ID为：41"});
    QCOMPARE(id->text(), QString("000041"));

    dialog->findChild<QCheckBox*>("Check1")->setChecked(true);
    rig.dialogs->messages.clear();
    PressAndWait(dialog, "Command1");
    QCOMPARE(rig.dialogs->Texts(), QStringList{"设置成功！\r\n烧录器ID为：41"});
    QCOMPARE(rig.dialogs->messages[0].icon, lk::Icon::Information);
    QCOMPARE(id->text(), QString("00000042"));
    QCOMPARE(rig.Value("data.dat", "Setting", "ID"), std::string("42"));
    QCOMPARE(w.ConnectedWriter()->Id, std::optional<std::uint32_t>(41));

    // The writer holds 41: the read shows it (six digits) and changes nothing.
    PressAndWait(dialog, "Command2");
    QCOMPARE(rig.dialogs->Texts().last(), QString("读取完成！\r\n烧录器ID：000041"));
    QCOMPARE(rig.Value("data.dat", "Setting", "ID"), std::string("42"));
    QVERIFY(w.MonitorRunning());

    // A box the writer cannot hold offers no set.
    id->setText("4294967296");
    QVERIFY(!dialog->findChild<QPushButton*>("Command1")->isEnabled());
    dialog->findChild<QPushButton*>("Command3")->click();
    QVERIFY(!dialog->isVisible());
  }
};

QTEST_MAIN(WriterIdDialogTest)
#include "writer_id_dialog_test.moc"
