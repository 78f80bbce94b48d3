// The key filters of the dialogs' text boxes (the only test of their rules), as the
// operator meets them: keys typed one by one and the same text pasted give the same box.
#include <QClipboard>
#include <QDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QRadioButton>
#include <QTreeWidget>

#include "tests/ui/ui_rig.h"

using namespace lk::test;

class KeyFilterTest : public QObject {
  Q_OBJECT

 private slots:
  void typedAndPastedAlike() {
    struct Row {
      const char* menu;
      const char* dialog;
      const char* box;
      const char* keys;
      const char* kept;
    };
    const Row rows[] = {
        // Hexadecimal digits of either case, decimal digits, lengths 1 to 4; a Space only
        // between items: never first, never twice in a row.
        {"mnuRollingCode", "FrmRoll", "TextAddress", " 7fF g0x 1  2Z-", "7fF 0 1 2"},
        {"mnuRollingCode", "FrmRoll", "TextCount", " 12 a 3  4F.-", "12 3 4"},
        {"mnuRollingCode", "FrmRoll", "TextLenth", "0a5 4", "4"},  // one character
        {"mnuRollingCode", "FrmRoll", "TextLenth", "01", "1"},
        {"mnuWriterID", "frmID", "Text1", "12a-3 4+5", "12345"},
        // LK3PW89's last option is a four-bit field, typed in binary.
        {"mnuConfigset", "Frmconfig", "TextValue", "1021x1", "1011"},
    };
    Rig rig;
    lk::ui::MainWindow& w = rig.Open();
    QVERIFY(w.SelectModel("LK3PW89"));
    for (const Row& row : rows) {
      ActionNamed(w, row.menu)->trigger();
      auto* dialog = rig.Find<QDialog>(row.dialog);
      QVERIFY2(dialog != nullptr, row.dialog);
      if (auto* enable = dialog->findChild<QRadioButton*>("Option1")) enable->setChecked(true);
      if (auto* options = dialog->findChild<QTreeWidget*>("Listconfig")) {
        options->setCurrentItem(options->topLevelItem(options->topLevelItemCount() - 1));
      }
      auto* box = dialog->findChild<QLineEdit*>(row.box);
      QVERIFY2(box != nullptr && box->isEnabled(), row.box);

      box->clear();
      QTest::keyClicks(box, QString::fromUtf8(row.keys));
      QCOMPARE(box->text(), QString(row.kept));
      QTest::keyClick(box, Qt::Key_Backspace);
      QCOMPARE(box->text(), QString(row.kept).chopped(1));

      box->clear();
      QGuiApplication::clipboard()->setText(QString::fromUtf8(row.keys));
      QTest::keySequence(box, QKeySequence::Paste);
      QCOMPARE(box->text(), QString(row.kept));
      // A paste of nothing the filter takes leaves the box, selection included, alone.
      box->selectAll();
      QGuiApplication::clipboard()->setText(QStringLiteral("-- 测试"));
      QTest::keySequence(box, QKeySequence::Paste);
      QCOMPARE(box->text(), QString(row.kept));
      dialog->reject();
    }
  }
};

QTEST_MAIN(KeyFilterTest)
#include "key_filter_test.moc"
