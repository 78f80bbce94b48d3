// The configuration dialog on its own copy of the chip: choices and a typed field change
// the copy and its words in hexadecimal, the default button restores the rules' words,
// OK hands the copy to the project after the combination check, Cancel leaves the
// project alone, and the model chosen here is the model of the main window.
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>

#include "core/config_rules.h"
#include "core/numeric_text.h"
#include "tests/support/recording_host.h"
#include "tests/ui/ui_rig.h"
#include "ui/config_dialog.h"

using namespace lk::test;
using lk::ui::MainWindow;
using Words = std::vector<std::int32_t>;

namespace {

// The open dialog and its controls.
struct Editor {
  explicit Editor(const Rig& rig) : dialog(rig.Find<lk::ui::ConfigDialog>("Frmconfig")) {
    if (dialog == nullptr) qFatal("Frmconfig is not shown");
    options = dialog->findChild<QTreeWidget*>("Listconfig");
    values = dialog->findChild<QListWidget*>("ListValue");
    field = dialog->findChild<QLineEdit*>("TextValue");
    words = dialog->findChild<QLabel*>("LabelWords");
  }
  // Selects the option and clicks its choice as the operator does.
  void Choose(const QString& option, const QString& choice) {
    options->setCurrentItem(options->findItems(option, Qt::MatchExactly).value(0));
    QListWidgetItem* item = values->findItems(choice, Qt::MatchExactly).value(0);
    if (item == nullptr) qFatal("no choice %s", qPrintable(choice));
    QTest::mouseClick(values->viewport(), Qt::LeftButton, {}, values->visualItemRect(item).center());
  }
  QString Value(const QString& option) const {
    return options->findItems(option, Qt::MatchExactly).value(0)->text(1);
  }
  void Press(const char* button) {
    QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
  }

  lk::ui::ConfigDialog* dialog;
  QTreeWidget* options;
  QListWidget* values;
  QLineEdit* field;
  QLabel* words;
};

QString WordsText(const Words& words) {
  QStringList shown;
  for (std::size_t i = 0; i < words.size(); ++i) {
    shown << QString("CONFIG%1=%2").arg(i).arg(QString::fromStdString(lk::Hex4(words[i])));
  }
  return shown.join("   ");
}

}  // namespace

class ConfigDialogTest : public QObject {
  Q_OBJECT

 private slots:
  // LK3PW89: word 0 bit 2 is WDTE, word 1 bits 8-11 the TRIM field, CONFIG OSCD and
  // CONFIG LVDT are checked together.
  void editAndAccept() {
    Rig rig;
    MainWindow& w = rig.Open();
    QVERIFY(w.SelectModel("LK3PW89"));
    const Words loaded = w.CurrentProject().Chip.ConfigWords;
    ActionNamed(w, "mnuConfigset")->trigger();
    Editor e(rig);
    QVERIFY(e.words->text().endsWith(WordsText(loaded)));
    QCOMPARE(e.options->topLevelItemCount(), w.ConfigDisplay()->List()->topLevelItemCount());

    // A click applies the choice to the copy only; the words follow at once.
    e.Choose("WDTE 看门狗", "Disable 禁止");
    QCOMPARE(e.Value("WDTE 看门狗"), QString("Disable 禁止"));
    QCOMPARE(e.values->currentItem()->text(), QString("Disable 禁止"));
    Words edited = loaded;
    edited[0] &= ~0x0004;
    QVERIFY(e.words->text().endsWith(WordsText(edited)));
    QCOMPARE(w.CurrentProject().Chip.ConfigWords, loaded);

    // The field takes binary digits into its bits, the lowest digit into bit 8.
    e.options->setCurrentItem(e.options->topLevelItem(e.options->topLevelItemCount() - 1));
    QCOMPARE(e.field->text(), QString::fromStdString(lk::FieldBinary("1,8:1,9:1,10:1,11", loaded)));
    e.field->clear();
    QTest::keyClicks(e.field, "0110");
    edited[1] = (edited[1] & ~0x0F00) | 0x0600;
    QVERIFY(e.words->text().endsWith(WordsText(edited)));
    QCOMPARE(e.Value("TRIM 内部RC校准"), QString("0110"));

    // The default button: the rules' words for the model, every option shown again.
    e.Press("cmddefault");
    lk::QuietHost quiet;
    const Words defaults = lk::DefaultConfigWords(quiet, w.ProgramHome(), w.CurrentProject().Chip);
    QVERIFY(e.words->text().endsWith(WordsText(defaults)));
    QCOMPARE(e.Value("WDTE 看门狗"), QString("Enable 使能"));
    QCOMPARE(e.field->text(), QString("1111"));

    // Two oscillator periods need 2.8V: OK refuses with the rules' message.
    e.Choose("CONFIG OSCD", "2 oscillator periods");
    e.Choose("CONFIG LVDT", "2.0V");
    lk::test::RecordingHost check;
    QVERIFY(!lk::CheckConfigCombination(check, w.ProgramHome(), e.dialog->Edited()));
    e.Press("CmdOK");
    QCOMPARE(rig.dialogs->Texts(), QStringList{QString::fromStdString(check.messages.at(0).text)});
    QVERIFY(e.dialog->isVisible());
    QCOMPARE(w.CurrentProject().Chip.ConfigWords, loaded);

    e.Choose("CONFIG LVDT", "2.8V");
    e.Choose("WDTE 看门狗", "Disable 禁止");
    const Words accepted = e.dialog->Edited().ConfigWords;
    e.Press("CmdOK");
    QTRY_VERIFY(rig.Find("Frmconfig") == nullptr);
    QCOMPARE(w.CurrentProject().Chip.ConfigWords,
             lk::ApplyConfigRules(quiet, w.ProgramHome(), "LK3PW89", w.CurrentProject().Chip.Prod,
                                  accepted));
    auto* display = w.ConfigDisplay()->List();
    QCOMPARE(display->findItems("WDTE 看门狗", Qt::MatchExactly).value(0)->text(1),
             QString("Disable 禁止"));
    QCOMPARE(display->findItems("CONFIG OSCD", Qt::MatchExactly).value(0)->text(1),
             QString("2 oscillator periods"));
  }

