#include "ui/config_dialog.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "core/chip_database.h"
#include "core/config_rules.h"
#include "core/numeric_text.h"
#include "ui/key_filter.h"
#include "ui/main_window.h"

namespace lk::ui {

ConfigDialog::ConfigDialog(MainWindow& window)
    : QDialog(&window), window_(window), edit_(window.CurrentProject().Chip) {
  Name(this, "Frmconfig");
  setWindowTitle(QStringLiteral("配置字设置"));
  setAttribute(Qt::WA_DeleteOnClose);

  models_ = new QComboBox(this);
  Name(models_, "Combotype");
  models_->setMaxVisibleItems(20);
  for (const std::string& model : window.Models()) models_->addItem(Q(model));
  models_->setCurrentText(Q(edit_.Name));
  connect(models_, &QComboBox::activated, this, &ConfigDialog::ChooseModel);

  optionList_ = new QTreeWidget(this);
  Name(optionList_, "Listconfig");
  optionList_->setColumnCount(2);
  optionList_->setHeaderLabels({QStringLiteral("选项"), QStringLiteral("当前值")});
  optionList_->setRootIsDecorated(false);
  optionList_->setUniformRowHeights(true);
  optionList_->header()->setStretchLastSection(true);
  connect(optionList_, &QTreeWidget::currentItemChanged, this,
          [this] { ShowOption(optionList_->indexOfTopLevelItem(optionList_->currentItem())); });

  values_ = new QListWidget(this);
  Name(values_, "ListValue");
  connect(values_, &QListWidget::itemClicked, this, &ConfigDialog::ChooseValue);
  connect(values_, &QListWidget::itemActivated, this, &ConfigDialog::ChooseValue);

  // A numeric field is typed as the display shows it: binary digits, the most
  // significant first, at most one per bit of the field. Each edit goes into the field's
  // bits at once (ApplyFieldBinary); fewer digits than bits are the low bits, an empty
  // box changes nothing. Cancel undoes it with every other change.
  field_ = new QGroupBox(this);
  Name(field_, "FrameValue");
  fieldLabel_ = new QLabel(field_);
  Name(fieldLabel_, "LabelName");
  fieldLabel_->setWordWrap(true);
  fieldValue_ = new QLineEdit(field_);
  Name(fieldValue_, "TextValue");
  fieldValue_->setFont(MonospaceFont());
  fieldFilter_ =
      FilterKeys(fieldValue_, [](const std::string&, char key) { return key == '0' || key == '1'; });
  connect(fieldValue_, &QLineEdit::textEdited, this, &ConfigDialog::FieldEdited);
  disp1_ = new QLabel(field_);
  Name(disp1_, "LabelDisp1");
  disp2_ = new QLabel(field_);
  Name(disp2_, "LabelDisp2");
  auto* fieldLayout = new QVBoxLayout(field_);
  fieldLayout->addWidget(fieldLabel_);
  fieldLayout->addWidget(fieldValue_);
  fieldLayout->addWidget(disp1_);
  fieldLayout->addWidget(disp2_);
  fieldLayout->addStretch(1);

  // The right side shows the choices of a choice option, or the field of a numeric one,
  // under the option's name.
  optionName_ = new QLabel(this);
  Name(optionName_, "LabelOption");
  right_ = new QStackedWidget(this);
  right_->addWidget(values_);
  right_->addWidget(field_);

  words_ = new QLabel(this);
  Name(words_, "LabelWords");
  words_->setFont(MonospaceFont());
  words_->setTextInteractionFlags(Qt::TextSelectableByMouse);

  defaults_ = new QPushButton(QStringLiteral("默认值"), this);
  Name(defaults_, "cmddefault");
  ok_ = new QPushButton(QStringLiteral("确定"), this);
  Name(ok_, "CmdOK");
  ok_->setDefault(true);
  cancel_ = new QPushButton(QStringLiteral("取消"), this);
  Name(cancel_, "cmdCancel");
  connect(defaults_, &QPushButton::clicked, this, &ConfigDialog::Defaults);
  connect(ok_, &QPushButton::clicked, this, &ConfigDialog::Accept);
  connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);

  auto* top = new QHBoxLayout;
  top->addWidget(new QLabel(QStringLiteral("芯片型号"), this));
  top->addWidget(models_, 1);
  auto* lists = new QHBoxLayout;
  lists->addWidget(optionList_, 3);
  auto* side = new QVBoxLayout;
  side->addWidget(optionName_);
  side->addWidget(right_, 1);
  lists->addLayout(side, 2);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(defaults_);
  buttons->addStretch(1);
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addLayout(lists, 1);
  layout->addWidget(words_);
  layout->addLayout(buttons);
  resize(680, 440);

  LoadOptions();
}

