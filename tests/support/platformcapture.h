#pragma once

#include "logpriority.h"

#include <QByteArray>
#include <QList>

#include <functional>

/// Stands in for the platform's log writer and keeps what it is given. A program that links
/// qwixt_platformcapture has no other writer. All functions may be called from any thread.
namespace PlatformCapture
{

struct Line {
    int priority;
    QByteArray tag;
    QByteArray text;
};

/// Every line since the last clear(), oldest first.
QList<Line> lines();
/// The texts of those lines of one priority, or of any.
QList<QByteArray> texts(int priority = LogPriority::Any);
/// How many lines have exactly this text.
int count(const QByteArray &text);
void clear();

/// Has a function called at each line with a given text, at the moment when it is written and on the thread
/// that writes it. One at a time.
class LineWatch
{
public:
    LineWatch(const QByteArray &text, const std::function<void()> &written);
    ~LineWatch();
    Q_DISABLE_COPY(LineWatch)
};

} // namespace PlatformCapture
