#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

/// How values are shown in trace lines: whatever they hold, a line stays one line.
namespace TraceText
{

/// @p text with control characters and line separators written as \n, \t or \u{HEX}, and cut when it is long.
QString printable(const QString &text);
/// The same for bytes, which are taken as UTF-8.
QString printable(const QByteArray &bytes);
/// printable() in double quotes, with quotes and backslashes inside escaped.
QString quoted(const QString &text);
/// A value as it would be written in a call: strings quoted, lists and maps in brackets.
QString value(const QVariant &value);
/// "(a, b)"
QString arguments(const QVariantList &values);
QString arguments(const QStringList &texts);

} // namespace TraceText
