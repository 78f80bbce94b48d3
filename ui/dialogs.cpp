#include "ui/dialogs.h"

#include <QFileDialog>
#include <QMessageBox>

namespace lk::ui {

void Dialogs::Message(QWidget* parent, Icon icon, const QString& text, const QString& caption) {
  QMessageBox::Icon shown = QMessageBox::NoIcon;
  switch (icon) {
    case Icon::Information:
      shown = QMessageBox::Information;
      break;
    case Icon::Exclamation:
      shown = QMessageBox::Warning;
      break;
    case Icon::Critical:
      shown = QMessageBox::Critical;
      break;
    case Icon::Question:
      shown = QMessageBox::Question;
      break;
    case Icon::None:
      break;
  }
  QMessageBox box(shown, caption, text, QMessageBox::Ok, parent);
  box.exec();
}

bool Dialogs::Ask(QWidget* parent, const QString& text, const QString& caption) {
  QMessageBox box(QMessageBox::Question, caption, text, QMessageBox::Ok | QMessageBox::Cancel,
                  parent);
  return box.exec() == QMessageBox::Ok;
}

QString Dialogs::OpenFileName(QWidget* parent, const QString& caption, const QString& folder,
                              const QString& filter) {
  return QFileDialog::getOpenFileName(parent, caption, folder, filter);
}

QString DialogFilter(const std::string& filter) {
  const QString text = Q(filter);
  const qsizetype bar = text.indexOf('|');
  if (bar < 0) return text;
  QString patterns = text.mid(bar + 1);
  patterns.replace(';', ' ');
  return text.left(bar) + " (" + patterns + ")";
}

}  // namespace lk::ui
