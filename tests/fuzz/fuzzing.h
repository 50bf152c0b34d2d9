#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <fuzzer/FuzzedDataProvider.h>

/// What every fuzzer needs. A fuzzer ends by abort() where something does not hold: its input is kept then.
/// The log lines of the code under test go nowhere.

/// Ends the program, with @p what as the reason, unless it holds.
void require(bool holds, const char *what);
/// The same for two values that must be equal, which are shown.
void requireEqual(const QString &is, const QString &mustBe, const char *what);
void requireEqual(const QByteArray &is, const QByteArray &mustBe, const char *what);
void requireEqual(qint64 is, qint64 mustBe, const char *what);

/// Up to @p longest bytes of the input.
QByteArray takeBytes(FuzzedDataProvider &input, int longest);
/// The same as text: what is no UTF-8 in it becomes replacement characters.
QString takeText(FuzzedDataProvider &input, int longest);
/// All that is left of the input.
QByteArray takeRest(FuzzedDataProvider &input);

/// One of @p values, which must not be empty.
template <typename List>
auto takeOneOf(FuzzedDataProvider &input, const List &values)
{
    return *(values.begin() + input.ConsumeIntegralInRange<int>(0, static_cast<int>(values.size()) - 1));
}
