#include "ui/roll_dialog.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ui/key_filter.h"
#include "ui/main_window.h"

namespace lk::ui {

RollDialog::RollDialog(MainWindow& window, const RollDialogInput& fill)
    : QDialog(&window), window_(window) {
  Name(this, "FrmRoll");
  setWindowTitle(QStringLiteral("滚动码设置"));
  setAttribute(Qt::WA_DeleteOnClose);

  auto* state = new QGroupBox(QStringLiteral("滚动码"), this);
  Name(state, "Frame1");
  enable_ = new QRadioButton(QStringLiteral("启用 (Enable)"), state);
  Name(enable_, "Option1");
  disable_ = new QRadioButton(QStringLiteral("禁用 (Disable)"), state);
  Name(disable_, "Option2");
  auto* stateLayout = new QHBoxLayout(state);
  stateLayout->addWidget(enable_);
  stateLayout->addWidget(disable_);
  stateLayout->addStretch(1);

  settings_ = new QGroupBox(QStringLiteral("设置"), this);
  Name(settings_, "Frame2");
  auto box = [this](const char* name) {
    auto* edit = new QLineEdit(settings_);
    Name(edit, name);
    edit->setFont(MonospaceFont());
    return edit;
  };
  address_ = box("TextAddress");
  address_->setToolTip(QStringLiteral("十六进制程序地址，以空格分隔，高字节在前"));
  FilterKeys(address_, AcceptAddressKey);
  length_ = box("TextLenth");
  length_->setToolTip(QStringLiteral("滚动码字节数"));
  FilterKeys(length_, [](const std::string&, char key) { return AcceptLengthKey(key); }, 1);
  count_ = box("TextCount");
  count_->setToolTip(QStringLiteral("当前滚动码：十进制字节，以空格分隔，高字节在前"));
  FilterKeys(count_, AcceptCountKey);
  step_ = box("TextStep");
  step_->setToolTip(QStringLiteral("十进制步长，以空格分隔"));
  mode2262_ = new QCheckBox(QStringLiteral("2262 模式"), settings_);
  Name(mode2262_, "Check2262");
  auto* form = new QFormLayout(settings_);
  form->addRow(QStringLiteral("地址 (HEX)"), address_);
  form->addRow(QStringLiteral("长度 (1-4)"), length_);
  form->addRow(QStringLiteral("数据 (DEC)"), count_);
  form->addRow(QStringLiteral("步长"), step_);
  form->addRow(QString(), mode2262_);

  ok_ = new QPushButton(QStringLiteral("确定"), this);
  Name(ok_, "CmdOK");
  ok_->setDefault(true);
  cancel_ = new QPushButton(QStringLiteral("取消"), this);
  Name(cancel_, "cmdCancel");
  connect(ok_, &QPushButton::clicked, this, &RollDialog::Accept);
  connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(state);
  layout->addWidget(settings_);
  layout->addLayout(buttons);
  setMinimumWidth(420);

  // Option1 enables the settings frame and everything in it; Option2 disables them.
  connect(enable_, &QRadioButton::toggled, settings_, &QWidget::setEnabled);
  address_->setText(Q(fill.Address));
  length_->setText(Q(fill.Length));
  count_->setText(Q(fill.Count));
  step_->setText(Q(fill.Step));
  mode2262_->setChecked(fill.Mode2262);
  (fill.Enable ? enable_ : disable_)->setChecked(true);
  settings_->setEnabled(fill.Enable);
}

RollDialogInput RollDialog::Input() const {
  RollDialogInput in;
  in.Enable = enable_->isChecked();
  in.Address = address_->text().toStdString();
  in.Length = length_->text().toStdString();
  in.Count = count_->text().toStdString();
  in.Step = step_->text().toStdString();
  in.Mode2262 = mode2262_->isChecked();
  return in;
}

void RollDialog::Accept() {
  const RollDialogInput in = Input();
  if (ApplyRollDialog(window_.UiHost(), in, window_.RollSettingsFile()) != RollOkResult::Saved) {
    return;  // refused with its message, or (a code not four bytes long) quietly not saved
  }
  window_.CurrentProject().RollingEnabled = in.Enable;
  accept();
}

}  // namespace lk::ui
