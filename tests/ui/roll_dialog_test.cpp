// The rolling-code dialog on a project with a settings file: shown when the project is
// opened, OK's refusals as the rules give them, what OK writes and logs, and Disable and
// Cancel.
#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "rolling/roll_settings.h"
#include "tests/ui/ui_rig.h"

using namespace lk::test;
using lk::ui::MainWindow;

namespace {

struct Typed {
  const char* address;
  const char* length;
  const char* count;
  bool mode2262;
};

void Fill(QDialog* dialog, const Typed& typed) {
  dialog->findChild<QLineEdit*>("TextAddress")->setText(typed.address);
  dialog->findChild<QLineEdit*>("TextLenth")->setText(typed.length);
  dialog->findChild<QLineEdit*>("TextCount")->setText(typed.count);
  dialog->findChild<QLineEdit*>("TextStep")->setText("0 0 0 1");
  dialog->findChild<QCheckBox*>("Check2262")->setChecked(typed.mode2262);
}

void Press(QDialog* dialog, const char* button) {
  QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
}

}  // namespace

class RollDialogTest : public QObject {
  Q_OBJECT

 private slots:
  // OK hands the typed texts to the dialog's rules (their checks, order and messages
  // are the rolling tests'): a refusal shows the rules' message (caption "Error",
  // information icon), a refused or silently ignored OK writes nothing and leaves the
  // dialog open. Then a valid code is saved, logged and shown in the status panel.
  void okRefusesOrSaves() {
    struct Row {
      Typed typed;
      QString message;  // empty: nothing shown
    };
    const Row rows[] = {
        {{"7F3 7F2 7F1", "4", "1 2 3 4", false}, "地址字节数与长度不匹配！"},
        {{"7FF 7F2 7F1 7F0", "4", "7 6 3 2", true}, "数据 \"2\" 不能用于2262模式！"},
        {{"7F2 7F1 7F0", "3", "1 2 3", false}, ""},  // only four-byte codes are saved
    };
    Rig rig;
    MainWindow& w = rig.Open();
    const std::string settings = (rig.dir.Path() / "examples/rolling/project.ini").string();
    w.OpenDocumentAt(rig.Example("rolling/project.lkx"));

    // Shown by the open dispatcher, filled from the file, which now says "Mode=False".
    auto* dialog = rig.Find<QDialog>("FrmRoll");
    QVERIFY(dialog != nullptr);
    QVERIFY(dialog->findChild<QRadioButton*>("Option1")->isChecked());
    QCOMPARE(dialog->findChild<QLineEdit*>("TextAddress")->text(), QString("7F3 7F2 7F1 7F0"));
    QCOMPARE(dialog->findChild<QLineEdit*>("TextCount")->text(), QString("1 2 3 4"));
    const std::string before = rig.dir.Read("examples/rolling/project.ini");

    for (const Row& row : rows) {
      rig.dialogs->messages.clear();
      Fill(dialog, row.typed);
      Press(dialog, "CmdOK");
      QVERIFY2(dialog->isVisible(), row.typed.count);
      if (row.message.isEmpty()) {
        QVERIFY(rig.dialogs->messages.empty());
      } else {
        QCOMPARE(rig.dialogs->Texts(), QStringList{row.message});
        QCOMPARE(rig.dialogs->messages[0].caption, QString("Error"));
        QCOMPARE(rig.dialogs->messages[0].icon, lk::Icon::Information);
      }
      QCOMPARE(rig.dir.Read("examples/rolling/project.ini"), before);
    }

    Fill(dialog, {"7FF 7F2 7F1 7F0", "4", "7 5 3 1", true});
    Press(dialog, "CmdOK");
    QVERIFY(!dialog->isVisible());
    QVERIFY(rig.dialogs->messages.empty());
    QCOMPARE(Lines(w).mid(Lines(w).size() - 5),
             QStringList({"Enable Rolling Code!", "Address:7FF 7F2 7F1 7F0", "Count:7 5 3 1",
                          "Step:0 0 0 1", "Work as 2262 Mode!"}));
    QCOMPARE(w.StatusPanel(1), QString("Rolling Code:Enable"));
    QVERIFY(w.CurrentProject().RollingEnabled);
    lk::QuietHost quiet;
    const lk::RollSettings saved = lk::ReadRollSettings(quiet, settings);
    QVERIFY(saved.Enabled && saved.Mode2262);
    QCOMPARE(saved.Addresses, (std::vector<std::int32_t>{0x7F0, 0x7F1, 0x7F2, 0x7FF}));
    QCOMPARE(saved.Counts, (std::vector<std::int32_t>{1, 3, 5, 7}));
  }

  // From the menu: Cancel writes nothing and keeps the Enable option; Disable turns the
  // rolling code off in the file, the log, the panel and the project.
  void cancelAndDisable() {
    Rig rig;
    MainWindow& w = rig.Open();
    w.OpenDocumentAt(rig.Example("rolling/project.lkx"));
    rig.Find<QDialog>("FrmRoll")->reject();
    const std::string before = rig.dir.Read("examples/rolling/project.ini");

    ActionNamed(w, "mnuRollingCode")->trigger();
    auto* dialog = rig.Find<QDialog>("FrmRoll");
    auto* settings = dialog->findChild<QWidget*>("Frame2");
    dialog->findChild<QRadioButton*>("Option2")->setChecked(true);
    QVERIFY(!settings->isEnabled());
    Fill(dialog, {"1", "1", "1", false});
    Press(dialog, "cmdCancel");
    QVERIFY(!dialog->isVisible());
    QCOMPARE(rig.dir.Read("examples/rolling/project.ini"), before);
    QVERIFY(w.CurrentProject().RollingEnabled);

    ActionNamed(w, "mnuRollingCode")->trigger();
    dialog = rig.Find<QDialog>("FrmRoll");
    QCOMPARE(dialog->findChild<QLineEdit*>("TextAddress")->text(), QString("7F3 7F2 7F1 7F0"));
    dialog->findChild<QRadioButton*>("Option2")->setChecked(true);
    Press(dialog, "CmdOK");
    QVERIFY(!dialog->isVisible());
    QCOMPARE(Lines(w).last(), QString("Disable Rolling Code!"));
    QCOMPARE(w.StatusPanel(1), QString("Rolling Code:Disable"));
    QVERIFY(!w.CurrentProject().RollingEnabled);
    lk::QuietHost quiet;
    QCOMPARE(lk::GetValue(quiet, rig.dir.Path() / "examples/rolling/project.ini", "Rolling Code",
                          "Value"),
             std::string("False"));
  }
};

QTEST_MAIN(RollDialogTest)
#include "roll_dialog_test.moc"
