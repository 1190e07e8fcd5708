// SPDX-License-Identifier: GPL-3.0-or-later
// The two traces, DEBUG.TXT and PARSEDEBUG.TXT: hex text appended with no line ends, the file
// opened and closed within each call. A file that cannot be written costs the pump nothing: the
// failure is told once through the log, and told again only after a write has succeeded.
//
// AddToParseDebugFile has no caller in the program; it stays ready for tracing raw bytes.
#include "link/IcomWindow.h"
#include "platform/TextFiles.h"

namespace tarn {

bool IcomWindow::AppendTrace(const std::string& fileName, std::string_view text,
                             bool& failureTold) {
  const std::string path =
      services_.workFolder.empty() ? fileName : services_.workFolder + "/" + fileName;
  const bool ok = AppendToFile(path, text);
  if (!ok && !failureTold)
    System.DebugLog("cannot write " + path + "; the trace goes on without it");
  failureTold = !ok;
  return ok;
}

void IcomWindow::AddToDebugFile(std::string_view text) {
  System.DebugLog(text);
  AppendTrace("DEBUG.TXT", text, debugFileFailureTold_);
}

void IcomWindow::AddToParseDebugFile(std::string_view text) {
  AppendTrace("PARSEDEBUG.TXT", HexText(text), parseDebugFileFailureTold_);
}

}  // namespace tarn
