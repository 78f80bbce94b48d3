// Running a piece of work on the window's thread from wherever the caller is: at once
// when the caller is the window's thread, queued otherwise, and (when asked) waiting
// until the window has done it.
#pragma once

#include <QMetaObject>
#include <QObject>
#include <QThread>
#include <functional>

namespace lk::ui {

inline void OnGuiThread(QObject* context, std::function<void()> work, bool wait) {
  if (QThread::currentThread() == context->thread()) {
    work();
    return;
  }
  QMetaObject::invokeMethod(context, std::move(work),
                            wait ? Qt::BlockingQueuedConnection : Qt::QueuedConnection);
}

}  // namespace lk::ui
