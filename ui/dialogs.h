// How the windows ask the operator: message boxes, questions and the file chooser. The
// tests put a recorder in their place.
#pragma once

#include <QString>
#include <QWidget>
#include <string>

#include "core/host.h"

namespace lk::ui {

class Dialogs {
 public:
  virtual ~Dialogs() = default;
  virtual void Message(QWidget* parent, Icon icon, const QString& text, const QString& caption);
  virtual bool Ask(QWidget* parent, const QString& text, const QString& caption);
  // A file to open; empty when the operator cancels. filter as the file dialog takes it.
  virtual QString OpenFileName(QWidget* parent, const QString& caption, const QString& folder,
                               const QString& filter);
};

// A text of the libraries (UTF-8) for a widget.
inline QString Q(const std::string& text) {
  return QString::fromStdString(text);
}

// "label|p1;p2" as a file dialog takes it: "label (p1 p2)".
QString DialogFilter(const std::string& filter);

}  // namespace lk::ui
