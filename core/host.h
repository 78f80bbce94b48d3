// The Host: everything the user sees goes through it, so that the core, files, link and
// ops layers never depend on a user interface. The GUI shows message boxes and a log
// window; the CLI prints lines; the tests record every call.
#pragma once

#include <string>

namespace lk {

// The caption of message boxes that use the application title.
inline constexpr const char* kAppTitle = "LKMCU Writer";
inline constexpr int kVersionMajor = 1;
inline constexpr int kVersionMinor = 0;

enum class Icon { None, Information, Exclamation, Critical, Question };

class Host {
 public:
  virtual ~Host() = default;

  // A message box: icon, text and caption.
  virtual void Message(Icon icon, const std::string& text, const std::string& caption) = 0;

  // An OK/Cancel question; true means OK.
  virtual bool Ask(const std::string& text, const std::string& caption) = 0;

  // One line of the message log (the lines the operations define, nothing else).
  virtual void Log(const std::string& line) = 0;

  // Overwrites the last line of the message log (appends when the log is empty).
  virtual void ReplaceLastLog(const std::string& line) = 0;

  // Empties the message log.
  virtual void ClearLog() = 0;

  // Progress of a long transfer: value out of maximum.
  virtual void Progress(long value, long maximum) = 0;

  // A status-bar panel: 1 = rolling code, 2 = checksum, 3 = file time, 4 = connection.
  virtual void Status(int panel, const std::string& text) = 0;

  // Diagnostics (timeouts, USB errors): never part of the message log.
  virtual void Diagnostic(const std::string& line) = 0;

  // A data file that is there but cannot be read (a FIFO, a device, too large, refused
  // by the system); text names it and says why. The program goes on as if it were
  // missing, so it is shown as a message box; a command line also fails the run on it.
  virtual void FileUnreadable(const std::string& text) {
    Message(Icon::Critical, text, kAppTitle);
  }

  // A data file the program keeps could not be written (a full disk, a folder that went
  // away); text names it and says why. Shown once; a command line fails the run on it.
  virtual void FileUnwritable(const std::string& text) {
    Message(Icon::Critical, text, kAppTitle);
  }
};

}  // namespace lk
