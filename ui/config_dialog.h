// Frmconfig: the configuration words of a chip, set by their named options. The dialog
// edits its own copy of the chip record (EditChip); only OK hands it to the project.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QTreeWidget>
#include <vector>

#include "core/chip_params.h"
#include "core/config_defs.h"

namespace lk::ui {

class MainWindow;
class KeyFilter;

class ConfigDialog : public QDialog {
 public:
  explicit ConfigDialog(MainWindow& window);

  // EditChip: the record as the dialog has it now.
  const ChipParams& Edited() const { return edit_; }

 private:
  void ChooseModel(int index);              // Combotype
  void LoadOptions();                       // the definitions of EditChip's model
  void ShowOption(int row);                 // Listconfig: its choices, or its field
  void ChooseValue(QListWidgetItem* item);  // ListValue
  void FieldEdited(const QString& text);    // TextValue
  void Defaults();                          // cmddefault
  void Accept();                            // CmdOK
  void ShowValues();                        // the options' values, the choice, the words in hex

  MainWindow& window_;
  ChipParams edit_;
  std::vector<ConfigOption> options_;

  QComboBox* models_;
  QTreeWidget* optionList_;
  QListWidget* values_;
  QLabel* optionName_;
  QStackedWidget* right_;
  QGroupBox* field_;
  QLabel* fieldLabel_;
  QLabel* disp1_;
  QLabel* disp2_;
  QLineEdit* fieldValue_;
  KeyFilter* fieldFilter_;
  QLabel* words_;
  QPushButton* defaults_;
  QPushButton* ok_;
  QPushButton* cancel_;
};

}  // namespace lk::ui