void ConfigDialog::ChooseModel(int index) {
  const std::string model = models_->itemText(index).toStdString();
  if (model == edit_.Name) return;  // the same model keeps what was edited
  ChipParams chip = LoadChipParams(window_.UiHost(), window_.ProgramHome(), model);
  if (!chip.Loaded()) {
    models_->setCurrentText(Q(edit_.Name));
    return;
  }
  edit_ = std::move(chip);
  LoadOptions();
}

void ConfigDialog::LoadOptions() {
  options_ =
      ReadConfigOptions(window_.UiHost(), window_.ProgramHome().ConfigDefinitions(edit_.Name));
  const QSignalBlocker quiet(optionList_);
  optionList_->clear();
  for (const ConfigOption& option : options_) {
    optionList_->addTopLevelItem(new QTreeWidgetItem(QStringList{Q(option.Name), QString()}));
  }
  optionList_->resizeColumnToContents(0);
  optionList_->setColumnWidth(0, optionList_->columnWidth(0) + 16);
  optionList_->setCurrentItem(optionList_->topLevelItem(0));
  ShowOption(options_.empty() ? -1 : 0);
}

void ConfigDialog::ShowOption(int row) {
  const bool valid = row >= 0 && row < static_cast<int>(options_.size());
  const bool choice = !valid || options_[static_cast<std::size_t>(row)].Choice;
  {
    const QSignalBlocker quiet(values_);
    values_->clear();
    if (valid && choice) {
      for (const std::string& label : options_[static_cast<std::size_t>(row)].Labels) {
        values_->addItem(Q(label));
      }
    }
  }
  right_->setCurrentWidget(choice ? static_cast<QWidget*>(values_) : field_);
  optionName_->setText(valid ? Q(options_[static_cast<std::size_t>(row)].Name) : QString());
  if (valid && !choice) {
    const ConfigOption& option = options_[static_cast<std::size_t>(row)];
    field_->setTitle(Q(option.FieldName));
    fieldLabel_->setText(Q(option.FieldLabel));
    disp1_->setText(Q(option.Disp1));
    disp2_->setText(Q(option.Disp2));
    const std::string bits = FieldBinary(option.Dat, edit_.ConfigWords);
    fieldFilter_->SetMaxLength(std::max<int>(1, static_cast<int>(bits.size())));
    fieldValue_->setText(Q(bits));
  }
  ShowValues();
}

void ConfigDialog::ChooseValue(QListWidgetItem* item) {
  const int row = optionList_->indexOfTopLevelItem(optionList_->currentItem());
  if (item == nullptr || row < 0 || row >= static_cast<int>(options_.size())) return;
  ApplyConfigChoice(window_.UiHost(), window_.ProgramHome().ConfigDefinitions(edit_.Name),
                    options_[static_cast<std::size_t>(row)].Name, item->text().toStdString(),
                    edit_.ConfigWords);
  ShowValues();
}

void ConfigDialog::FieldEdited(const QString& text) {
  const int row = optionList_->indexOfTopLevelItem(optionList_->currentItem());
  if (row < 0 || row >= static_cast<int>(options_.size())) return;
  ApplyFieldBinary(options_[static_cast<std::size_t>(row)].Dat, text.toStdString(),
                   edit_.ConfigWords);
  ShowValues();
}

void ConfigDialog::Defaults() {
  edit_.ConfigWords = DefaultConfigWords(window_.UiHost(), window_.ProgramHome(), edit_);
  ShowOption(optionList_->indexOfTopLevelItem(optionList_->currentItem()));
}

void ConfigDialog::Accept() {
  if (!CheckConfigCombination(window_.UiHost(), window_.ProgramHome(), edit_)) return;
  if (!window_.AcceptChip(edit_)) return;
  accept();
}

void ConfigDialog::ShowValues() {
  for (std::size_t i = 0; i < options_.size(); ++i) {
    optionList_->topLevelItem(static_cast<int>(i))
        ->setText(1, Q(OptionValue(options_[i], edit_.ConfigWords)));
  }
  const int row = optionList_->indexOfTopLevelItem(optionList_->currentItem());
  if (row >= 0 && row < static_cast<int>(options_.size()) &&
      options_[static_cast<std::size_t>(row)].Choice) {
    const QString current =
        Q(OptionValue(options_[static_cast<std::size_t>(row)], edit_.ConfigWords));
    const QSignalBlocker quiet(values_);
    values_->clearSelection();
    values_->setCurrentRow(-1);
    for (int i = 0; i < values_->count(); ++i) {
      if (values_->item(i)->text() == current) values_->setCurrentRow(i);
    }
  }
  QStringList words;
  for (std::size_t i = 0; i < edit_.ConfigWords.size(); ++i) {
    words << QStringLiteral("CONFIG%1=%2").arg(i).arg(Q(Hex4(edit_.ConfigWords[i])));
  }
  words_->setText(QStringLiteral("配置字  ") + words.join("   "));
}

}  // namespace lk::ui
