// The one thread that talks to the writer. Every exchange with it, the chip commands and
// the connection monitor's tick alike, is a job posted here and run after the jobs
// before it, so a writer that does not answer holds up this thread, never the window.
#pragma once

#include <QObject>
#include <QThread>
#include <functional>

namespace lk::ui {

class Worker {
 public:
  Worker();
  ~Worker();  // waits for the running job; jobs not yet started are dropped
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  void Post(std::function<void()> job);
  bool IsCurrentThread() const { return QThread::currentThread() == &thread_; }

 private:
  QThread thread_;
  QObject* context_;  // lives on thread_: queued jobs run there
};

}  // namespace lk::ui
