#pragma once

namespace tidemark {

/// Gives back to the system what the program has used once and may not need for long: free memory of the
/// heap, and the pages of code. Code comes back by itself, from the system's cache of files, where it runs
/// again. Takes a few milliseconds.
void giveBackMemory();

}  // namespace tidemark
