#pragma once

#include <string>

/// The log of the libraries that are built on GLib: they write foreign text to the standard error,
/// and end the process where they get no thread or no memory.
namespace rastrel::text {

/// Called with one line of UTF-8, without control characters, instead of the process being ended by
/// a signal. Must not return.
using FatalLogHandler = void (*)(const std::string& message);

/// Takes the log over for the rest of the process: messages are dropped, since failures reach the
/// caller as results, and a fatal one goes to `fatal`, which any thread may call. To be called once
/// in a process, by a program's main, before another thread is started.
void GuardLibraryLog(FatalLogHandler fatal);

}  // namespace rastrel::text
