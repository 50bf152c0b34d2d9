#pragma once

#include <QString>

/// The four parties between which everything passes, by the names that the events and the page have for them.
namespace Lane
{
const QString widgets = QStringLiteral("widgets");
const QString qwixtd = QStringLiteral("qwixtd");
const QString device = QStringLiteral("device");
const QString server = QStringLiteral("server");
} // namespace Lane
