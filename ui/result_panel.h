// The production line's view of the last chip command: a large PASS or FAIL and the
// session's pass, fail and total counters.
#pragma once

#include <QLabel>
#include <QWidget>

#include "ops/station.h"

namespace lk::ui {

class ResultPanel : public QWidget {
 public:
  explicit ResultPanel(QWidget* parent = nullptr);

  // A command has started (the indicator shows it runs) or ended with `outcome`; detail
  // says what stopped a failed command on the link, when it is known.
  void Started(const QString& command);
  // `counted`: a chip command (the EEDATA reads and writes show their verdict but are no
  // chip passed or failed).
  void Ended(const QString& command, ops::Outcome outcome, const QString& detail,
             bool counted = true);

  // The counters as the production database's records give them (they outlive the
  // program and count chip commands only).
  void SetCounts(int passed, int failed);

  int Passed() const { return passed_; }
  int Failed() const { return failed_; }
  QString Verdict() const { return verdict_->text(); }

 private:
  void Show(const QString& text, const QString& colour);
  void ShowCounts();

  QLabel* verdict_;
  QLabel* counters_;
  int passed_ = 0;
  int failed_ = 0;
};

}  // namespace lk::ui