  // Combotype loads another model into the copy; Cancel leaves the project's chip and
  // image alone, OK makes the model the main window's; a model without definitions shows
  // the not-found message and no options.
  void chooseModel() {
    Rig rig;
    MainWindow& w = rig.Open();
    w.OpenDocumentAt(rig.Example("qvm50p99.lkx"));
    const lk::ChipParams before = w.CurrentProject().Chip;
    auto* chooser = w.findChild<QComboBox*>("ModelChooser");
    for (const bool ok : {false, true}) {
      ActionNamed(w, "mnuConfigset")->trigger();
      Editor e(rig);
      auto* models = e.dialog->findChild<QComboBox*>("Combotype");
      QCOMPARE(models->count(), chooser->count());
      QCOMPARE(models->currentText(), QString("QVM50P99"));
      models->setCurrentText("QVM50F96A");
      emit models->activated(models->currentIndex());
      QCOMPARE(e.dialog->Edited().Name, std::string("QVM50F96A"));
      lk::QuietHost quiet;
      const auto options = lk::ReadConfigOptions(quiet, w.ProgramHome().ConfigDefinitions("QVM50F96A"));
      QCOMPARE(e.options->topLevelItemCount(), static_cast<int>(options.size()));
      QCOMPARE(e.options->topLevelItem(0)->text(0), QString::fromStdString(options[0].Name));
      e.Press(ok ? "CmdOK" : "cmdCancel");
      QTRY_VERIFY(rig.Find("Frmconfig") == nullptr);
      if (!ok) {
        QCOMPARE(w.CurrentProject().Chip.Name, before.Name);
        QCOMPARE(w.CurrentProject().Chip.RomWords, before.RomWords);
        QCOMPARE(w.CurrentProject().Chip.ConfigWords, before.ConfigWords);
      }
    }
    QCOMPARE(w.CurrentProject().Chip.Name, std::string("QVM50F96A"));
    QCOMPARE(chooser->currentText(), QString("QVM50F96A"));
    QVERIFY(ActionNamed(w, "mnuEeprom")->isEnabled());

    std::filesystem::remove(rig.dir.Path() / "cfg" / "QVM50F96A.cfg");
    rig.dialogs->messages.clear();
    ActionNamed(w, "mnuConfigset")->trigger();
    Editor e(rig);
    QCOMPARE(e.options->topLevelItemCount(), 0);
    QCOMPARE(e.values->count(), 0);
    QCOMPARE(rig.dialogs->Texts(),
             QStringList{"File: \"" +
                         QString::fromStdString((rig.dir.Path() / "cfg" / "QVM50F96A.cfg").string()) +
                         "\" Not Found!"});
  }
};

QTEST_MAIN(ConfigDialogTest)
#include "config_dialog_test.moc"
