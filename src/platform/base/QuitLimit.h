#pragma once

/// Bounds the time that quitting takes.
namespace tidemark::quitlimit {

/// Two seconds from now the process ends with exit code 0, whatever still runs: a keyring or a disk that does
/// not answer, say. Files are replaced in one step, so none is left half-written. May be called more than
/// once, and from a signal handler.
void start();

}  // namespace tidemark::quitlimit
