#include "ui/writer_id_dialog.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>
#include <memory>

#include "ops/writer_id.h"
#include "ui/key_filter.h"
#include "ui/main_window.h"

namespace lk::ui {

WriterIdDialog::WriterIdDialog(MainWindow& window) : QDialog(&window), window_(window) {
  Name(this, "frmID");
  setWindowTitle(QStringLiteral("烧录器 ID"));
  setAttribute(Qt::WA_DeleteOnClose);

  id_ = new QLineEdit(this);
  Name(id_, "Text1");
  id_->setFont(MonospaceFont());
  FilterKeys(id_, [](const std::string&, char key) { return ops::AcceptWriterIdKey(key); });
  id_->setText(Q(ops::StoredWriterIdText(window.UiHost(), window.ProgramHome())));
  increment_ = new QCheckBox(QStringLiteral("设置成功后 ID 自动加 1"), this);
  Name(increment_, "Check1");

  set_ = new QPushButton(QStringLiteral("设置"), this);
  Name(set_, "Command1");
  read_ = new QPushButton(QStringLiteral("读取"), this);
  Name(read_, "Command2");
  close_ = new QPushButton(QStringLiteral("关闭"), this);
  Name(close_, "Command3");
  connect(set_, &QPushButton::clicked, this, &WriterIdDialog::Set);
  connect(read_, &QPushButton::clicked, this, &WriterIdDialog::Read);
  connect(close_, &QPushButton::clicked, this, &QDialog::reject);
  // Set is offered only for a number the writer can hold.
  connect(id_, &QLineEdit::textChanged, this, &WriterIdDialog::UpdateButtons);

  auto* form = new QFormLayout;
  form->addRow(QStringLiteral("烧录器 ID"), id_);
  form->addRow(QString(), increment_);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(set_);
  buttons->addWidget(read_);
  buttons->addStretch(1);
  buttons->addWidget(close_);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addLayout(buttons);
  setMinimumWidth(360);
  UpdateButtons();
}

void WriterIdDialog::UpdateButtons() {
  set_->setEnabled(!working_ && ops::ParseWriterIdText(id_->text().toStdString()).has_value());
  read_->setEnabled(!working_);
  close_->setEnabled(!working_);
  id_->setReadOnly(working_);
  increment_->setEnabled(!working_);
}

void WriterIdDialog::SetWorking(bool working) {
  working_ = working;
  UpdateButtons();
}

void WriterIdDialog::Set() {
  const auto id = ops::ParseWriterIdText(id_->text().toStdString());
  if (!id || working_) return;
  SetWorking(true);
  const bool increment = increment_->isChecked();
  auto result = std::make_shared<ops::WriterIdSet>();
  QPointer<WriterIdDialog> self(this);
  const bool posted = window_.PostWriterJob(
      [result, id = *id, increment](ops::Station& st) {
        *result = ops::SetWriterIdentifier(st, id, increment);
      },
      [self, result, id = *id] {
        if (!self) return;
        if (result->Verdict == ops::Outcome::Passed) self->window_.WriterIdChanged(id);
        if (!result->NextText.empty()) self->id_->setText(Q(result->NextText));
        self->SetWorking(false);
      });
  if (!posted) SetWorking(false);
}

void WriterIdDialog::Read() {
  if (working_) return;
  SetWorking(true);
  QPointer<WriterIdDialog> self(this);
  const bool posted = window_.PostWriterJob([](ops::Station& st) { ops::ReadWriterIdentifier(st); },
                                            [self] {
                                              if (self) self->SetWorking(false);
                                            });
  if (!posted) SetWorking(false);
}

void WriterIdDialog::reject() {
  if (!working_) QDialog::reject();
}

}  // namespace lk::ui
