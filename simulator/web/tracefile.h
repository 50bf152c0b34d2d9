#pragma once

#include "eventlog.h"

#include <QByteArray>
#include <QString>

/// The page's files, which are part of the program.
namespace PageFiles
{
/// The content of "index.html", "style.css" and the like; empty when there is no such file.
QByteArray read(const QString &name);
} // namespace PageFiles

/// A trace to keep: the page with its script and style and all events that the log holds, in one file that
/// needs neither a simulator nor a network.
namespace TraceFile
{
QByteArray html(const EventLog &log);
/// The scripts of the page in one: what they import from each other stands before it is used.
QByteArray script();
} // namespace TraceFile
