#include "ui/result_panel.h"

#include <QHBoxLayout>

#include "ui/child_windows.h"

namespace lk::ui {

ResultPanel::ResultPanel(QWidget* parent) : QWidget(parent) {
  Name(this, "ResultPanel");
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(6, 0, 6, 0);
  verdict_ = new QLabel(this);
  Name(verdict_, "Verdict");
  QFont big = verdict_->font();
  big.setPointSizeF(big.pointSizeF() * 2.0);
  big.setBold(true);
  verdict_->setFont(big);
  verdict_->setAlignment(Qt::AlignCenter);
  verdict_->setMinimumWidth(verdict_->fontMetrics().horizontalAdvance(" 无烧录器 ") + 16);
  counters_ = new QLabel(this);
  Name(counters_, "Counters");
  layout->addWidget(verdict_);
  layout->addWidget(counters_);
  Show("—", "#808080");
  counters_->setText(QStringLiteral("通过 0   失败 0   总计 0"));
}

void ResultPanel::Show(const QString& text, const QString& colour) {
  verdict_->setText(text);
  verdict_->setStyleSheet(
      QStringLiteral("QLabel { color: white; background: %1; border-radius: 4px; padding: 2px 10px; }")
          .arg(colour));
}

void ResultPanel::Started(const QString& command) {
  Show(QStringLiteral("…"), "#5078a0");
  verdict_->setToolTip(command);
}

void ResultPanel::Ended(const QString& command, ops::Outcome outcome, const QString& detail,
                        bool counted) {
  switch (outcome) {
    case ops::Outcome::Passed:
      if (counted) ++passed_;
      Show("PASS", "#2e8b3a");
      break;
    case ops::Outcome::Failed:
      if (counted) ++failed_;
      Show("FAIL", "#c0302b");
      break;
    case ops::Outcome::NoWriter:
      Show(QStringLiteral("无烧录器"), "#b07a10");
      break;
    case ops::Outcome::Refused:
      Show(QStringLiteral("已拒绝"), "#b07a10");
      break;
  }
  verdict_->setToolTip(detail.isEmpty() ? command : command + ": " + detail);
  ShowCounts();
}

void ResultPanel::SetCounts(int passed, int failed) {
  passed_ = passed;
  failed_ = failed;
  ShowCounts();
}

void ResultPanel::ShowCounts() {
  counters_->setText(QStringLiteral("通过 %1   失败 %2   总计 %3")
                         .arg(passed_)
                         .arg(failed_)
                         .arg(passed_ + failed_));
}

}  // namespace lk::ui
