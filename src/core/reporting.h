// How the program tells its user what it is doing: log, output list, status bar, message boxes.
#pragma once

#include <string>
#include <string_view>

namespace trelvin {

// Appends one line to Trelvin.log in the current directory: date, time, blank and message in double quotes,
// CR LF. The file is opened and closed by every call, so that a crash loses nothing. A failure goes to the
// caller.
void writeLog(std::string_view message);
// The same, only when bDebug is set.
void debugLog(std::string_view message);

// A message to the user: a line of lstOutput in a silent run, else a box with an OK button.
void tellUser(const std::string& message);
// The same, and the same text to the log.
void tellUserAndLog(const std::string& message);

// Adds a line to lstOutput and nothing else.
void addOutput(const std::string& line);
// Selects the newest line of lstOutput, so that it is in view, and refreshes the list.
void showLastLine();
// Adds a line and shows it.
void reportProgress(const std::string& line);

void setStatus(const std::string& text);

// "number description" and "number - description" of the error state, as many lines have them.
std::string errText();
std::string errTextWithDash();
// With bDebug and the error state set: logs the text and clears the error state. Without, both stay as they
// are.
void debugLogIfErr(std::string_view text);

// Double-click on a line of lstOutput shows the whole of it, unless the run is silent.
void lstOutput_DblClick();

}  // namespace trelvin
