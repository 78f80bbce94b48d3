#include "ui/about_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

#include "core/host.h"
#include "ops/connection_monitor.h"
#include "ui/main_window.h"

namespace lk::ui {

AboutDialog::AboutDialog(MainWindow& window) : QDialog(&window) {
  Name(this, "FrmAbout");
  setWindowTitle(QStringLiteral("关于 ") + kAppTitle);
  setAttribute(Qt::WA_DeleteOnClose);

  auto value = [this](const char* name, const QString& text) {
    auto* label = new QLabel(text, this);
    Name(label, name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
  };
  auto* title =
      value("LabelTitle",
            QStringLiteral("%1 v%2.%3").arg(kAppTitle).arg(kVersionMajor).arg(kVersionMinor));
  QFont big = title->font();
  big.setPointSizeF(big.pointSizeF() * 1.4);
  big.setBold(true);
  title->setFont(big);
  auto* icon = new QLabel(this);
  icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(48, 48));

  const Home& home = window.ProgramHome();
  auto* form = new QFormLayout;
  form->addRow(QStringLiteral("程序文件夹"), value("LabelFolder", Q(home.Root().string())));
  if (home.SessionRoot() != home.Root()) {
    form->addRow(QStringLiteral("设置文件夹"),
                 value("LabelSessionFolder", Q(home.SessionRoot().string())));
  }
  form->addRow(QStringLiteral("芯片数据库"),
               value("LabelDatabase", QStringLiteral("%1 (%2 种型号)")
                                          .arg(Q(home.QvmcIni().string()))
                                          .arg(window.Models().size())));
  // The writer as the connection monitor last heard it, in the lines it logged then.
  QString writer = window.StatusPanel(4);
  if (const auto& facts = window.ConnectedWriter()) {
    QStringList lines;
    if (facts->Version) lines << Q(ops::ConnectedLine(*facts->Version));
    if (facts->Id) lines << Q(ops::WriterIdLine(*facts->Id));
    if (!lines.isEmpty()) writer = lines.join('\n');
  }
  form->addRow(QStringLiteral("烧录器"), value("LabelWriter", writer));

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
  Name(buttons, "cmdOK");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

  auto* head = new QHBoxLayout;
  head->addWidget(icon);
  head->addWidget(title, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(head);
  layout->addLayout(form);
  layout->addWidget(buttons);
  setMinimumWidth(460);
}

}  // namespace lk::ui
