#include "ui/key_filter.h"

namespace lk::ui {

KeyFilter::KeyFilter(QLineEdit* edit, Accept accept, int maxLength)
    : QValidator(edit), accept_(std::move(accept)), maxLength_(maxLength), last_(edit->text()) {
  connect(edit, &QLineEdit::textChanged, this, [this](const QString& text) { last_ = text; });
}

QValidator::State KeyFilter::validate(QString& input, int& pos) const {
  const QString& old = last_;
  // What changed: the part between the common beginning and the common end.
  qsizetype head = 0;
  while (head < old.size() && head < input.size() && old[head] == input[head]) ++head;
  qsizetype tail = 0;
  while (tail < old.size() - head && tail < input.size() - head &&
         old[old.size() - 1 - tail] == input[input.size() - 1 - tail]) {
    ++tail;
  }
  const QString inserted = input.mid(head, input.size() - head - tail);
  if (inserted.isEmpty()) return Acceptable;  // a deletion

  // Texts the program put in the box are only ever Latin-1 here; a character outside
  // ASCII is no key any filter takes.
  std::string before = input.left(head).toStdString();
  const qsizetype room = maxLength_ > 0 ? maxLength_ - head - tail : inserted.size();
  QString kept;
  for (const QChar c : inserted) {
    if (kept.size() >= room) break;
    if (c.unicode() >= 0x80) continue;
    const char key = static_cast<char>(c.unicode());
    if (!accept_(before, key)) continue;
    before.push_back(key);
    kept.append(c);
  }
  if (kept.isEmpty()) return Invalid;
  input = input.left(head) + kept + input.right(tail);
  pos = static_cast<int>(head + kept.size());
  return Acceptable;
}

KeyFilter* FilterKeys(QLineEdit* edit, KeyFilter::Accept accept, int maxLength) {
  auto* filter = new KeyFilter(edit, std::move(accept), maxLength);
  edit->setValidator(filter);
  return filter;
}

}  // namespace lk::ui
