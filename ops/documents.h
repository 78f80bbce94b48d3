// The documentation menu: the chip documents in doc/ beside the program, and what the
// menu says when the desktop cannot open one.
#pragma once

#include <string>
#include <vector>

#include "core/home.h"

namespace lk::ops {

// The "*.pdf" files of doc/ (any case of the ending; hidden files left out), by name.
// Empty when there are none, and the menu is then hidden.
std::vector<std::string> DocumentFiles(const Home& home);

// How asking the desktop to open a document ended.
enum class DocumentOpen {
  Opened,
  NotFound,   // the file or its folder is missing
  NoProgram,  // nothing on this desktop opens the file
  Failed,     // any other reason
};

// The message box for a failed open: "打开文件"<name>"失败!", CR LF, and the reason when
// one is known. "" for Opened.
std::string DocumentOpenFailureText(const std::string& name, DocumentOpen result);

}  // namespace lk::ops
