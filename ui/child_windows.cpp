#include "ui/child_windows.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QFontDatabase>
#include <QHeaderView>
#include <QMdiSubWindow>
#include <QStatusBar>
#include <QVBoxLayout>

namespace lk::ui {
namespace {

// Qt's own interface names an MDI child window by its caption, whatever its accessible
// name; the generic one honours the name (and gives the caption as the description).
QAccessibleInterface* SubWindowByName(const QString& className, QObject* object) {
  if (className != QLatin1String("QMdiSubWindow") || !object->isWidgetType()) return nullptr;
  return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::Window);
}

}  // namespace

void Name(QObject* object, const QString& name) {
  object->setObjectName(name);
  auto* widget = qobject_cast<QWidget*>(object);
  if (widget == nullptr) return;
  widget->setAccessibleName(name);
  // The name finds the control; what it shows (a window's caption, a panel's text) is
  // read as its description.
  QObject::connect(widget, &QWidget::windowTitleChanged, widget,
                   [widget](const QString& title) { widget->setAccessibleDescription(title); });
  if (qobject_cast<QMdiSubWindow*>(widget) != nullptr) {
    static const bool installed = (QAccessible::installFactory(&SubWindowByName), true);
    (void)installed;
  }
}

void ShowText(QLabel* label, const QString& text) {
  label->setText(text);
  label->setAccessibleDescription(text);
}

void ShowText(QAbstractButton* button, const QString& text) {
  button->setText(text);
  button->setAccessibleDescription(text);
}

QFont MonospaceFont() {
  // A fallback list rather than a look into the font database, which costs a start-up
  // the enumeration of every installed font.
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setFamilies({QStringLiteral("Courier New"), font.family()});
  font.setStyleHint(QFont::Monospace);
  return font;
}

namespace {

QVBoxLayout* BareLayout(QWidget* owner) {
  auto* layout = new QVBoxLayout(owner);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  return layout;
}

}  // namespace

DocWindow::DocWindow(QWidget* parent) : QWidget(parent) {
  QVBoxLayout* layout = BareLayout(this);
  text_ = new QPlainTextEdit(this);
  Name(text_, "TextDoc");
  text_->setFont(MonospaceFont());
  text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  text_->setReadOnly(true);
  text_->setUndoRedoEnabled(false);
  layout->addWidget(text_);

  auto* status = new QStatusBar(this);
  Name(status, "FrmDocStatus");
  status->setSizeGripEnabled(false);
  info_ = new QLabel(status);
  Name(info_, "FrmDocPanel1");
  checksum_ = new QLabel(status);
  Name(checksum_, "FrmDocPanel2");
  checksum_->setMinimumWidth(checksum_->fontMetrics().horizontalAdvance("Checksum:FFFF") + 12);
  progress_ = new QProgressBar(status);
  Name(progress_, "ProgressBar1");
  progress_->setRange(0, 100);
  progress_->setValue(0);
  progress_->setTextVisible(false);
  progress_->setMaximumHeight(status->fontMetrics().height());
  status->addWidget(info_);
  status->addWidget(checksum_);
  status->addWidget(progress_, 1);
  layout->addWidget(status);
}

void DocWindow::SetHexText(const std::string& text) {
  QString shown = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
  shown.remove(QLatin1Char('\r'));
  text_->setPlainText(shown);
}

std::string DocWindow::HexText() const {
  QString text = text_->toPlainText();
  text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
  return text.toStdString();
}

void DocWindow::SetEditable(bool editable) {
  text_->setReadOnly(!editable);
  text_->setUndoRedoEnabled(editable);
}

void DocWindow::SetChecksum(const std::string& text) {
  ShowText(checksum_, QString::fromStdString(text));
}

void DocWindow::SetInfo(const QString& text) { ShowText(info_, text); }

ConfigWindow::ConfigWindow(QWidget* parent) : QWidget(parent) {
  QVBoxLayout* layout = BareLayout(this);
  list_ = new QTreeWidget(this);
  Name(list_, "ListConfig");
  list_->setColumnCount(2);
  list_->setHeaderLabels({QStringLiteral("选项"), QStringLiteral("当前值")});
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  list_->header()->setStretchLastSection(true);
  layout->addWidget(list_);
}

void ConfigWindow::SetRows(const std::vector<ConfigOptionRow>& rows) {
  list_->clear();
  QList<QTreeWidgetItem*> items;
  for (const ConfigOptionRow& row : rows) {
    items.append(new QTreeWidgetItem(
        QStringList{QString::fromStdString(row.Option), QString::fromStdString(row.Value)}));
  }
  list_->addTopLevelItems(items);
}

MessageWindow::MessageWindow(QWidget* parent) : QWidget(parent) {
  QVBoxLayout* layout = BareLayout(this);
  list_ = new QListWidget(this);
  Name(list_, "Listmessage");
  list_->setFont(MonospaceFont());
  list_->setUniformItemSizes(true);
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  layout->addWidget(list_);
}

void MessageWindow::Append(const std::string& line) {
  list_->addItem(QString::fromStdString(line));
  list_->scrollToBottom();
}

void MessageWindow::ReplaceLast(const std::string& line) {
  if (list_->count() == 0) {
    Append(line);
    return;
  }
  list_->item(list_->count() - 1)->setText(QString::fromStdString(line));
}

void MessageWindow::Clear() { list_->clear(); }

std::vector<std::string> MessageWindow::Lines() const {
  std::vector<std::string> lines;
  for (int i = 0; i < list_->count(); ++i) lines.push_back(list_->item(i)->text().toStdString());
  return lines;
}

}  // namespace lk::ui
