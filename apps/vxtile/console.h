/// \file console.h
/// The terminal: messages on standard error, the progress line, and Ctrl-C.

#ifndef VXTILE_CONSOLE_H
#define VXTILE_CONSOLE_H

#include <string>

namespace vxtile {

/// Writes "vxtile: TEXT" as a line to standard error, above the progress line if there is one. From any thread.
void printError(const std::string& text);

/// Shows one line that the next call replaces, if standard error is a terminal; else does nothing. Calls that follow
/// each other within a tenth of a second are dropped. From any thread.
void showProgress(const std::string& text);
/// Takes the progress line away.
void clearProgress();

/// Catches Ctrl-C and SIGTERM from now on: the first one only sets a flag, the second one ends the program.
void catchInterrupts();
/// \return whether the flag is set. From any thread.
bool isInterrupted();

}  // namespace vxtile

#endif
