// The three child windows of the main window: the hex document (FrmDoc), the
// configuration display (FrmConfigDisp) and the message log (FrmMessage). They show what
// they are given; the main window decides what that is.
#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QTreeWidget>
#include <QWidget>
#include <string>
#include <vector>

#include "core/config_defs.h"

namespace lk::ui {

// Gives a widget its name as object name and as accessible name, so that tests and
// screen readers (AT-SPI) find it by the same name; its caption, when it has one, is its
// accessible description.
void Name(QObject* object, const QString& name);
// Shows text on a named label or button and gives it as the accessible description (the
// accessible name being the control's name).
void ShowText(QLabel* label, const QString& text);
void ShowText(QAbstractButton* button, const QString& text);

// The program words as text, eight to a line, in a monospace view that the operator may
// edit only while the modify mode allows it; its status bar has the checksum panel and
// the progress bar of the chip commands.
class DocWindow : public QWidget {
 public:
  explicit DocWindow(QWidget* parent = nullptr);

  // The document text as the image describes it ("\r\n" between lines).
  void SetHexText(const std::string& text);
  // The text as the operator sees it now, "\r\n" between lines.
  std::string HexText() const;
  void SetEditable(bool editable);
  void SetChecksum(const std::string& text);
  void SetInfo(const QString& text);
  QPlainTextEdit* Text() const { return text_; }
  QProgressBar* Progress() const { return progress_; }
  QLabel* Checksum() const { return checksum_; }

 private:
  QPlainTextEdit* text_;
  QLabel* info_;
  QLabel* checksum_;
  QProgressBar* progress_;
};

// Two columns: the option and its current choice.
class ConfigWindow : public QWidget {
 public:
  explicit ConfigWindow(QWidget* parent = nullptr);
  void SetRows(const std::vector<ConfigOptionRow>& rows);
  QTreeWidget* List() const { return list_; }

 private:
  QTreeWidget* list_;
};

// The message log: the lines of the last command, in a monospace list.
class MessageWindow : public QWidget {
 public:
  explicit MessageWindow(QWidget* parent = nullptr);
  void Append(const std::string& line);
  void ReplaceLast(const std::string& line);
  void Clear();
  std::vector<std::string> Lines() const;
  QListWidget* List() const { return list_; }

 private:
  QListWidget* list_;
};

// The monospace font of the document and the log: Courier New where it is installed,
// else the system's fixed font.
QFont MonospaceFont();

}  // namespace lk::ui
