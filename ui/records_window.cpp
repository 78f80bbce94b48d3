#include "ui/records_window.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>
#include <nlohmann/json.hpp>

#include "prod/chip_records.h"
#include "ui/main_window.h"

namespace lk::ui {
namespace {

constexpr int kShown = 500;

QString Field(const nlohmann::json& j, const char* key) {
  const auto it = j.find(key);
  if (it == j.end() || it->is_null()) return {};
  return QString::fromStdString(it->is_string() ? it->get<std::string>() : it->dump());
}

}  // namespace

RecordsWindow::RecordsWindow(MainWindow& window) : QDialog(&window), window_(window) {
  setObjectName("frmRecords");
  setWindowTitle(QStringLiteral("生产记录"));
  setAttribute(Qt::WA_DeleteOnClose);
  resize(900, 460);

  filter_ = new QLineEdit(this);
  filter_->setObjectName("txtFilter");
  filter_->setAccessibleName(QStringLiteral("筛选"));
  filter_->setPlaceholderText(QStringLiteral("筛选：型号、结果、滚动码、工位…"));
  auto* refresh = new QPushButton(QStringLiteral("刷新"), this);
  refresh->setObjectName("cmdRefresh");
  table_ = new QTableWidget(0, 8, this);
  table_->setObjectName("lstRecords");
  table_->setAccessibleName(QStringLiteral("生产记录"));
  table_->setHorizontalHeaderLabels({QStringLiteral("编号"), QStringLiteral("时间 (UTC)"),
                                     QStringLiteral("工位"), QStringLiteral("命令"),
                                     QStringLiteral("型号"), QStringLiteral("结果"),
                                     QStringLiteral("滚动码"), QStringLiteral("失败行")});
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->verticalHeader()->hide();
  table_->horizontalHeader()->setStretchLastSection(true);
  status_ = new QLabel(this);
  status_->setObjectName("lblRecordsStatus");

  auto* top = new QHBoxLayout;
  top->addWidget(filter_, 1);
  top->addWidget(refresh);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(table_, 1);
  layout->addWidget(status_);

  connect(filter_, &QLineEdit::returnPressed, this, [this] { Refresh(); });
  connect(refresh, &QPushButton::clicked, this, [this] { Refresh(); });
  Refresh();
}

void RecordsWindow::Refresh() {
  status_->setText(QStringLiteral("正在读取…"));
  QPointer<RecordsWindow> self(this);
  window_.QueryRecords(
      filter_->text().toStdString(), kShown,
      [self](std::vector<prod::RecordRow> rows, std::string error) {
        if (!self) return;  // closed while the records were read
        if (!error.empty()) {
          self->status_->setText(QString::fromStdString(error));
          self->status_->setAccessibleDescription(self->status_->text());
          return;
        }
        self->table_->setRowCount(static_cast<int>(rows.size()));
        for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
          const auto j = nlohmann::json::parse(rows[static_cast<std::size_t>(r)].Record, nullptr, false);
          const nlohmann::json serial = j.is_object() ? j.value("serial", nlohmann::json::object())
                                                      : nlohmann::json::object();
          const QStringList cells = {
              QString::number(rows[static_cast<std::size_t>(r)].Id),
              j.is_object() ? Field(j, "utc").left(19).replace('T', ' ') : QString(),
              j.is_object() ? Field(j, "station") : QString(),
              j.is_object() ? Field(j, "command") : QString(),
              j.is_object() ? Field(j, "model") : QString(),
              j.is_object() ? Field(j, "result") : QString(),
              Field(serial, "used"),
              j.is_object() ? Field(j, "failure_line") : QString()};
          for (int c = 0; c < cells.size(); ++c) {
            self->table_->setItem(r, c, new QTableWidgetItem(cells[c]));
          }
        }
        self->table_->resizeColumnsToContents();
        self->status_->setText(QStringLiteral("%1 条记录（最多显示 %2 条）").arg(rows.size()).arg(kShown));
        self->status_->setAccessibleDescription(self->status_->text());
      });
}

}  // namespace lk::ui
