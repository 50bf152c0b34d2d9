#pragma once

#include <functional>

/// Runs @p work, which blocks, on a thread of its own, and this thread's event loop until it has returned:
/// for clients of a server that lives on this thread.
void serveWhile(const std::function<void()> &work);
