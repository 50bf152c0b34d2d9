#pragma once

#include <QByteArray>
#include <QList>

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
/// The texts of those lines; @p priority of 0 means every priority.
QList<QByteArray> texts(int priority = 0);
/// How many lines have exactly this text.
int count(const QByteArray &text);
void clear();

} // namespace PlatformCapture
