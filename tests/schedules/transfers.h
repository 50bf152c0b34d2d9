#pragma once

#include <QByteArray>

#include <curl/curl.h>

class QThread;

/// Stands in for libcurl's transfers in a program that is linked with it: a transfer waits on the fetch
/// thread until its end is decided. Unless another thread is named, functions belong to the main thread.
namespace Transfers
{

struct Outcome {
    CURLcode code = CURLE_OK;
    int status = 200;
    QByteArray body;
};

/// Waits until @p thread has nothing to do, or waits in a transfer for its end.
void settle(QThread *thread);
/// Whether a transfer waits for its end.
bool isWaiting();
/// Whether that transfer is a GET.
bool isWaitingForList();
/// Ends the transfer that waits.
void end(const Outcome &outcome);
/// How many handles are made and not freed.
int openHandles();

} // namespace Transfers
