#pragma once

/// Ends the process with @p status and destroys nothing, from any thread: whatever the other threads are
/// doing, all that they use is there to the last. A build with the leak sanitizer reports leaks first.
[[noreturn]] void endProcess(int status);
