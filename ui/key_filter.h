// The key filters of the dialogs' text boxes, applied to whatever reaches the box: a
// typed key, a paste or a drop. The rules themselves are the libraries'
// (AcceptAddressKey, AcceptWriterIdKey, ...); this only feeds them.
#pragma once

#include <QLineEdit>
#include <QValidator>
#include <functional>
#include <string>

namespace lk::ui {

class KeyFilter : public QValidator {
 public:
  // Whether `key` is kept when `before` is the text to its left.
  using Accept = std::function<bool(const std::string& before, char key)>;
  // maxLength: the most characters the box holds (0: no limit), counted after the
  // filter, so that a paste is cut where typing the same keys would stop.
  KeyFilter(QLineEdit* edit, Accept accept, int maxLength = 0);

  // Every inserted character is put through the rule one by one, in order, each with
  // the text left of it (the characters kept so far included); deleting is never
  // filtered. An insertion of which nothing is kept leaves the box as it was (a
  // selection it would have replaced included).
  State validate(QString& input, int& pos) const override;

  void SetMaxLength(int maxLength) { maxLength_ = maxLength; }

 private:
  Accept accept_;
  int maxLength_;
  QString last_;  // the box's text after the last change
};

// Installs the filter on the box.
KeyFilter* FilterKeys(QLineEdit* edit, KeyFilter::Accept accept, int maxLength = 0);

}  // namespace lk::ui
