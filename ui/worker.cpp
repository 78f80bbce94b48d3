#include "ui/worker.h"

#include <QMetaObject>

namespace lk::ui {

Worker::Worker() : context_(new QObject) {
  thread_.setObjectName("writer-link");
  context_->moveToThread(&thread_);
  thread_.start();
}

Worker::~Worker() {
  thread_.quit();
  thread_.wait();
  delete context_;
}

void Worker::Post(std::function<void()> job) {
  QMetaObject::invokeMethod(context_, std::move(job), Qt::QueuedConnection);
}

}  // namespace lk::ui
