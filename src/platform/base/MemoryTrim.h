#pragma once

namespace tidemark {

/// Returns free heap memory and the pages of code to the system, for example after a window was closed. Code
/// is read again when it runs, mostly from the file cache. Takes a few milliseconds.
void giveBackMemory();

}  // namespace tidemark
